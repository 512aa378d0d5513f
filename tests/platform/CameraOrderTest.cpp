#include "platform/linux/camera/CameraOrder.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace {

using LinuxPlatform::CameraKind;
using LinuxPlatform::FoundCamera;
using LinuxPlatform::inDiscoveryOrder;
using testing::ElementsAre;

struct CameraOrderTest : testing::Test {
    TestSupport::TemporaryFolder system;

    /// Describes a video node as the kernel does.
    void describe(const std::string& node, const std::string& device, const std::string& removable = "") {
        const auto folder = system.path() / "devices" / device;
        std::filesystem::create_directories(folder);
        if (!removable.empty()) {
            TestSupport::writeFile(folder.parent_path() / "removable", removable + "\n");
        }
        const auto entry = system.path() / "class/video4linux" / node;
        std::filesystem::create_directories(entry);
        std::filesystem::create_directory_symlink(folder, entry / "device");
    }

    CameraKind kind(const std::string& description, const std::string& objectPath) const {
        return LinuxPlatform::kindOf({"name", description, objectPath, 1}, system.path());
    }

    std::vector<std::string> ids(const std::vector<FoundCamera>& cameras) const {
        std::vector<std::string> ids;
        for (const auto& camera : inDiscoveryOrder(cameras, system.path())) {
            ids.push_back(camera.device.uniqueID);
        }
        return ids;
    }
};

TEST_F(CameraOrderTest, WhatTheKernelSaysAboutAUsbPortCounts) {
    describe("video0", "pci0/usb1/1-5/1-5:1.0", "fixed");
    describe("video2", "pci0/usb1/1-6/1-6:1.0", "removable");
    EXPECT_EQ(kind("HD Webcam", "v4l2:/dev/video0"), CameraKind::builtIn);
    EXPECT_EQ(kind("Integrated Webcam", "v4l2:/dev/video2"), CameraKind::external);
}

TEST_F(CameraOrderTest, WhereTheKernelDoesNotKnowTheNameCounts) {
    describe("video0", "pci0/usb1/1-5/1-5:1.0", "unknown");
    describe("video2", "pci0/usb1/1-6/1-6:1.0");
    EXPECT_EQ(kind("Integrated_Webcam_HD", "v4l2:/dev/video0"), CameraKind::builtIn);
    EXPECT_EQ(kind("Built-in Camera", "v4l2:/dev/video2"), CameraKind::builtIn);
    EXPECT_EQ(kind("Desk Camera", "v4l2:/dev/video0"), CameraKind::external);
    EXPECT_EQ(kind("Desk Camera", "v4l2:/dev/video2"), CameraKind::external);
}

TEST_F(CameraOrderTest, CamerasOnTheBoardAreBuiltIn) {
    describe("video0", "pci0/0000:00:14.0");
    EXPECT_EQ(kind("Sensor", "v4l2:/dev/video0"), CameraKind::builtIn);
    EXPECT_EQ(kind("Sensor", "libcamera:/base/soc/i2c/imx219"), CameraKind::builtIn);
    EXPECT_EQ(kind("Desk Camera", "libcamera:/base/pci0/usb1-5"), CameraKind::external);
}

TEST_F(CameraOrderTest, CamerasThatProgramsFeedComeLast) {
    describe("video7", "virtual/video4linux/video7");
    EXPECT_EQ(kind("Phone", "v4l2:/dev/video7"), CameraKind::networkOrPhone);
    EXPECT_EQ(kind("Loopback", "v4l2:/dev/video8"), CameraKind::networkOrPhone);
    EXPECT_EQ(kind("Program", ""), CameraKind::networkOrPhone);
}

TEST_F(CameraOrderTest, BuiltInThenExternalThenOthersAndByNameWithin) {
    describe("video0", "pci0/usb1/1-5/1-5:1.0", "fixed");
    describe("video2", "pci0/usb1/1-6/1-6:1.0", "removable");
    describe("video4", "pci0/usb1/1-7/1-7:1.0", "removable");
    EXPECT_THAT(ids({{"phone", "A Phone", "", 1},
                     {"right", "Right Camera", "v4l2:/dev/video2", 2},
                     {"left", "Left Camera", "v4l2:/dev/video4", 3},
                     {"inside", "Zoom Camera", "v4l2:/dev/video0", 4}}),
                ElementsAre("inside", "left", "right", "phone"));
}

TEST_F(CameraOrderTest, OrderDoesNotDependOnTheOrderOfArrival) {
    EXPECT_THAT(ids({{"b", "Camera", "", 1}, {"a", "Camera", "", 2}}), ElementsAre("a", "b"));
    EXPECT_THAT(ids({{"a", "Camera", "", 1}, {"b", "Camera", "", 2}}), ElementsAre("a", "b"));
}

TEST_F(CameraOrderTest, CamerasThatShareEverythingAreNumberedInTheOrderOfTheirSerials) {
    const auto listed =
        inDiscoveryOrder({{"same", "Camera", "", 9}, {"same", "Camera", "", 4}}, system.path());
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed[0].device.uniqueID, "same");
    EXPECT_EQ(listed[0].serial, 4U);
    EXPECT_EQ(listed[1].device.uniqueID, "same#2");
    EXPECT_EQ(listed[1].serial, 9U);
}

TEST_F(CameraOrderTest, CameraWithoutADescriptionShowsItsName) {
    EXPECT_EQ(inDiscoveryOrder({{"plain", "", "", 1}}, system.path()).front().device.localizedName, "plain");
}

} // namespace
