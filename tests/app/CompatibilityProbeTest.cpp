#include "Curtain/CompatibilityProbe.h"

#include "tests/support/FakeAudioServices.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakeSystemVersion.h"
#include "tests/support/FakeWorkspace.h"

#include <gmock/gmock.h>

namespace {

using CurtainCore::CompatibilityResult;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct CompatibilityProbeTest : testing::Test {
    TestSupport::FakeSystemVersion system;
    TestSupport::FakeCaptureServices cameras;
    TestSupport::FakeAudioServices microphones;
    TestSupport::FakeWorkspace workspace;
    Curtain::CompatibilityProbe probe{{system, cameras, microphones, workspace}};

    void install(const std::string& bundleID) { workspace.urls[bundleID] = "/apps/" + bundleID; }
};

TEST_F(CompatibilityProbeTest, ASystemWithNothingIsCompatible) {
    const auto result = probe.run();
    EXPECT_EQ(result, (CompatibilityResult{true, false, false, {}}));
    EXPECT_TRUE(result.isCompatible());
    EXPECT_EQ(probe.hidingObstacle(), std::nullopt);
}

TEST_F(CompatibilityProbeTest, TheSystemsVersionDecides) {
    system.version = 13;
    EXPECT_FALSE(probe.run().osSupported);
    system.version = 14;
    EXPECT_TRUE(probe.run().osSupported);
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::noWindowManager;
    EXPECT_FALSE(probe.run().osSupported);
    EXPECT_EQ(probe.hidingObstacle(), Platform::HidingObstacle::noWindowManager);
}

TEST_F(CompatibilityProbeTest, OneDeviceOfAKindIsEnough) {
    cameras.cameras = {{"camera", "Camera"}};
    EXPECT_TRUE(probe.run().hasCamera);
    EXPECT_FALSE(probe.run().hasMicrophone);
    cameras.cameras.clear();
    microphones.isInputDeviceThere = true;
    EXPECT_FALSE(probe.run().hasCamera);
    EXPECT_TRUE(probe.run().hasMicrophone);
}

TEST_F(CompatibilityProbeTest, EveryInstalledCallAppIsNamedOnce) {
    for (const auto* const bundleID :
         {"us.zoom.xos", "com.microsoft.teams", "com.microsoft.teams2", "com.cisco.webexmeetingsapp",
          "com.hnc.Discord", "com.apple.FaceTime", "com.google.Chrome", "org.gnome.Maps"}) {
        install(bundleID);
    }
    EXPECT_THAT(probe.run().videoAppNames,
                UnorderedElementsAre("Zoom", "Teams", "Webex", "Discord", "FaceTime", "Meet"));
}

TEST_F(CompatibilityProbeTest, AnyBrowserStandsForTheMeetingServiceOnTheWeb) {
    install("org.gnome.Maps");
    workspace.handlers["mailto"] = "/apps/mail";
    EXPECT_THAT(probe.run().videoAppNames, IsEmpty());
    workspace.handlers["https"] = "/apps/firefox";
    EXPECT_THAT(probe.run().videoAppNames, ElementsAre("Meet"));
    install("com.google.Chrome");
    EXPECT_THAT(probe.run().videoAppNames, ElementsAre("Meet"));
}

TEST_F(CompatibilityProbeTest, EveryRunLooksAgain) {
    EXPECT_THAT(probe.run().videoAppNames, IsEmpty());
    install("us.zoom.xos");
    EXPECT_THAT(probe.run().videoAppNames, ElementsAre("Zoom"));
}

} // namespace
