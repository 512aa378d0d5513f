#include "Curtain/SettingsView.h"

#include "Curtain/HotkeyManager.h"
#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"
#include "hotkeys/ShortcutTexts.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FakeUrlOpener.h"
#include "tests/views/ViewFixture.h"

#include <QKeyEvent>
#include <QSignalSpy>

#include <cmath>

namespace TestSupport {
namespace {

using Curtain::PlatformKey;
using CurtainCore::AppLanguage;
using CurtainCore::LocKey;
using CurtainCore::MicrophoneTestMode;
using CurtainCore::Preferences;
using CurtainCore::TargetApp;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr std::int64_t keyP = 35;
constexpr quint32 scanCodeOfP = 33;

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

class SettingsViewTest : public ViewTest {
protected:
    SettingsViewTest() {
        camera("front", "Front Camera");
        camera("usb", "USB Camera");
        for (const auto* const name :
             {"Calendar", "Journal", "Mail", "Messages", "Music", "Password Safe", "Zoom"}) {
            platform.workspace.run("org." + std::string(name)).name = name;
        }
        for (const auto* const name : {"Archive", "Café", "Straße", "Zoom"}) {
            platform.fileManager.install("/apps/" + std::string(name) + ".app",
                                         {std::string("id.") + name, {{"CFBundleName", name}}});
            platform.bundles.install("/apps/" + std::string(name) + ".app",
                                     {std::string("id.") + name, {{"CFBundleName", name}}});
        }
        platform.keyboard.keyCodes[scanCodeOfP] = keyP;
        edit([](auto& prefs) { prefs.targetApps = {{"org.Mail", "Mail"}, {"org.Messages", "Messages"}}; });
    }

    void camera(const std::string& id, const std::string& name) { capture.cameras.push_back({id, name}); }

    void edit(const std::function<void(Preferences&)>& change) {
        auto prefs = store.load();
        change(prefs);
        store.save(prefs);
    }

    void speak(const std::string& language) {
        edit([&](auto& prefs) { prefs.language = *CurtainCore::fromRawValue<AppLanguage>(language); });
    }

    ShownView show(Motion motion = Motion::full) {
        screenWatcher = Curtain::ScreenWatcher(platform.screenWatcherProbe);
        model = std::make_unique<Curtain::SettingsModel>(store, platform.locale, platform.loginItem,
                                                         platform.log);
        content = std::make_shared<Curtain::SettingsView>(Curtain::SettingsView::Services{
            *model, catalog, shortcuts, capture, urlOpener, platform.keyboard, platform.systemShortcuts,
            platform.locale, *hotKeys, screenWatcher, *statusItem, platform.systemVersion,
            platform.workspace});
        content->willShow();
        return {{"qrc:/Curtain/SettingsView.qml", content}, QSize(440, 430), motion};
    }

    template <class Key>
    QString text(Key key) const {
        return toQString(Curtain::PlatformWording::string(key, model->lang()));
    }

    enum class Source { running, installed, privateOnly };

    static void choose(ShownView& view, Source source, bool isMirrored = false) {
        const auto area = view.place("source");
        const double along = area.width() * (2 * static_cast<int>(source) + 1) / 6;
        view.clickAt(QPointF(isMirrored ? area.right() - along : area.left() + along, area.center().y()));
    }

    std::vector<std::string> names() const {
        std::vector<std::string> names;
        auto* const apps = content->apps();
        for (int row = 0; row < apps->rowCount(); ++row) {
            names.push_back(
                apps->data(apps->index(row, 0), apps->roleNames().key("name")).toString().toStdString());
        }
        return names;
    }

    std::optional<KeyboardShortcuts::Shortcut> shortcut() {
        return shortcuts.getShortcut(Curtain::HotkeyManager::togglePrivacy(shortcuts));
    }

    /// Presses and lets go a key that has a place on the keyboard, as a real one does.
    static void strike(ShownView& view, int key, quint32 scanCode, Qt::KeyboardModifiers modifiers) {
        QKeyEvent press(QEvent::KeyPress, key, modifiers, scanCode, 0, 0);
        QKeyEvent release(QEvent::KeyRelease, key, modifiers, scanCode, 0, 0);
        QCoreApplication::sendEvent(&view.window(), &press);
        QCoreApplication::sendEvent(&view.window(), &release);
        view.settle();
    }

