#include "Curtain/OnboardingViewModel.h"

#include "Curtain/PlatformWording.h"
#include "core/RawValue.h"
#include "tests/support/OnboardingWorld.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using CurtainCore::OnboardingStep;
using CurtainCore::PermissionKind;
using CurtainCore::PermissionStatus;
using Platform::AuthorizationStatus;
using Platform::MediaType;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr auto unheardOf = static_cast<AuthorizationStatus>(17);

struct OnboardingViewModelTest : testing::Test, TestSupport::OnboardingWorld {
    std::shared_ptr<Curtain::OnboardingViewModel> model = makeModel();
    int changes = 0;

    void startAt(const OnboardingStep& step) {
        model = makeModel("en", step);
        changes = 0;
        QObject::connect(model.get(), &Curtain::OnboardingViewModel::changed, model.get(),
                         [this] { ++changes; });
    }
    void startAt(PermissionKind kind) { startAt(OnboardingStep::permission(kind)); }

    std::optional<PermissionStatus> statusOf(PermissionKind kind) const {
        const auto found = model->status().find(kind);
        return found == model->status().end() ? std::nullopt : std::optional(found->second);
    }

    void turnBothOn() {
        cameraManager.start(std::nullopt);
        micMonitor.start();
        settle();
    }
};

TEST_F(OnboardingViewModelTest, BeginsWithNothingKnown) {
    EXPECT_EQ(model->flow(), CurtainCore::OnboardingFlow(OnboardingStep::welcome()));
    EXPECT_EQ(model->lang(), "en");
    EXPECT_EQ(model->compatibility(), std::nullopt);
    EXPECT_THAT(model->status(), IsEmpty());
    EXPECT_EQ(model->desktopFileCount(), 0);
    EXPECT_FALSE(model->isGranted());
    EXPECT_FALSE(model->isDenied());
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    model->finish();
}

TEST_F(OnboardingViewModelTest, AdvancesThroughSixPagesAndStaysOnTheLast) {
    startAt(OnboardingStep::welcome());
    std::vector<std::string> pages;
    for (int step = 0; step < 8; ++step) {
        pages.push_back(model->page().toStdString());
        model->advance();
    }
    EXPECT_THAT(pages, ElementsAre("welcome", "compatibility", "desktop", "microphone", "camera", "summary",
                                   "summary", "summary"));
    EXPECT_EQ(changes, 5);
    EXPECT_EQ(model->stepIndex(), 5);
    EXPECT_EQ(model->stepCount(), 6);
}

TEST_F(OnboardingViewModelTest, MayStartAtAnyPage) {
    startAt(PermissionKind::microphone);
    EXPECT_EQ(model->page(), "microphone");
    EXPECT_EQ(model->stepIndex(), 3);
    model->advance();
    EXPECT_EQ(model->page(), "camera");
}

TEST_F(OnboardingViewModelTest, AnnouncesTheChangesOfCameraAndMicrophoneAsItsOwn) {
    startAt(OnboardingStep::welcome());
    Q_EMIT cameraManager.changed();
    EXPECT_EQ(changes, 1);
    Q_EMIT micMonitor.changed();
    EXPECT_EQ(changes, 2);
}

TEST_F(OnboardingViewModelTest, ChangesAfterTheModelIsGoneReachNobody) {
    const std::weak_ptr<Curtain::OnboardingViewModel> weak = model;
    model.reset();
    EXPECT_TRUE(weak.expired());
    Q_EMIT cameraManager.changed();
    Q_EMIT micMonitor.changed();
}

TEST_F(OnboardingViewModelTest, LooksAtTheSystemOnce) {
    startAt(OnboardingStep::compatibility());
    EXPECT_FALSE(model->isCompatibilityKnown());
    model->checkCompatibility();
    EXPECT_EQ(changes, 1);
    ASSERT_TRUE(model->compatibility());
    EXPECT_TRUE(model->isCompatible());
    EXPECT_TRUE(model->hasCameraOrMicrophone());
    EXPECT_FALSE(model->hasVideoApps());

    system.version = 0;
    workspace.urls["us.zoom.xos"] = "/apps/zoom";
    model->checkCompatibility();
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(model->isCompatible());
    EXPECT_FALSE(model->hasVideoApps());
}

