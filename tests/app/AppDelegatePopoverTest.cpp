#include "tests/app/AppDelegateFixture.h"

#include "Curtain/MeetingReadinessView.h"
#include "Curtain/OnboardingViewModel.h"
#include "Curtain/SettingsView.h"
#include "tests/support/FakeCaptureServices.h"

#include <functional>
#include <utility>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using TestSupport::FakeProcessRunner;
using TestSupport::leftClick;
using TestSupport::rightClick;

namespace EventType = Platform::EventType;

/// There is nothing to show it with.
class UnshownPopover : public Platform::Popover {
public:
    bool isShown() const override { return false; }
    void setContent(Platform::View /*content*/) override {}
    void setContentSize(const Platform::Size& /*size*/) override {}
    void show(Platform::StatusItem& /*relativeTo*/) override {}
    void close() override {}
    void setOnDidClose(std::function<void()> /*callback*/) override {}
};

struct UnshownPopoverTest : TestSupport::AppDelegateFixture {
    void SetUp() override {
        change([](auto& record) { record.hasOnboarded = true; });
        fakes.captureServices.cameras = {{"front", "Front"}};
        delegate.reset();
        fakes.platform.popover = std::make_unique<UnshownPopover>();
        delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);
        launch();
    }
};

TEST_F(UnshownPopoverTest, LeavesCameraAndMicrophoneOff) {
    fakes.statusBar.click(leftClick);
    fakes.workQueues.runAll();
    EXPECT_FALSE(fakes.captureServices.session && fakes.captureServices.session->isRunning());
    EXPECT_FALSE(!fakes.audioServices.engines.empty() && fakes.audioServices.engine().isRunning);
}

struct PopoverTest : TestSupport::AppDelegateFixture {
    void SetUp() override {
        change([](auto& record) { record.hasOnboarded = true; });
        fakes.captureServices.cameras = {{"front", "Front"}, {"back", "Back"}};
        fakes.workspace.run("a");
        launch();
        takeEvents();
    }

    void open() {
        fakes.statusBar.click(leftClick);
        fakes.workQueues.runAll();
        ASSERT_TRUE(fakes.popover.isShown());
    }

    Curtain::MeetingReadinessView& view() {
        return dynamic_cast<Curtain::MeetingReadinessView&>(*fakes.popover.content.model);
    }

    /// The screen is captured, or no longer, and the next look at it finds that out.
    void watch(bool isWatched) {
        fakes.screenWatcherProbe.isWatched = isWatched;
        fakes.mainQueue.advance(3.0);
    }

    bool isCameraOn() { return fakes.captureServices.session->isRunning(); }
    bool isMicrophoneOn() {
        return !fakes.audioServices.engines.empty() && fakes.audioServices.engine().isRunning;
    }
    bool isPrivate() { return fakes.statusBar.images.back().source == "/resources/close.pdf"; }

    void takePhoto() {
        view().takePhoto();
        fakes.captureServices.photoOutput->finish(fakes.captureServices.image);
        fakes.mainQueue.runReady();
        ASSERT_TRUE(view().hasPhoto());
    }
};

TEST_F(PopoverTest, FixEverythingTakesBackThatAnotherProgramEndedPrivacyMode) {
    using Request = Curtain::AppDelegate::PrivacyRequest;
    const auto tellsOfIt = [&] {
        return std::ranges::any_of(fakes.userNotificationCenter.delivered, [](const auto& request) {
            return request.content.title == "Privacy mode off";
        });
    };
    delegate->privacyRequested(Request::on);
    delegate->privacyRequested(Request::off);
    EXPECT_TRUE(tellsOfIt());
    open();
    view().fixEverything();
    EXPECT_FALSE(tellsOfIt());
}

TEST_F(PopoverTest, OpensOnAClickAndClosesOnTheNext) {
    fakes.statusBar.click(leftClick);
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_EQ(fakes.popover.content.source, "qrc:/Curtain/MeetingReadinessView.qml");
    fakes.statusBar.click(leftClick);
    EXPECT_FALSE(fakes.popover.isShown());
    EXPECT_THAT(takeEvents(), ElementsAre("show popover", "close popover"));
}

TEST_F(PopoverTest, AnActionReadsThePreferencesOnce) {
    makePrivate({"a"});
    const auto readsOf = [&](const std::function<void()>& action) {
        fakes.userDefaults.reads.clear();
        action();
        return fakes.userDefaults.reads["curtain.preferences.v1"];
    };
    EXPECT_EQ(readsOf([&] { fakes.statusBar.click(leftClick); }), 1);
    EXPECT_EQ(readsOf([&] { view().didOpen(); }), 1);
    EXPECT_EQ(readsOf([&] { pressShortcut(); }), 1);
    EXPECT_EQ(readsOf([&] { fakes.mainQueue.advance(0.41); }), 1) << "looks once more";
    EXPECT_EQ(readsOf([&] { view().restore(); }), 1);
    EXPECT_EQ(readsOf([&] { view().fixEverything(); }), 1);
    EXPECT_EQ(readsOf([&] { fakes.statusBar.click(rightClick); }), 1);
}

TEST_F(PopoverTest, FollowsNothingWhileItIsClosed) {
    open();
    int changes = 0;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::stateChanged, [&] { ++changes; });
    fakes.statusBar.click(leftClick);
    EXPECT_EQ(changes, 0);
    pressShortcut();
    fakes.mainQueue.advance(1.0);
    EXPECT_EQ(changes, 0);
    open();
    EXPECT_TRUE(view().isPrivacyModeOn());
    QObject::connect(&view(), &Curtain::MeetingReadinessView::stateChanged, [&] { ++changes; });
    pressShortcut();
    EXPECT_EQ(changes, 1);
}

TEST_F(PopoverTest, FollowsAppsAndFilesWhileItIsOpen) {
    makePrivate({"a"});
    open();
    EXPECT_THAT(view().visibilities(), ElementsAre("visible"));
    fakes.workspace.quitAll();
    fakes.fileManager.addFile("/home/ada/Desktop/new");
    fakes.mainQueue.advance(1);
    fakes.workQueues.runAll();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(view().visibilities(), ElementsAre("notRunning"));
    EXPECT_EQ(view().desktopDetail(), "1 files on desktop");
    auto& app = fakes.workspace.run("a");
    fakes.workspace.bringToFront("a");
    EXPECT_THAT(view().visibilities(), ElementsAre("visible")) << "at once";
    app.hidden = true;
    fakes.mainQueue.advance(1);
    EXPECT_THAT(view().visibilities(), ElementsAre("hidden"));
    fakes.popover.close();
    const auto asked = fakes.workspace.queries;
    fakes.mainQueue.advance(60);
    EXPECT_EQ(fakes.workspace.queries, asked) << "it sleeps while it is closed";
}

