#include "console/reporter.h"

#include <cerrno>
#include <sstream>

#include <gtest/gtest.h>

#include "kvpack/package_writer.h"
#include "package/part_reader.h"

namespace {

std::string redraw(const std::string& text) { return "\x1B[?25l\r" + text + "\r\x1B[?25h"; }

const std::string WIPED = "\r" + std::string(79, ' ') + "\r";

struct ReporterTest : testing::Test {
    void SetUp() override { testing::internal::CaptureStdout(); }
    void TearDown() override { (void)testing::internal::GetCapturedStdout(); }

    /// What came on standard output since the last call.
    static std::string printed() {
        std::string text = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return text;
    }

    Reporter reporter;
};

TEST_F(ReporterTest, KeepsTheStatusLineBelowTheMessages) {
    reporter.info("plain %d", 1);
    EXPECT_EQ(printed(), "plain 1\n");
    reporter.setStatus("working...");
    EXPECT_EQ(printed(), redraw("working..."));
    reporter.setStatus("working...");
    EXPECT_EQ(printed(), "");
    reporter.setStatus("busy");
    EXPECT_EQ(printed(), redraw("busy      "));
    reporter.warning("careful");
    EXPECT_EQ(printed(), WIPED + "WARNING: careful\nbusy");
    reporter.error("broken");
    EXPECT_EQ(printed(), redraw("    ") + "ERROR: broken\n");
    reporter.setStatus("");
    EXPECT_EQ(printed(), "");
    EXPECT_EQ(reporter.messages, (std::vector<std::string>{"plain 1", "WARNING: careful", "ERROR: broken"}));
}

TEST_F(ReporterTest, CutsALongTextButNotItsPrefix) {
    reporter.error("%s", std::string(300, 'x').c_str());
    EXPECT_EQ(printed(), "ERROR: " + std::string(255, 'x') + '\n');
}

TEST_F(ReporterTest, SaysAndKeepsNothingWhenQuiet) {
    reporter.quiet = true;
    reporter.setStatus("working...");
    reporter.info("plain");
    reporter.error("broken");
    EXPECT_EQ(printed(), "");
    EXPECT_TRUE(reporter.messages.empty());
}

TEST_F(ReporterTest, DrawsTheProgressOfThePackage) {
    struct Case {
        const char* what;
        InstalledPackage package{"abc"};
        std::string front;
        std::size_t width;
    };
    Case cases[] = {{.what = "plain", .front = "installing abc-7.2 [", .width = 56},
                    {.what = "disabled", .front = "installing  (disabled) abc-7.2 [", .width = 44},
                    {.what = "member", .front = "installing suite-7.1 [", .width = 54},
                    {.what = "long", .front = "installing " + std::string(90, 'n') + "-7.2 [", .width = 0}};
    cases[1].package.disabled = true;
    cases[2].package.disabled = true;
    cases[2].package.bundle = {.name = "suite", .minVersion = 0x07016600, .maxVersion = 0x07016600};
    cases[3].package.name = std::string(90, 'n');
    for (Case& c : cases) {
        c.package.version = 0x07026600;
        for (const unsigned percent : {0U, 50U, 99U, 100U, 300U}) {
            // The reader stands behind 100 bytes of a file that claims a length of its own.
            const std::uint32_t length = percent == 0 ? 0 : 100 * 100 / percent;
            std::string bytes(14, '\0');
            for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<char>(PACKAGE_MAGIC >> (8 * i));
            for (std::size_t i = 0; i < 4; ++i) bytes[4 + i] = static_cast<char>((length - 8) >> (8 * i));
            bytes[8] = 23;
            bytes[10] = 100;
            std::stringbuf container(bytes + std::string(100, 'x'));
            PartReader in(container, false, nullptr);
            in.want({23});
            in.nextPart();
            in.ignore(86);
            reporter.setStatus("");
            (void)printed();
            reporter.showProgress(c.package, in);
            const std::size_t filled =
                length == 0 ? 0 : std::min<std::size_t>(c.width, 100 * c.width / length);
            EXPECT_EQ(printed(),
                      redraw(c.front + std::string(filled, '#') + std::string(c.width - filled, ' ') + "]"))
                << c.what << ' ' << percent;
        }
    }
}

TEST_F(ReporterTest, ExplainsAFailedWrite) {
    InstalledPackage package("abc");
    package.version = 0x07026600;
    for (const auto& [number, text] : {std::pair{ENOSPC, "disk is too small"},
                                       {EIO, "disk error"},
                                       {ENOENT, "could not create bin/x: No such file or directory"}}) {
        errno = number;
        reporter.reportFileFailure(package, "bin/x");
        EXPECT_EQ(printed(), std::string("ERROR: installation of abc-7.2 failed: ") + text + '\n');
    }
    package.bundle.name = "suite";
    reporter.reportBrokenPackage(package);
    EXPECT_EQ(printed(), "ERROR: installation of suite failed: broken package\n");
}

}  // namespace