TEST_F(OnboardingViewModelTest, BeginsToLookForDevicesWithTheFirstPage) {
    startAt(OnboardingStep::welcome());
    EXPECT_EQ(capture.preparations + audio.preparations, 0);
    model->windowDidShow();
    EXPECT_EQ(capture.preparations, 1);
    EXPECT_EQ(audio.preparations, 1);
    model->checkCompatibility();
    model->windowWillClose();
    model->windowDidShow();
    EXPECT_EQ(capture.preparations + audio.preparations, 2) << "what was found is not looked for again";
}

TEST_F(OnboardingViewModelTest, LooksForMicrophonesNoLongerThanNeeded) {
    startAt(OnboardingStep::welcome());
    model->windowDidShow();
    EXPECT_FALSE(audio.openPreparations.isEmpty());
    model->windowWillClose();
    EXPECT_TRUE(audio.openPreparations.isEmpty()) << "the first page has closed";
    model->windowDidShow();
    EXPECT_FALSE(audio.openPreparations.isEmpty());
    model->checkCompatibility();
    EXPECT_TRUE(audio.openPreparations.isEmpty()) << "they are known";
}

TEST_F(OnboardingViewModelTest, OneDeviceOfEitherKindPutsTheMarkOnTheRow) {
    const auto hasEither = [this](bool hasCamera, bool hasMicrophone) {
        capture.cameras.clear();
        if (hasCamera) {
            capture.cameras = {{"camera", "Camera"}};
        }
        audio.isInputDeviceThere = hasMicrophone;
        startAt(OnboardingStep::compatibility());
        model->checkCompatibility();
        EXPECT_TRUE(model->isCompatible());
        return model->hasCameraOrMicrophone();
    };
    EXPECT_FALSE(hasEither(false, false));
    EXPECT_TRUE(hasEither(true, false));
    EXPECT_TRUE(hasEither(false, true));
    EXPECT_TRUE(hasEither(true, true));
}

TEST_F(OnboardingViewModelTest, NamesTheCallApps) {
    workspace.urls = {{"us.zoom.xos", "/a"}, {"com.hnc.Discord", "/b"}};
    workspace.handlers["https"] = "/browser";
    startAt(OnboardingStep::compatibility());
    EXPECT_EQ(model->videoApps(), "");
    model->checkCompatibility();
    EXPECT_TRUE(model->hasVideoApps());
    EXPECT_EQ(model->videoApps(), "Zoom · Discord · Meet");
}

TEST_F(OnboardingViewModelTest, SaysWhyAppsCannotBeHidden) {
    struct Case {
        std::optional<Platform::HidingObstacle> obstacle;
        std::string text;
    };
    const auto sentence = [](Curtain::PlatformKey key) {
        return std::string(Curtain::PlatformWording::string(key, "en"));
    };
    const std::vector<Case> cases{
        {std::nullopt, ""},
        {Platform::HidingObstacle::waylandSession, sentence(Curtain::PlatformKey::noHidingOnWayland)},
        {Platform::HidingObstacle::noWindowManager, sentence(Curtain::PlatformKey::noWindowManager)},
        {Platform::HidingObstacle::nextSessionNeeded, sentence(Curtain::PlatformKey::logOutOnce)},
        {Platform::HidingObstacle::windowManagerIgnoresHiding,
         sentence(Curtain::PlatformKey::windowManagerIgnoresHiding)},
        {Platform::HidingObstacle::extensionMissing, sentence(Curtain::PlatformKey::extensionMissing)},
        {Platform::HidingObstacle::extensionOff, sentence(Curtain::PlatformKey::extensionOff)},
        {Platform::HidingObstacle::extensionFails, sentence(Curtain::PlatformKey::extensionFails)}};
    system.version = 0;
    for (const auto& [obstacle, text] : cases) {
        system.obstacle = obstacle;
        startAt(OnboardingStep::compatibility());
        model->checkCompatibility();
        EXPECT_FALSE(model->isCompatible());
        EXPECT_EQ(model->hidingObstacle().toStdString(), text);
    }
}