TEST_F(PopoverTest, OpensWithoutAnEvent) {
    fakes.statusBar.click(std::nullopt);
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(PopoverTest, RightAndControlClicksOpenTheMenuInstead) {
    fakes.statusBar.click(rightClick);
    fakes.statusBar.click(Platform::Event{EventType::leftMouseUp, 0x40000, std::nullopt});
    EXPECT_EQ(fakes.popover.showings, 0);
    EXPECT_THAT(fakes.statusBar.menus, SizeIs(2));
}

TEST_F(PopoverTest, TheMenuTakesThePlaceOfThePopover) {
    open();
    fakes.statusBar.click(rightClick);
    EXPECT_FALSE(fakes.popover.isShown());
    EXPECT_THAT(fakes.statusBar.menus, SizeIs(1));
    fakes.statusBar.menus.at(0).items.at(2).action();
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(PopoverTest, IsAsHighAsTheScreenAllows) {
    open();
    EXPECT_EQ(fakes.popover.size, (Platform::Size{700, 618}));
    fakes.popover.close();
    fakes.screens.all = {{{0, 0, 1024, 528}, {0, 28, 1024, 500}}};
    open();
    EXPECT_EQ(fakes.popover.size, (Platform::Size{700, 492}));
    fakes.popover.close();
    fakes.screens.all.clear();
    open();
    EXPECT_EQ(fakes.popover.size, (Platform::Size{700, 618}));
}

TEST_F(PopoverTest, IsAsHighAsTheScreenOfItsItemAllows) {
    fakes.screens.all = {{{0, 0, 1440, 900}, {0, 28, 1440, 872}},
                         {{1440, 0, 1024, 528}, {1440, 28, 1024, 500}}};
    fakes.statusBar.frame = {2000, 2, 24, 24};
    open();
    EXPECT_EQ(fakes.popover.size, (Platform::Size{700, 492}));
    fakes.popover.close();
    // A panel may tell what no screen shows.
    fakes.statusBar.frame = {2000, 900, 0, 0};
    open();
    EXPECT_EQ(fakes.popover.size, (Platform::Size{700, 618}));
}

TEST_F(PopoverTest, IsClosedAndEmptyBeforeTheControllerIsGone) {
    open();
    const std::weak_ptr<QObject> model = fakes.popover.content.model;
    delegate.reset();
    EXPECT_FALSE(fakes.popover.isShown());
    EXPECT_TRUE(model.expired());
}

TEST_F(PopoverTest, APanelThatAsksForTheMenuClosesNothing) {
    open();
    const auto menu = fakes.statusBar.menu();
    EXPECT_THAT(menu.items, SizeIs(6));
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_THAT(fakes.statusBar.menus, IsEmpty());
    menu.items.at(2).action();
    EXPECT_FALSE(fakes.popover.isShown());
}

TEST_F(PopoverTest, CameraAndMicrophoneRunWhileItIsOpen) {
    open();
    EXPECT_TRUE(isCameraOn());
    EXPECT_TRUE(isMicrophoneOn());
    fakes.statusBar.click(leftClick);
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(PopoverTest, CameraAndMicrophoneStayOffWhereTheirChecksAre) {
    change([](auto& record) {
        record.showCameraPreview = false;
        record.showMicrophoneCheck = false;
    });
    open();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    EXPECT_EQ(view().cameraStatus(), "unknown");
}

TEST_F(PopoverTest, StartsTheChosenCamera) {
    change([](auto& record) { record.selectedCameraID = "back"; });
    open();
    EXPECT_THAT(fakes.captureServices.session->calls, Contains("add back"));
}

TEST_F(PopoverTest, TheCamerasRowSaysWhatBecameOfTheCamera) {
    using Platform::AuthorizationStatus;
    using Platform::MediaType;
    const auto statusOnceOpen = [&] {
        open();
        auto status = view().cameraStatus();
        fakes.popover.close();
        return status;
    };
    fakes.mediaAuthorization.statuses[MediaType::video] = AuthorizationStatus::notDetermined;
    EXPECT_EQ(statusOnceOpen(), "unknown");
    fakes.mediaAuthorization.statuses[MediaType::video] = AuthorizationStatus::authorized;
    EXPECT_EQ(statusOnceOpen(), "ok");
    fakes.captureServices.cameras.clear();
    EXPECT_EQ(statusOnceOpen(), "danger");
    fakes.mediaAuthorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    EXPECT_EQ(statusOnceOpen(), "danger");
    change([](auto& record) { record.showCameraPreview = false; });
    EXPECT_EQ(statusOnceOpen(), "unknown");
}

TEST_F(PopoverTest, TheCamerasRowFollowsACameraThatStopsAndReturns) {
    open();
    ASSERT_EQ(view().cameraStatus(), "ok");
    EXPECT_EQ(view().cameraProblem(), "");
    QStringList problems;
    for (const auto why :
         {Platform::CaptureInterruption::deviceNotAvailable, Platform::CaptureInterruption::deviceInUse,
          Platform::CaptureInterruption::deviceFailed, Platform::CaptureInterruption::noPictures}) {
        fakes.captureServices.session->interrupt(why);
        EXPECT_EQ(view().cameraStatus(), "danger");
        EXPECT_EQ(view().cameraState(), "available");
        problems.push_back(view().cameraProblem());
    }
    EXPECT_EQ(problems,
              QStringList({"The camera is not plugged in any more.", "Another program is using the camera.",
                           "The camera doesn't start. Another program may be using it.",
                           "The camera sends no picture. Curtain keeps trying."}));
    fakes.captureServices.session->interrupt(std::nullopt);
    EXPECT_EQ(view().cameraStatus(), "ok");
    EXPECT_EQ(view().cameraProblem(), "");
}

TEST_F(PopoverTest, TheCamerasRowFollowsCamerasThatComeAndGo) {
    const auto cameras = std::exchange(fakes.captureServices.cameras, {});
    open();
    ASSERT_EQ(view().cameraStatus(), "danger");
    fakes.captureServices.cameras = cameras;
    fakes.captureServices.tellOfDevices();
    EXPECT_EQ(view().cameraStatus(), "ok");
    fakes.captureServices.cameras.clear();
    fakes.captureServices.tellOfDevices();
    EXPECT_EQ(view().cameraStatus(), "danger");
    EXPECT_EQ(view().cameraState(), "noCameraFound");
}

TEST_F(PopoverTest, TheMicrophonesRowFollowsMicrophonesThatComeAndGo) {
    auto& audio = fakes.audioServices;
    const auto format = std::exchange(audio.inputFormat, {0, 0});
    open();
    fakes.mainQueue.runReady();
    ASSERT_EQ(view().microphoneDetail(), "No input device");
    audio.inputFormat = format;
    audio.inputDeviceObservers.tell(true);
    fakes.workQueues.runAll();
    audio.engine().feedSamples(std::vector<float>(1024));
    fakes.mainQueue.runReady();
    EXPECT_EQ(view().microphoneDetail(), "Say something…");
    audio.inputDeviceObservers.tell(false);
    EXPECT_EQ(view().microphoneDetail(), "No input device");
}

TEST_F(PopoverTest, AMicrophoneThatMayNotBeUsedCostsPoints) {
    using Platform::AuthorizationStatus;
    const auto scoreOnceOpen = [&](AuthorizationStatus status) {
        fakes.mediaAuthorization.statuses[Platform::MediaType::audio] = status;
        open();
        const int score = view().score();
        fakes.popover.close();
        return score;
    };
    const int good = scoreOnceOpen(AuthorizationStatus::authorized);
    EXPECT_EQ(scoreOnceOpen(AuthorizationStatus::denied), good + 10);
    EXPECT_EQ(scoreOnceOpen(AuthorizationStatus::restricted), good + 10);
    EXPECT_EQ(scoreOnceOpen(AuthorizationStatus::notDetermined), good + 10);
    change([](auto& record) { record.showMicrophoneCheck = false; });
    EXPECT_EQ(scoreOnceOpen(AuthorizationStatus::denied), good);
}

TEST_F(PopoverTest, ClosingForgetsThePhoto) {
    open();
    takePhoto();
    fakes.popover.close();
    open();
    EXPECT_FALSE(view().hasPhoto());
}

TEST_F(PopoverTest, EscapeClosesItAndIsSwallowed) {
    EXPECT_FALSE(fakes.eventMonitors.pressKey(Platform::KeyCode::escape));
    open();
    EXPECT_FALSE(fakes.eventMonitors.pressKey(std::nullopt));
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_TRUE(fakes.eventMonitors.pressKey(Platform::KeyCode::escape));
    EXPECT_FALSE(fakes.popover.isShown());
}

TEST_F(PopoverTest, AClickElsewhereClosesItAfterAMoment) {
    for (const auto button : {EventType::leftMouseDown, EventType::rightMouseDown}) {
        open();
        fakes.eventMonitors.clickElsewhere(button);
        fakes.mainQueue.advance(0.11);
        EXPECT_TRUE(fakes.popover.isShown());
        fakes.mainQueue.advance(0.02);
        EXPECT_FALSE(fakes.popover.isShown());
    }
}

TEST_F(PopoverTest, ClosesWhenTheUserTurnsAwayAndCameraAndMicrophoneGoOff) {
    open();
    ASSERT_TRUE(isCameraOn());
    ASSERT_TRUE(isMicrophoneOn());
    fakes.departures.depart();
    fakes.workQueues.runAll();
    EXPECT_FALSE(fakes.popover.isShown());
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    takeEvents();
    fakes.departures.depart();
    EXPECT_THAT(takeEvents(), IsEmpty()) << "nothing is open";
}

TEST_F(PopoverTest, TheChecksRestWhileTheUserIsAwayFromAnOpenSavePanelAndThePhotoStays) {
    open();
    takePhoto();
    view().savePhoto();
    fakes.departures.depart();
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    fakes.savePanel.choose(std::nullopt);
    fakes.workQueues.runAll();
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_TRUE(view().hasPhoto());
    EXPECT_TRUE(isCameraOn());
    EXPECT_TRUE(isMicrophoneOn());
}

/// A locker covers the screen by then.
constexpr double lockerAppears = 5;

TEST_F(PopoverTest, NothingLiveStartsWhileTheSessionIsLocked) {
    open();
    fakes.departures.lock();
    ASSERT_FALSE(fakes.popover.isShown());
    delegate->open();
    fakes.workQueues.runAll();
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    view().selectCamera("front");
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    fakes.departures.unlock();
    fakes.workQueues.runAll();
    EXPECT_TRUE(isCameraOn());
    EXPECT_TRUE(isMicrophoneOn());
}

TEST_F(PopoverTest, WhoeverIsSeenToUseItHasUnlockedTheSession) {
    open();
    fakes.departures.lock();
    delegate->open();
    fakes.mainQueue.advance(lockerAppears);
    fakes.eventMonitors.movePointer();
    fakes.departures.lock();
    delegate->open();
    fakes.mainQueue.runReady();
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn()) << "it was used before that lock";
    fakes.mainQueue.advance(lockerAppears);
    fakes.eventMonitors.movePointer();
    fakes.mainQueue.runReady();
    fakes.workQueues.runAll();
    EXPECT_TRUE(isCameraOn());
    EXPECT_TRUE(isMicrophoneOn());
    EXPECT_EQ(fakes.eventMonitors.localMask(), 1U << EventType::keyDown);
    fakes.departures.lock();
    EXPECT_FALSE(fakes.popover.isShown());
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
}

TEST_F(PopoverTest, APointerThatMovesBeforeTheLockerIsThereUnlocksNothing) {
    open();
    fakes.departures.lock();
    delegate->open();
    fakes.eventMonitors.movePointer();
    fakes.mainQueue.advance(lockerAppears);
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(PopoverTest, ALockThatIsOverStartsNothingInAClosedPopover) {
    open();
    fakes.departures.lock();
    fakes.departures.unlock();
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(PopoverTest, ASavePanelThatIsAnsweredBehindALockStartsNothing) {
    open();
    takePhoto();
    view().savePhoto();
    fakes.departures.lock();
    fakes.savePanel.choose(std::nullopt);
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    fakes.departures.unlock();
    fakes.workQueues.runAll();
    EXPECT_TRUE(isCameraOn());
    EXPECT_TRUE(isMicrophoneOn());
}

TEST_F(PopoverTest, TheChecksOfAPopoverThatWasClosedBesideASavePanelStayOff) {
    open();
    takePhoto();
    view().savePhoto();
    fakes.departures.depart();
    fakes.popover.close();
    fakes.savePanel.choose(std::nullopt);
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
}

TEST_F(PopoverTest, AClickIntoTheMenuBarDoesNotCloseIt) {
    open();
    fakes.screens.pointer = {1400, 10};
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(PopoverTest, AClickClosesItWhereThePointerIsNotKnown) {
    open();
    fakes.screens.pointer.reset();
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_FALSE(fakes.popover.isShown());
}

TEST_F(PopoverTest, EachScreenHasItsOwnMenuBar) {
    fakes.screens.all.push_back({{1440, 0, 1024, 768}, {1440, 0, 1024, 740}});
    open();
    fakes.screens.pointer = {2000, 750};
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_TRUE(fakes.popover.isShown());
    // Outside of every screen the main one decides.
    fakes.screens.pointer = {700, -20};
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_TRUE(fakes.popover.isShown());
    fakes.screens.pointer = {2000, 700};
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_FALSE(fakes.popover.isShown());
}

TEST_F(PopoverTest, APanelsPopUpKeepsItOpen) {
    open();
    fakes.menuBar.owner = "com.apple.controlcenter";
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_TRUE(fakes.popover.isShown());
    // Where nobody owns the bar, the app in front decides.
    fakes.menuBar.owner.reset();
    fakes.menuBar.frontmost = "com.apple.controlcenter";
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_TRUE(fakes.popover.isShown());
    fakes.menuBar.owner = "other";
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    fakes.mainQueue.advance(1.0);
    EXPECT_FALSE(fakes.popover.isShown());
}

TEST_F(PopoverTest, AClickWhileItIsClosedDoesNothing) {
    fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
    open();
    fakes.mainQueue.advance(1.0);
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(PopoverTest, HidingThePrivateAppsTwiceHidesThemOnce) {
    makePrivate({"a"});
    open();
    view().hidePrivateApps();
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    EXPECT_TRUE(isPrivate());
    EXPECT_TRUE(view().isPrivacyModeOn());
    view().hidePrivateApps();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

struct RunningModeTest : PopoverTest {
    void SetUp() override {
        PopoverTest::SetUp();
        fakes.workspace.run("b");
        makePrivate({"a"});
        pressShortcut();
        takeCalls();
    }

    void choose(const std::string& identifier) {
        view().setEditingApps(true);
        view().toggleApp(QString::fromStdString(identifier));
    }
};

TEST_F(RunningModeTest, AnAppThatIsMadePrivateIsCoveredAndHiddenAtOnce) {
    open();
    choose("b");
    EXPECT_THAT(fakes.appShield.covered, ElementsAre("a", "b"));
    EXPECT_THAT(takeCalls(), ElementsAre("hide b"));
    EXPECT_THAT(view().visibilities(), ElementsAre("hidden"));
    pressShortcut();
    EXPECT_THAT(takeCalls(), UnorderedElementsAre("unhide a", "activate a 2", "unhide b", "activate b 2"));
}

TEST_F(RunningModeTest, AnAppThatIsNoLongerPrivateIsGivenBackAtOnce) {
    open();
    choose("a");
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_THAT(fakes.appShield.covered, IsEmpty());
    EXPECT_TRUE(isPrivate());
    fakes.workspace.bringToFront("a");
    fakes.mainQueue.advance(1);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(RunningModeTest, TheSettingsListWorksAtOnceToo) {
    delegate->openSettings();
    auto& settings = dynamic_cast<Curtain::SettingsView&>(*fakes.windows.all.at(0)->view.model);
    settings.toggleApp(1);
    EXPECT_THAT(takeCalls(), ElementsAre("hide b"));
    settings.toggleApp(1);
    EXPECT_THAT(takeCalls(), ElementsAre("unhide b", "activate b 2"));
}

TEST_F(RunningModeTest, WithPrivacyModeOffTheListChangesNoWindow) {
    pressShortcut();
    takeCalls();
    open();
    choose("b");
    choose("a");
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(fakes.appShield.covered, IsEmpty());
}

TEST_F(RunningModeTest, AnAppThatIsListedTwiceStaysCoveredUntilItIsTakenOffTwice) {
    pressShortcut();
    makePrivate({"b", "b"});
    pressShortcut();
    takeCalls();
    open();
    choose("b");
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(fakes.appShield.covered, testing::Contains("b"));
    choose("b");
    EXPECT_THAT(fakes.appShield.covered, IsEmpty());
}

TEST_F(RunningModeTest, HidingWhatIsVisibleUncoversNothing) {
    open();
    makePrivate({"b"});
    view().hidePrivateApps();
    EXPECT_THAT(takeCalls(), ElementsAre("hide b"));
    EXPECT_THAT(fakes.appShield.covered, UnorderedElementsAre("a", "b"));
}

TEST_F(RunningModeTest, FixEverythingHidesTheAppsBeforeTheIcons) {
    makePrivate({"a", "b"});
    open();
    std::vector<std::string> callsBefore;
    fakes.processRunner.onRun = [&] {
        if (fakes.processRunner.runs.back() == FakeProcessRunner::writingIcons(false)) {
            callsBefore = fakes.workspace.calls;
        }
    };
    view().fixEverything();
    EXPECT_THAT(callsBefore, ElementsAre("hide b"));
}

TEST_F(RunningModeTest, HideAndFixHideAnAppThatWasRevealed) {
    makePrivate({"a", "b"});
    pressShortcut();
    pressShortcut();
    open();
    for (const std::function<void()>& press : {std::function<void()>([&] { view().hidePrivateApps(); }),
                                               std::function<void()>([&] { view().fixEverything(); })}) {
        fakes.workspace.bringToFront("a");
        fakes.mainQueue.advance(1);
        fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.back(), "CURTAIN_REVEAL");
        ASSERT_THAT(fakes.appShield.covered, ElementsAre("b"));
        EXPECT_TRUE(view().canHideMore());
        takeCalls();
        press();
        EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
        EXPECT_THAT(fakes.appShield.covered, UnorderedElementsAre("a", "b"));
        EXPECT_FALSE(view().canHideMore());
        fakes.mainQueue.advance(4);
    }
    pressShortcut();
    EXPECT_THAT(takeCalls(), Contains("unhide a"));
}

TEST_F(PopoverTest, FixEverythingHidesAppsAndIconsAndAsksAboutNotifications) {
    makePrivate({"a"});
    open();
    fakes.processRunner.runs.clear();
    view().fixEverything();
    EXPECT_THAT(fakes.appShield.covered, ElementsAre("a"));
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    EXPECT_THAT(fakes.processRunner.runs, Contains(FakeProcessRunner::writingIcons(false)));
    EXPECT_TRUE(isPrivate());
    EXPECT_TRUE(view().isDesktopHidden());
    ASSERT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.categoryIdentifier, "");
}

TEST_F(PopoverTest, FixEverythingIsSilentWhereNotificationsAreHandled) {
    change([](auto& record) { record.notificationsMarkedHandled = true; });
    open();
    view().fixEverything();
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
}

TEST_F(PopoverTest, RestoreGivesEverythingBack) {
    makePrivate({"a"});
    open();
    view().fixEverything();
    takeCalls();
    view().restore();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_THAT(fakes.processRunner.runs, Contains(FakeProcessRunner::writingIcons(true)));
    EXPECT_FALSE(isPrivate());
    EXPECT_FALSE(view().isDesktopHidden());
}

TEST_F(PopoverTest, RestoreDoesNotTouchADesktopThatShowsItsIcons) {
    open();
    view().restore();
    EXPECT_THAT(fakes.processRunner.runs, Not(Contains(FakeProcessRunner::writingIcons(true))));
}

TEST_F(PopoverTest, RestoringTakesOverFromDetection) {
    open();
    watch(true);
    view().restore();
    view().hidePrivateApps();
    watch(false);
    EXPECT_TRUE(isPrivate());
}

TEST_F(PopoverTest, UndoTakesOverFromDetection) {
    open();
    watch(true);
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.at(0), "CURTAIN_UNDO");
    view().hidePrivateApps();
    watch(false);
    EXPECT_TRUE(isPrivate());
}

TEST_F(PopoverTest, SaysWhetherDetectionHasSwitchedPrivacyModeOn) {
    open();
    pressShortcut();
    EXPECT_FALSE(view().isPrivacyModeAutomatic());
    pressShortcut();
    watch(true);
    EXPECT_TRUE(view().isPrivacyModeAutomatic());
    watch(false);
    EXPECT_FALSE(view().isPrivacyModeAutomatic());
}

TEST_F(PopoverTest, UndoesWhatDetectionHasDoneAsItsNoticeDoes) {
    makePrivate({"a"});
    open();
    watch(true);
    takeCalls();
    view().undo();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_FALSE(isPrivate());
    EXPECT_FALSE(view().isPrivacyModeAutomatic());
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
    view().undo();
    EXPECT_THAT(takeCalls(), IsEmpty());
    view().hidePrivateApps();
    watch(false);
    EXPECT_TRUE(isPrivate());
}

TEST_F(PopoverTest, HidingAndFixingLeaveItToDetection) {
    open();
    watch(true);
    view().hidePrivateApps();
    view().fixEverything();
    EXPECT_TRUE(isPrivate());
    watch(false);
    EXPECT_FALSE(isPrivate());
}

TEST_F(PopoverTest, TheDesktopButtonFlipsTheIcons) {
    open();
    view().toggleDesktop();
    EXPECT_TRUE(view().isDesktopHidden());
    view().toggleDesktop();
    EXPECT_FALSE(view().isDesktopHidden());
}

TEST_F(PopoverTest, ActionsRefreshAtOnceAndOnceMoreALittleLater) {
    makePrivate({"a"});
    open();
    int refreshes = 0;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::stateChanged, [&] { ++refreshes; });
    pressShortcut();
    EXPECT_EQ(refreshes, 1);
    fakes.mainQueue.advance(0.39);
    EXPECT_EQ(refreshes, 1);
    fakes.mainQueue.advance(0.02);
    EXPECT_EQ(refreshes, 2);
    fakes.mainQueue.advance(0.5);
    EXPECT_EQ(refreshes, 2);
}

TEST_F(PopoverTest, EveryChangeOfTheModeRefreshesTwiceAndTheDesktopButtonOnce) {
    change([](auto& record) { record.showMicrophoneCheck = false; });
    open();
    int refreshes = 0;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::stateChanged, [&] { ++refreshes; });
    const auto refreshesAfter = [&](const std::function<void()>& action) {
        refreshes = 0;
        action();
        fakes.mainQueue.advance(0.5);
        const auto counted = refreshes;
        fakes.mainQueue.advance(0.5);
        return counted;
    };
    // Between two of the looks that the open popover takes once a second.
    fakes.mainQueue.advance(0.1);
    constexpr int looksOfAWatch = 3;
    EXPECT_EQ(refreshesAfter([&] { view().hidePrivateApps(); }), 2);
    EXPECT_EQ(refreshesAfter([&] { view().restore(); }), 2);
    EXPECT_EQ(refreshesAfter([&] { view().fixEverything(); }), 2);
    EXPECT_EQ(refreshesAfter([&] { view().toggleDesktop(); }), 1);
    EXPECT_EQ(refreshesAfter([&] { view().restore(); }), 2);
    EXPECT_EQ(refreshesAfter([&] { watch(true); }), 2 + looksOfAWatch);
    EXPECT_EQ(refreshesAfter([&] { watch(false); }), 2 + looksOfAWatch);
    EXPECT_EQ(refreshesAfter([&] { watch(true); }), 2 + looksOfAWatch);
    const auto notice = fakes.userNotificationCenter.added.back();
    EXPECT_EQ(refreshesAfter([&] { fakes.userNotificationCenter.answer(notice, "CURTAIN_UNDO"); }), 2);
    EXPECT_EQ(refreshesAfter([&] { watch(false); }), looksOfAWatch);
    EXPECT_EQ(refreshesAfter([&] { watch(true); }), 2 + looksOfAWatch);
    EXPECT_EQ(refreshesAfter([&] { view().undo(); }), 2);
}

TEST_F(PopoverTest, ChoosingACameraStoresAndStartsIt) {
    open();
    view().selectCamera("back");
    EXPECT_EQ(preferences().selectedCameraID, "back");
    EXPECT_THAT(fakes.captureServices.session->calls, Contains("add back"));
}

TEST_F(PopoverTest, CopyingPutsThePhotoAloneOnThePasteboard) {
    open();
    view().copyPhoto();
    EXPECT_EQ(fakes.pasteboard.clearings, 0);
    takePhoto();
    view().copyPhoto();
    EXPECT_EQ(fakes.pasteboard.clearings, 1);
    EXPECT_THAT(fakes.pasteboard.images, ElementsAre(fakes.captureServices.image));
}

TEST_F(PopoverTest, SavingWritesThePhotoUnchangedWhereTheUserWantsIt) {
    open();
    view().savePhoto();
    EXPECT_THAT(fakes.savePanel.openings, IsEmpty());
    takePhoto();
    takeEvents();
    fakes.wallClock.time = std::chrono::system_clock::time_point(std::chrono::seconds(77));
    view().savePhoto();
    EXPECT_THAT(takeEvents(), ElementsAre("activate ignoring other apps", "save panel"));
    ASSERT_THAT(fakes.savePanel.openings, SizeIs(1));
    EXPECT_EQ(fakes.savePanel.openings[0].proposedName, "Curtain 77.jpg");
    EXPECT_EQ(fakes.savePanel.openings[0].folder, "/home/ada/Pictures");
    EXPECT_EQ(fakes.savePanel.openings[0].mimeType, "image/jpeg");
    EXPECT_EQ(fakes.savePanel.openings[0].title, "Save");
    // The popover may be gone by the time the user has decided.
    fakes.popover.close();
    fakes.savePanel.choose("/home/ada/me.jpg");
    fakes.workQueues.runAll();
    EXPECT_EQ(fakes.fileManager.writtenFiles["/home/ada/me.jpg"], fakes.captureServices.image);
}

TEST_F(PopoverTest, APhotoThatWaitsToBeWrittenAtTheEndIsWritten) {
    open();
    takePhoto();
    for (const auto* const path : {"/home/ada/me.jpg", "/home/ada/again.jpg"}) {
        view().savePhoto();
        fakes.savePanel.choose(path);
    }
    EXPECT_THAT(fakes.fileManager.writtenFiles, IsEmpty());
    delegate.reset();
    EXPECT_EQ(fakes.fileManager.writtenFiles["/home/ada/me.jpg"], fakes.captureServices.image);
    EXPECT_EQ(fakes.fileManager.writtenFiles["/home/ada/again.jpg"], fakes.captureServices.image);
}

TEST_F(PopoverTest, SaysWhatBecameOfThePhotoAndKeepsItWhereItCouldNotBeSaved) {
    using Platform::WriteOutcome;
    open();
    takePhoto();
    EXPECT_EQ(view().photoNews(), "");
    view().copyPhoto();
    EXPECT_EQ(view().photoNews(), "The photo is on the clipboard.");
    EXPECT_EQ(view().photoNewsTone(), "green");
    fakes.pasteboard.takesImages = false;
    view().copyPhoto();
    EXPECT_EQ(view().photoNews(), "The photo could not be copied.");
    const std::vector<std::pair<WriteOutcome, const char*>> outcomes{
        {WriteOutcome::failed, "The photo could not be saved."},
        {WriteOutcome::noSpace, "Not saved: the disk is full."},
        {WriteOutcome::notAllowed, "Not saved: you may not write there."},
        {WriteOutcome::written, "The photo is saved."}};
    for (const auto& [outcome, news] : outcomes) {
        fakes.fileManager.writeOutcome = outcome;
        view().savePhoto();
        fakes.savePanel.choose("/home/ada/me.jpg");
        fakes.workQueues.runAll();
        fakes.mainQueue.runReady();
        EXPECT_EQ(view().photoNews(), news);
        EXPECT_EQ(view().photoNewsTone(), outcome == WriteOutcome::written ? "green" : "orange");
        EXPECT_TRUE(view().hasPhoto());
    }
    view().discardPhoto();
    EXPECT_EQ(view().photoNews(), "");
}

TEST_F(PopoverTest, APhotoThatFailsIsSaidUntilTheNextOne) {
    open();
    view().takePhoto();
    fakes.captureServices.photoOutput->finish({});
    fakes.mainQueue.runReady();
    EXPECT_EQ(view().photoNews(), "The camera took no photo.");
    takePhoto();
    EXPECT_EQ(view().photoNews(), "");
}

TEST_F(PopoverTest, APhotoThatFailsIsSaidUntilTheCameraIsInAnotherState) {
    open();
    view().takePhoto();
    fakes.captureServices.photoOutput->finish({});
    fakes.mainQueue.runReady();
    ASSERT_EQ(view().photoNews(), "The camera took no photo.");
    fakes.mainQueue.advance(2);
    EXPECT_EQ(view().photoNews(), "The camera took no photo.");
    fakes.captureServices.session->interrupt(Platform::CaptureInterruption::deviceNotAvailable);
    EXPECT_EQ(view().photoNews(), "");
}

TEST_F(PopoverTest, APhotoThatCannotBeSavedIsSaidThoughThePopoverHasClosed) {
    open();
    takePhoto();
    const auto saveAfterClosing = [&](Platform::WriteOutcome outcome) {
        fakes.fileManager.writeOutcome = outcome;
        view().savePhoto();
        fakes.savePanel.choose("/home/ada/me.jpg");
        fakes.popover.close();
        fakes.workQueues.runAll();
        fakes.mainQueue.runReady();
    };
    saveAfterClosing(Platform::WriteOutcome::noSpace);
    ASSERT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.title, "The photo could not be saved.");
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.body, "Not saved: the disk is full.");
    open();
    takePhoto();
    saveAfterClosing(Platform::WriteOutcome::written);
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
}

TEST_F(PopoverTest, WhatBecameOfAPhotoIsNotSaidOfTheNext) {
    open();
    const auto saveAndTakeAnother = [&](Platform::WriteOutcome outcome, unsigned red) {
        fakes.fileManager.writeOutcome = outcome;
        view().savePhoto();
        fakes.savePanel.choose("/home/ada/me.jpg");
        view().discardPhoto();
        fakes.captureServices.decodedImage = TestSupport::plainPicture(2, 1, red, 0, 0);
        view().takePhoto();
        fakes.captureServices.photoOutput->finish(fakes.captureServices.image);
        fakes.mainQueue.runReady();
        fakes.workQueues.runAll();
        fakes.mainQueue.runReady();
        EXPECT_EQ(view().photoNews(), "");
    };
    takePhoto();
    saveAndTakeAnother(Platform::WriteOutcome::written, 1);
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
    saveAndTakeAnother(Platform::WriteOutcome::notAllowed, 2);
    ASSERT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.body, "Not saved: you may not write there.");
}

