#include "core/Localizer.h"
#include "tests/views/ReadinessWorld.h"
#include "tests/views/ViewFixture.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QGuiApplication>
#include <QStyleHints>

#include <cmath>
#include <ctime>

namespace TestSupport {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class Popover : public ViewTest {
protected:
    static constexpr QSize size{700, 618};

    ReadinessWorld world;
    std::unique_ptr<ShownView> shown;

    ShownView& show(const std::string& lang = "en", const QSize& viewSize = size) {
        world.makeView(lang);
        shown = std::make_unique<ShownView>(world.content(), viewSize);
        return *shown;
    }

    std::string focused() const {
        auto* item = shown->window().activeFocusItem();
        // The row of a list stands for the list.
        while (item != nullptr && item->objectName().isEmpty()) {
            item = item->parentItem();
        }
        return item == nullptr ? std::string() : item->objectName().toStdString();
    }

    static std::string property(QQuickItem* item, const char* name) {
        return item == nullptr ? "no such item" : item->property(name).toString().toStdString();
    }

    void hideApp(const std::string& bundleID) {
        const auto instances = world.workspace.runningApplicationsWithBundleIdentifier(bundleID);
        static_cast<FakeRunningApplication&>(*instances.at(0)).hidden = true;
    }

    /// Mark, its colour, the symbol's and the detail's colour.
    std::vector<std::string> look(const QString& row) {
        const auto colour = [&](const char* part) {
            return shown->find(row + part)->property("color").value<QColor>().name().toStdString();
        };
        return {property(shown->find(row + ".mark"), "name"), colour(".mark"), colour(".symbol"),
                colour(".detail")};
    }
};

/// How soon a second click follows the first one in a double click, until the end of a test.
class DoubleClickTime {
public:
    DoubleClickTime() = default;
    ~DoubleClickTime() { set(usual_); }
    DoubleClickTime(const DoubleClickTime&) = delete;
    DoubleClickTime& operator=(const DoubleClickTime&) = delete;

    static void set(int milliseconds) {
        QGuiApplication::styleHints()->setMouseDoubleClickInterval(milliseconds);
    }

private:
    int usual_ = QGuiApplication::styleHints()->mouseDoubleClickInterval();
};

const std::string green = "#1e9e57";
const std::string orange = "#d96b00";
const std::string orangeTint = "#f8e4d0";
const std::string red = "#d93434";
const std::string gray = "#858c9b";

TEST_F(Popover, StandsWhereItWasDrawn) {
    world.makeRisky();
    show();
    const auto expectPlace = [&](const char* name, double x, double y, double width, double height) {
        const auto place = shown->place(name);
        EXPECT_NEAR(place.x(), x, 1) << name;
        EXPECT_NEAR(place.y(), y, 1) << name;
        EXPECT_NEAR(place.width(), width, 1) << name;
        EXPECT_NEAR(place.height(), height, 1) << name;
    };
    expectPlace("cameraCard", 16, 62, 332, 186);
    expectPlace("mirror", 270, 72, 30, 30);
    expectPlace("cameraMenu", 308, 72, 30, 30);
    expectPlace("riskRow", 16, 260, 332, 84);
    expectPlace("shield", 33, 289, 26, 26);
    expectPlace("privateAppsPanel", 362, 62, 322, 282);
    expectPlace("edit", 644, 71, 28, 28);
    expectPlace("hidePrivateApps", 379, 291, 288, 36);
    expectPlace("readinessCheck", 16, 356, 668, 194);
    expectPlace("menuButton", 652, 16, 32, 32);
    EXPECT_NEAR(shown->place("capsule").right(), 642, 1);
    EXPECT_NEAR(shown->place("capsule").y(), 19, 1);
    EXPECT_NEAR(shown->place("riskCapsule").right(), 331, 1);
    double y = 383;
    for (const auto* const row : {"camera", "microphone", "notifications", "desktop", "privateApps"}) {
        expectPlace(row, 33, y, 634, 32);
        EXPECT_NEAR(shown->place(QString(row) + ".symbol").x(), 59, 1);
        EXPECT_NEAR(shown->place(QString(row) + ".label").x(), 87, 1);
        EXPECT_NEAR(shown->place(QString(row) + ".label").width(), 110, 0.1);
        EXPECT_NEAR(shown->place(QString(row) + ".detail").x(), 205, 1);
        EXPECT_NEAR(shown->place(QString(row) + ".chip").right(), 667, 1);
        EXPECT_NEAR(shown->place(QString(row) + ".chip").height(), 24, 0.1);
        y += 32;
    }
    const auto meter = shown->place("meter");
    EXPECT_EQ(meter.size(), QSizeF(90, 7));
    EXPECT_NEAR(meter.right() + 14, shown->place("microphone.chip").left(), 1);
    expectPlace("fixEverything", 16, 562, 466, 40);
    expectPlace("restore", 494, 562, 190, 40);
}

TEST_F(Popover, IsMirroredInArabic) {
    world.makeRisky();
    std::map<std::string, QRectF> places;
    const auto names = {"cameraCard",       "mirror",  "cameraMenu",   "riskRow",    "shield",
                        "privateAppsPanel", "edit",    "meter",        "menuButton", "hidePrivateApps",
                        "fixEverything",    "restore", "privateAppRow"};
    show();
    for (const auto* const name : names) {
        places[name] = shown->place(name);
    }
    show("ar");
    for (const auto* const name : names) {
        const auto place = shown->place(name);
        if (std::string(name) == "meter") {
            // As far from the chips, whose width the language decides.
            EXPECT_NEAR(place.left() - 14, shown->place("microphone.chip").right(), 1);
            continue;
        }
        EXPECT_NEAR(place.left(), 700 - places[name].right(), 1) << name;
        EXPECT_NEAR(place.y(), places[name].y(), 1) << name;
    }
    // A score is read from left to right everywhere.
    EXPECT_LT(shown->placeOfText("80").left(), shown->placeOfText("/ 100").left());
}

TEST_F(Popover, ChangesItsLanguageWhileItIsShown) {
    world.makeRisky();
    show("ar");
    const auto expected = shown->texts();
    show("en");
    world.makeView("ar");
    shown->engine().setModel(shown->root(), world.content());
    shown->settle();
    EXPECT_EQ(shown->texts(), expected);
    EXPECT_THAT(shown->problems(true), IsEmpty());
    shown->press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "menuButton");
}