    FakePlatform platform;
    FakeCaptureServices capture;
    FakeUrlOpener urlOpener;
    CurtainCore::PreferencesStore store{platform.userDefaults};
    Curtain::AppCatalog catalog{
        platform.workspace, platform.fileManager, platform.bundles, {{"/apps"}, "app"}};
    KeyboardShortcuts::KeyboardShortcuts shortcuts{platform.userDefaults, platform.hotKeyService,
                                                   platform.log};
    const Platform::HotKeyService* hotKeys = &platform.hotKeyService;
    Curtain::ScreenWatcher screenWatcher{platform.screenWatcherProbe};
    std::unique_ptr<Platform::StatusItem> statusItem = platform.statusBar.makeStatusItem();
    std::unique_ptr<Curtain::SettingsModel> model;
    std::shared_ptr<Curtain::SettingsView> content;
};

TEST_F(SettingsViewTest, FitsItsWordsInEveryLanguage) {
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        const bool isRightToLeft = CurtainCore::Localizer::isRightToLeft(language);
        auto view = show(Motion::reduced);
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-general-" + language);
        view.click("tabApps");
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-apps-" + language);
        view.click("tabPermissions");
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-permissions-" + language);
    }
}

TEST_F(SettingsViewTest, FollowsADarkDesktopAndHighContrast) {
    const std::vector<std::pair<std::string, QtPlatform::Appearance>> appearances{
        {"dark", {.isDark = true, .isMotionReduced = true}},
        {"contrast", {.isContrastHigh = true, .isMotionReduced = true}},
        {"dark-contrast", {.isDark = true, .isContrastHigh = true, .isMotionReduced = true}}};
    for (const auto* const language : {"en", "ru", "ar"}) {
        speak(language);
        auto view = show(Motion::reduced);
        for (const auto& [name, appearance] : appearances) {
            SCOPED_TRACE(name + ' ' + language);
            view.engine().style().setAppearance(appearance);
            for (const auto* const tab : {"tabGeneral", "tabApps", "tabPermissions"}) {
                view.click(tab);
                EXPECT_THAT(view.problems(CurtainCore::Localizer::isRightToLeft(language)), IsEmpty());
                const auto picture = view.picture(name + "-settings-" + tab + '-' + language);
                EXPECT_EQ(picture.pixelColor(2, 2).lightness() < 64, appearance.isDark);
            }
        }
    }
}

TEST_F(SettingsViewTest, StandsWhereItIsDrawn) {
    auto view = show();
    EXPECT_EQ(view.place("tabs"), QRectF(16, 12, 408, 36));
    EXPECT_EQ(view.place("language"), QRectF(259, 68, 150, 30));
    EXPECT_EQ(view.place("showScore"), QRectF(373, 131, 36, 20));
    EXPECT_EQ(view.place("launchAtLogin"), QRectF(373, 219, 36, 20));
    EXPECT_EQ(view.place("shortcut"), QRectF(239, 272, 170, 30));
    view.click("tabApps");
    EXPECT_EQ(view.place("autoDetect"), QRectF(373, 75, 36, 20));
    EXPECT_EQ(view.place("source"), QRectF(16, 199, 408, 32));
    EXPECT_EQ(view.place("search"), QRectF(16, 239, 408, 32));
    EXPECT_EQ(view.place("apps"), QRectF(16, 279, 408, 135));
    EXPECT_EQ(view.place("app Calendar").height(), 20);
    EXPECT_EQ(view.place("app Journal").y() - view.place("app Calendar").y(), 36);
    view.click("tabPermissions");
    EXPECT_EQ(view.place("showCameraPreview"), QRectF(373, 93, 36, 20));
    EXPECT_EQ(view.place("camera"), QRectF(229, 128, 180, 30));
    EXPECT_EQ(view.place("openFocusSettings").height(), 28);
}

TEST_F(SettingsViewTest, IsMirroredInArabic) {
    speak("ar");
    auto view = show();
    EXPECT_EQ(view.place("language"), QRectF(440 - 259 - 150, 68, 150, 30));
    EXPECT_EQ(view.place("showScore"), QRectF(31, 131, 36, 20));
    EXPECT_GT(view.place("tabGeneral").x(), view.place("tabPermissions").x());
    view.click("tabApps");
    EXPECT_EQ(view.place("autoDetect"), QRectF(31, 75, 36, 20));
}

TEST_F(SettingsViewTest, SaysWhatCannotWorkInThisSessionInEveryLanguage) {
    platform.hotKeyService.heard = Platform::HotKeyReach::nowhere;
    platform.screenWatcherProbe.isPresent = false;
    platform.statusBar.setHasPanel(false);
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        const bool isRightToLeft = CurtainCore::Localizer::isRightToLeft(language);
        auto view = show(Motion::reduced);
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::noGlobalShortcuts)));
        const auto caption = view.place("noGlobalShortcuts");
        EXPECT_GT(caption.y(), view.place("shortcut").bottom());
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::noTray)));
        EXPECT_GT(view.place("noTray").y(), caption.bottom());
        EXPECT_TRUE(QRectF(0, 0, 440, 430).contains(view.place("noTray")));
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-no-shortcuts-" + language);
        view.click("tabApps");
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::noShareDetection)));
        EXPECT_THAT(view.texts(), Not(Contains(text(LocKey::autoDetectNote))));
        // A restart would not help.
        EXPECT_THAT(view.texts(), Not(Contains(text(LocKey::autoDetectRestart))));
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-no-detection-" + language);
    }
}

TEST_F(SettingsViewTest, SaysWhatWorksInPartOrIsNotKnownInEveryLanguage) {
    platform.hotKeyService.heard = Platform::HotKeyReach::inX11WindowsOnly;
    platform.screenWatcherProbe.isWatched.reset();
    platform.systemVersion.obstacle = Platform::HidingObstacle::waylandSession;
    platform.workspace.everyWindowIsKnown = false;
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        const bool isRightToLeft = CurtainCore::Localizer::isRightToLeft(language);
        auto view = show(Motion::reduced);
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::shortcutInX11WindowsOnly)));
        EXPECT_EQ(view.find("noGlobalShortcuts"), nullptr);
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::noHidingOnWayland)));
        EXPECT_TRUE(QRectF(0, 0, 440, 430).contains(view.place("generalHidingObstacle")));
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-wayland-" + language);
        view.click("tabApps");
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::noHidingOnWayland)));
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::shareDetectionUnknown)));
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::runningAppsUnseen)));
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-wayland-apps-" + language);
        content->setShowingInstalled(true);
        EXPECT_THAT(view.texts(), Not(Contains(text(PlatformKey::runningAppsUnseen))));
    }
}

TEST_F(SettingsViewTest, TakesTheKeyboardForARecordingWhereTheShortcutsServiceSaysThatItCan) {
    struct Generous : FakeHotKeyService {
        bool canTakeKeyboard() const override { return true; }
    } generous;
    {
        auto view = show();
        view.click("shortcut");
        ASSERT_TRUE(content->shortcut()->isRecording());
        EXPECT_THAT(takeWarnings(), IsEmpty());
    }
    hotKeys = &generous;
    auto view = show();
    view.click("shortcut");
    ASSERT_TRUE(content->shortcut()->isRecording());
    // Off screen it can only be seen that it was tried.
    EXPECT_THAT(takeWarnings(), Contains(testing::HasSubstr("grabbing the keyboard")));
    view.click("launchAtLogin");
    takeWarnings();
}

TEST_F(SettingsViewTest, FollowsWhatTheSessionAnswers) {
    platform.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    auto view = show();
    EXPECT_NE(view.find("generalHidingObstacle"), nullptr);
    platform.hotKeyService.heard = Platform::HotKeyReach::inX11WindowsOnly;
    EXPECT_TRUE(ShownView::waitFor([&] { return view.find("shortcutInX11WindowsOnly") != nullptr; }));
    platform.hotKeyService.heard = Platform::HotKeyReach::everywhere;
    EXPECT_TRUE(ShownView::waitFor([&] { return view.find("shortcutInX11WindowsOnly") == nullptr; }));
    platform.systemVersion.obstacle.reset();
    platform.screenWatcherProbe.isWatched.reset();
    EXPECT_TRUE(ShownView::waitFor([&] { return view.find("generalHidingObstacle") == nullptr; }));
    view.click("tabApps");
    EXPECT_EQ(view.find("hidingObstacle"), nullptr);
    EXPECT_NE(view.find("shareDetectionUnknown"), nullptr);
    platform.screenWatcherProbe.isWatched = true;
    EXPECT_TRUE(ShownView::waitFor([&] { return view.find("shareDetectionUnknown") == nullptr; }));
}

