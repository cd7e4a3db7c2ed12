#include "planning/branding_probe.h"

#include <filesystem>

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>

#include "platform/unique_fd.h"
#include "support/real_disks.h"

namespace {

namespace fs = std::filesystem;

struct BrandingDiskTest : RealDiskTest {
    /// Writes a branding package with a real squashfs image of a tree that has this file.
    void writeCandidate(const std::string& path, const std::string& file) const {
        fs::remove_all("/tree");
        fs::remove("/image");
        device.write("/tree/" + file, "x");
        const auto made = device.execute({"/usr/bin/mksquashfs", "/tree", "/image", "-quiet", "-no-progress"});
        ASSERT_EQ(made.code, 0) << made.err;
        device.write(path, package("branding").image(device.read("/image")).bytes());
    }

    /// Paths of the files that loop devices are attached to.
    static Lines attachedFiles() {
        Lines names;
        for (const auto& entry : fs::directory_iterator("/dev")) {
            if (!entry.path().filename().string().starts_with("loop") || !entry.is_block_file()) continue;
            const UniqueFd loop(::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC));
            loop_info64 info{};
            if (::ioctl(loop.get(), LOOP_GET_STATUS64, &info) == 0)
                names.emplace_back(reinterpret_cast<const char*>(info.lo_file_name));
        }
        return names;
    }

    /// The probe, with what it prints.
    static bool stays(const std::string& path, std::string& errors) {
        testing::internal::CaptureStderr();
        const bool result = brandingStaysProtected(path);
        errors = testing::internal::GetCapturedStderr();
        return result;
    }
};

TEST_F(BrandingDiskTest, LooksIntoTheImageOfTheCandidate) {
    const std::string longPath = "/rw/" + std::string(80, 'l') + ".kvp";
    writeCandidate("/rw/with.kvp", "FORCE_DEFCONF_ON_RESET");
    writeCandidate("/rw/without.kvp", "etc/logo");
    writeCandidate(longPath, "FORCE_DEFCONF_ON_RESET");
    device.write("/rw/none.kvp", package("branding").file("FORCE_DEFCONF_ON_RESET", "").bytes());
    device.write("/rw/bad.kvp", package("branding").image(std::string(5000, 'b')).bytes());
    const Lines attachedBefore = attachedFiles();
    std::string errors;
    for (const char* path : {"/rw/with.kvp", "/rw/without.kvp", "/rw/none.kvp", "/nowhere"})
        EXPECT_TRUE(stays(path, errors)) << path << ": nothing to protect";
    EXPECT_FALSE(fs::exists("/ram/branding"));

    device.write("/pckg/branding/FORCE_DEFCONF_ON_RESET", "");
    struct Case {
        std::string path;
        bool stays;
        std::string_view errors;  // how they begin
    };
    for (const auto& [path, expected, begin] :
         {Case{"/rw/with.kvp", true, ""}, Case{longPath, true, ""}, Case{"/rw/without.kvp", false, ""},
          Case{"/rw/none.kvp", false, ""}, Case{"/nowhere", false, ""}, Case{"/rw/bad.kvp", false, "mount squash: "}}) {
        EXPECT_EQ(stays(path, errors), expected) << path;
        EXPECT_EQ(errors.substr(0, begin.size()), begin) << path;
        EXPECT_EQ(errors.empty(), begin.empty()) << errors;
        EXPECT_EQ(attachedFiles(), attachedBefore) << path;
        EXPECT_EQ(device.read("/proc/mounts").find("/ram/branding"), std::string::npos) << path;
    }
    EXPECT_EQ(device.tree("/ram"), (Tree{{"branding/", ""}}));
}

TEST_F(BrandingDiskTest, RefusesWhereThereIsNoLoopDriver) {
    writeCandidate("/rw/with.kvp", "FORCE_DEFCONF_ON_RESET");
    device.write("/pckg/branding/FORCE_DEFCONF_ON_RESET", "");
    ASSERT_EQ(device.execute({"/usr/bin/umount", "--lazy", "/dev"}).code, 0);
    std::string errors;
    EXPECT_FALSE(stays("/rw/with.kvp", errors));
    EXPECT_EQ(errors, "loop-control: No such file or directory\n");
}

}  // namespace
