#include "Curtain/CameraPreviewManager.h"

#include "Curtain/PhotoCaptureDelegate.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace {

using Curtain::CameraChoice;
using Curtain::CameraPreviewManager;
using Curtain::CameraStatus;
using Platform::AuthorizationStatus;
using Platform::CaptureDevice;
using Platform::MediaType;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::bytesOf;

const CaptureDevice front{"front", "Front Camera"};
const CaptureDevice desk{"desk", "Desk Camera"};

struct CameraPreviewManagerTest : testing::Test {
    TestSupport::FakeCaptureServices capture;
    TestSupport::FakeMediaAuthorization authorization;
    TestSupport::HandDrivenQueue mainQueue;
    TestSupport::HandDrivenWorkQueues workQueues;
    CameraPreviewManager::Services services{capture, authorization, mainQueue, workQueues};
    std::unique_ptr<CameraPreviewManager> manager = std::make_unique<CameraPreviewManager>(services);
    int changes = 0;

    CameraPreviewManagerTest() {
        capture.cameras = {front, desk};
        QObject::connect(manager.get(), &CameraPreviewManager::changed, [this] { ++changes; });
    }

    void setStatus(AuthorizationStatus status) { authorization.statuses[MediaType::video] = status; }

    void startAndRun(const std::optional<std::string>& deviceID = std::nullopt) {
        manager->start(deviceID);
        workQueues.runAll();
    }

    void stopAndRun() {
        manager->stop();
        workQueues.runAll();
    }

    /// Ends the captures that wait as the platform does: on a thread of its own.
    int finishPhoto(const std::optional<std::vector<std::byte>>& data) {
        int alive = 0;
        std::thread([&] { alive = capture.photoOutput->finish(data); }).join();
        return alive;
    }
};