TEST_F(SettingsViewTest, SwitchesTheExtensionOnInEveryLanguage) {
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        platform.systemVersion.obstacle = Platform::HidingObstacle::extensionOff;
        auto view = show();
        view.click("tabApps");
        const bool isRightToLeft = CurtainCore::Localizer::isRightToLeft(language);
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-extension-off-" + language);
        const auto caption = view.place("hidingObstacle");
        const auto button = view.place("switchOn");
        EXPECT_EQ(isRightToLeft ? button.right() : button.x(), isRightToLeft ? caption.right() : caption.x());
        platform.systemVersion.switchedOn = 0;
        view.click("switchOn");
        EXPECT_EQ(platform.systemVersion.switchedOn, 1);
        EXPECT_EQ(view.find("switchOn"), nullptr);
    }
}

TEST_F(SettingsViewTest, ARefusedShortcutIsSaidInEveryLanguageWithTheWayOut) {
    const auto name = Curtain::HotkeyManager::togglePrivacy(shortcuts);
    const auto listener = shortcuts.onKeyUp(name, [] {});
    const KeyboardShortcuts::Shortcut another{name.defaultShortcut.value().carbonKeyCode,
                                              KeyboardShortcuts::CarbonModifier::control};
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        platform.hotKeyService.status = -9878;
        shortcuts.setShortcut(another, name);
        auto view = show(Motion::reduced);
        ASSERT_NE(view.find("shortcutInUse"), nullptr);
        EXPECT_THAT(view.problems(CurtainCore::Localizer::isRightToLeft(language)), IsEmpty());
        view.picture("settings-shortcut-in-use-" + language);
        platform.hotKeyService.status = 0;
        view.click("defaultShortcut");
        EXPECT_EQ(view.find("shortcutInUse"), nullptr);
        EXPECT_EQ(view.find("clearRefusedShortcut"), nullptr);
    }
}

TEST_F(SettingsViewTest, TheDefaultIsNoWayOutOfItsOwnRefusal) {
    const auto name = Curtain::HotkeyManager::togglePrivacy(shortcuts);
    const auto listener = shortcuts.onKeyUp(name, [] {});
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        platform.hotKeyService.status = -9878;
        shortcuts.setShortcut(name.defaultShortcut, name);
        auto view = show(Motion::reduced);
        EXPECT_EQ(view.find("defaultShortcut"), nullptr);
        const bool isRightToLeft = CurtainCore::Localizer::isRightToLeft(language);
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture("settings-default-shortcut-in-use-" + language);
        const auto caption = view.place("shortcutInUse");
        const auto clear = view.place("clearRefusedShortcut");
        EXPECT_EQ(isRightToLeft ? clear.right() : clear.x(), isRightToLeft ? caption.right() : caption.x());
        view.click("clearRefusedShortcut");
        EXPECT_EQ(view.find("shortcutInUse"), nullptr);
        EXPECT_EQ(shortcuts.getShortcut(name), std::nullopt);
    }
}

TEST_F(SettingsViewTest, SaysNothingOfWhatWorks) {
    auto view = show();
    EXPECT_EQ(view.find("noGlobalShortcuts"), nullptr);
    EXPECT_EQ(view.find("shortcutInX11WindowsOnly"), nullptr);
    EXPECT_EQ(view.find("noTray"), nullptr);
    EXPECT_EQ(view.find("generalHidingObstacle"), nullptr);
    view.click("tabApps");
    EXPECT_EQ(view.find("hidingObstacle"), nullptr);
    EXPECT_EQ(view.find("shareDetectionUnknown"), nullptr);
    EXPECT_EQ(view.find("noShareDetection"), nullptr);
    EXPECT_EQ(view.find("runningAppsUnseen"), nullptr);
    EXPECT_THAT(view.texts(), Contains(text(LocKey::autoDetectNote)));
}

TEST_F(SettingsViewTest, FollowsATrayThatGoesAndComes) {
    auto view = show();
    platform.statusBar.setHasPanel(false);
    view.settle();
    EXPECT_GT(view.place("noTray").y(), view.place("shortcut").bottom());
    EXPECT_EQ(view.find("noGlobalShortcuts"), nullptr);
    view.picture("settings-no-tray");
    platform.statusBar.setHasPanel(true);
    view.settle();
    EXPECT_EQ(view.find("noTray"), nullptr);
}

TEST_F(SettingsViewTest, SwitchesAreSavedAtOnce) {
    auto view = show();
    view.click("showScore");
    EXPECT_FALSE(store.load().showEmbarrassmentScore);
    view.click("runTestOnOpen");
    EXPECT_TRUE(store.load().runTestShareModeOnOpen);
    view.click("launchAtLogin");
    EXPECT_TRUE(store.load().launchAtLogin);
    EXPECT_THAT(platform.loginItem.calls, ElementsAre("register"));
    view.click("tabApps");
    view.click("autoDetect");
    EXPECT_FALSE(store.load().autoDetectEnabled);
    view.click("tabPermissions");
    view.click("showCameraPreview");
    view.click("showMicCheck");
    const auto prefs = store.load();
    EXPECT_FALSE(prefs.showCameraPreview);
    EXPECT_FALSE(prefs.showMicrophoneCheck);
    EXPECT_TRUE(prefs.checkNotifications);
    content->switches()->setCheckNotifications(false);
    EXPECT_FALSE(store.load().checkNotifications);
    EXPECT_FALSE(store.load().notificationsMarkedHandled);
}

TEST_F(SettingsViewTest, AClickOnTheWordsFlipsTheSwitchToo) {
    auto view = show();
    view.clickAt(view.placeOfText(text(LocKey::showScore)).center());
    EXPECT_FALSE(store.load().showEmbarrassmentScore);
    EXPECT_FALSE(view.find("showScore")->property("checked").toBool());
}

TEST_F(SettingsViewTest, ARefusedLoginItemLeavesTheSwitchOn) {
    platform.loginItem.error = "read-only";
    auto view = show();
    view.click("launchAtLogin");
    EXPECT_TRUE(view.find("launchAtLogin")->property("checked").toBool());
    EXPECT_TRUE(store.load().launchAtLogin);
    EXPECT_THAT(platform.log.lines, Contains("Curtain SMAppService: read-only"));
}