TEST_F(Popover, UnknownRowsAreGrayCircles) {
    show();
    for (const auto* const row : {"camera", "microphone", "notifications", "desktop", "privateApps"}) {
        EXPECT_THAT(look(row), ElementsAre("circle", gray, gray, "#565d6d")) << row;
    }
    EXPECT_EQ(property(shown->find("capsule"), "tone"), "gray");
}

TEST_F(Popover, MarksFollowTheStatus) {
    world.makeRisky();
    world.cameraReadiness = {true, false};
    world.coordinator.refresh();
    show();
    EXPECT_THAT(look("camera"), ElementsAre("exclamationmark.circle.fill", red, red, "#9c4700"));
    EXPECT_THAT(look("microphone"), ElementsAre("checkmark.circle.fill", green, green, "#12703a"));
    EXPECT_THAT(look("notifications"), ElementsAre("exclamationmark.circle.fill", orange, orange, "#9c4700"));
    EXPECT_THAT(look("privateApps"), ElementsAre("exclamationmark.circle.fill", red, red, "#9c4700"));
    const std::vector<std::pair<const char*, const char*>> symbols{{"camera", "video"},
                                                                   {"microphone", "mic"},
                                                                   {"notifications", "bell"},
                                                                   {"desktop", "folder"},
                                                                   {"privateApps", "lock"}};
    for (const auto& [row, symbol] : symbols) {
        EXPECT_EQ(property(shown->find(QString(row) + ".symbol"), "name"), symbol);
    }
}

TEST_F(Popover, ARefreshChangesWhatIsShown) {
    world.makeRisky();
    show();
    EXPECT_THAT(shown->texts(), Contains(QString("2 visible")));
    world.makeClear();
    shown->settle();
    EXPECT_THAT(shown->texts(), Not(Contains(QString("2 visible"))));
    EXPECT_THAT(shown->texts(), Contains(QString("Privacy mode on")));
    EXPECT_EQ(property(shown->find("privateApps.chip"), "text"), "Restore");
    EXPECT_EQ(property(shown->find("desktop.chip"), "text"), "Show desktop");
    EXPECT_EQ(property(shown->find("fixEverything"), "kind"), "tonal");
    EXPECT_FALSE(shown->find("hidePrivateApps")->isEnabled());
    EXPECT_TRUE(shown->find("restore")->isEnabled());
}

TEST_F(Popover, HideWorksWhileAPrivateAppIsVisibleAndSaysWhatIsMissing) {
    show();
    EXPECT_FALSE(shown->find("hidePrivateApps")->isEnabled());
    EXPECT_EQ(property(shown->find("hidePrivateApps"), "reason"), "Add private apps in Settings.");
    world.setPrivateApps({{"a", "A"}});
    auto& app = world.workspace.run("a");
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    EXPECT_TRUE(shown->find("hidePrivateApps")->isEnabled());
    EXPECT_EQ(property(shown->find("hidePrivateApps"), "reason"), "");
    app.hidden = true;
    world.coordinator.refresh();
    EXPECT_FALSE(shown->find("hidePrivateApps")->isEnabled());
}

TEST_F(Popover, WhatAShareHasSwitchedOnCanBeUndone) {
    world.makeRisky();
    show();
    EXPECT_EQ(shown->find("undo"), nullptr);
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    EXPECT_EQ(shown->find("undo"), nullptr) << "its user has switched it on";
    world.isPrivacyModeAutomatic = true;
    world.coordinator.refresh();
    shown->settle();
    EXPECT_THAT(shown->texts(), Contains(QString("Detected possible screen sharing.")));
    shown->click("undo");
    EXPECT_THAT(world.actions, ElementsAre("undo"));
    EXPECT_EQ(shown->find("undo"), nullptr);
    EXPECT_THAT(shown->texts(), Not(Contains(QString("Detected possible screen sharing."))));
    EXPECT_EQ(shown->place("privateAppsList").height(), 178) << "the list has its room again";
}

TEST_F(Popover, UndoingByKeyboardLeavesItWithTheNextButton) {
    world.makeRisky();
    world.isPrivacyModeActive = world.isPrivacyModeAutomatic = true;
    world.coordinator.refresh();
    show();
    shown->find("undo")->forceActiveFocus(Qt::TabFocusReason);
    auto* const spoken = QAccessible::queryAccessibleInterface(shown->find("undo"));
    EXPECT_EQ(spoken->text(QAccessible::Name), "Undo");
    EXPECT_EQ(spoken->text(QAccessible::Description), "Detected possible screen sharing.");
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.actions, ElementsAre("undo"));
    EXPECT_EQ(focused(), "hidePrivateApps");
}

TEST_F(Popover, TheKeyboardIsNeverLeftWithNothing) {
    world.makeRisky();
    show();
    const auto useByKey = [&](const char* name) {
        shown->find(name)->forceActiveFocus(Qt::TabFocusReason);
        shown->press(Qt::Key_Space);
    };
    const auto expectRing = [&](const char* name) {
        EXPECT_EQ(focused(), name);
        EXPECT_EQ(property(shown->window().activeFocusItem(), "visualFocus"), "true") << name;
    };

    // Undo goes, and nothing can be hidden here.
    world.system.obstacle = Platform::HidingObstacle::noWindowManager;
    world.isPrivacyModeActive = world.isPrivacyModeAutomatic = true;
    world.coordinator.refresh();
    shown->settle();
    useByKey("undo");
    expectRing("camera.chip");

    // The same, where no app is private.
    world.system.obstacle.reset();
    world.setPrivateApps({});
    world.isPrivacyModeActive = world.isPrivacyModeAutomatic = true;
    world.coordinator.refresh();
    shown->settle();
    useByKey("undo");
    expectRing("camera.chip");

    // What hides all that can be hidden is disabled.
    world.setPrivateApps({{"org.app.Mail", "Mail"}});
    world.coordinator.refresh();
    shown->settle();
    useByKey("hidePrivateApps");
    hideApp("org.app.Mail");
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    shown->settle();
    EXPECT_FALSE(shown->find("hidePrivateApps")->isEnabled());
    expectRing("camera.chip");

    // The list of apps gives way to the private ones.
    shown->click("edit");
    useByKey("saveApps");
    EXPECT_EQ(shown->find("saveApps"), nullptr);
    expectRing("edit");

    // So does a photo.
    world.takePhoto();
    shown->settle();
    useByKey("photoBack");
    EXPECT_EQ(shown->find("photoBack"), nullptr);
    expectRing("camera.chip");
}

