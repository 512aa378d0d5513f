#include "platform/linux/camera/CameraOrder.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <map>

#include <sys/stat.h>

namespace {

using LinuxPlatform::CameraDirectory;
using LinuxPlatform::CameraKind;
using LinuxPlatform::FoundCamera;
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
        for (const auto& camera : CameraDirectory(system.path()).list(cameras)) {
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
        CameraDirectory(system.path()).list({{"same", "Camera", "", 9}, {"same", "Camera", "", 4}});
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed[0].device.uniqueID, "same");
    EXPECT_EQ(listed[0].serial, 4U);
    EXPECT_EQ(listed[1].device.uniqueID, "same#2");
    EXPECT_EQ(listed[1].serial, 9U);
}

TEST_F(CameraOrderTest, CameraWithoutADescriptionShowsItsName) {
    EXPECT_EQ(CameraDirectory(system.path()).list({{"plain", "", "", 1}}).front().device.localizedName,
              "plain");
}

/// Names as session managers and drivers make them.
TEST_F(CameraOrderTest, NamesAreThoseThatPeopleKnow) {
    const auto name = [&](const std::string& description) {
        return CameraDirectory(system.path())
            .list({{"name", description, "", 1}})
            .front()
            .device.localizedName;
    };
    EXPECT_EQ(name("HD Pro Webcam C920 (V4L2)"), "HD Pro Webcam C920");
    EXPECT_EQ(name("Integrated Camera: Integrated C"), "Integrated Camera");
    EXPECT_EQ(name("Integrated Camera  Integrated C (V4L2)"), "Integrated Camera");
    EXPECT_EQ(name("HP Wide Vision: IR"), "HP Wide Vision: IR");
    EXPECT_EQ(name("(V4L2)"), "(V4L2)");
    EXPECT_EQ(name("Camera: "), "Camera: ");
}

TEST_F(CameraOrderTest, ANumberStaysWithItsCameraWhenTheOtherOneGoes) {
    CameraDirectory directory(system.path());
    const FoundCamera one{"one", "Camera", "", 4};
    const FoundCamera two{"two", "Camera", "", 9};
    const auto names = [&](const std::vector<FoundCamera>& cameras) {
        std::map<std::string, std::string> byID;
        for (const auto& camera : directory.list(cameras)) {
            byID[camera.device.uniqueID] = camera.device.localizedName;
        }
        return byID;
    };
    using Names = std::map<std::string, std::string>;
    EXPECT_EQ(names({one, two}), (Names{{"one", "Camera"}, {"two", "Camera (2)"}}));
    EXPECT_EQ(names({two}), (Names{{"two", "Camera (2)"}}));
    EXPECT_EQ(names({one, two}), (Names{{"one", "Camera"}, {"two", "Camera (2)"}}));
}

TEST_F(CameraOrderTest, AnIdentifierStaysWithItsCameraWhenItsNamesakeGoes) {
    CameraDirectory directory(system.path());
    const auto idOf = [&](const std::vector<FoundCamera>& cameras, std::uint64_t serial) {
        for (const auto& camera : directory.list(cameras)) {
            if (camera.serial == serial) {
                return camera.device.uniqueID;
            }
        }
        return std::string();
    };
    const FoundCamera one{"same", "Camera", "", 4};
    const FoundCamera two{"same", "Camera", "", 9};
    EXPECT_EQ(idOf({one, two}, 9), "same#2");
    EXPECT_EQ(idOf({two}, 9), "same#2");
    EXPECT_EQ(idOf({two, {"same", "Camera", "", 12}}, 12), "same") << "the number that is free";
}

TEST_F(CameraOrderTest, ManyNamesThatCameAndWentAreNotKeptInMind) {
    CameraDirectory directory(system.path());
    for (std::uint64_t turn = 0; turn < 1000; ++turn) {
        directory.list({{"camera " + std::to_string(turn), "Camera", "", turn + 1}});
    }
    const auto listed = directory.list({{"last", "Camera", "", 2000}});
    EXPECT_LT(listed.front().device.localizedName, "Camera (70)");
}

TEST_F(CameraOrderTest, CamerasWithoutColorsComeLast) {
    describe("video0", "pci0/usb1/1-5/1-5:1.0", "fixed");
    EXPECT_THAT(
        ids({{"infrared", "Built-in Camera", "v4l2:/dev/video0", 1, true}, {"loopback", "Loopback", "", 2}}),
        ElementsAre("loopback", "infrared"));
}

TEST_F(CameraOrderTest, APathThatIsNoVideoDeviceLeadsNowhere) {
    // Whatever is read there never answers.
    const auto trap = system.path() / "usb";
    std::filesystem::create_directories(trap / "device");
    const auto pipe = trap / "removable";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::vector<std::string> paths{"v4l2:/dev/" + trap.string(), "v4l2:/dev/../../usb",
                                         "v4l2:/dev/video", "v4l2:/dev/video0/../usb", "v4l2:/dev/video-1"};
    for (const auto& path : paths) {
        auto answer = std::async(std::launch::async, [&] { return kind("Camera", path); });
        const bool isThere = answer.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        EXPECT_TRUE(isThere) << path;
        if (!isThere) {
            // Somebody writes, and the reader goes on.
            TestSupport::writeFile(pipe, "fixed\n");
        }
        EXPECT_EQ(answer.get(), CameraKind::networkOrPhone) << path;
    }
}

} // namespace