TEST_F(SettingsViewTest, ALaunchThatTheDesktopHasSwitchedOffIsSaidInEveryLanguageWithTheWayOut) {
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        edit([](auto& prefs) { prefs.launchAtLogin = false; });
        platform.loginItem.isOff = true;
        auto view = show(Motion::reduced);
        EXPECT_EQ(view.find("launchSwitchedOff"), nullptr) << "nobody wants it on";
        edit([](auto& prefs) { prefs.launchAtLogin = true; });
        content->refresh();
        view.settle();
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::launchSwitchedOff)));
        EXPECT_THAT(view.problems(CurtainCore::Localizer::isRightToLeft(language)), IsEmpty());
        view.picture("settings-launch-switched-off-" + language);
        platform.loginItem.calls.clear();
        view.find("launchAllTheSame")->forceActiveFocus(Qt::TabFocusReason);
        view.press(Qt::Key_Space);
        EXPECT_THAT(platform.loginItem.calls, ElementsAre("register anew"));
        EXPECT_EQ(view.find("launchSwitchedOff"), nullptr);
        EXPECT_TRUE(store.load().launchAtLogin);
        const auto* const focused = view.window().activeFocusItem();
        ASSERT_NE(focused, nullptr);
        EXPECT_EQ(focused->objectName(), "launchAtLogin") << "the shortcut would record what is pressed next";
    }
}

TEST_F(SettingsViewTest, ALaunchThatIsSwitchedOnElsewhereDoesNotHandTheKeyboardToTheShortcut) {
    platform.loginItem.isOff = true;
    edit([](auto& prefs) { prefs.launchAtLogin = true; });
    auto view = show();
    content->refresh();
    view.settle();
    view.find("launchAllTheSame")->forceActiveFocus(Qt::TabFocusReason);
    platform.loginItem.isOff = false;
    content->refresh();
    EXPECT_TRUE(ShownView::waitFor([&] {
        const auto* const focused = view.window().activeFocusItem();
        return focused != nullptr && focused->objectName() == "launchAtLogin";
    }));
}

TEST_F(SettingsViewTest, AnotherLanguageChangesEveryTextAtOnce) {
    auto view = show();
    view.click("language");
    for (const auto* const name :
         {"System", "Español", "中文", "हिन्दी", "العربية", "Português", "Français", "Русский"}) {
        EXPECT_THAT(view.texts(), Contains(QString::fromUtf8(name)));
    }
    view.picture("settings-languages");
    view.clickAt(view.placeOfText(QStringLiteral("Français")).center());
    EXPECT_EQ(store.load().language, AppLanguage::fr);
    EXPECT_THAT(view.texts(), Contains(QStringLiteral("Autorisations")));
    EXPECT_THAT(view.texts(), Not(Contains(QStringLiteral("Permissions"))));
    EXPECT_THAT(view.texts(), Contains(QStringLiteral("Français")));
}

TEST_F(SettingsViewTest, AnotherLanguageAnnouncesTheCamerasOnce) {
    auto view = show();
    const QSignalSpy announcements(content.get(), &Curtain::SettingsView::camerasChanged);
    model->set(&Preferences::language, AppLanguage::fr);
    EXPECT_EQ(announcements.size(), 1);
    EXPECT_EQ(content->cameras().front(), text(LocKey::defaultOption));
}

TEST_F(SettingsViewTest, TheRestartCaptionIsShownWhileDetectionIsOn) {
    auto view = show();
    view.click("tabApps");
    const auto before = view.place("apps");
    EXPECT_NE(view.find("restartCaption"), nullptr);
    view.click("autoDetect");
    EXPECT_EQ(view.find("restartCaption"), nullptr);
    EXPECT_LT(view.place("apps").y(), before.y());
    EXPECT_EQ(view.place("apps").bottom(), before.bottom());
}

TEST_F(SettingsViewTest, CurtainIsRestartedWhereTheCaptionAsksForIt) {
    auto view = show();
    int restarts = 0;
    content->onRestart = [&] { ++restarts; };
    view.click("tabApps");
    view.click("restart");
    EXPECT_EQ(restarts, 1);
    view.click("autoDetect");
    EXPECT_EQ(view.find("restart"), nullptr);
}

TEST_F(SettingsViewTest, CurtainIsNotRestartedWhileThatWouldRevealSomething) {
    auto view = show();
    view.click("tabApps");
    content->mayRestart = [] { return false; };
    content->askSession();
    EXPECT_EQ(view.find("restart"), nullptr);
    EXPECT_NE(view.find("restartCaption"), nullptr);
    content->mayRestart = [] { return true; };
    content->askSession();
    EXPECT_NE(view.find("restart"), nullptr);
}

TEST_F(SettingsViewTest, AppsAreAddedAndRemoved) {
    auto view = show();
    view.click("tabApps");
    view.click("app Calendar");
    EXPECT_THAT(store.load().targetApps,
                ElementsAre(TargetApp{"org.Mail", "Mail"}, TargetApp{"org.Messages", "Messages"},
                            TargetApp{"org.Calendar", "Calendar"}));
    view.click("app Mail");
    EXPECT_THAT(store.load().targetApps,
                ElementsAre(TargetApp{"org.Messages", "Messages"}, TargetApp{"org.Calendar", "Calendar"}));
    EXPECT_FALSE(view.find("app Mail")->property("checked").toBool());
}

TEST_F(SettingsViewTest, InstalledAndRunningAppsAreListedAfreshEachTime) {
    auto view = show();
    view.click("tabApps");
    EXPECT_EQ(view.find("app Archive"), nullptr);
    choose(view, Source::installed);
    EXPECT_NE(view.find("app Archive"), nullptr);
    EXPECT_EQ(view.find("app Calendar"), nullptr);
    platform.workspace.quitAll();
    platform.workspace.run("org.Editor").name = "Editor";
    choose(view, Source::running);
    EXPECT_NE(view.find("app Editor"), nullptr);
    EXPECT_EQ(view.find("app Calendar"), nullptr);
}