TEST_F(Popover, WhoUsesTheMouseSeesNoRing) {
    world.makeRisky();
    show();
    shown->click("edit");
    shown->click("saveApps");
    EXPECT_EQ(focused(), "edit");
    EXPECT_EQ(property(shown->find("edit"), "visualFocus"), "false");
    shown->click("hidePrivateApps");
    for (const auto* const app : {"org.app.Messages", "org.app.Mail"}) {
        hideApp(app);
    }
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    shown->settle();
    EXPECT_EQ(focused(), "camera.chip");
    EXPECT_EQ(property(shown->find("camera.chip"), "visualFocus"), "false");
}

TEST_F(Popover, WhatIsSaidOfTheScoreFollowsTheNumber) {
    world.makeRisky();
    show();
    const auto shield = property(shown->find("shield"), "color");
    const auto label = property(shown->find("riskCapsule"), "text");
    world.makeClear();
    EXPECT_EQ(property(shown->find("score"), "value"), "80") << "it has yet to count";
    EXPECT_EQ(property(shown->find("riskCapsule"), "text"), label);
    EXPECT_EQ(property(shown->find("shield"), "color"), shield);
    EXPECT_TRUE(
        ShownView::waitFor([&] { return property(shown->find("riskCapsule"), "text") == "Low Risk"; }));
    EXPECT_EQ(property(shown->find("score"), "value"), "0");
    EXPECT_EQ(property(shown->find("shield"), "color"), green);
}

TEST_F(Popover, MediumAndHighRiskLookAlike) {
    show();
    const auto looksRisky = [&](const char* label) {
        world.coordinator.refresh();
        return ShownView::waitFor([&] {
            const auto look = std::vector{property(shown->find("riskCapsule"), "text"),
                                          property(shown->find("riskCapsule"), "color"),
                                          property(shown->find("shield"), "color")};
            return look == std::vector<std::string>{label, orangeTint, orange};
        });
    };
    EXPECT_TRUE(looksRisky("Medium Risk"));
    world.setPrivateApps({{"a", "A"}});
    world.workspace.run("a");
    EXPECT_TRUE(looksRisky("High Risk"));
}

TEST_F(Popover, EveryButtonActs) {
    world.makeRisky();
    show();
    for (const auto* const name : {"camera.chip", "desktop.chip", "privateApps.chip", "hidePrivateApps",
                                   "fixEverything", "restore", "notifications.chip"}) {
        shown->click(name);
    }
    EXPECT_THAT(world.actions, ElementsAre("takePhoto", "toggleDesktop", "hidePrivateApps", "hidePrivateApps",
                                           "fixEverything", "restore"));
    EXPECT_THAT(world.urlOpener.opened, testing::SizeIs(1));
    const auto isMirrored = world.camera.mirrored();
    shown->click("mirror");
    EXPECT_NE(world.camera.mirrored(), isMirrored);
    shown->click("microphone.chip");
    EXPECT_EQ(world.mic.echoPhase(), Curtain::EchoPhase::recording);
}

TEST_F(Popover, NewsOfThePhotoFitInEveryLanguage) {
    world.makeRisky();
    for (const auto* const lang : {"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"}) {
        SCOPED_TRACE(lang);
        world.takePhoto();
        show(lang);
        for (const auto news :
             {Curtain::PhotoNews::copied, Curtain::PhotoNews::notCopied, Curtain::PhotoNews::saved,
              Curtain::PhotoNews::noSpace, Curtain::PhotoNews::notAllowed, Curtain::PhotoNews::notSaved}) {
            world.view->tellOfPhoto(news);
            shown->settle();
            EXPECT_NE(property(shown->find("photoNews"), "text"), "");
            EXPECT_THAT(shown->problems(std::string(lang) == "ar"), IsEmpty());
        }
        shown->picture(std::string("photo-not-saved-") + lang);
        world.view->discardPhoto();
        world.view->tellOfPhoto(Curtain::PhotoNews::notTaken);
        shown->settle();
        EXPECT_THAT(shown->problems(std::string(lang) == "ar"), IsEmpty());
        EXPECT_EQ(property(shown->find("camera.detail"), "text"), world.view->photoNews().toStdString());
    }
}

TEST_F(Popover, APhotoCanBeTakenOnlyWhereThereIsAPicture) {
    show();
    EXPECT_FALSE(shown->find("camera.chip")->isEnabled());
    EXPECT_EQ(property(shown->find("camera.chip"), "reason"), "The camera shows no picture.");
    world.startCamera();
    shown->settle();
    EXPECT_TRUE(shown->find("camera.chip")->isEnabled());
    EXPECT_EQ(property(shown->find("camera.chip"), "reason"), "");
}

TEST_F(Popover, WithoutPrivateAppsThePanelSaysHowToGetSome) {
    show();
    EXPECT_THAT(shown->texts(), Contains(QString("Add private apps in Settings.")));
    world.setPrivateApps({{"a", "A"}});
    world.coordinator.refresh();
    shown->settle();
    EXPECT_THAT(shown->texts(), Not(Contains(QString("Add private apps in Settings."))));
}

