#include "core/Localizer.h"
#include "tests/views/ReadinessWorld.h"
#include "tests/views/ViewFixture.h"

#include <algorithm>

namespace TestSupport {
namespace {

using testing::IsEmpty;

/// What a popover in a Wayland session has to tell of, while privacy mode is on or not.
void hideNothing(ReadinessWorld& world, bool isPrivacyModeActive) {
    world.isPrivacyModeActive = isPrivacyModeActive;
    world.workspace.everyWindowIsKnown = false;
    world.system.obstacle = Platform::HidingObstacle::waylandSession;
    world.coordinator.refresh();
}

class PopoverLook : public ViewTest {
protected:
    static constexpr QSize size{700, 618};

    /// Shows the popover in every language and looks for anything wrong with its words.
    static void inEveryLanguage(const std::string& name, const std::function<void(ReadinessWorld&)>& prepare,
                                const std::function<void(ShownView&, ReadinessWorld&)>& act = nullptr,
                                const QSize& viewSize = size) {
        for (const auto& language : languages()) {
            SCOPED_TRACE(language);
            ReadinessWorld world;
            prepare(world);
            world.makeView(language);
            ShownView shown(world.content(), viewSize, Motion::reduced);
            if (act) {
                act(shown, world);
                shown.settle();
            }
            EXPECT_THAT(shown.problems(CurtainCore::Localizer::isRightToLeft(language)), IsEmpty());
            shown.picture("popover-" + name + "-" + language);
        }
    }
};

TEST_F(PopoverLook, Issues) {
    inEveryLanguage("issues", [](auto& world) { world.makeRisky(); });
}

TEST_F(PopoverLook, Clear) {
    inEveryLanguage("clear", [](auto& world) { world.makeClear(); });
}

TEST_F(PopoverLook, FirstOpen) {
    inEveryLanguage("first-open", [](auto& world) {
        world.change([](auto& preferences) { preferences.showEmbarrassmentScore = false; });
    });
}

TEST_F(PopoverLook, NoCameraAccess) {
    inEveryLanguage("no-camera-access", [](auto& world) {
        world.makeRisky();
        world.workspace.run("org.app.Albums");
        world.workspace.run("org.app.Safe");
        world.authorization.statuses[Platform::MediaType::video] = Platform::AuthorizationStatus::denied;
        world.authorization.statuses[Platform::MediaType::audio] = Platform::AuthorizationStatus::denied;
        world.camera.start(std::nullopt);
        world.mic.start();
        world.runAll();
        world.cameraReadiness = {true, false};
        world.micReadiness = {true, false};
        world.coordinator.refresh();
    });
}

TEST_F(PopoverLook, NoSettingsPage) {
    inEveryLanguage(
        "no-settings-page",
        [](auto& world) {
            world.authorization.statuses[Platform::MediaType::video] = Platform::AuthorizationStatus::denied;
            world.camera.start(std::nullopt);
            world.urlOpener.canOpen = false;
        },
        [](auto& shown, auto& /*world*/) { shown.click("cameraSettings"); });
}

TEST_F(PopoverLook, NoFocusPage) {
    inEveryLanguage(
        "no-focus-page",
        [](auto& world) {
            world.makeRisky();
            world.urlOpener.canOpen = false;
        },
        [](auto& shown, auto& /*world*/) { shown.click("notifications.chip"); });
}

TEST_F(PopoverLook, NoCamera) {
    inEveryLanguage("no-camera", [](auto& world) {
        world.capture.cameras.clear();
        world.camera.start(std::nullopt);
        world.runAll();
        world.audio.inputFormat = {0, 0};
        world.startMicrophone();
    });
}

TEST_F(PopoverLook, Edit) {
    inEveryLanguage(
        "edit",
        [](auto& world) {
            world.makeRisky();
            for (const auto* const name : {"Calendar", "Journal", "Photo Albums", "Wallet", "Alarm"}) {
                world.install(std::string("org.app.") + name, name);
            }
        },
        [](auto& shown, auto& /*world*/) {
            shown.click("edit");
            shown.type("al");
        });
}

TEST_F(PopoverLook, PhotoReview) {
    inEveryLanguage("photo-review", [](auto& world) {
        world.makeRisky();
        world.takePhoto();
    });
}

TEST_F(PopoverLook, Menu) {
    inEveryLanguage(
        "menu", [](auto& world) { world.makeRisky(); },
        [](auto& shown, auto& /*world*/) {
            shown.click("menuButton");
            shown.press(Qt::Key_Down);
        });
}

TEST_F(PopoverLook, CameraMenu) {
    inEveryLanguage(
        "camera-menu", [](auto& world) { world.makeRisky(); },
        [](auto& shown, auto& /*world*/) { shown.click("cameraMenu"); });
}

TEST_F(PopoverLook, TestShare) {
    inEveryLanguage("test-share", [](auto& world) {
        world.makeRisky();
        world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    });
}

TEST_F(PopoverLook, TestShareClear) {
    inEveryLanguage("test-share-clear", [](auto& world) {
        world.makeClear();
        world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    });
}

TEST_F(PopoverLook, ShortScreen) {
    inEveryLanguage(
        "short-screen", [](auto& world) { world.makeRisky(); }, nullptr, QSize(700, 492));
}

TEST_F(PopoverLook, CameraForbidden) {
    inEveryLanguage("camera-forbidden", [](auto& world) {
        world.makeRisky();
        world.authorization.statuses[Platform::MediaType::video] = Platform::AuthorizationStatus::restricted;
        world.camera.start(std::nullopt);
        world.runAll();
        world.cameraReadiness = {true, false};
        world.coordinator.refresh();
    });
}

TEST_F(PopoverLook, ScreenThatIsALittleTooShort) {
    inEveryLanguage(
        "low-screen", [](auto& world) { world.makeRisky(); }, nullptr, QSize(700, 571));
}

TEST_F(PopoverLook, Recording) {
    inEveryLanguage("recording", [](auto& world) {
        world.makeRisky();
        world.mic.startEcho();
        world.runAll();
    });
}

TEST_F(PopoverLook, APrivateAppIsNoLongerInstalled) {
    inEveryLanguage(
        "not-installed",
        [](auto& world) {
            world.makeRisky();
            auto apps = world.store.load().targetApps;
            apps.insert(apps.begin(), {"org.Gone", "Messages of Yesterday"});
            world.setPrivateApps(apps);
            world.files.goneApps = {"org.Gone"};
            world.coordinator.refresh();
        },
        [](auto& shown, auto& world) {
            EXPECT_THAT(shown.texts(), testing::Contains(world.view->texts()->notInstalled()));
        });
}

TEST_F(PopoverLook, NothingCanBeSeen) {
    inEveryLanguage("unknown-apps", [](auto& world) {
        world.makeClear();
        hideNothing(world, false);
    });
}

TEST_F(PopoverLook, NothingCanBeSeenAndPrivacyModeIsOn) {
    inEveryLanguage("unknown-apps-in-vain", [](auto& world) {
        world.makeRisky();
        hideNothing(world, true);
    });
}

TEST_F(PopoverLook, EveryObstacle) {
    using Platform::HidingObstacle;
    for (const auto& [obstacle, name] : {std::pair{HidingObstacle::noWindowManager, "manager"},
                                         {HidingObstacle::nextSessionNeeded, "session"},
                                         {HidingObstacle::windowManagerIgnoresHiding, "ignored"},
                                         {HidingObstacle::extensionMissing, "extension"},
                                         {HidingObstacle::extensionOff, "extension-off"},
                                         {HidingObstacle::extensionFails, "extension-fails"},
                                         {HidingObstacle::notKnownYet, "open"}}) {
        inEveryLanguage(std::string("obstacle-") + name, [obstacle = obstacle](auto& world) {
            world.isPrivacyModeActive = true;
            world.system.obstacle = obstacle;
            world.coordinator.refresh();
        });
    }
}

/// Has privacy mode on since a share was noticed.
void switchOnBySharing(ReadinessWorld& world) {
    world.isPrivacyModeActive = true;
    world.isPrivacyModeAutomatic = true;
    world.coordinator.refresh();
}

/// It says what the notice has said, between the list and the button and close to neither.
void expectNoteAboveItsButton(ShownView& shown, ReadinessWorld& world) {
    EXPECT_THAT(shown.texts(),
                testing::IsSupersetOf({world.view->texts()->privacyOnBody(), world.view->texts()->undo()}));
    const auto note = shown.place("automaticNote");
    EXPECT_TRUE(note.contains(shown.place("undo")));
    EXPECT_GE(note.top(), shown.place("privateAppsList").bottom() + 8);
    EXPECT_LE(note.bottom() + 8, shown.place("hidePrivateApps").top());
}

TEST_F(PopoverLook, AShareWasNoticed) {
    inEveryLanguage(
        "automatic",
        [](auto& world) {
            world.makeRisky();
            world.workspace.quitAll();
            for (const auto* const app : {"org.app.Messages", "org.app.Mail", "org.app.Safe"}) {
                world.workspace.run(app).hidden = true;
            }
            switchOnBySharing(world);
        },
        expectNoteAboveItsButton);
}

TEST_F(PopoverLook, AShareWasNoticedInVain) {
    inEveryLanguage(
        "automatic-in-vain",
        [](auto& world) {
            world.makeRisky();
            switchOnBySharing(world);
            hideNothing(world, true);
        },
        [](auto& shown, auto& world) {
            expectNoteAboveItsButton(shown, world);
            EXPECT_GE(shown.place("automaticNote").top(), shown.place("hidingObstacle").bottom() + 8);
        });
}

TEST_F(PopoverLook, AShareWasNoticedWithoutPrivateApps) {
    inEveryLanguage(
        "automatic-no-apps",
        [](auto& world) {
            world.makeRisky();
            world.setPrivateApps({});
            switchOnBySharing(world);
        },
        [](auto& shown, auto& world) {
            expectNoteAboveItsButton(shown, world);
            EXPECT_GE(shown.place("automaticNote").top(), shown.place("choosePrivateApps").bottom() + 8);
        });
}

TEST_F(PopoverLook, NoPrivateAppsWhereNothingCanBeHidden) {
    inEveryLanguage("no-apps-no-hiding", [](auto& world) {
        world.makeClear();
        world.setPrivateApps({});
        hideNothing(world, false);
    });
}

TEST_F(PopoverLook, WhyAButtonHasNoEffect) {
    for (const auto* const button : {"hidePrivateApps", "privateApps.chip", "fixEverything"}) {
        inEveryLanguage(
            std::string("reason-") + button,
            [](auto& world) {
                world.makeClear();
                hideNothing(world, false);
            },
            [&](auto& shown, auto& world) {
                // The pointer may have been there in the window before, and would not move then.
                QTest::mouseMove(&shown.window(), QPoint(1, 1));
                QTest::mouseMove(&shown.window(), shown.place(button).center().toPoint());
                const auto sentence = world.view->hidingObstacle();
                const auto seen = [&] { return std::ranges::count(shown.texts(), sentence); };
                EXPECT_TRUE(ShownView::waitFor([&] { return seen() == 2; })) << seen();
            });
    }
}

TEST_F(PopoverLook, TestShareInVain) {
    inEveryLanguage("test-share-in-vain", [](auto& world) {
        world.makeRisky();
        hideNothing(world, true);
        world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    });
}

TEST_F(PopoverLook, TestShareWhereNothingCanBeHidden) {
    inEveryLanguage("test-share-no-hiding", [](auto& world) {
        world.makeClear();
        world.setPrivateApps({});
        hideNothing(world, false);
        world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    });
}

TEST_F(PopoverLook, TestShareUnknown) {
    inEveryLanguage("test-share-unknown", [](auto& world) {
        world.makeClear();
        world.workspace.everyWindowIsKnown = false;
        world.coordinator.refresh();
        world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    });
}

} // namespace
} // namespace TestSupport