TEST_F(CameraPreviewManagerTest, BeginsUnavailableAndTouchesNothing) {
    EXPECT_EQ(manager->status(), CameraStatus::unavailable);
    EXPECT_FALSE(manager->mirrored());
    EXPECT_EQ(manager->capturedPhoto(), nullptr);
    EXPECT_EQ(manager->capturedData(), std::nullopt);
    EXPECT_EQ(manager->activeDeviceID(), std::nullopt);
    EXPECT_EQ(manager->session(), capture.session);
    EXPECT_THAT(capture.session->calls, IsEmpty());
    EXPECT_THAT(authorization.asked, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, AuthorizedStartConfiguresPublishesAndRuns) {
    manager->start("desk");
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
    EXPECT_GT(changes, 0);
    EXPECT_THAT(capture.session->calls, ElementsAre("begin", "add desk", "add output", "commit"));
    EXPECT_FALSE(capture.session->isRunning()) << "starting blocks, so it must not happen on the main thread";
    workQueues.runAll();
    EXPECT_TRUE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, RestrictedAndDeniedGiveNoPermission) {
    for (const auto status : {AuthorizationStatus::restricted, AuthorizationStatus::denied}) {
        setStatus(status);
        startAndRun();
        EXPECT_EQ(manager->status(), CameraStatus::noPermission);
        EXPECT_EQ(manager->isForbidden(), status == AuthorizationStatus::restricted);
    }
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, WhyThereIsNoPermissionIsKnownFromTheSameLookAsTheStatus) {
    setStatus(AuthorizationStatus::restricted);
    startAndRun();
    setStatus(AuthorizationStatus::authorized);
    EXPECT_EQ(manager->status(), CameraStatus::noPermission);
    EXPECT_TRUE(manager->isForbidden());
    startAndRun();
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_FALSE(manager->isForbidden());
}

TEST_F(CameraPreviewManagerTest, UnknownAuthorizationGivesUnavailable) {
    setStatus(AuthorizationStatus::denied);
    startAndRun();
    setStatus(static_cast<AuthorizationStatus>(17));
    startAndRun();
    EXPECT_EQ(manager->status(), CameraStatus::unavailable);
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, UndeterminedAsksAndRunsWhenGranted) {
    setStatus(AuthorizationStatus::notDetermined);
    startAndRun("desk");
    EXPECT_THAT(authorization.asked, ElementsAre(MediaType::video));
    EXPECT_EQ(manager->status(), CameraStatus::unavailable);

    std::thread([&] { authorization.answer(true); }).join();
    EXPECT_EQ(manager->status(), CameraStatus::unavailable) << "the answer must wait for the main thread";
    mainQueue.runReady();
    workQueues.runAll();
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
    EXPECT_TRUE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, UndeterminedAndRefusedGivesNoPermission) {
    setStatus(AuthorizationStatus::notDetermined);
    startAndRun();
    authorization.answer(false);
    mainQueue.runReady();
    EXPECT_EQ(manager->status(), CameraStatus::noPermission);
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, AnswerAfterTheManagerIsGoneDoesNothing) {
    setStatus(AuthorizationStatus::notDetermined);
    startAndRun();
    manager.reset();
    authorization.answer(true);
    mainQueue.runReady();
    workQueues.runAll();
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, PermissionGrantedAfterTheViewHasClosedLeavesTheCameraOff) {
    setStatus(AuthorizationStatus::notDetermined);
    startAndRun();
    stopAndRun();
    authorization.answer(true);
    mainQueue.runReady();
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
    startAndRun();
    EXPECT_TRUE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, WithoutAnyCameraNothingIsConfigured) {
    capture.cameras.clear();
    startAndRun("desk");
    EXPECT_EQ(manager->status(), CameraStatus::noCameraFound);
    EXPECT_EQ(manager->activeDeviceID(), std::nullopt);
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, CameraThatGoesMissingLeavesTheSessionAsItIs) {
    startAndRun("desk");
    capture.cameras.clear();
    startAndRun("desk");
    EXPECT_EQ(manager->status(), CameraStatus::noCameraFound);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
    EXPECT_TRUE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, ChosenCameraIsTaken) {
    capture.defaultCamera = front;
    EXPECT_EQ(CameraPreviewManager::device(capture, "desk"), desk);
}

TEST_F(CameraPreviewManagerTest, UnknownCameraFallsBackToTheDefault) {
    capture.defaultCamera = desk;
    startAndRun("unplugged");
    EXPECT_EQ(manager->activeDeviceID(), "desk");
}

TEST_F(CameraPreviewManagerTest, UnknownCameraWithoutADefaultFallsBackToTheFirst) {
    startAndRun("unplugged");
    EXPECT_EQ(manager->activeDeviceID(), "front");
}

TEST_F(CameraPreviewManagerTest, NoChoiceTakesTheDefaultThenTheFirstThenNone) {
    EXPECT_EQ(CameraPreviewManager::device(capture, std::nullopt), front);
    capture.defaultCamera = desk;
    EXPECT_EQ(CameraPreviewManager::device(capture, std::nullopt), desk);
    capture.defaultCamera.reset();
    capture.cameras.clear();
    EXPECT_EQ(CameraPreviewManager::device(capture, std::nullopt), std::nullopt);
}

TEST_F(CameraPreviewManagerTest, FirstOfTwoCamerasWithTheSameIdentifierIsTaken) {
    capture.cameras = {front, {"desk", "One"}, {"desk", "Two"}};
    EXPECT_EQ(CameraPreviewManager::device(capture, "desk")->localizedName, "One");
}

TEST_F(CameraPreviewManagerTest, DefaultCameraThatIsNotListedIsTakenAllTheSame) {
    capture.cameras.clear();
    capture.defaultCamera = desk;
    startAndRun();
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
}

TEST_F(CameraPreviewManagerTest, StartingTwiceWithTheSameCameraDoesNotTouchTheConfiguration) {
    startAndRun("desk");
    capture.session->calls.clear();
    startAndRun("desk");
    EXPECT_THAT(capture.session->calls, IsEmpty());
    EXPECT_EQ(manager->status(), CameraStatus::available);
}

TEST_F(CameraPreviewManagerTest, RestartAfterAStopOnlyStartsTheSession) {
    startAndRun("desk");
    stopAndRun();
    capture.session->calls.clear();
    startAndRun("desk");
    EXPECT_THAT(capture.session->calls, ElementsAre("start"));
}

TEST_F(CameraPreviewManagerTest, SwitchingReplacesTheInputAndAddsTheOutputOnlyOnce) {
    startAndRun("front");
    capture.session->calls.clear();
    startAndRun("desk");
    EXPECT_THAT(capture.session->calls, ElementsAre("begin", "remove front", "add desk", "commit"));
    ASSERT_EQ(capture.session->inputs().size(), 1U);
    EXPECT_EQ(capture.session->inputs().front()->device(), desk);
    EXPECT_EQ(capture.session->outputs().size(), 1U);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
    EXPECT_TRUE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, ReconfigurationRemovesEveryInput) {
    capture.session->addInput(std::make_shared<TestSupport::FakeCaptureInput>(front));
    capture.session->addInput(std::make_shared<TestSupport::FakeCaptureInput>(front));
    startAndRun("desk");
    ASSERT_EQ(capture.session->inputs().size(), 1U);
    EXPECT_EQ(capture.session->inputs().front()->device(), desk);
}

TEST_F(CameraPreviewManagerTest, CameraThatCannotBeUsedCountsAsAvailable) {
    capture.broken = {"desk"};
    startAndRun("desk");
    EXPECT_THAT(capture.session->calls, ElementsAre("begin", "add output", "commit", "start"));
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
}

TEST_F(CameraPreviewManagerTest, WhatInterruptsTheCameraIsPublishedWhileItIsWanted) {
    int findings = 0;
    QObject::connect(manager.get(), &CameraPreviewManager::findingChanged, [&] { ++findings; });
    startAndRun();
    changes = 0;
    capture.session->interrupt(Platform::CaptureInterruption::noPictures);
    EXPECT_EQ(manager->interruption(), Platform::CaptureInterruption::noPictures);
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(findings, 1);
    stopAndRun();
    EXPECT_EQ(manager->interruption(), std::nullopt);
}

TEST_F(CameraPreviewManagerTest, AnInputThatCouldNotBeMadeIsMadeAtTheNextOpening) {
    capture.broken = {"desk"};
    startAndRun("desk");
    stopAndRun();
    capture.broken.clear();
    capture.session->calls.clear();
    startAndRun("desk");
    EXPECT_THAT(capture.session->calls, ElementsAre("begin", "add desk", "commit", "start"));
}

TEST_F(CameraPreviewManagerTest, ACameraThatComesWhileNoneIsThereIsTaken) {
    capture.cameras.clear();
    startAndRun();
    ASSERT_EQ(manager->status(), CameraStatus::noCameraFound);
    int findings = 0;
    QObject::connect(manager.get(), &CameraPreviewManager::findingChanged, [&] { ++findings; });
    capture.cameras = {desk};
    capture.tellOfDevices();
    workQueues.runAll();
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
    EXPECT_TRUE(capture.session->isRunning());
    EXPECT_EQ(findings, 1);
}

TEST_F(CameraPreviewManagerTest, TheChosenCameraIsTakenWhenItComes) {
    capture.cameras = {front};
    startAndRun("desk");
    ASSERT_EQ(manager->activeDeviceID(), "front");
    capture.cameras = {front, desk};
    capture.tellOfDevices();
    EXPECT_EQ(manager->activeDeviceID(), "desk");
}

TEST_F(CameraPreviewManagerTest, NoOtherCameraIsTakenWhileSomebodyLooks) {
    startAndRun();
    ASSERT_EQ(manager->activeDeviceID(), "front");
    capture.session->calls.clear();
    capture.cameras = {desk};
    capture.tellOfDevices();
    workQueues.runAll();
    EXPECT_EQ(manager->activeDeviceID(), "front");
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, TheLastCameraThatGoesIsSaidAndComesBack) {
    capture.cameras = {front};
    startAndRun();
    int findings = 0;
    QObject::connect(manager.get(), &CameraPreviewManager::findingChanged, [&] { ++findings; });
    capture.cameras.clear();
    capture.tellOfDevices();
    EXPECT_EQ(manager->status(), CameraStatus::noCameraFound);
    capture.cameras = {front};
    capture.session->calls.clear();
    capture.tellOfDevices();
    workQueues.runAll();
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_THAT(capture.session->calls, IsEmpty()) << "it has been waited for";
    EXPECT_EQ(findings, 2);
}

TEST_F(CameraPreviewManagerTest, CamerasThatComeAndGoTurnNothingOn) {
    capture.cameras.clear();
    startAndRun();
    stopAndRun();
    capture.cameras = {front};
    capture.tellOfDevices();
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
    EXPECT_EQ(manager->status(), CameraStatus::noCameraFound);
    setStatus(AuthorizationStatus::denied);
    startAndRun();
    capture.tellOfDevices();
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
    EXPECT_EQ(manager->status(), CameraStatus::noPermission);
}

TEST_F(CameraPreviewManagerTest, APhotoIsDecodedWhereItArrives) {
    startAndRun();
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    ASSERT_NE(manager->capturedPhoto(), nullptr);
    EXPECT_NE(capture.decodedOn, std::thread::id());
    EXPECT_NE(capture.decodedOn, std::this_thread::get_id()) << "a large one takes its time";
}

TEST_F(CameraPreviewManagerTest, WhatTheSessionRefusesIsNotAdded) {
    capture.session->acceptsInputs = false;
    capture.session->acceptsOutputs = false;
    startAndRun("desk");
    EXPECT_THAT(capture.session->calls, ElementsAre("begin", "commit", "start"));
    EXPECT_EQ(manager->status(), CameraStatus::available);
}

TEST_F(CameraPreviewManagerTest, OutputThatWasRefusedIsTriedAgainWithTheNextCamera) {
    capture.session->acceptsOutputs = false;
    startAndRun("front");
    capture.session->acceptsOutputs = true;
    startAndRun("desk");
    EXPECT_EQ(capture.session->outputs().size(), 1U);
}

TEST_F(CameraPreviewManagerTest, StopKeepsEverythingButTheRunning) {
    startAndRun("desk");
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    manager->stop();
    EXPECT_TRUE(capture.session->isRunning()) << "stopping blocks, so it must not happen on the main thread";
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
    EXPECT_EQ(manager->status(), CameraStatus::available);
    EXPECT_EQ(manager->activeDeviceID(), "desk");
    EXPECT_EQ(manager->capturedData(), capture.image);
    EXPECT_EQ(capture.session->inputs().size(), 1U);
}

TEST_F(CameraPreviewManagerTest, StopOfAStoppedSessionDoesNotTouchIt) {
    stopAndRun();
    EXPECT_THAT(capture.session->calls, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, StopBeforeTheSessionHasStartedWins) {
    manager->start(std::nullopt);
    manager->stop();
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, StopWhileTheSessionStartsWins) {
    capture.session->onStarting = [this] { manager->stop(); };
    startAndRun();
    EXPECT_FALSE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, LastOfManyStartsAndStopsWins) {
    for (int turn = 0; turn < 5; ++turn) {
        manager->stop();
        manager->start(std::nullopt);
    }
    workQueues.runAll();
    EXPECT_TRUE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, DestroyedManagerTurnsTheCameraOff) {
    startAndRun();
    manager.reset();
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, DestroyedManagerDoesNotTurnTheCameraOn) {
    manager->start(std::nullopt);
    manager.reset();
    workQueues.runAll();
    EXPECT_FALSE(capture.session->isRunning());
}

TEST_F(CameraPreviewManagerTest, CaptureAsksForJpegAndPublishesOnTheMainThread) {
    startAndRun();
    changes = 0;
    manager->capture();
    EXPECT_THAT(capture.photoOutput->captures,
                ElementsAre(Platform::PhotoSettings{Platform::PhotoCodec::jpeg}));
    EXPECT_EQ(finishPhoto(capture.image), 1) << "the receiver keeps itself alive";
    EXPECT_EQ(manager->capturedPhoto(), nullptr);
    mainQueue.runReady();
    EXPECT_EQ(manager->capturedPhoto(), capture.decodedImage);
    EXPECT_EQ(manager->capturedData(), capture.image);
    EXPECT_EQ(changes, 1);
}

TEST_F(CameraPreviewManagerTest, WithoutJpegTheCamerasOwnSettingsAreUsed) {
    capture.photoOutput->codecs.clear();
    startAndRun();
    manager->capture();
    EXPECT_THAT(capture.photoOutput->captures, ElementsAre(Platform::PhotoSettings{}));
    EXPECT_EQ(finishPhoto(capture.image), 1) << "the receiver keeps itself alive until then";
}

TEST_F(CameraPreviewManagerTest, WithoutARunningSessionNoPhotoIsTaken) {
    manager->capture();
    manager->start(std::nullopt);
    manager->capture();
    EXPECT_THAT(capture.photoOutput->captures, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, CaptureRightAfterStopPublishesNothing) {
    startAndRun();
    manager->stop();
    manager->capture();
    workQueues.runAll();
    manager->capture();
    EXPECT_THAT(capture.photoOutput->captures, IsEmpty());
    EXPECT_EQ(manager->capturedPhoto(), nullptr);
}

TEST_F(CameraPreviewManagerTest, WithoutTheOutputInTheSessionNoPhotoIsTaken) {
    capture.session->acceptsOutputs = false;
    startAndRun();
    manager->capture();
    EXPECT_THAT(capture.photoOutput->captures, IsEmpty());
}

TEST_F(CameraPreviewManagerTest, FailedCapturesKeepTheEarlierPhoto) {
    startAndRun();
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    changes = 0;

    manager->capture();
    finishPhoto(std::nullopt);
    mainQueue.runReady();
    manager->capture();
    finishPhoto(bytesOf("no image"));
    mainQueue.runReady();
    manager->capture();
    finishPhoto(bytesOf(""));
    mainQueue.runReady();

    EXPECT_EQ(manager->capturedPhoto(), capture.decodedImage);
    EXPECT_EQ(manager->capturedData(), capture.image);
    EXPECT_EQ(changes, 0);
}

TEST_F(CameraPreviewManagerTest, NewPhotoReplacesTheEarlierOne) {
    startAndRun();
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    capture.image = bytesOf("another image");
    capture.decodedImage = TestSupport::plainPicture(1, 1, 1, 2, 3);
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    EXPECT_EQ(manager->capturedPhoto(), capture.decodedImage);
    EXPECT_EQ(manager->capturedData(), bytesOf("another image"));
}

TEST_F(CameraPreviewManagerTest, PhotoAfterTheManagerIsGoneDoesNothing) {
    startAndRun();
    manager->capture();
    manager.reset();
    finishPhoto(capture.image);
    mainQueue.runReady();
}

TEST_F(CameraPreviewManagerTest, ReceiverIsReleasedWithItsPhoto) {
    startAndRun();
    manager->capture();
    EXPECT_EQ(capture.photoOutput->aliveReceivers(), 1);
    finishPhoto(capture.image);
    mainQueue.runReady();
    EXPECT_EQ(finishPhoto(capture.image), 0);
}

TEST_F(CameraPreviewManagerTest, MirroringChangesOnlyThePreview) {
    startAndRun();
    capture.session->calls.clear();
    changes = 0;
    manager->setMirrored(true);
    EXPECT_TRUE(manager->mirrored());
    EXPECT_EQ(changes, 1);
    manager->setMirrored(true);
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(capture.session->calls, IsEmpty());
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    EXPECT_EQ(manager->capturedPhoto(), capture.decodedImage);
    EXPECT_EQ(manager->capturedData(), capture.image);
}

TEST_F(CameraPreviewManagerTest, ClearingForgetsPhotoAndData) {
    startAndRun();
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    changes = 0;
    manager->clearCapturedPhoto();
    EXPECT_EQ(manager->capturedPhoto(), nullptr);
    EXPECT_EQ(manager->capturedData(), std::nullopt);
    EXPECT_EQ(changes, 1);
    manager->clearCapturedPhoto();
    EXPECT_EQ(changes, 1);
}

TEST_F(CameraPreviewManagerTest, PhotoThatIsOnItsWayWhenPhotosAreClearedIsForgottenToo) {
    startAndRun();
    manager->capture();
    manager->clearCapturedPhoto();
    finishPhoto(capture.image);
    mainQueue.runReady();
    EXPECT_EQ(manager->capturedPhoto(), nullptr);
    manager->capture();
    finishPhoto(capture.image);
    mainQueue.runReady();
    EXPECT_EQ(manager->capturedPhoto(), capture.decodedImage);
}

TEST_F(CameraPreviewManagerTest, AvailableCamerasAreListedInDiscoveryOrder) {
    EXPECT_THAT(CameraPreviewManager::availableCameras(capture),
                ElementsAre(CameraChoice{"front", "Front Camera"}, CameraChoice{"desk", "Desk Camera"}));
    capture.cameras.clear();
    EXPECT_THAT(CameraPreviewManager::availableCameras(capture), IsEmpty());
}

TEST_F(CameraPreviewManagerTest, PermissionRequestCompletesOnTheMainThreadWhateverTheAnswer) {
    for (const bool isGranted : {true, false}) {
        int completions = 0;
        CameraPreviewManager::requestPermission(services, [&] { ++completions; });
        EXPECT_THAT(authorization.asked, ElementsAre(MediaType::video));
        std::thread([&] { authorization.answer(isGranted); }).join();
        EXPECT_EQ(completions, 0);
        mainQueue.runReady();
        EXPECT_EQ(completions, 1);
    }
    EXPECT_EQ(manager->status(), CameraStatus::unavailable);
}

TEST(PhotoCaptureDelegateTest, LivesUntilThePhotoArrives) {
    int completions = 0;
    std::weak_ptr<Curtain::PhotoCaptureDelegate> weak =
        Curtain::PhotoCaptureDelegate::make([&](auto) { ++completions; });
    ASSERT_FALSE(weak.expired());
    weak.lock()->didFinishProcessingPhoto({});
    EXPECT_EQ(completions, 1);
    EXPECT_TRUE(weak.expired());
}

} // namespace