TEST_F(SettingsViewTest, PrivateAppsAreListedAloneWhetherTheyRunAreInstalledOrGone) {
    edit([](auto& prefs) {
        prefs.targetApps = {
            {"org.Mail", "Post"}, {"id.Café", "Café"}, {"org.Gone", "Old Chat"}, {"org.Mail", "Post"}};
    });
    platform.bundles.goneApps = {"org.Gone"};
    auto view = show();
    view.click("tabApps");
    choose(view, Source::privateOnly);
    EXPECT_THAT(names(), ElementsAre("Old Chat — Not installed", "Mail", "Café"));
    view.click("search");
    view.type("caf");
    EXPECT_THAT(names(), ElementsAre("Café"));
    view.press(Qt::Key_Escape);
    view.click("app Old Chat — Not installed");
    EXPECT_EQ(store.load().targetApps.size(), 3U);
    EXPECT_EQ(names().size(), 3U) << "what was removed by mistake can be put back";
    view.click("app Old Chat — Not installed");
    EXPECT_EQ(store.load().targetApps.back(), (TargetApp{"org.Gone", "Old Chat"}));
    choose(view, Source::running);
    EXPECT_EQ(names().size(), 7U);
    choose(view, Source::privateOnly);
    EXPECT_EQ(names().size(), 3U);
    content->willShow();
    view.settle();
    EXPECT_EQ(names().size(), 7U) << "every showing begins with what runs";
}

TEST_F(SettingsViewTest, WithoutPrivateAppsTheirListSaysSoInEveryLanguage) {
    edit([](auto& prefs) { prefs.targetApps.clear(); });
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        auto view = show(Motion::reduced);
        view.click("tabApps");
        choose(view, Source::privateOnly, language == "ar");
        EXPECT_THAT(view.texts(), Contains(text(PlatformKey::noAppPrivate)));
        EXPECT_THAT(view.problems(language == "ar"), IsEmpty());
        view.picture("settings-no-private-apps-" + language);
    }
}

TEST_F(SettingsViewTest, APrivateAppThatIsNoLongerInstalledCanBeRemoved) {
    for (const auto* const language : {"en", "ar", "ru"}) {
        speak(language);
        edit([](auto& prefs) { prefs.targetApps = {{"org.Gone", "Old Chat"}, {"org.Mail", "Mail"}}; });
        platform.bundles.goneApps = {"org.Gone"};
        auto view = show();
        view.click("tabApps");
        const bool isMirrored = std::string_view(language) == "ar";
        choose(view, Source::installed, isMirrored);
        EXPECT_THAT(view.problems(isMirrored), IsEmpty());
        view.picture("settings-missing-" + std::string(language));
        view.click("app " + toQString(Curtain::PlatformWording::opening("Old Chat", language)) + " — " +
                   text(Curtain::PlatformKey::notInstalled));
        EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.Mail", "Mail"}));
    }
}

TEST_F(SettingsViewTest, APrivateAppThatIsNotListedIsNotCalledMissingUnlessItCertainlyIs) {
    edit([](auto& prefs) { prefs.targetApps = {{"urxvt", "URxvt"}, {"org.Gone", "Old Chat"}}; });
    platform.bundles.goneApps = {"org.Gone"};
    auto view = show();
    view.click("tabApps");
    choose(view, Source::installed);
    EXPECT_NE(view.find("app Old Chat — Not installed"), nullptr);
    EXPECT_EQ(content->apps()->rowCount(), 6) << "four installed apps and these two";
    view.click("app URxvt");
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.Gone", "Old Chat"}));
}

TEST_F(SettingsViewTest, SearchingShowsWhatHoldsTheWords) {
    auto view = show();
    view.click("tabApps");
    view.click("search");
    view.type("zo");
    EXPECT_NE(view.find("app Zoom"), nullptr);
    EXPECT_EQ(content->apps()->rowCount(), 1);
    EXPECT_THAT(view.problems(false), IsEmpty());
    view.picture("settings-apps-search");
    view.press(Qt::Key_Escape);
    EXPECT_EQ(content->apps()->rowCount(), 7);
    EXPECT_TRUE(view.window().isVisible()) << "Escape emptied the field and nothing else";
    view.type("xyz");
    EXPECT_EQ(content->apps()->rowCount(), 0);
}

TEST_F(SettingsViewTest, CamerasAreChosenByName) {
    auto view = show();
    view.click("tabPermissions");
    view.click("camera");
    view.clickAt(view.placeOfText(QStringLiteral("USB Camera")).center());
    EXPECT_EQ(store.load().selectedCameraID, "usb");
    view.click("camera");
    view.clickAt(view.placeOfText(text(LocKey::defaultOption)).center());
    EXPECT_EQ(store.load().selectedCameraID, std::nullopt);
}

TEST_F(SettingsViewTest, NamesOfCamerasAreOneShortLine) {
    camera("odd", "Two\nlines\u202E");
    camera("nameless", "");
    show();
    EXPECT_EQ(content->cameras().mid(3), QStringList({"Two lines", "nameless"}));
}

TEST_F(SettingsViewTest, ACameraThatIsNotThereStaysChosen) {
    edit([](auto& prefs) { prefs.selectedCameraID = "unplugged"; });
    auto view = show();
    view.click("tabPermissions");
    EXPECT_THAT(view.texts(), Contains(text(LocKey::defaultOption)));
    view.click("showMicCheck");
    EXPECT_EQ(store.load().selectedCameraID, "unplugged");
}

TEST_F(SettingsViewTest, CamerasAreThoseOfTheShowing) {
    auto view = show();
    camera("late", "Late Camera");
    view.click("tabPermissions");
    view.click("camera");
    EXPECT_THAT(view.texts(), Not(Contains(QStringLiteral("Late Camera"))));
    view.press(Qt::Key_Escape);
    content->willShow();
    view.click("tabPermissions");
    view.click("camera");
    EXPECT_THAT(view.texts(), Contains(QStringLiteral("Late Camera")));
}

TEST_F(SettingsViewTest, TheWayOfTheMicrophoneTestIsChosen) {
    auto view = show();
    view.click("tabPermissions");
    view.click("micTestMode");
    view.clickAt(view.placeOfText(text(LocKey::micLiveMonitor)).center());
    EXPECT_EQ(store.load().microphoneTestMode, MicrophoneTestMode::liveMonitor);
}

