#include "platform/linux/camera/CameraPortal.h"
#include "platform/linux/camera/CameraRights.h"
#include "platform/linux/media/LinuxMediaAuthorization.h"

#include "tests/platform/camera/CameraWorld.h"
#include "tests/platform/camera/FakeVideoDevices.h"
#include "tests/support/HandDrivenQueue.h"

#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusReply>

#include <gmock/gmock.h>

#include <chrono>

namespace {

using LinuxPlatform::LinuxMediaAuthorization;
using LinuxPlatform::PipeWireCameras;
using Platform::AuthorizationStatus;
using Platform::MediaType;
using testing::IsEmpty;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using TestSupport::VirtualCamera;

constexpr auto patience = std::chrono::seconds(20);
const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");

struct CameraAuthorizationTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    QDBusConnection bus = QDBusConnection::sessionBus();
    /// Its time stands still: no answer comes too late.
    TestSupport::HandDrivenQueue queue;
    LinuxMediaAuthorization sandboxed{bus, queue, true};
    std::optional<ChildProcess> portal;

    void startPortal(const char* response) {
        portal.emplace(std::vector<std::string>{CAMERA_PORTAL, response});
        ASSERT_TRUE(spinUntil([&] { return isPortalThere(); }, patience));
    }
    void TearDown() override {
        portal.reset();
        ASSERT_TRUE(spinUntil([&] { return !isPortalThere(); }, patience));
    }

    bool isPortalThere() const { return bus.interface()->isServiceRegistered(portalName).value(); }

    unsigned questions() {
        QDBusInterface interface(portalName, QStringLiteral("/org/freedesktop/portal/desktop"),
                                 QStringLiteral("org.freedesktop.portal.Camera"), bus);
        return QDBusReply<unsigned>(interface.call(QStringLiteral("Questions"))).value();
    }

    /// The answer to a request for the camera.
    bool request() {
        std::optional<bool> answer;
        sandboxed.requestAccess(MediaType::video, [&](bool isGranted) { answer = isGranted; });
        EXPECT_TRUE(spinUntil([&] { return answer.has_value(); }, patience));
        return answer.value_or(false);
    }
};

TEST_F(CameraAuthorizationTest, OutsideASandboxTheRightsOfTheDevicesDecide) {
    bool mayUse = true;
    LinuxMediaAuthorization authorization(bus, queue, false, [&] { return mayUse; });
    EXPECT_EQ(authorization.status(MediaType::video), AuthorizationStatus::authorized);
    mayUse = false;
    EXPECT_EQ(authorization.status(MediaType::video), AuthorizationStatus::restricted);
    EXPECT_EQ(authorization.status(MediaType::audio), AuthorizationStatus::authorized);
    std::optional<bool> answer;
    authorization.requestAccess(MediaType::video, [&](bool isGranted) { answer = isGranted; });
    EXPECT_EQ(answer, false);
    mayUse = true;
    EXPECT_EQ(authorization.status(MediaType::video), AuthorizationStatus::authorized) << "given later";
}

TEST_F(CameraAuthorizationTest, OneCameraThatMayBeOpenedIsEnough) {
    TestSupport::FakeVideoDevices devices;
    EXPECT_TRUE(LinuxPlatform::mayUseCameras(devices)) << "there is nothing to be forbidden";
    devices.byPath["/dev/video0"] = std::make_shared<TestSupport::FakeVideoDevice>();
    devices.byPath["/dev/video0"]->isAllowed = false;
    EXPECT_FALSE(LinuxPlatform::mayUseCameras(devices));
    devices.byPath["/dev/video1"] = std::make_shared<TestSupport::FakeVideoDevice>();
    EXPECT_TRUE(LinuxPlatform::mayUseCameras(devices));
}

TEST_F(CameraAuthorizationTest, InASandboxThePortalAsksOnceAndOpensTheDaemon) {
    const VirtualCamera camera(folder, "inside", "Camera", "jpeg");
    startPortal("0");
    EXPECT_EQ(sandboxed.status(MediaType::video), AuthorizationStatus::notDetermined);
    PipeWireCameras cameras([this] { return LinuxPlatform::openPipeWireRemote(bus); });
    EXPECT_THAT(cameras.devices(), IsEmpty());
    EXPECT_TRUE(request());
    EXPECT_EQ(sandboxed.status(MediaType::video), AuthorizationStatus::authorized);
    EXPECT_TRUE(request());
    EXPECT_EQ(questions(), 1U);
    EXPECT_TRUE(spinUntil([&] { return cameras.devices().size() == 1; }, patience));
}

TEST_F(CameraAuthorizationTest, InASandboxARefusalIsRemembered) {
    startPortal("1");
    EXPECT_FALSE(request());
    EXPECT_EQ(sandboxed.status(MediaType::video), AuthorizationStatus::denied);
    EXPECT_FALSE(request());
    EXPECT_EQ(questions(), 1U);
    EXPECT_LT(LinuxPlatform::openPipeWireRemote(bus), 0);
}

TEST_F(CameraAuthorizationTest, WithoutAPortalThereIsNoDaemonToOpen) {
    EXPECT_LT(LinuxPlatform::openPipeWireRemote(bus), 0);
    EXPECT_LT(LinuxPlatform::openPipeWireRemote(QDBusConnection(QStringLiteral("none"))), 0);
}

} // namespace