TEST_F(Popover, WithoutAccessTheCameraCardLeadsToTheSystemsSettings) {
    world.authorization.statuses[Platform::MediaType::video] = Platform::AuthorizationStatus::denied;
    world.camera.start(std::nullopt);
    show();
    EXPECT_THAT(shown->texts(), Contains(QString("Curtain needs camera access")));
    shown->click("cameraSettings");
    EXPECT_THAT(world.urlOpener.opened,
                ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_Camera"));
    world.urlOpener.canOpen = false;
    shown->click("cameraSettings");
    EXPECT_THAT(shown->texts(), Contains(world.view->cameraSettingsProblem()));
}

TEST_F(Popover, ACameraThatTheSystemForbidsLeadsToNoSettings) {
    world.authorization.statuses[Platform::MediaType::video] = Platform::AuthorizationStatus::restricted;
    world.camera.start(std::nullopt);
    show();
    EXPECT_EQ(shown->find("cameraSettings"), nullptr);
    EXPECT_THAT(shown->texts(), Contains(world.view->texts()->cameraForbidden()));
}

TEST_F(Popover, ThePrivateAppsButtonRestoresInPrivacyMode) {
    world.makeClear();
    show();
    shown->click("privateApps.chip");
    EXPECT_THAT(world.actions, ElementsAre("restore"));
}

TEST_F(Popover, TheMenuLeadsToPanelSettingsAndEnd) {
    world.makeRisky();
    show();
    shown->click("menuButton");
    EXPECT_NEAR(shown->place("menuTestShareMode").left(), 482, 1);
    shown->click("menuSettings");
    shown->click("menuButton");
    shown->click("menuQuit");
    EXPECT_THAT(world.actions, ElementsAre("openSettings", "quit"));
    shown->click("menuButton");
    shown->click("menuTestShareMode");
    EXPECT_THAT(shown->texts(), Contains(QString("If you shared your screen right now…")));
}

TEST_F(Popover, TheCameraMenuMarksAndSwitches) {
    world.startCamera();
    show();
    shown->click("cameraMenu");
    EXPECT_TRUE(shown->find("camera front")->property("isChosen").toBool());
    EXPECT_FALSE(shown->find("camera desk")->property("isChosen").toBool());
    shown->click("camera desk");
    EXPECT_THAT(world.actions, ElementsAre("selectCamera desk"));
    world.capture.cameras.pop_back();
    shown->click("cameraMenu");
    EXPECT_NE(shown->find("camera front"), nullptr);
    EXPECT_EQ(shown->find("camera desk"), nullptr);
}

TEST_F(Popover, ThePanelAndItsScrimAreAsSmallAsTheViewIsDrawn) {
    const auto onScreen = [](const QQuickItem& item) { return item.mapRectToScene(item.boundingRect()); };
    world.makeRisky();
    world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    show();
    const auto before = onScreen(*shown->find("testShareFix"));
    auto& view = shown->root();
    view.setTransformOrigin(QQuickItem::TopLeft);
    view.setScale(0.5);
    world.view->setShowingTestShare(false);
    shown->settle();
    world.view->setShowingTestShare(true);
    shown->settle();
    EXPECT_EQ(onScreen(*shown->find("testShareScrim")), onScreen(view));
    const auto after = onScreen(*shown->find("testShareFix"));
    EXPECT_NEAR(after.left(), before.left() / 2, 1);
    EXPECT_NEAR(after.bottom(), before.bottom() / 2, 1);
    EXPECT_NEAR(after.width(), before.width() / 2, 1);
}

TEST_F(Popover, MenusAndTipsAreAsSmallAsTheViewIsDrawn) {
    const auto onScreen = [&](const char* name) {
        const auto* const item = shown->find(name);
        return item == nullptr ? QRectF() : item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    };
    world.makeRisky();
    show();
    shown->click("menuButton");
    const auto before = onScreen("menuQuit");
    shown->press(Qt::Key_Escape);
    auto& view = shown->root();
    view.setTransformOrigin(QQuickItem::TopLeft);
    view.setScale(0.5);
    shown->clickAt(onScreen("menuButton").center());
    const auto menu = onScreen("menuQuit");
    ASSERT_FALSE(menu.isEmpty());
    EXPECT_NEAR(menu.width(), before.width() / 2, 1);
    EXPECT_NEAR(menu.right(), before.right() / 2, 1);
    EXPECT_NEAR(menu.bottom(), before.bottom() / 2, 1);
    shown->press(Qt::Key_Escape);
    QTest::mouseMove(&shown->window(), {1, 1});
    QTest::mouseMove(&shown->window(), onScreen("edit").center().toPoint());
    ASSERT_TRUE(ShownView::waitFor([&] { return shown->find("tip") != nullptr; }));
    EXPECT_NEAR(onScreen("tip").height(), shown->find("tip")->height() / 2, 1);
    EXPECT_NEAR(onScreen("tip").top(), onScreen("edit").bottom() + 3, 1);
}

TEST_F(Popover, ThePanelSaysWhatWouldBeSeen) {
    world.makeRisky();
    world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    show();
    for (const auto* const name : {"issue privateApps", "issue desktop", "issue notifications",
                                   "shareWindows", "shareFiles", "shareNotice"}) {
        EXPECT_NE(shown->find(name), nullptr) << name;
    }
    EXPECT_EQ(property(shown->find("testShareScore"), "value"), "80");
    shown->click("testShareFix");
    EXPECT_THAT(world.actions, ElementsAre("fixEverything"));
    world.makeClear();
    shown->settle();
    EXPECT_EQ(shown->find("issue privateApps"), nullptr);
    EXPECT_EQ(shown->find("shareWindows"), nullptr);
    EXPECT_THAT(shown->texts(), Contains(QString("You're ready.")));
    shown->click("testShareClose");
    EXPECT_FALSE(world.view->showingTestShare());
    EXPECT_EQ(shown->find("testShareFix"), nullptr);
    // The panel comes back with the next opening.
    shown->window().hide();
    shown->window().show();
    EXPECT_TRUE(ShownView::waitFor([&] { return world.view->showingTestShare(); }));
    shown->settle();
    // Also where it was open when the popover closed.
    shown->window().hide();
    EXPECT_TRUE(ShownView::waitFor([&] { return !world.view->showingTestShare(); }));
    shown->window().show();
    EXPECT_TRUE(ShownView::waitFor([&] { return world.view->showingTestShare(); }));
    shown->settle();
    EXPECT_NE(shown->find("testShareFix"), nullptr);
    shown->press(Qt::Key_Escape);
    EXPECT_FALSE(world.view->showingTestShare());
}

TEST_F(Popover, WhatWasOpenClosesWithIt) {
    world.makeRisky();
    show();
    const auto hideAndShow = [&] {
        shown->window().hide();
        ASSERT_TRUE(ShownView::waitFor([&] { return !shown->window().isExposed(); }));
        // At once: nothing is left to fade when it is shown again.
        EXPECT_EQ(shown->find("testShareFix"), nullptr);
        shown->window().show();
        shown->window().requestActivate();
        ASSERT_TRUE(
            ShownView::waitFor([&] { return shown->window().isExposed() && shown->window().isActive(); }));
        shown->settle();
        EXPECT_EQ(shown->window().activeFocusItem(), &shown->root());
    };
    shown->click("menuButton");
    EXPECT_NE(shown->find("menuQuit"), nullptr);
    hideAndShow();
    EXPECT_EQ(shown->find("menuQuit"), nullptr);
    shown->click("cameraMenu");
    EXPECT_NE(shown->find("camera desk"), nullptr);
    hideAndShow();
    EXPECT_EQ(shown->find("camera desk"), nullptr);
    shown->click("menuButton");
    shown->click("menuTestShareMode");
    EXPECT_NE(shown->find("testShareFix"), nullptr);
    hideAndShow();
    EXPECT_FALSE(world.view->showingTestShare());
    EXPECT_EQ(shown->find("testShareFix"), nullptr);
    shown->find("fixEverything")->forceActiveFocus(Qt::TabFocusReason);
    hideAndShow();
}

TEST_F(Popover, APhotoTakesThePlaceOfTheColumnsUntilItGoes) {
    world.makeRisky();
    show();
    world.takePhoto();
    shown->settle();
    EXPECT_EQ(shown->find("cameraCard"), nullptr);
    EXPECT_EQ(shown->find("privateAppsPanel"), nullptr);
    EXPECT_NEAR(shown->place("photo").height(), 238, 0.1);
    EXPECT_EQ(shown->find("flash"), nullptr) << "the flash must have gone";
    shown->click("photoCopy");
    shown->click("photoSave");
    EXPECT_THAT(world.actions, ElementsAre("copyPhoto", "savePhoto"));
    shown->click("photoBack");
    EXPECT_EQ(world.camera.capturedPhoto(), nullptr);
    EXPECT_NE(shown->find("cameraCard"), nullptr);
    EXPECT_NE(shown->find("privateAppsPanel"), nullptr);
}

TEST_F(Popover, TheCameraMayVanish) {
    world.startCamera();
    show();
    EXPECT_NE(shown->find("mirror"), nullptr);
    world.capture.cameras.clear();
    world.camera.start(std::nullopt);
    world.audio.inputFormat = {0, 0};
    world.runAll();
    shown->settle();
    EXPECT_EQ(shown->find("mirror"), nullptr);
    EXPECT_THAT(shown->texts(), Contains(QString("No camera found")));
}

TEST_F(Popover, ACameraThatStaysDarkShowsASign) {
    world.startCamera();
    show();
    EXPECT_EQ(shown->find("noPicture"), nullptr);
    world.capture.session->show(nullptr);
    EXPECT_TRUE(ShownView::waitFor([&] { return shown->find("noPicture") != nullptr; }));
    EXPECT_THAT(shown->problems(false), IsEmpty());
    world.capture.session->show(portrait(664, 372));
    EXPECT_TRUE(ShownView::waitFor([&] { return shown->find("noPicture") == nullptr; }));
}

TEST_F(Popover, ACameraThatIsInterruptedSaysWhyAndWearsNoBadge) {
    world.makeClear();
    show();
    ASSERT_TRUE(ShownView::waitFor([&] { return shown->find("readyBadge") != nullptr; }));
    world.capture.session->show(nullptr);
    world.capture.session->interrupt(Platform::CaptureInterruption::deviceFailed);
    shown->settle();
    EXPECT_EQ(shown->find("readyBadge"), nullptr);
    EXPECT_THAT(shown->texts(),
                Contains(QString("The camera doesn't start. Another program may be using it.")));
    EXPECT_THAT(shown->problems(false), IsEmpty());
    world.capture.session->show(portrait(664, 372));
    world.capture.session->interrupt(std::nullopt);
    EXPECT_TRUE(ShownView::waitFor([&] { return shown->find("readyBadge") != nullptr; }));
    EXPECT_EQ(shown->find("noPicture"), nullptr);
}

TEST_F(Popover, TheBadgeWaitsForAPicture) {
    world.makeClear();
    world.capture.session->show(nullptr);
    show();
    EXPECT_EQ(shown->find("readyBadge"), nullptr);
    world.capture.session->show(portrait(664, 372));
    EXPECT_TRUE(ShownView::waitFor([&] { return shown->find("readyBadge") != nullptr; }));
}

TEST_F(Popover, WithoutTheRiskRowTheCameraTakesItsRoom) {
    world.makeRisky();
    world.change([](auto& preferences) { preferences.showEmbarrassmentScore = false; });
    show();
    EXPECT_EQ(shown->find("riskRow"), nullptr);
    EXPECT_NEAR(shown->place("cameraCard").height(), 282, 0.1);
}

TEST_F(Popover, AppsAreEditedWithTheMouse) {
    world.makeRisky();
    world.install("org.app.Calendar", "Calendar");
    world.install("org.app.Journal", "Journal");
    show();
    shown->click("edit");
    EXPECT_TRUE(shown->find("search")->hasActiveFocus());
    shown->click("remove org.app.Mail");
    EXPECT_THAT(world.store.load().targetApps, testing::SizeIs(3));
    shown->type("cal");
    EXPECT_EQ(world.view->appQuery(), "cal");
    shown->click("saveApps");
    EXPECT_FALSE(world.view->editingApps());
    EXPECT_NE(shown->find("hidePrivateApps"), nullptr);
}

TEST_F(Popover, ADoubleClickOnAnAppsButtonLeavesTheAppThatSlidesBelowItAlone) {
    world.setPrivateApps({{"org.app.Albums", "Albums"}, {"org.app.Mail", "Mail"}});
    world.install("org.app.Calendar", "Calendar");
    world.install("org.app.Journal", "Journal");
    show();
    shown->click("edit");
    const DoubleClickTime time;
    for (const auto* const button : {"remove org.app.Albums", "add org.app.Journal"}) {
        SCOPED_TRACE(button);
        const auto place = shown->place(button).center();
        const auto before = world.store.load().targetApps;
        DoubleClickTime::set(60'000);
        shown->clickAt(place);
        const auto once = world.store.load().targetApps;
        EXPECT_NE(once, before);
        shown->clickAt(place);
        EXPECT_EQ(world.store.load().targetApps, once);
        DoubleClickTime::set(1);
        shown->clickAt(place);
        EXPECT_NE(world.store.load().targetApps, once) << "whoever clicks later means what is there";
    }
}

TEST_F(Popover, ADoubleClickDoesNotReachTheButtonThatTakesAnothersPlace) {
    world.makeRisky();
    show();
    const DoubleClickTime time;
    DoubleClickTime::set(60'000);
    shown->click("edit");
    const auto save = shown->place("saveApps").center();
    shown->clickAt(save);
    ASSERT_TRUE(shown->place("hidePrivateApps").contains(save));
    shown->clickAt(save);
    EXPECT_THAT(world.actions, IsEmpty());
    const auto chip = shown->place("privateApps.chip").center();
    shown->clickAt(chip);
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    shown->settle();
    EXPECT_EQ(property(shown->find("privateApps.chip"), "text"), "Restore");
    shown->clickAt(chip);
    EXPECT_THAT(world.actions, ElementsAre("hidePrivateApps"));
    DoubleClickTime::set(1);
    shown->clickAt(chip);
    EXPECT_THAT(world.actions, ElementsAre("hidePrivateApps", "restore"));
}

TEST_F(Popover, TabLeadsFromTheSearchToWhatWasSearchedForAndNotToWhatIsPrivateAlready) {
    std::vector<CurtainCore::TargetApp> apps;
    for (const auto* const name : {"Albums", "Calendar", "Mail", "Notes", "Zebra"}) {
        apps.push_back({std::string("org.app.") + name, name});
    }
    world.setPrivateApps(apps);
    world.install("org.app.Journal", "Journal");
    world.install("org.app.Xylophone", "Xylophone");
    show();
    shown->click("edit");
    shown->type("jour");
    EXPECT_TRUE(ShownView::waitFor([&] { return shown->find("add org.app.Journal") != nullptr; }));
    EXPECT_LT(shown->place("add org.app.Journal").bottom(), shown->place("saveApps").y());
    shown->press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "editedApps");
    shown->press(Qt::Key_Space);
    apps.push_back({"org.app.Journal", "Journal"});
    EXPECT_EQ(world.store.load().targetApps, apps);
}

TEST_F(Popover, ASearchThatFindsNothingSaysSo) {
    world.setPrivateApps({{"org.app.Mail", "Mail"}});
    world.install("org.app.Journal", "Journal");
    show();
    shown->click("edit");
    EXPECT_EQ(shown->find("noAppFound"), nullptr);
    shown->type("xyz");
    EXPECT_THAT(shown->texts(), Contains(QString("No app has this name.")));
    EXPECT_THAT(shown->problems(false), IsEmpty());
    shown->picture("popover-no-app-found");
}

TEST_F(Popover, AnEmptyListLeadsToTheAppsInEveryLanguage) {
    for (const auto* const lang : {"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"}) {
        SCOPED_TRACE(lang);
        show(lang);
        EXPECT_THAT(shown->problems(std::string(lang) == "ar"), IsEmpty());
        shown->picture(std::string("popover-empty-") + lang);
        shown->click("choosePrivateApps");
        EXPECT_TRUE(world.view->editingApps());
        EXPECT_EQ(shown->find("choosePrivateApps"), nullptr);
    }
}

TEST_F(Popover, AppsAreEditedWithTheKeyboard) {
    world.setPrivateApps({{"org.app.Mail", "Mail"}});
    world.install("org.app.Calendar", "Calendar");
    world.install("org.app.Journal", "Journal");
    show();
    shown->click("edit");
    shown->press(Qt::Key_Down);
    EXPECT_EQ(focused(), "editedApps");
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps,
                ElementsAre(CurtainCore::TargetApp{"org.app.Mail", "Mail"},
                            CurtainCore::TargetApp{"org.app.Calendar", "Calendar"}));
    shown->press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "saveApps");
    shown->press(Qt::Key_Return);
    EXPECT_FALSE(world.view->editingApps());
}