TEST_F(SettingsViewTest, OpensTheSettingsOfNotificationsOrSaysThatThereAreNone) {
    auto view = show();
    view.click("tabPermissions");
    view.find("openFocusSettings")->forceActiveFocus(Qt::TabFocusReason);
    view.press(Qt::Key_Space);
    EXPECT_THAT(urlOpener.opened,
                ElementsAre("x-apple.systempreferences:com.apple.Focus-Settings.extension"));
    EXPECT_EQ(view.find("lacksFocusSettings"), nullptr);
    urlOpener.canOpen = false;
    view.press(Qt::Key_Space);
    EXPECT_TRUE(QRectF(0, 0, 440, 430).contains(view.place("lacksFocusSettings"))) << "scrolled to";
    EXPECT_THAT(view.problems(false), IsEmpty());
    view.picture("settings-no-page");
}

TEST_F(SettingsViewTest, TheKeyboardReachesEveryControlAndWhatItReachesIsShown) {
    auto view = show();
    const auto reached = [&](int tab) {
        std::vector<std::string> names;
        for (int step = 0; step < tab; ++step) {
            view.press(Qt::Key_Tab);
            auto* const item = view.window().activeFocusItem();
            names.push_back(item->objectName().toStdString());
            const auto place = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
            EXPECT_TRUE(QRectF(0, 0, 440, 430).contains(place)) << names.back();
        }
        return names;
    };
    EXPECT_THAT(reached(7), ElementsAre("tabGeneral", "tabApps", "tabPermissions", "language", "showScore",
                                        "runTestOnOpen", "launchAtLogin"));
    view.picture("settings-focus");
    view.click("tabPermissions");
    EXPECT_THAT(reached(7), ElementsAre("showCameraPreview", "camera", "showMicCheck", "micTestMode",
                                        "openFocusSettings", "checkNotifications", "notifHandled"));
    view.picture("settings-permissions-scrolled");
    view.press(Qt::Key_Space);
    EXPECT_TRUE(store.load().notificationsMarkedHandled);
}

TEST_F(SettingsViewTest, TheKeyboardReachesEveryAppAndWhatItReachesIsShown) {
    platform.workspace.quitAll();
    std::vector<std::string> apps;
    for (int number = 10; number < 40; ++number) {
        const auto name = "App " + std::to_string(number);
        platform.workspace.run("org." + name).name = name;
        apps.push_back("app " + name);
    }
    auto view = show();
    view.click("tabApps");
    const auto frame = view.place("apps");
    const auto reach = [&](int key) {
        view.press(key);
        const auto* const item = view.window().activeFocusItem();
        auto name = item->objectName().toStdString();
        const auto place = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        const bool isApp = name.starts_with("app ");
        EXPECT_TRUE((isApp ? frame : QRectF(0, 0, 440, 430)).contains(place)) << name;
        EXPECT_TRUE(!isApp || item->property("visualFocus").toBool()) << name;
        return name;
    };
    EXPECT_EQ(reach(Qt::Key_Tab), "tabPermissions");
    EXPECT_EQ(reach(Qt::Key_Tab), "autoDetect");
    EXPECT_EQ(reach(Qt::Key_Tab), "restart");
    for (int source = 0; source < 3; ++source) {
        reach(Qt::Key_Tab);
    }
    EXPECT_EQ(reach(Qt::Key_Tab), "search");
    EXPECT_EQ(reach(Qt::Key_Tab), apps.front());
    view.picture("settings-apps-focus");
    std::vector<std::string> reached{apps.front()};
    for (std::size_t step = 1; step < apps.size(); ++step) {
        reached.push_back(reach(Qt::Key_Down));
    }
    EXPECT_EQ(reached, apps);
    EXPECT_EQ(reach(Qt::Key_Down), apps.back());
    view.picture("settings-apps-last");
    view.press(Qt::Key_Space);
    EXPECT_THAT(store.load().targetApps, Contains(TargetApp{"org.App 39", "App 39"}));
    EXPECT_EQ(reach(Qt::Key_Up), "app App 38");
    // The list is left at once, and Down leads to its beginning from wherever it was scrolled to.
    reach(Qt::Key_Tab);
    EXPECT_FALSE(view.window().activeFocusItem()->objectName().startsWith("app "));
    view.click("search");
    EXPECT_EQ(reach(Qt::Key_Down), apps.front());
    EXPECT_EQ(reach(Qt::Key_Up), "search");
    view.type("19");
    EXPECT_EQ(reach(Qt::Key_Down), "app App 19");
    view.press(Qt::Key_Return);
    EXPECT_THAT(store.load().targetApps, Contains(TargetApp{"org.App 19", "App 19"}));
    view.click("search");
    view.type("x");
    EXPECT_EQ(reach(Qt::Key_Down), "search") << "there is no app to go to";
}

TEST_F(SettingsViewTest, TheKeyboardGoesOnFromTheAppThatWasClicked) {
    auto view = show();
    view.click("tabApps");
    view.click("app Journal");
    view.press(Qt::Key_Down);
    EXPECT_EQ(view.window().activeFocusItem()->objectName(), "app Mail");
}

TEST_F(SettingsViewTest, TabsAreChangedWithKeys) {
    auto view = show();
    view.press(Qt::Key_Tab);
    view.press(Qt::Key_Right);
    EXPECT_NE(view.find("search"), nullptr);
    view.press(Qt::Key_Left);
    view.press(Qt::Key_Left);
    EXPECT_NE(view.find("openFocusSettings"), nullptr);
    view.press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_NE(view.find("shortcut"), nullptr);
}

TEST_F(SettingsViewTest, ATabThatIsChangedWithKeysHandsTheKeyboardOn) {
    auto view = show();
    for (const auto* const control : {"launchAtLogin", "autoDetect", "showCameraPreview"}) {
        SCOPED_TRACE(control);
        view.find(control)->forceActiveFocus(Qt::TabFocusReason);
        view.press(Qt::Key_PageDown, Qt::ControlModifier);
        ASSERT_EQ(view.find(control), nullptr);
        const auto* const focused = view.window().activeFocusItem();
        ASSERT_NE(focused, nullptr);
        EXPECT_TRUE(focused->isVisible());
        EXPECT_TRUE(focused->property("visualFocus").toBool()) << focused->objectName().toStdString();
    }
}

TEST_F(SettingsViewTest, EscapeAndTheCloseKeyCloseTheWindow) {
    for (const auto& [key, modifiers] :
         {std::pair(Qt::Key_Escape, Qt::NoModifier), {Qt::Key_W, Qt::ControlModifier}}) {
        auto view = show();
        view.press(key, modifiers);
        EXPECT_FALSE(view.window().isVisible());
    }
}