TEST_F(OnboardingViewModelTest, SaysWhatHelpsAgainstIt) {
    using Platform::HidingObstacle;
    const std::vector<std::pair<HidingObstacle, std::string>> remedies{
        {HidingObstacle::waylandSession,
         "At the login screen, choose a session marked X11 or Xorg, or a desktop such as Xfce."},
        {HidingObstacle::noWindowManager,
         "Start a window manager, or choose a complete desktop at the login screen."},
        {HidingObstacle::windowManagerIgnoresHiding,
         "At the login screen, choose a desktop such as Xfce, MATE or LXQt."},
        {HidingObstacle::extensionMissing,
         "Install Curtain from its package, then log out and back in once."},
        {HidingObstacle::extensionOff, "Switch it on here or in the Extensions app."},
        {HidingObstacle::extensionFails,
         "At the login screen, choose a session marked X11 or Xorg, or a desktop such as Xfce."},
        {HidingObstacle::nextSessionNeeded, ""}};
    system.version = 0;
    for (const auto& [obstacle, remedy] : remedies) {
        system.obstacle = obstacle;
        startAt(OnboardingStep::compatibility());
        EXPECT_EQ(model->hidingRemedy(), "");
        model->checkCompatibility();
        EXPECT_EQ(model->hidingRemedy().toStdString(), remedy);
    }
}

TEST_F(OnboardingViewModelTest, SwitchesTheExtensionOnAndLooksAnew) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::extensionMissing;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    model->checkCompatibility();
    EXPECT_FALSE(model->canSwitchExtensionOn());
    system.obstacle = Platform::HidingObstacle::extensionOff;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    model->checkCompatibility();
    EXPECT_TRUE(model->canSwitchExtensionOn());
    EXPECT_EQ(system.switchedOn, 0);
    model->switchExtensionOn();
    EXPECT_EQ(system.switchedOn, 1);
    EXPECT_FALSE(model->canSwitchExtensionOn());
    EXPECT_FALSE(model->isCompatibilityKnown());
    system.version = 14;
    system.obstacle.reset();
    mainQueue.advance(2.0);
    EXPECT_TRUE(model->isCompatible());
}

TEST_F(OnboardingViewModelTest, NoticesThatTheExtensionIsSwitchedOnElsewhere) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::extensionOff;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    mainQueue.advance(5.0);
    EXPECT_TRUE(model->canSwitchExtensionOn());
    system.version = 14;
    system.obstacle.reset();
    mainQueue.advance(2.0);
    EXPECT_TRUE(model->isCompatible());
    EXPECT_FALSE(model->canSwitchExtensionOn());
}

TEST_F(OnboardingViewModelTest, LooksAnewWhenTheWindowIsBack) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::extensionOff;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    model->windowWillClose();
    system.version = 14;
    system.obstacle.reset();
    mainQueue.advance(5.0);
    EXPECT_FALSE(model->isCompatible());
    model->windowDidShow();
    EXPECT_TRUE(model->isCompatible());
}

TEST_F(OnboardingViewModelTest, SaysThatTheExtensionIsStillOff) {
    system.version = 0;
    system.obstacle = system.obstacleOnceSwitchedOn = Platform::HidingObstacle::extensionOff;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    model->checkCompatibility();
    model->switchExtensionOn();
    EXPECT_TRUE(model->isCompatibilityKnown());
    EXPECT_FALSE(model->isCompatible());
    EXPECT_TRUE(model->canSwitchExtensionOn());
}

TEST_F(OnboardingViewModelTest, WaitsForASessionThatHasNotAnsweredYet) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::notKnownYet;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    EXPECT_FALSE(model->isCompatibilityKnown());
    EXPECT_EQ(model->hidingObstacle(), "Whether apps can be hidden in this session isn't known yet.");
    mainQueue.advance(5.0);
    EXPECT_FALSE(model->isCompatibilityKnown());
    system.version = 14;
    system.obstacle.reset();
    mainQueue.advance(2.0);
    EXPECT_TRUE(model->isCompatible());
    EXPECT_EQ(model->hidingObstacle(), "");
}

TEST_F(OnboardingViewModelTest, AsksNobodyOnceItsWindowIsClosedAndAnewWhenItIsShown) {
    system.obstacle = Platform::HidingObstacle::notKnownYet;
    startAt(OnboardingStep::compatibility());
    model->windowDidShow();
    model->windowWillClose();
    system.obstacle.reset();
    mainQueue.advance(5.0);
    EXPECT_FALSE(model->isCompatibilityKnown());
    model->windowDidShow();
    EXPECT_TRUE(model->isCompatible());
}