TEST_F(Popover, TheDividerIsNoAppAfterTheLastPrivateAppAboveItHasGone) {
    world.setPrivateApps({{"org.app.Mail", "Mail"}, {"org.app.Safe", "Password Safe"}});
    world.install("org.app.Journal", "Journal");
    world.install("org.app.Safe", "Password Safe");
    show();
    shown->click("edit");
    shown->type("jour");
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Up);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps, ElementsAre(CurtainCore::TargetApp{"org.app.Mail", "Mail"}));
    EXPECT_EQ(shown->find("editedApps")->property("currentIndex").toInt(), 0);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps, IsEmpty());
}

TEST_F(Popover, TheDividerIsNoAppForAssistiveTechnology) {
    world.setPrivateApps({{"org.app.Mail", "Mail"}});
    world.install("org.app.Calendar", "Calendar");
    show();
    shown->click("edit");
    auto* const list = QAccessible::queryAccessibleInterface(shown->find("editedApps"));
    ASSERT_NE(list, nullptr);
    int dividers = 0;
    for (int child = 0; child < list->childCount(); ++child) {
        if (list->child(child)->role() == QAccessible::Separator) {
            ++dividers;
            list->child(child)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        }
    }
    EXPECT_EQ(dividers, 1);
    EXPECT_THAT(world.store.load().targetApps, ElementsAre(CurtainCore::TargetApp{"org.app.Mail", "Mail"}));
}