TEST_F(PopoverTest, AClickBesideTheOpenSavePanelLeavesThePhotoWhereItIs) {
    open();
    takePhoto();
    view().savePhoto();
    view().savePhoto();
    const auto isOpenAfterAClick = [&] {
        fakes.eventMonitors.clickElsewhere(EventType::leftMouseDown);
        fakes.mainQueue.advance(1);
        return fakes.popover.isShown();
    };
    fakes.savePanel.supersede();
    EXPECT_TRUE(isOpenAfterAClick());
    fakes.savePanel.choose(std::nullopt);
    EXPECT_FALSE(isOpenAfterAClick());
}

TEST_F(PopoverTest, WhatClosesThePopoverBesideAnOpenSavePanelEndsCameraAndMicrophone) {
    open();
    takePhoto();
    view().savePhoto();
    ASSERT_TRUE(isCameraOn());
    ASSERT_TRUE(isMicrophoneOn());
    fakes.popover.close();
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
    EXPECT_FALSE(isMicrophoneOn());
    fakes.savePanel.choose(std::nullopt);
    fakes.workQueues.runAll();
    EXPECT_FALSE(isCameraOn());
}

TEST_F(PopoverTest, ACancelledPanelWritesNothing) {
    open();
    takePhoto();
    view().savePhoto();
    fakes.savePanel.choose(std::nullopt);
    EXPECT_THAT(fakes.fileManager.writtenFiles, IsEmpty());
}