TEST_F(SettingsViewTest, EveryShowingBeginsAnew) {
    auto view = show();
    view.click("tabApps");
    view.click("search");
    view.type("zo");
    content->willShow();
    view.settle();
    EXPECT_NE(view.find("shortcut"), nullptr);
    const auto* const focused = view.window().activeFocusItem();
    ASSERT_NE(focused, nullptr);
    EXPECT_FALSE(focused->isVisible() && focused->activeFocusOnTab()) << "no control is handed the keyboard";
    EXPECT_FALSE(content->shortcut()->isRecording());
    view.click("tabApps");
    EXPECT_EQ(content->apps()->rowCount(), 7);
    EXPECT_EQ(view.find("search")->property("text").toString(), "");
}

TEST_F(SettingsViewTest, AFileChangedByHandIsTakenOver) {
    auto view = show();
    edit([](auto& prefs) { prefs.showEmbarrassmentScore = false; });
    content->refresh();
    view.settle();
    EXPECT_FALSE(view.find("showScore")->property("checked").toBool());
    platform.userDefaults.values["curtain.preferences.v1"] = "{ broken";
    content->refresh();
    view.settle();
    EXPECT_TRUE(view.find("showScore")->property("checked").toBool());
    view.click("runTestOnOpen");
    EXPECT_TRUE(store.load().runTestShareModeOnOpen);
    EXPECT_THAT(platform.userDefaults.copies, ElementsAre("{ broken"));
}

TEST_F(SettingsViewTest, RecordsACombination) {
    auto view = show();
    view.click("shortcut");
    EXPECT_THAT(view.texts(), Contains(QStringLiteral("Press keys…")));
    view.picture("settings-recording");
    strike(view, Qt::Key_P, scanCodeOfP, Qt::ControlModifier | Qt::ShiftModifier);
    platform.systemShortcuts.answer(false);
    view.settle();
    EXPECT_EQ(shortcut(), (KeyboardShortcuts::Shortcut{keyP, 4096 + 512}));
    EXPECT_THAT(view.texts(), Contains(QStringLiteral("Ctrl+Shift+P")));
    EXPECT_FALSE(content->shortcut()->isRecording());
    strike(view, Qt::Key_P, scanCodeOfP, Qt::ControlModifier);
    EXPECT_THAT(platform.systemShortcuts.questions, testing::SizeIs(1)) << "nothing is recorded any more";
}

TEST_F(SettingsViewTest, AModifierAloneIsOnTheWayToACombination) {
    auto view = show();
    view.click("shortcut");
    strike(view, Qt::Key_Control, 37, Qt::ControlModifier);
    strike(view, Qt::Key_Super_L, 133, Qt::MetaModifier);
    EXPECT_EQ(platform.keyboard.beeps, 0);
    strike(view, Qt::Key_P, scanCodeOfP, Qt::NoModifier);
    EXPECT_EQ(platform.keyboard.beeps, 1);
    EXPECT_TRUE(content->shortcut()->isRecording());
}

TEST_F(SettingsViewTest, EscapeEndsTheRecordingAndNotTheWindow) {
    platform.keyboard.keyCodes[9] = 53;
    auto view = show();
    view.click("shortcut");
    strike(view, Qt::Key_Escape, 9, Qt::NoModifier);
    EXPECT_FALSE(content->shortcut()->isRecording());
    EXPECT_TRUE(view.window().isVisible());
    strike(view, Qt::Key_Escape, 9, Qt::NoModifier);
    EXPECT_FALSE(view.window().isVisible());
}

TEST_F(SettingsViewTest, TabLeavesTheFieldWithoutAChange) {
    platform.keyboard.keyCodes[23] = 48;
    auto view = show();
    view.click("shortcut");
    strike(view, Qt::Key_Tab, 23, Qt::NoModifier);
    EXPECT_FALSE(content->shortcut()->isRecording());
    EXPECT_EQ(shortcut(), (KeyboardShortcuts::Shortcut{4, 6400}));
    EXPECT_EQ(platform.keyboard.beeps, 0);
}

TEST_F(SettingsViewTest, SaysWhatBecameOfDamagedSettings) {
    EXPECT_EQ(show().find("settingsLoss"), nullptr);
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        platform.userDefaults.values["curtain.preferences.v1"] = "damaged " + language;
        platform.locale.language = language;
        auto view = show();
        const auto copy = QStringLiteral("curtain.preferences.v1.damaged-");
        EXPECT_TRUE(content->settingsLoss().startsWith(text(PlatformKey::settingsDamaged) + u'\n' + copy));
        EXPECT_THAT(view.texts(), Contains(content->settingsLoss()));
        EXPECT_THAT(view.problems(CurtainCore::Localizer::isRightToLeft(language)), IsEmpty());
        view.picture("settings-loss-" + language);
    }
}