TEST_F(Popover, AppsRemovedInARowAreThoseThatFollow) {
    std::vector<CurtainCore::TargetApp> apps;
    for (const auto* const name : {"Albums", "Calendar", "Mail", "Notes"}) {
        apps.push_back({std::string("org.app.") + name, name});
        world.install(apps.back().bundleID, name);
    }
    world.install("org.app.Journal", "Journal");
    world.install("org.app.Zoom", "Zoom");
    world.setPrivateApps(apps);
    show();
    shown->click("edit");
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps, ElementsAre(apps[0], apps[2], apps[3]));
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps, ElementsAre(apps[0], apps[3]));
    EXPECT_EQ(shown->find("editedApps")->property("currentIndex").toInt(), 1);
}

TEST_F(Popover, AppsAddedInARowAreThoseThatFollow) {
    world.setPrivateApps({{"org.app.Zoom", "Zoom"}});
    for (const auto* const name : {"Albums", "Calendar", "Mail"}) {
        world.install(std::string("org.app.") + name, name);
    }
    show();
    shown->click("edit");
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Space);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps,
                ElementsAre(CurtainCore::TargetApp{"org.app.Zoom", "Zoom"},
                            CurtainCore::TargetApp{"org.app.Albums", "Albums"},
                            CurtainCore::TargetApp{"org.app.Calendar", "Calendar"}));
}

TEST_F(Popover, TheKeyboardEmptiesTheList) {
    world.setPrivateApps({{"org.app.Mail", "Mail"}});
    show();
    shown->click("edit");
    shown->press(Qt::Key_Down);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.store.load().targetApps, IsEmpty());
    shown->press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "saveApps");
}

TEST_F(Popover, AKeyThatIsHeldEditsOneApp) {
    std::vector<CurtainCore::TargetApp> apps;
    for (const auto* const name : {"Albums", "Calendar", "Mail", "Notes", "Zoom"}) {
        apps.push_back({std::string("org.app.") + name, name});
    }
    world.setPrivateApps(apps);
    show();
    shown->click("edit");
    shown->press(Qt::Key_Down);
    auto left = apps.size();
    for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        shown->hold(key);
        EXPECT_THAT(world.store.load().targetApps, testing::SizeIs(--left));
    }
}

TEST_F(Popover, EscapeEmptiesTheSearchAndIsThenForThePopover) {
    show();
    shown->click("edit");
    shown->type("cal");
    shown->press(Qt::Key_Escape);
    EXPECT_EQ(world.view->appQuery(), "");
    EXPECT_TRUE(world.view->editingApps());
}

