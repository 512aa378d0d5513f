#include "Curtain/OnboardingWindowController.h"

#include "tests/support/FakePlatform.h"
#include "tests/support/FakeWindows.h"
#include "tests/support/OnboardingWorld.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using CurtainCore::OnboardingStep;
using CurtainCore::PermissionKind;
using Platform::ActivationPolicy;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct OnboardingWindowControllerTest : testing::Test, TestSupport::OnboardingWorld {
    std::vector<std::string> events;
    TestSupport::FakeWindows windows{events};
    TestSupport::FakeApplication application{events};
    std::shared_ptr<Curtain::OnboardingViewModel> model =
        makeModel("en", OnboardingStep::permission(PermissionKind::microphone));
    std::unique_ptr<Curtain::OnboardingWindowController> controller =
        std::make_unique<Curtain::OnboardingWindowController>(windows, application, model);

    TestSupport::FakeWindows::Window& window() { return *windows.all.at(0); }
};

TEST_F(OnboardingWindowControllerTest, NothingIsMadeBeforeItIsShown) {
    EXPECT_EQ(windows.made, 0);
    EXPECT_THAT(events, IsEmpty());
    controller->close();
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(controller->viewModel(), model);
}

TEST_F(OnboardingWindowControllerTest, TheWindowHoldsTheWizardAndLooksTheSameEverywhere) {
    controller->show();
    EXPECT_EQ(window().view.source, "qrc:/Curtain/OnboardingWizardView.qml");
    EXPECT_EQ(window().view.model, model);
    EXPECT_EQ(window().size, (Platform::Size{420, 460}));
    EXPECT_TRUE(window().style.isClosable);
    EXPECT_FALSE(window().style.isResizable);
    EXPECT_FALSE(window().style.isMinimizable);
    EXPECT_TRUE(window().style.isTitleHidden);
    EXPECT_TRUE(window().style.isMovableByBackground);
    EXPECT_EQ(window().title, "Curtain");
}

TEST_F(OnboardingWindowControllerTest, ShowingMakesTheProgramRegularAndBringsTheWindowToTheFront) {
    controller->show();
    EXPECT_THAT(events, ElementsAre("activation policy", "activate ignoring other apps", "centre window",
                                    "make window key", "order window front"));
    EXPECT_EQ(application.policy, ActivationPolicy::regular);
    EXPECT_TRUE(window().isVisible());
}

TEST_F(OnboardingWindowControllerTest, ClosingMakesTheProgramAnAccessoryAndStopsTheDevices) {
    int finished = 0;
    model->onFinish = [&] { ++finished; };
    controller->show();
    model->requestCurrentPermission();
    cameraManager.start(std::nullopt);
    ASSERT_TRUE(isMicrophoneOn());
    ASSERT_TRUE(isCameraOn());
    window().close();
    EXPECT_EQ(application.policy, ActivationPolicy::accessory);
    EXPECT_FALSE(isMicrophoneOn());
    EXPECT_FALSE(isCameraOn());
    EXPECT_EQ(finished, 0);
    EXPECT_THAT(windows.all, SizeIs(1)) << "closed, not gone";
}

TEST_F(OnboardingWindowControllerTest, ClosingFromWithinDoesTheSame) {
    controller->show();
    controller->close();
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(application.policy, ActivationPolicy::accessory);
    events.clear();
    controller->close();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(OnboardingWindowControllerTest, ComingBackFindsTheSameWindowModelAndPage) {
    controller->show();
    model->requestCurrentPermission();
    model->checkCompatibility();
    window().close();
    ASSERT_FALSE(isMicrophoneOn());
    system.version = 0;
    controller->show();
    EXPECT_EQ(windows.made, 1);
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(application.policy, ActivationPolicy::regular);
    EXPECT_EQ(model->page(), "microphone");
    EXPECT_TRUE(model->isGranted());
    EXPECT_TRUE(isMicrophoneOn()) << "the live area starts again";
    model->checkCompatibility();
    EXPECT_TRUE(model->isCompatible()) << "not computed again";
}

TEST_F(OnboardingWindowControllerTest, ShowingWhatIsShownOnlyBringsItToTheFront) {
    controller->show();
    model->requestCurrentPermission();
    ASSERT_TRUE(isMicrophoneOn());
    micMonitor.stop();
    events.clear();
    controller->show();
    EXPECT_EQ(windows.made, 1);
    EXPECT_THAT(events, ElementsAre("activation policy", "activate ignoring other apps", "centre window",
                                    "make window key", "order window front"));
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(OnboardingWindowControllerTest, TheModelLivesAsLongAsItsWindow) {
    controller->show();
    const std::weak_ptr<Curtain::OnboardingViewModel> weak = model;
    model.reset();
    EXPECT_FALSE(weak.expired());
    controller.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_THAT(windows.all, IsEmpty());
}

TEST_F(OnboardingWindowControllerTest, EndingWithAnOpenWindowStopsTheDevices) {
    controller->show();
    model->requestCurrentPermission();
    ASSERT_TRUE(isMicrophoneOn());
    controller.reset();
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(OnboardingWindowControllerTest, TheModelCanCloseIt) {
    controller->show();
    model->close();
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(application.policy, ActivationPolicy::accessory);
}

TEST_F(OnboardingWindowControllerTest, IsOverOnceAPageThatLeadsNowhereIsClosed) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::waylandSession;
    controller->show();
    EXPECT_FALSE(controller->isOver());
    model->checkCompatibility();
    EXPECT_FALSE(controller->isOver());
    controller->close();
    EXPECT_TRUE(controller->isOver());
    controller->show();
    EXPECT_FALSE(controller->isOver());
}

} // namespace