TEST_F(SettingsViewTest, CombinationsOfTheWindowAreRefusedByTheirLabels) {
    constexpr std::int64_t keyZ = 6;
    constexpr std::int64_t keyW = 13;
    constexpr std::int64_t keyTab = 48;
    constexpr std::int64_t keyPageUp = 116;
    constexpr std::int64_t keyF4 = 118;
    constexpr std::int64_t keyPageDown = 121;
    for (const auto key : {keyZ, keyW, keyTab, keyPageUp, keyF4, keyPageDown}) {
        platform.keyboard.keyCodes[static_cast<quint32>(key) + 200] = key;
    }
    platform.keyboard.labels = {{keyZ, "W"}, {keyW, "Z"}};
    auto view = show();
    const auto isRefused = [&](std::int64_t key, Qt::KeyboardModifiers modifiers) {
        content->shortcut()->dismissAlert();
        view.settle();
        view.click("shortcut");
        EXPECT_TRUE(content->shortcut()->isRecording());
        strike(view, Qt::Key_unknown, static_cast<quint32>(key) + 200, modifiers);
        return content->shortcut()->hasAlert();
    };
    EXPECT_TRUE(isRefused(keyZ, Qt::ControlModifier)) << "labelled W";
    EXPECT_TRUE(isRefused(keyTab, Qt::ControlModifier));
    EXPECT_TRUE(isRefused(keyTab, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_TRUE(isRefused(keyPageUp, Qt::ControlModifier));
    EXPECT_TRUE(isRefused(keyPageDown, Qt::ControlModifier));
    for (const auto& sequence : QKeySequence::keyBindings(QKeySequence::Close)) {
        if (sequence == QKeySequence(Qt::CTRL | Qt::Key_F4)) {
            EXPECT_TRUE(isRefused(keyF4, Qt::ControlModifier));
        }
    }
    EXPECT_FALSE(isRefused(keyW, Qt::ControlModifier)) << "labelled Z";
    EXPECT_FALSE(isRefused(keyPageUp, Qt::ControlModifier | Qt::AltModifier));
}

TEST_F(SettingsViewTest, TheShortcutIsClearedWithTheButton) {
    auto view = show();
    view.click("clearShortcut");
    EXPECT_EQ(shortcut(), std::nullopt);
    EXPECT_EQ(platform.userDefaults.values.at("KeyboardShortcuts_togglePrivacy"), "false");
    EXPECT_THAT(view.texts(), Contains(QStringLiteral("Record shortcut")));
    EXPECT_EQ(view.find("clearShortcut"), nullptr);
    EXPECT_FALSE(content->shortcut()->isRecording());
}

TEST_F(SettingsViewTest, ATakenCombinationIsRefusedOrForced) {
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        speak(language);
        shortcuts.setShortcut(KeyboardShortcuts::Shortcut{4, 6400},
                              Curtain::HotkeyManager::togglePrivacy(shortcuts));
        auto view = show();
        view.click("shortcut");
        strike(view, Qt::Key_P, scanCodeOfP, Qt::ControlModifier);
        platform.systemShortcuts.answer(true);
        view.settle();
        const auto alert = view.place("shortcutAlert");
        EXPECT_EQ(alert.width(), 300);
        EXPECT_NEAR(alert.center().x(), 220, 1);
        EXPECT_NEAR(alert.center().y(), 215, 1);
        EXPECT_TRUE(alert.contains(view.place("alertOk")));
        EXPECT_TRUE(alert.contains(view.place("forceUse")));
        EXPECT_THAT(view.problems(language == "ar"), IsEmpty());
        view.picture("settings-shortcut-taken-" + language);
        EXPECT_EQ(view.find("alertOk")->property("text").toString(),
                  toQString(KeyboardShortcuts::ShortcutTexts::string(
                      KeyboardShortcuts::ShortcutTexts::chooseAnother, language)));
        view.click("alertOk");
        EXPECT_EQ(shortcut(), (KeyboardShortcuts::Shortcut{4, 6400}));
        EXPECT_TRUE(content->shortcut()->isRecording()) << "another one can be tried at once";
        strike(view, Qt::Key_P, scanCodeOfP, Qt::ControlModifier);
        platform.systemShortcuts.answer(true);
        view.settle();
        view.click("forceUse");
        EXPECT_EQ(shortcut(), (KeyboardShortcuts::Shortcut{keyP, 4096}));
        EXPECT_EQ(view.find("shortcutAlert"), nullptr);
    }
}

TEST_F(SettingsViewTest, AnotherLanguageChangesTheAlertToo) {
    using namespace KeyboardShortcuts;
    auto view = show();
    view.click("shortcut");
    strike(view, Qt::Key_P, scanCodeOfP, Qt::ControlModifier);
    platform.systemShortcuts.answer(true);
    view.settle();
    speak("fr");
    content->refresh();
    view.settle();
    EXPECT_EQ(view.find("alertOk")->property("text").toString(),
              toQString(ShortcutTexts::string(ShortcutTexts::chooseAnother, "fr")));
}

TEST_F(SettingsViewTest, AKeyPressedWhileTheAlertFadesForcesNothing) {
    auto view = show();
    view.click("shortcut");
    strike(view, Qt::Key_P, scanCodeOfP, Qt::ControlModifier);
    platform.systemShortcuts.answer(true);
    view.settle();
    ASSERT_EQ(view.window().activeFocusItem()->objectName(), "alertOk");
    QTest::keyClick(&view.window(), Qt::Key_Escape);
    const auto isInField = [&] {
        return view.find("shortcut")->isAncestorOf(view.window().activeFocusItem());
    };
    EXPECT_TRUE(ShownView::waitFor(isInField));
    view.press(Qt::Key_Return);
    EXPECT_EQ(view.find("shortcutAlert"), nullptr);
    EXPECT_TRUE(isInField()) << "Tab goes on from here";
    EXPECT_FALSE(content->shortcut()->isRecording());
    EXPECT_EQ(shortcut(), (KeyboardShortcuts::Shortcut{4, 6400}));
}

TEST_F(SettingsViewTest, ACombinationOfTheWindowIsRefused) {
    platform.keyboard.keyCodes[25] = 13;
    auto view = show();
    view.click("shortcut");
    strike(view, Qt::Key_W, 25, Qt::ControlModifier);
    EXPECT_TRUE(view.window().isVisible());
    EXPECT_NE(view.find("shortcutAlert"), nullptr);
    EXPECT_EQ(view.find("forceUse"), nullptr);
    view.press(Qt::Key_Escape);
    EXPECT_EQ(view.find("shortcutAlert"), nullptr);
    EXPECT_TRUE(view.window().isVisible());
    EXPECT_EQ(shortcut(), (KeyboardShortcuts::Shortcut{4, 6400}));
}

TEST_F(SettingsViewTest, TheLongestCombinationAndLongNamesHaveRoom) {
    shortcuts.setShortcut(KeyboardShortcuts::Shortcut{121, 6400 + 512},
                          Curtain::HotkeyManager::togglePrivacy(shortcuts));
    platform.workspace.quitAll();
    platform.workspace.run("org.long").name = std::string(300, 'W');
    platform.workspace.run("org.hindi").name = "हिन्दी कैलेंडर";
    camera("long", std::string(200, 'M'));
    for (const auto& language : {"en", "ru", "ar"}) {
        SCOPED_TRACE(language);
        speak(language);
        edit([](auto& prefs) { prefs.selectedCameraID = "long"; });
        auto view = show();
        const bool isRightToLeft = std::string(language) == "ar";
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture(std::string("settings-long-shortcut-") + language);
        view.click("tabApps");
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.click("tabPermissions");
        EXPECT_THAT(view.problems(isRightToLeft), IsEmpty());
        view.picture(std::string("settings-long-camera-") + language);
    }
}

} // namespace
} // namespace TestSupport