TEST_F(OnboardingViewModelTest, AskingOnAPageWithoutAPermissionDoesNothing) {
    for (const auto& step :
         {OnboardingStep::welcome(), OnboardingStep::compatibility(), OnboardingStep::summary()}) {
        startAt(step);
        model->requestCurrentPermission();
        settle();
        EXPECT_THAT(model->status(), IsEmpty());
        EXPECT_EQ(changes, 0);
    }
    EXPECT_THAT(authorization.asked, IsEmpty());
    EXPECT_THAT(files.listedFolders, IsEmpty());
}

TEST_F(OnboardingViewModelTest, DesktopIsGrantedWithItsCountOnTheMainThread) {
    startAt(PermissionKind::desktop);
    model->requestCurrentPermission();
    workQueues.runAll();
    EXPECT_THAT(model->status(), IsEmpty());
    EXPECT_EQ(model->desktopFileCount(), 0);
    mainQueue.runReady();
    EXPECT_THAT(model->status(), ElementsAre(Pair(PermissionKind::desktop, PermissionStatus::granted)));
    EXPECT_EQ(model->desktopFileCount(), 3);
    EXPECT_EQ(model->desktopSummary(), "Desktop · 3 files to hide");
    EXPECT_TRUE(model->isGranted());
    EXPECT_THAT(runner.runs, IsEmpty()) << "the count needs no answer about the icons, which blocks";
}

TEST_F(OnboardingViewModelTest, DesktopIsGrantedEvenWhenItCannotBeRead) {
    files.unreadableFolders = {"/home/ada/Desktop"};
    startAt(PermissionKind::desktop);
    model->requestCurrentPermission();
    settle();
    EXPECT_EQ(statusOf(PermissionKind::desktop), PermissionStatus::granted);
    EXPECT_EQ(model->desktopFileCount(), 0);
}

TEST_F(OnboardingViewModelTest, DesktopIsGrantedEvenWhenThereIsNone) {
    folders.desktopFolder.reset();
    startAt(PermissionKind::desktop);
    model->requestCurrentPermission();
    settle();
    EXPECT_EQ(statusOf(PermissionKind::desktop), PermissionStatus::granted);
}

TEST_F(OnboardingViewModelTest, DesktopAnswerMayComeOnALaterPage) {
    startAt(PermissionKind::desktop);
    model->requestCurrentPermission();
    model->advance();
    settle();
    EXPECT_THAT(model->status(), ElementsAre(Pair(PermissionKind::desktop, PermissionStatus::granted)));
    EXPECT_FALSE(model->isGranted()) << "the microphone's page";
}

TEST_F(OnboardingViewModelTest, MicrophoneIsGrantedUnlessItIsRefused) {
    const std::vector<std::pair<AuthorizationStatus, PermissionStatus>> expectations{
        {AuthorizationStatus::restricted, PermissionStatus::denied},
        {AuthorizationStatus::denied, PermissionStatus::denied},
        {AuthorizationStatus::authorized, PermissionStatus::granted},
        {unheardOf, PermissionStatus::granted},
    };
    for (const auto& [answer, expected] : expectations) {
        authorization.statuses[MediaType::audio] = answer;
        startAt(PermissionKind::microphone);
        model->requestCurrentPermission();
        EXPECT_EQ(statusOf(PermissionKind::microphone), expected) << static_cast<int>(answer);
        EXPECT_THAT(authorization.asked, IsEmpty());
    }
}

TEST_F(OnboardingViewModelTest, MicrophoneIsAskedForFirstWhenItIsNotDetermined) {
    for (const bool isGranted : {true, false}) {
        authorization.statuses[MediaType::audio] = AuthorizationStatus::notDetermined;
        startAt(PermissionKind::microphone);
        model->requestCurrentPermission();
        EXPECT_THAT(authorization.asked, ElementsAre(MediaType::audio));
        EXPECT_FALSE(isMicrophoneOn());
        EXPECT_THAT(model->status(), IsEmpty());
        authorization.answer(isGranted);
        EXPECT_THAT(model->status(), IsEmpty()) << "not on the answer's thread";
        settle();
        EXPECT_EQ(statusOf(PermissionKind::microphone),
                  isGranted ? PermissionStatus::granted : PermissionStatus::denied);
        EXPECT_EQ(isMicrophoneOn(), isGranted);
        micMonitor.stop();
    }
}