TEST_F(PopoverTest, SettingsTakeItsPlaceInOneWindow) {
    open();
    takeEvents();
    view().openSettings();
    EXPECT_FALSE(fakes.popover.isShown());
    ASSERT_THAT(fakes.windows.all, SizeIs(1));
    EXPECT_EQ(fakes.windows.all[0]->title, "Curtain — Settings");
    EXPECT_EQ(fakes.windows.all[0]->size, (Platform::Size{440, 430}));
    EXPECT_THAT(takeEvents(), ElementsAre("close popover", "centre window", "make window key",
                                          "order window front", "activate ignoring other apps"));
    fakes.windows.all[0]->close();
    change([](auto& record) { record.language = CurtainCore::AppLanguage::fr; });
    delegate->openSettings();
    ASSERT_THAT(fakes.windows.all, SizeIs(1));
    EXPECT_TRUE(fakes.windows.all[0]->isVisible());
    EXPECT_EQ(fakes.windows.all[0]->title, "Curtain — Paramètres");
}

TEST_F(PopoverTest, EndingWhileAShortcutIsRecordedTakesNoKeys) {
    delegate->openSettings();
    ASSERT_THAT(fakes.windows.all, SizeIs(1));
    auto& settings = dynamic_cast<Curtain::SettingsView&>(*fakes.windows.all[0]->view.model);
    settings.shortcut()->begin(nullptr);
    ASSERT_TRUE(settings.shortcut()->isRecording());
    delegate.reset();
    EXPECT_THAT(fakes.hotKeyService.registrations, IsEmpty());
}

