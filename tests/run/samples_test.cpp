#include <gtest/gtest.h>

#include "support/device_root.h"

namespace {

// Packages of an independent builder, which left the magic of most of them out. See tests/samples/README.md.

TEST(Samples, InstallAsTheirBuilderSays) {
    const DeviceRoot device;
    EXPECT_EQ(device.run({"-"}, sample("legacy-6.40.dpk")).code, 1);  // needs greeter

    EXPECT_EQ(device.run({"-"}, sample("greeter-7.2.kvp")).code, 0);
    EXPECT_EQ(device.read("/flash/bin/hello"), "#!/bin/sh\necho hello\n");
    EXPECT_EQ(device.mode("/flash/bin/hello"), 0755U);
    EXPECT_EQ(device.read("/flash/etc/greeter.conf"), "greeting = hello\n");
    EXPECT_EQ(device.read("/flash/var/empty"), "");
    EXPECT_EQ(device.tree("/flash/var/pdb/greeter").size(), 3U);

    EXPECT_EQ(device.run({"-"}, sample("legacy-6.40.dpk")).code, 0);
    EXPECT_EQ(device.read("/flash/bin/legacy").size(), 10240U);

    EXPECT_EQ(device.run({"-"}, sample("suite-7.2.kvp")).code, 0);
    EXPECT_EQ(device.read("/flash/var/pdb/suite/image"), sample("suite-7.2.kvp"));
    EXPECT_EQ(device.tree("/flash/x/beta"), (Tree{{"bin/beta", "beta\n"}}));
    EXPECT_EQ(device.read("/flash/bin/alpha").size(), 6000U);

    EXPECT_EQ(device.run({"-"}, sample("display-7.2.kvp")).code, 0);
    EXPECT_EQ(device.tree("/flash/var/pdb/display"), (Tree{{"image", sample("display-7.2.kvp")}}));
}

TEST(Samples, TamperedOneChangesNothing) {
    const DeviceRoot device;
    const auto run = device.run({"-q", "-"}, sample("greeter-tampered.kvp"));
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(device.tree("/flash"), (Tree{{"var/pdb/", ""}}));
}

TEST(Samples, WithoutTheirMagicAreNoPackages) {
    const DeviceRoot device;
    for (const char* name : {"greeter-7.2.kvp", "display-7.2.kvp", "legacy-6.40.dpk", "greeter-tampered.kvp"})
        EXPECT_EQ(device.run({"-"}, sample(name, false)).code, 1) << name;
    EXPECT_EQ(sample("suite-7.2.kvp", false), sample("suite-7.2.kvp"));
    EXPECT_EQ(device.tree("/flash"), (Tree{{"var/pdb/", ""}}));
}

}  // namespace