TEST_F(OnboardingViewModelTest, MicrophoneWhoseQuestionWasDismissedIsGranted) {
    authorization.statuses[MediaType::audio] = AuthorizationStatus::notDetermined;
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    authorization.answer(false);
    authorization.statuses[MediaType::audio] = AuthorizationStatus::notDetermined;
    settle();
    EXPECT_EQ(statusOf(PermissionKind::microphone), PermissionStatus::granted);
}

TEST_F(OnboardingViewModelTest, GrantedMicrophoneIsLive) {
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    EXPECT_TRUE(isMicrophoneOn());
    EXPECT_FALSE(isCameraOn());
    EXPECT_TRUE(model->isGranted());
}

TEST_F(OnboardingViewModelTest, CameraIsGrantedOnlyWhenItIsAuthorized) {
    const std::vector<std::pair<AuthorizationStatus, PermissionStatus>> expectations{
        {AuthorizationStatus::restricted, PermissionStatus::denied},
        {AuthorizationStatus::denied, PermissionStatus::denied},
        {AuthorizationStatus::authorized, PermissionStatus::granted},
        {unheardOf, PermissionStatus::denied},
    };
    for (const auto& [answer, expected] : expectations) {
        authorization.statuses[MediaType::video] = answer;
        startAt(PermissionKind::camera);
        model->requestCurrentPermission();
        EXPECT_EQ(statusOf(PermissionKind::camera), expected) << static_cast<int>(answer);
        EXPECT_EQ(isCameraOn(), expected == PermissionStatus::granted);
        EXPECT_THAT(authorization.asked, IsEmpty());
        cameraManager.stop();
    }
}

TEST_F(OnboardingViewModelTest, CameraIsAskedForFirstWhenItIsNotDetermined) {
    for (const bool isGranted : {true, false}) {
        authorization.statuses[MediaType::video] = AuthorizationStatus::notDetermined;
        startAt(PermissionKind::camera);
        model->requestCurrentPermission();
        EXPECT_THAT(authorization.asked, ElementsAre(MediaType::video));
        EXPECT_THAT(model->status(), IsEmpty());
        authorization.answer(isGranted);
        EXPECT_THAT(model->status(), IsEmpty()) << "not on the answer's thread";
        settle();
        EXPECT_EQ(statusOf(PermissionKind::camera),
                  isGranted ? PermissionStatus::granted : PermissionStatus::denied);
        EXPECT_EQ(isCameraOn(), isGranted);
        cameraManager.stop();
    }
}

TEST_F(OnboardingViewModelTest, CameraWhoseQuestionWasDismissedIsDenied) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::notDetermined;
    startAt(PermissionKind::camera);
    model->requestCurrentPermission();
    authorization.answer(false);
    authorization.statuses[MediaType::video] = AuthorizationStatus::notDetermined;
    settle();
    EXPECT_EQ(statusOf(PermissionKind::camera), PermissionStatus::denied);
    EXPECT_FALSE(isCameraOn());
    EXPECT_THAT(authorization.asked, IsEmpty()) << "asked once";
}

TEST_F(OnboardingViewModelTest, TheDefaultCameraIsShown) {
    capture.cameras = {{"first", "First"}, {"second", "Second"}};
    capture.defaultCamera = capture.cameras.at(1);
    startAt(PermissionKind::camera);
    EXPECT_FALSE(model->hasPreview());
    model->requestCurrentPermission();
    EXPECT_EQ(cameraManager.activeDeviceID(), "second");
    EXPECT_TRUE(model->hasPreview());
    EXPECT_EQ(model->camera(), &cameraManager);
}

TEST_F(OnboardingViewModelTest, WithoutACameraThePermissionIsGrantedAllTheSame) {
    capture.cameras.clear();
    startAt(PermissionKind::camera);
    model->requestCurrentPermission();
    EXPECT_TRUE(model->isGranted());
    EXPECT_FALSE(model->hasPreview());
    EXPECT_FALSE(isCameraOn());
}

