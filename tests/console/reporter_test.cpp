#include "console/reporter.h"

#include <cerrno>
#include <sstream>

#include <gtest/gtest.h>

#include "package/bytes.h"
#include "package/part_reader.h"
#include "support/described.h"
#include "support/package_builder.h"

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
        std::string words;     // of the package
        std::streamsize read;  // bytes of a file of 1014
        std::uint32_t length;  // that the file claims
        std::string front;
        std::size_t filled, blank;
    };
    const std::string name(90, 'n');
    for (const auto& [words, read, length, front, filled, blank] :
         {Case{"abc", 0, 1014, "abc-7.0 [", 0, 56}, Case{"abc", 493, 1014, "abc-7.0 [", 28, 28},
          Case{"abc", 999, 1014, "abc-7.0 [", 55, 1}, Case{"abc", 1000, 1014, "abc-7.0 [", 56, 0},
          Case{"abc", 1000, 500, "abc-7.0 [", 56, 0}, Case{"abc", 1000, 0, "abc-7.0 [", 0, 56},
          Case{"abc off", 0, 1014, " (disabled) abc-7.0 [", 0, 44}, Case{"abc off @suite", 0, 1014, "suite [", 0, 58},
          Case{name, 1000, 1014, name + "-7.0 [", 0, 0}}) {
        std::string bytes = container({{23, std::string(1000, 'x')}});
        storeU32(std::as_writable_bytes(std::span(bytes)).subspan(4).first<4>(), length - 8);
        std::stringbuf source(bytes);
        PartReader in(source, false, nullptr);
        in.want({23});
        in.nextPart();
        in.ignore(read);
        Reporter fresh;
        fresh.showProgress(described(words), in);
        EXPECT_EQ(printed(), redraw("installing " + front + std::string(filled, '#') + std::string(blank, ' ') + "]"))
            << words << ' ' << read << ' ' << length;
    }
}

TEST_F(ReporterTest, ExplainsAFailedWrite) {
    InstalledPackage package = described("abc");
    for (const auto& [number, text] : {std::pair{ENOSPC, "disk is too small"},
                                       {EIO, "disk error"},
                                       {ENOENT, "could not create bin/x: No such file or directory"}}) {
        errno = number;
        reporter.reportFileFailure(package, "bin/x");
        EXPECT_EQ(printed(), std::string("ERROR: installation of abc-7.0 failed: ") + text + '\n');
    }
    package.bundle.name = "suite";
    reporter.reportBrokenPackage(package);
    EXPECT_EQ(printed(), "ERROR: installation of suite failed: broken package\n");
}

}  // namespace