TEST_F(Popover, TheKeyboardGoesFromTopToBottom) {
    world.makeRisky();
    show();
    std::vector<std::string> order;
    for (int step = 0; step < 12; ++step) {
        shown->press(Qt::Key_Tab);
        order.push_back(focused());
    }
    EXPECT_THAT(order, ElementsAre("menuButton", "mirror", "cameraMenu", "edit", "hidePrivateApps",
                                   "camera.chip", "microphone.chip", "notifications.chip", "desktop.chip",
                                   "privateApps.chip", "fixEverything", "restore"));
    shown->press(Qt::Key_Backtab, Qt::ShiftModifier);
    shown->press(Qt::Key_Space);
    EXPECT_THAT(world.actions, ElementsAre("fixEverything"));
    shown->picture("popover-focus-en");
}

TEST_F(Popover, ThePanelKeepsTheKeyboard) {
    world.makeRisky();
    world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    show();
    for (int step = 0; step < 4; ++step) {
        shown->press(Qt::Key_Tab);
        EXPECT_THAT(focused(), testing::AnyOf("testShareFix", "testShareClose"));
    }
}

TEST_F(Popover, AShortScreenScrollsToWhatHasTheKeyboard) {
    world.makeRisky();
    show("en", QSize(700, 492));
    EXPECT_NEAR(shown->place("fixEverything").y(), 436, 0.1);
    EXPECT_NEAR(shown->place("middle").height(), 362, 0.1);
    for (int step = 0; step < 10; ++step) {
        shown->press(Qt::Key_Tab);
    }
    EXPECT_EQ(focused(), "privateApps.chip");
    EXPECT_LE(shown->place("privateApps.chip").bottom(), 424);
    for (int step = 0; step < 8; ++step) {
        shown->press(Qt::Key_Backtab, Qt::ShiftModifier);
    }
    EXPECT_EQ(focused(), "mirror");
    EXPECT_GE(shown->place("mirror").top(), 62);
}

TEST_F(Popover, OnAScreenThatIsALittleTooShortAllIsSeenWithoutScrolling) {
    world.makeRisky();
    // Those of 1366x768 at 1.25, with panels of several heights.
    for (const int height : {617, 606, 584, 571, 569}) {
        SCOPED_TRACE(height);
        show("en", QSize(700, height));
        EXPECT_FALSE(shown->find("middle")->property("canScroll").toBool());
        EXPECT_EQ(shown->place("privateAppsPanel").height(), 282);
        EXPECT_LE(shown->place("privateApps.chip").bottom() + 4, shown->place("readinessCheck").bottom());
        EXPECT_LE(shown->place("readinessCheck").bottom() + 8, shown->place("fixEverything").top());
        EXPECT_LE(shown->place("fixEverything").bottom() + 8, height);
        EXPECT_GE(shown->place("capsule").top(), 8);
        EXPECT_THAT(shown->problems(false), IsEmpty());
    }
}

TEST_F(Popover, SaysItsValuesToAssistiveTechnology) {
    world.makeRisky();
    show();
    const auto says = [&](const char* name, QAccessible::Role role, const QString& text) {
        auto* const interface = QAccessible::queryAccessibleInterface(shown->find(name));
        ASSERT_NE(interface, nullptr) << name;
        EXPECT_EQ(interface->role(), role) << name;
        EXPECT_EQ(interface->text(QAccessible::Name), text) << name;
    };
    says("capsule", QAccessible::StaticText, "Sharing now could expose private stuff.");
    says("riskRow", QAccessible::Grouping, "Screen Share Risk: 80 / 100, High Risk");
    says("camera", QAccessible::Grouping, "Camera: Looks good");
    says("camera.chip", QAccessible::Button, "Take photo");
    says("meter", QAccessible::ProgressBar, "Microphone");
    says("privateAppsList", QAccessible::List, "Private apps");
    says("edit", QAccessible::CheckBox, "Edit apps");
    auto* const meter = QAccessible::queryAccessibleInterface(shown->find("meter"));
    EXPECT_EQ(meter->text(QAccessible::Description), "60%");
}

TEST_F(Popover, ButtonsThatCouldOnlyBeInVainSayWhy) {
    world.makeClear();
    world.isPrivacyModeActive = false;
    world.coordinator.refresh();
    show();
    const auto buttons = {"hidePrivateApps", "privateApps.chip", "fixEverything"};
    const auto described = [&](const char* name) {
        auto* const interface = QAccessible::queryAccessibleInterface(shown->find(name));
        return interface->text(QAccessible::Description).toStdString();
    };
    for (const auto* const name : buttons) {
        EXPECT_TRUE(shown->find(name)->isEnabled()) << name;
        EXPECT_EQ(described(name), "") << name;
    }
    world.system.obstacle = Platform::HidingObstacle::waylandSession;
    world.coordinator.refresh();
    shown->settle();
    for (const auto* const name : buttons) {
        EXPECT_FALSE(shown->find(name)->isEnabled()) << name;
        EXPECT_EQ(described(name), "This Wayland desktop offers no way to hide other apps.") << name;
        shown->click(name);
    }
    EXPECT_THAT(world.actions, IsEmpty());
    // A mode that is on can be switched off, and what else is wrong can be mended.
    world.isPrivacyModeActive = true;
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = false; });
    world.coordinator.refresh();
    shown->settle();
    EXPECT_TRUE(shown->find("fixEverything")->isEnabled());
    EXPECT_EQ(described("fixEverything"), "This Wayland desktop offers no way to hide other apps.");
    shown->click("privateApps.chip");
    EXPECT_THAT(world.actions, ElementsAre("restore"));
}

TEST_F(Popover, WithoutPrivateAppsThereIsNothingToHide) {
    world.makeClear();
    world.setPrivateApps({});
    world.isPrivacyModeActive = false;
    world.coordinator.refresh();
    show();
    for (const auto* const name : {"hidePrivateApps", "privateApps.chip"}) {
        EXPECT_FALSE(shown->find(name)->isEnabled()) << name;
        EXPECT_EQ(property(shown->find(name), "reason"), "Add private apps in Settings.") << name;
    }
    // A mode that is on can be switched off.
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    shown->settle();
    EXPECT_TRUE(shown->find("privateApps.chip")->isEnabled());
}

TEST_F(Popover, AFailedPhotoIsSaidInTheColourOfAWarning) {
    world.makeRisky();
    world.cameraReadiness = {true, true};
    world.coordinator.refresh();
    show();
    const auto usual = shown->find("camera.detail")->property("color");
    world.view->tellOfPhoto(Curtain::PhotoNews::notTaken);
    shown->settle();
    EXPECT_EQ(property(shown->find("camera.detail"), "text"), "The camera took no photo.");
    EXPECT_EQ(shown->find("camera.detail")->property("color"),
              shown->find("notifications.detail")->property("color"));
    world.view->tellOfPhoto(Curtain::PhotoNews::none);
    shown->settle();
    EXPECT_EQ(shown->find("camera.detail")->property("color"), usual);
}