TEST_F(OnboardingViewModelTest, SaysWhatKeepsALiveAreaDark) {
    capture.cameras.clear();
    audio.inputFormat = {0, 0};
    startAt(PermissionKind::microphone);
    EXPECT_EQ(model->deviceProblem(), "");
    model->requestCurrentPermission();
    settle();
    EXPECT_EQ(model->deviceProblem(), "No input device");
    model->advance();
    EXPECT_EQ(model->deviceProblem(), "");
    model->requestCurrentPermission();
    EXPECT_EQ(model->deviceProblem(), "No camera found");
    model->advance();
    EXPECT_EQ(model->deviceProblem(), "");
}

TEST_F(OnboardingViewModelTest, SaysOfWhatCouldNotBeCheckedThatItWasNot) {
    authorization.statuses[MediaType::audio] = unheardOf;
    startAt(PermissionKind::microphone);
    EXPECT_EQ(model->microphoneGap(), "") << "nobody has asked";
    EXPECT_EQ(model->cameraGap(), "");
    model->requestCurrentPermission();
    settle();
    EXPECT_EQ(model->deviceProblem(), "Not checked yet");
    model->advance();
    model->sessionDidLock();
    model->requestCurrentPermission();
    EXPECT_EQ(model->deviceProblem(), "Not checked yet");
    EXPECT_EQ(model->microphoneGap(), "Not checked yet");
    EXPECT_EQ(model->cameraGap(), "Not checked yet");
    model->sessionDidUnlock();
    EXPECT_EQ(model->deviceProblem(), "");
    EXPECT_EQ(model->cameraGap(), "");
}

TEST_F(OnboardingViewModelTest, SaysOfWhatIsRefusedLaterThatItIs) {
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    settle();
    model->advance();
    model->requestCurrentPermission();
    ASSERT_EQ(model->microphoneGap(), "");
    ASSERT_EQ(model->cameraGap(), "");
    authorization.statuses = {{MediaType::audio, AuthorizationStatus::denied},
                              {MediaType::video, AuthorizationStatus::denied}};
    micMonitor.start();
    cameraManager.start(std::nullopt);
    settle();
    EXPECT_NE(model->microphoneGap(), "");
    EXPECT_NE(model->cameraGap(), "");
}

TEST_F(OnboardingViewModelTest, AMicrophoneThatComesAndGoesIsFollowed) {
    const auto format = std::exchange(audio.inputFormat, {0, 0});
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    settle();
    ASSERT_EQ(model->deviceProblem(), "No input device");
    audio.inputFormat = format;
    audio.inputDeviceObservers.tell(true);
    EXPECT_TRUE(isMicrophoneOn());
    audio.engine().feedSamples(std::vector<float>(1024));
    settle();
    EXPECT_EQ(model->deviceProblem(), "");
    audio.inputDeviceObservers.tell(false);
    settle();
    EXPECT_EQ(model->deviceProblem(), "No input device");
}

TEST_F(OnboardingViewModelTest, ACameraThatComesAndGoesIsFollowed) {
    const auto cameras = std::exchange(capture.cameras, {});
    startAt(PermissionKind::camera);
    model->requestCurrentPermission();
    settle();
    ASSERT_EQ(model->deviceProblem(), "No camera found");
    capture.cameras = cameras;
    capture.tellOfDevices();
    EXPECT_TRUE(isCameraOn());
    EXPECT_TRUE(model->hasPreview());
    EXPECT_EQ(model->deviceProblem(), "");
    capture.cameras.clear();
    capture.tellOfDevices();
    settle();
    EXPECT_EQ(model->deviceProblem(), "No camera found");
}

TEST_F(OnboardingViewModelTest, StatusIsThatOfTheCurrentPage) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    EXPECT_TRUE(model->isGranted());
    model->advance();
    EXPECT_FALSE(model->isGranted());
    EXPECT_FALSE(model->isDenied());
    model->requestCurrentPermission();
    EXPECT_FALSE(model->isGranted());
    EXPECT_TRUE(model->isDenied());
    model->advance();
    EXPECT_FALSE(model->isGranted());
    EXPECT_FALSE(model->isDenied());
}