TEST_F(PopoverTest, TheSettingsWindowIsNamedInTheLanguageOfTheMoment) {
    delegate->openSettings();
    auto& window = *fakes.windows.all.at(0);
    auto& settings = dynamic_cast<Curtain::SettingsView&>(*window.view.model);
    settings.setLanguageIndex(static_cast<int>(CurtainCore::AppLanguage::fr));
    EXPECT_EQ(window.title, "Curtain — Paramètres");
}

TEST_F(PopoverTest, SettingsThatAreOpenStayAsTheyAre) {
    delegate->openSettings();
    auto& window = *fakes.windows.all.at(0);
    auto& settings = dynamic_cast<Curtain::SettingsView&>(*window.view.model);
    settings.setQuery("zo");
    fakes.captureServices.cameras.push_back({"late", "Late"});
    change([](auto& record) { record.showEmbarrassmentScore = false; });
    delegate->openSettings();
    EXPECT_EQ(settings.query(), "zo");
    EXPECT_EQ(settings.cameras().size(), 3);
    EXPECT_FALSE(settings.switches()->showScore());
    window.close();
    delegate->openSettings();
    EXPECT_EQ(settings.query(), "");
    EXPECT_EQ(settings.cameras().size(), 4);
}

TEST_F(PopoverTest, QuitEndsTheProgram) {
    open();
    view().quit();
    EXPECT_TRUE(fakes.application.isTerminated);
}