TEST_F(Popover, RestsWhileNothingChanges) {
    world.makeRisky();
    show();
    int frames = 0;
    QObject::connect(&shown->window(), &QQuickWindow::frameSwapped, [&] { ++frames; });
    QTest::qWait(500);
    EXPECT_EQ(frames, 0);
}

TEST_F(Popover, ARefreshIsOneFrame) {
    world.makeRisky();
    show();
    shown->engine().style().setAppearance({.isMotionReduced = true});
    shown->settle();
    const auto drawn = [&] {
        QStringList all;
        for (const auto& text : paintedTexts(*shown->window().contentItem())) {
            const auto bounds = text.bounds.toAlignedRect();
            all.push_back(QStringLiteral("%1 %2 %3").arg(text.text).arg(bounds.x()).arg(bounds.y()));
        }
        return all;
    };
    const auto before = drawn();
    QStringList first;
    int frames = 0;
    QObject::connect(&shown->window(), &QQuickWindow::afterRendering, [&] {
        if (++frames == 1) {
            first = drawn();
        }
    });
    world.workspace.quitAll();
    world.runner.setting = "0\n";
    world.coordinator.refresh();
    EXPECT_TRUE(ShownView::waitFor([&] { return frames > 0; }));
    QTest::qWait(300);
    EXPECT_NE(first, before);
    EXPECT_EQ(first, drawn());
    EXPECT_EQ(frames, 1);
}

TEST_F(Popover, NewsThatChangeNothingAreNotPainted) {
    world.makeRisky();
    show();
    int frames = 0;
    QObject::connect(&shown->window(), &QQuickWindow::afterRendering, [&] { ++frames; });
    world.coordinator.refresh();
    shown->settle();
    EXPECT_EQ(frames, 0);
}

TEST_F(Popover, NothingMovesWhereMotionIsReduced) {
    world.makeRisky();
    show();
    shown->engine().style().setAppearance({.isMotionReduced = true});
    world.workspace.quitAll();
    world.coordinator.refresh();
    EXPECT_EQ(property(shown->find("riskRow"), "shownScore"), std::to_string(world.view->score()));
}

TEST_F(Popover, BearsStrangeNames) {
    const std::string combining = "Z\u0351\u036B\u0343a\u0363\u0351l\u0349\u0361go";
    const std::vector<std::string> names{std::string(10'000, 'W'),
                                         "<b>bold</b><img src='file:///etc/passwd'>",
                                         "line\nbreak\r\n\ttab",
                                         "\u202Egnp.exe",
                                         "تطبيق خاص جدًا باسم طويل",
                                         "אפליקציה פרטית",
                                         combining,
                                         "👩‍👩‍👧‍👦 Family 🏳️‍🌈",
                                         ""};
    std::vector<CurtainCore::TargetApp> apps;
    for (std::size_t index = 0; index < names.size(); ++index) {
        apps.push_back({"app" + std::to_string(index), names[index]});
        world.install("candidate" + std::to_string(index), names[index]);
    }
    // The preferences hold no such name, but a system may.
    world.install("candidate", "\xFF\xFE\xFD");
    world.setPrivateApps(apps);
    world.capture.cameras = {{"a", names[0]}, {"b", names[1]}, {"c", ""}};
    world.startCamera();
    world.coordinator.refresh();
    show();
    const auto withoutFonts = [](std::vector<std::string> problems) {
        std::erase_if(problems, [](const auto& problem) { return problem.starts_with("without a font"); });
        return problems;
    };
    EXPECT_THAT(withoutFonts(shown->problems(false)), IsEmpty());
    EXPECT_THAT(shown->texts(), Contains(QString(names[1].c_str())));
    EXPECT_THAT(shown->texts(), Contains(QString("line break tab")));
    shown->picture("popover-strange-names");
    shown->click("cameraMenu");
    EXPECT_THAT(withoutFonts(shown->problems(false)), IsEmpty());
    shown->press(Qt::Key_Escape);
    shown->click("edit");
    EXPECT_THAT(withoutFonts(shown->problems(false)), IsEmpty());
    shown->find("editedApps")->setProperty("contentY", 160);
    shown->settle();
    EXPECT_THAT(withoutFonts(shown->problems(false)), IsEmpty());
    shown->picture("popover-strange-names-edit");
}

TEST_F(Popover, BearsFiveHundredPrivateApps) {
    std::vector<CurtainCore::TargetApp> apps;
    for (int number = 0; number < 500; ++number) {
        apps.push_back({"app" + std::to_string(number), "App " + std::to_string(number)});
        world.workspace.run("app" + std::to_string(number));
    }
    world.setPrivateApps(apps);
    world.coordinator.refresh();
    show();
    EXPECT_THAT(shown->problems(false), IsEmpty());
    EXPECT_THAT(shown->texts(), Contains(QString("500 visible")));
    EXPECT_THAT(shown->texts(), Contains(QString("App 3")));
    EXPECT_THAT(shown->texts(), Not(Contains(QString("App 40"))));
    shown->find("privateAppsList")->forceActiveFocus(Qt::TabFocusReason);
    for (int step = 0; step < 40; ++step) {
        QTest::keyClick(&shown->window(), Qt::Key_Down);
    }
    shown->settle();
    EXPECT_THAT(shown->texts(), Contains(QString("App 40")));
}

TEST_F(Popover, SearchesFiveThousandAppsWithoutAStall) {
    for (int number = 0; number < 5000; ++number) {
        world.install("app" + std::to_string(number), "Application number " + std::to_string(number));
    }
    show();
    shown->click("edit");
    for (const auto letter : {'a', 'p', 'p', '4', '9'}) {
        // Of the processor's time: a machine that is busy with something else is no stall.
        const auto start = std::clock();
        QTest::keyClick(&shown->window(), letter);
        shown->window().grabWindow();
        const auto milliseconds = (std::clock() - start) * 1000 / CLOCKS_PER_SEC;
        RecordProperty(std::string("milliseconds") + letter, static_cast<int>(milliseconds));
        EXPECT_LT(milliseconds, 500);
    }
    shown->find("search")->setProperty("text", "4999");
    shown->settle();
    EXPECT_THAT(shown->texts(), Contains(QString("Application number 4999")));
}

} // namespace
} // namespace TestSupport