TEST_F(OnboardingViewModelTest, AnswersAfterTheModelIsGoneDoNothing) {
    authorization.statuses = {{MediaType::audio, AuthorizationStatus::notDetermined},
                              {MediaType::video, AuthorizationStatus::notDetermined}};
    startAt(PermissionKind::desktop);
    for (int page = 0; page < 3; ++page) {
        model->requestCurrentPermission();
        model->advance();
    }
    model.reset();
    authorization.answer(true);
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(OnboardingViewModelTest, ClosingStopsCameraAndMicrophone) {
    turnBothOn();
    ASSERT_TRUE(isCameraOn());
    ASSERT_TRUE(isMicrophoneOn());
    model->windowWillClose();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(OnboardingViewModelTest, TheLiveAreaRestsWhileTheSessionIsLocked) {
    startAt(PermissionKind::camera);
    model->windowDidShow();
    model->requestCurrentPermission();
    ASSERT_TRUE(isCameraOn());
    micMonitor.start();
    model->sessionDidLock();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    model->sessionDidUnlock();
    EXPECT_TRUE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn()) << "it belongs to another page";
}

TEST_F(OnboardingViewModelTest, AnAnswerBehindALockStartsNothingUntilItsEnd) {
    authorization.statuses = {{MediaType::video, AuthorizationStatus::notDetermined}};
    startAt(PermissionKind::camera);
    model->requestCurrentPermission();
    model->sessionDidLock();
    authorization.answer(true);
    EXPECT_FALSE(isCameraOn());
    EXPECT_EQ(statusOf(PermissionKind::camera), PermissionStatus::granted);
    model->sessionDidUnlock();
    EXPECT_TRUE(isCameraOn());
}

TEST_F(OnboardingViewModelTest, AWindowThatOpensBehindALockShowsNothingLiveUntilItsEnd) {
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    model->windowWillClose();
    model->sessionDidLock();
    model->windowDidShow();
    EXPECT_FALSE(isMicrophoneOn());
    model->sessionDidUnlock();
    EXPECT_TRUE(isMicrophoneOn());
}

TEST_F(OnboardingViewModelTest, ALockTouchesNothingOnceTheWindowIsClosed) {
    startAt(PermissionKind::camera);
    model->requestCurrentPermission();
    model->windowWillClose();
    turnBothOn();
    model->sessionDidLock();
    EXPECT_TRUE(isCameraOn()) << "somebody else has it";
    EXPECT_TRUE(isMicrophoneOn());
    cameraManager.stop();
    model->sessionDidUnlock();
    EXPECT_FALSE(isCameraOn());
}

TEST_F(OnboardingViewModelTest, AnAnswerAfterClosingIsKeptButStartsNothing) {
    authorization.statuses = {{MediaType::audio, AuthorizationStatus::notDetermined},
                              {MediaType::video, AuthorizationStatus::notDetermined}};
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    model->advance();
    model->requestCurrentPermission();
    model->windowWillClose();
    authorization.answer(true);
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    EXPECT_EQ(statusOf(PermissionKind::microphone), PermissionStatus::granted);
    EXPECT_EQ(statusOf(PermissionKind::camera), PermissionStatus::granted);
    model->windowDidShow();
    EXPECT_TRUE(isCameraOn());
}

TEST_F(OnboardingViewModelTest, ComingBackStartsTheLiveAreaOfThePageAgain) {
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    model->windowWillClose();
    ASSERT_FALSE(isMicrophoneOn());
    model->windowDidShow();
    EXPECT_TRUE(isMicrophoneOn());
    EXPECT_FALSE(isCameraOn());

    model->advance();
    model->requestCurrentPermission();
    model->windowWillClose();
    ASSERT_FALSE(isCameraOn());
    model->windowDidShow();
    EXPECT_TRUE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(OnboardingViewModelTest, ComingBackStartsNothingThatWasNotGranted) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    startAt(PermissionKind::microphone);
    model->windowDidShow();
    EXPECT_FALSE(isMicrophoneOn());
    model->advance();
    model->requestCurrentPermission();
    model->windowWillClose();
    model->windowDidShow();
    EXPECT_FALSE(isCameraOn());
    EXPECT_TRUE(model->isDenied());
    startAt(OnboardingStep::summary());
    model->windowDidShow();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(OnboardingViewModelTest, OpensThePrivacyPageOfTheSettings) {
    startAt(PermissionKind::camera);
    model->openSystemSettings();
    EXPECT_THAT(urlOpener.opened, ElementsAre("x-apple.systempreferences:com.apple.preference.security"));
    EXPECT_EQ(model->settingsProblem(), "");
}

TEST_F(OnboardingViewModelTest, SaysThatThereIsNoSettingsPageUntilThereIsOneOrThePageIsLeft) {
    const auto sentence =
        std::string(Curtain::PlatformWording::string(Curtain::PlatformKey::noPermissionPage, "en"));
    urlOpener.canOpen = false;
    startAt(PermissionKind::microphone);
    model->openSystemSettings();
    EXPECT_EQ(model->settingsProblem().toStdString(), sentence);
    urlOpener.canOpen = true;
    model->openSystemSettings();
    EXPECT_EQ(model->settingsProblem(), "");
    urlOpener.canOpen = false;
    model->openSystemSettings();
    model->advance();
    EXPECT_EQ(model->settingsProblem(), "");
}

TEST_F(OnboardingViewModelTest, WhatIsGrantedLaterIsSeenOnEveryPageThatFollows) {
    authorization.statuses = {{MediaType::audio, AuthorizationStatus::denied},
                              {MediaType::video, AuthorizationStatus::restricted}};
    startAt(PermissionKind::microphone);
    model->requestCurrentPermission();
    model->advance();
    model->requestCurrentPermission();
    EXPECT_TRUE(model->isForbidden());
    model->advance();
    ASSERT_EQ(model->page(), "summary");
    EXPECT_NE(model->cameraGap(), "");
    EXPECT_NE(model->microphoneGap(), "");
    model->lookAgain();
    EXPECT_NE(model->cameraGap(), "");

    authorization.statuses[MediaType::video] = AuthorizationStatus::authorized;
    model->lookAgain();
    EXPECT_EQ(statusOf(PermissionKind::camera), PermissionStatus::granted);
    EXPECT_EQ(model->cameraGap(), "");
    EXPECT_NE(model->microphoneGap(), "");
    authorization.statuses[MediaType::audio] = AuthorizationStatus::authorized;
    model->lookAgain();
    EXPECT_EQ(statusOf(PermissionKind::microphone), PermissionStatus::granted);
    ASSERT_TRUE(isMicrophoneOn());
    audio.engine().feedSamples(std::vector<float>(1024, 0.02F));
    settle();
    EXPECT_EQ(model->microphoneGap(), "");
}

TEST_F(OnboardingViewModelTest, FinishingIsTheOwnersBusiness) {
    int finished = 0;
    model->onFinish = [&] { ++finished; };
    model->finish();
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(model->page(), "welcome");
}

TEST_F(OnboardingViewModelTest, FinishingMayReplaceTheAction) {
    int finished = 0;
    model->onFinish = [&] {
        model->onFinish = [] {};
        ++finished;
    };
    model->finish();
    EXPECT_EQ(finished, 1);
}

TEST_F(OnboardingViewModelTest, TextsAreThisPlatformsInTheModelsLanguage) {
    for (const auto* const lang : {"en", "ar", "ru"}) {
        const auto translated = makeModel("en");
        translated->setLang(lang);
        auto shown = 0;
        for (const auto key : CurtainCore::allCases<CurtainCore::LocKey>()) {
            const auto name = std::string(CurtainCore::rawValue(key));
            if (const auto text = translated->texts()->property(name.c_str()); text.isValid()) {
                EXPECT_EQ(text.toString().toStdString(), Curtain::PlatformWording::string(key, lang));
                ++shown;
            }
        }
        EXPECT_GT(shown, 50);
    }
}

TEST_F(OnboardingViewModelTest, OnlyArabicIsLaidOutFromRightToLeft) {
    for (const auto* const lang : {"en", "es", "zh", "hi", "pt", "fr", "ru"}) {
        EXPECT_FALSE(makeModel(lang)->isRightToLeft()) << lang;
    }
    EXPECT_TRUE(makeModel("ar")->isRightToLeft());
}

} // namespace