TEST_F(PopoverTest, OpeningFromOutsideNeverCloses) {
    delegate->open();
    EXPECT_TRUE(fakes.popover.isShown());
    delegate->open();
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(PopoverTest, SpeaksTheLanguageOfTheMoment) {
    open();
    EXPECT_EQ(view().lang(), "en");
    fakes.popover.close();
    change([](auto& record) { record.language = CurtainCore::AppLanguage::ar; });
    open();
    EXPECT_EQ(view().lang(), "ar");
}

TEST_F(PopoverTest, SpeaksALanguageThatIsChosenWhileItIsOpen) {
    delegate->openSettings();
    auto& settings = dynamic_cast<Curtain::SettingsView&>(*fakes.windows.all.at(0)->view.model);
    settings.setLanguageIndex(static_cast<int>(CurtainCore::AppLanguage::fr));
    EXPECT_EQ(fakes.popover.content.model, nullptr) << "it is made for its next opening";
    open();
    EXPECT_EQ(view().lang(), "fr");
    settings.setLanguageIndex(static_cast<int>(CurtainCore::AppLanguage::ar));
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_EQ(view().lang(), "ar");
    EXPECT_TRUE(view().isRightToLeft());
}

TEST_F(PopoverTest, AControllerThatIsGoneIsNotCalled) {
    open();
    const auto content = fakes.popover.content;
    delegate.reset();
    EXPECT_EQ(fakes.eventMonitors.globalMask, std::nullopt);
    EXPECT_EQ(fakes.eventMonitors.localMask(), std::nullopt);
    fakes.popover.close();
    fakes.mainQueue.advance(5.0);
}

struct WizardTest : TestSupport::AppDelegateFixture {
    Curtain::OnboardingViewModel& model() {
        return dynamic_cast<Curtain::OnboardingViewModel&>(*fakes.windows.all.at(0)->view.model);
    }
};

struct GreetingTest : TestSupport::AppDelegateFixture {
    const std::vector<Platform::NotificationRequest>& notices() const {
        return fakes.userNotificationCenter.delivered;
    }
};

TEST_F(GreetingTest, AFirstStartSaysWhereCurtainIsAndNamesTheShortcut) {
    launch();
    ASSERT_THAT(notices(), SizeIs(1));
    EXPECT_EQ(notices()[0].content.title, "Curtain is in your panel");
    EXPECT_EQ(notices()[0].content.body,
              "A click on its icon checks everything before a call. This shortcut hides your private apps. "
              "Ctrl+Alt+Super+H");
    fakes.mainQueue.advance(60);
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
}

TEST_F(GreetingTest, ItWaitsTenSecondsForAPanelAndThenOffersToOpen) {
    fakes.statusBar.setHasPanel(false);
    launch();
    fakes.mainQueue.advance(9.9);
    EXPECT_THAT(notices(), IsEmpty());
    fakes.mainQueue.advance(0.1);
    ASSERT_THAT(notices(), SizeIs(1));
    EXPECT_EQ(notices()[0].content.title, "Curtain is running");
    EXPECT_THAT(fakes.userNotificationCenter.categories,
                Contains(Platform::NotificationCategory{"CURTAIN_HOME", {{"CURTAIN_OPEN", "Open"}}}));
    const auto notice = notices()[0];
    fakes.userNotificationCenter.answer(notice, "CURTAIN_OPEN");
    EXPECT_THAT(fakes.windows.all, SizeIs(1)) << "the wizard";
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(GreetingTest, APanelThatComesInTimeIsTheOneThatIsNamed) {
    fakes.statusBar.setHasPanel(false);
    launch();
    fakes.mainQueue.advance(5);
    fakes.statusBar.setHasPanel(true);
    fakes.mainQueue.runReady();
    ASSERT_THAT(notices(), SizeIs(1));
    EXPECT_EQ(notices()[0].content.title, "Curtain is in your panel");
    fakes.mainQueue.advance(60);
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
}

TEST_F(GreetingTest, WhoOpensTheWizardInTheMeantimeNeedsNone) {
    fakes.statusBar.setHasPanel(false);
    launch();
    delegate->open();
    fakes.mainQueue.advance(60);
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
}

TEST_F(GreetingTest, WhoOpensThePopoverHasFoundItAndTheNoticeGoes) {
    launch();
    ASSERT_THAT(notices(), SizeIs(1));
    change([](auto& record) { record.hasOnboarded = true; });
    fakes.statusBar.click(leftClick);
    EXPECT_TRUE(fakes.popover.isShown());
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(GreetingTest, WhoKnowsCurtainIsNotGreeted) {
    change([](auto& record) { record.hasOnboarded = true; });
    launch();
    fakes.mainQueue.advance(60);
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
}

TEST_F(WizardTest, NothingOpensAtTheLaunch) {
    launch();
    EXPECT_THAT(fakes.windows.all, IsEmpty());
    EXPECT_FALSE(fakes.popover.isShown());
}

TEST_F(WizardTest, TheFirstClickOpensTheWizardInsteadOfThePopover) {
    launch();
    fakes.statusBar.click(leftClick);
    EXPECT_FALSE(fakes.popover.isShown());
    ASSERT_THAT(fakes.windows.all, SizeIs(1));
    EXPECT_TRUE(fakes.windows.all[0]->isVisible());
    EXPECT_EQ(model().page(), "welcome");
}

TEST_F(WizardTest, ClosingItHalfWayKeepsItForTheNextClick) {
    launch();
    fakes.statusBar.click(leftClick);
    model().advance();
    fakes.windows.all[0]->close();
    EXPECT_FALSE(preferences().hasOnboarded);
    fakes.statusBar.click(leftClick);
    ASSERT_THAT(fakes.windows.all, SizeIs(1));
    EXPECT_TRUE(fakes.windows.all[0]->isVisible());
    EXPECT_EQ(model().page(), "compatibility");
}

TEST_F(WizardTest, SpeaksTheLanguageOfTheMoment) {
    launch();
    fakes.statusBar.click(leftClick);
    EXPECT_EQ(model().lang(), "en");
    fakes.windows.all[0]->close();
    change([](auto& record) { record.language = CurtainCore::AppLanguage::fr; });
    fakes.statusBar.click(leftClick);
    EXPECT_EQ(model().lang(), "fr");
    delegate->openSettings();
    auto& settings = dynamic_cast<Curtain::SettingsView&>(*fakes.windows.all.at(1)->view.model);
    settings.setLanguageIndex(static_cast<int>(CurtainCore::AppLanguage::ar));
    EXPECT_EQ(model().lang(), "ar");
    EXPECT_TRUE(model().isRightToLeft());
}

TEST_F(WizardTest, FinishingStoresItClosesTheWindowAndAsksForNotifications) {
    launch();
    fakes.statusBar.click(leftClick);
    takeEvents();
    fakes.processRunner.runs.clear();
    model().onFinish();
    EXPECT_TRUE(preferences().hasOnboarded);
    // The readiness is looked at anew.
    EXPECT_THAT(fakes.processRunner.runs, ElementsAre(FakeProcessRunner::readingIcons()));
    EXPECT_THAT(fakes.userNotificationCenter.authorizationOptions, ElementsAre(6U));
    EXPECT_FALSE(fakes.windows.all.at(0)->isVisible());
    EXPECT_FALSE(fakes.popover.isShown());
    fakes.mainQueue.advance(0.19);
    EXPECT_THAT(fakes.windows.all, SizeIs(1));
    fakes.mainQueue.advance(0.02);
    EXPECT_THAT(fakes.windows.all, IsEmpty());
    fakes.statusBar.click(leftClick);
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(WizardTest, DevicesThatItStartedStopWhereThePopoverOpensWithoutTheirChecks) {
    fakes.captureServices.cameras = {{"front", "Front"}};
    launch();
    fakes.statusBar.click(leftClick);
    while (model().page() != "microphone") {
        model().advance();
    }
    model().requestCurrentPermission();
    model().advance();
    model().requestCurrentPermission();
    fakes.workQueues.runAll();
    ASSERT_TRUE(fakes.captureServices.session->isRunning());
    ASSERT_TRUE(fakes.audioServices.engine().isRunning);
    change([](auto& record) {
        record.hasOnboarded = true;
        record.showCameraPreview = false;
        record.showMicrophoneCheck = false;
    });
    fakes.statusBar.click(leftClick);
    fakes.workQueues.runAll();
    ASSERT_TRUE(fakes.popover.isShown());
    EXPECT_FALSE(fakes.captureServices.session->isRunning());
    EXPECT_FALSE(fakes.audioServices.engine().isRunning);
}

TEST_F(WizardTest, ItsCameraRestsBehindALockedSessionAndComesBack) {
    fakes.captureServices.cameras = {{"front", "Front"}};
    launch();
    fakes.departures.lock();
    fakes.departures.unlock();
    fakes.statusBar.click(leftClick);
    while (model().page() != "camera") {
        model().advance();
    }
    model().requestCurrentPermission();
    fakes.workQueues.runAll();
    ASSERT_TRUE(fakes.captureServices.session->isRunning());
    fakes.departures.lock();
    fakes.workQueues.runAll();
    EXPECT_FALSE(fakes.captureServices.session->isRunning());
    EXPECT_TRUE(fakes.windows.all.at(0)->isVisible());
    fakes.departures.unlock();
    fakes.workQueues.runAll();
    EXPECT_TRUE(fakes.captureServices.session->isRunning());
}

TEST_F(WizardTest, OneThatOpensBehindALockShowsNothingLiveUntilItIsUsed) {
    fakes.captureServices.cameras = {{"front", "Front"}};
    launch();
    fakes.departures.lock();
    delegate->open();
    while (model().page() != "camera") {
        model().advance();
    }
    model().requestCurrentPermission();
    fakes.mainQueue.advance(lockerAppears);
    fakes.workQueues.runAll();
    EXPECT_FALSE(fakes.captureServices.session->isRunning());
    fakes.eventMonitors.movePointer();
    fakes.mainQueue.runReady();
    fakes.workQueues.runAll();
    EXPECT_TRUE(fakes.captureServices.session->isRunning());
}

TEST_F(WizardTest, WithoutABundleNobodyIsAskedForNotifications) {
    delegate.reset();
    fakes.application.identifier.reset();
    delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);
    launch();
    fakes.statusBar.click(leftClick);
    model().onFinish();
    EXPECT_TRUE(preferences().hasOnboarded);
    EXPECT_THAT(fakes.userNotificationCenter.calls, IsEmpty());
}

TEST_F(WizardTest, APageThatLedNowhereIsNotShownAgainWhereTheObstacleIsGone) {
    fakes.systemVersion.version = 0;
    fakes.systemVersion.obstacle = Platform::HidingObstacle::noWindowManager;
    launch();
    fakes.statusBar.click(leftClick);
    model().advance();
    model().checkCompatibility();
    EXPECT_FALSE(model().isCompatible());
    model().close();
    EXPECT_FALSE(fakes.windows.all[0]->isVisible());
    fakes.systemVersion.version = 14;
    fakes.systemVersion.obstacle.reset();
    fakes.statusBar.click(leftClick);
    ASSERT_EQ(fakes.windows.made, 2);
    auto& again = dynamic_cast<Curtain::OnboardingViewModel&>(*fakes.windows.all.back()->view.model);
    EXPECT_EQ(again.page(), "welcome");
    again.advance();
    again.checkCompatibility();
    EXPECT_TRUE(again.isCompatible());
}

} // namespace
