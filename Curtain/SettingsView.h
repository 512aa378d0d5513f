#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/AppChoiceModel.h"
#include "Curtain/CameraPreviewManager.h"
#include "Curtain/ScreenWatcher.h"
#include "Curtain/SettingsModel.h"
#include "Curtain/SettingsSwitches.h"
#include "Curtain/ShortcutField.h"
#include "Curtain/ViewTexts.h"
#include "hotkeys/KeyboardShortcuts.h"
#include "platform/CaptureServices.h"
#include "platform/HotKeyService.h"
#include "platform/Keyboard.h"
#include "platform/StatusItem.h"
#include "platform/Subscription.h"
#include "platform/SystemShortcuts.h"
#include "platform/SystemVersion.h"
#include "platform/UrlOpener.h"
#include "platform/Workspace.h"

#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Curtain {

/// The content of the settings window with its three tabs, for SettingsView.qml. Main thread only.
class SettingsView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString lang READ lang NOTIFY langChanged)
    Q_PROPERTY(bool isRightToLeft READ isRightToLeft NOTIFY langChanged)
    Q_PROPERTY(Curtain::ViewTexts* texts READ texts CONSTANT)
    Q_PROPERTY(Curtain::SettingsSwitches* switches READ switches CONSTANT)
    Q_PROPERTY(QStringList languages READ languages NOTIFY langChanged)
    Q_PROPERTY(int languageIndex READ languageIndex WRITE setLanguageIndex NOTIFY prefsChanged)
    Q_PROPERTY(QStringList cameras READ cameras NOTIFY camerasChanged)
    Q_PROPERTY(int cameraIndex READ cameraIndex WRITE setCameraIndex NOTIFY camerasChanged)
    Q_PROPERTY(QStringList micTestModes READ micTestModes NOTIFY langChanged)
    Q_PROPERTY(int micTestModeIndex READ micTestModeIndex WRITE setMicTestModeIndex NOTIFY prefsChanged)
    Q_PROPERTY(
        bool showingInstalled READ showingInstalled WRITE setShowingInstalled NOTIFY showingInstalledChanged)
    /// Private apps alone, whether they run, are installed or neither.
    Q_PROPERTY(bool showingPrivate READ showingPrivate WRITE setShowingPrivate NOTIFY showingPrivateChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(QAbstractListModel* apps READ apps CONSTANT)
    Q_PROPERTY(Curtain::ShortcutField* shortcut READ shortcut CONSTANT)
    /// Where the shortcut acts: "everywhere", "inX11WindowsOnly" or "nowhere".
    Q_PROPERTY(QString shortcutReach READ shortcutReach NOTIFY sessionChanged)
    /// One sentence on why apps cannot be hidden, empty where they can.
    Q_PROPERTY(QString hidingObstacle READ hidingObstacle NOTIFY sessionChanged)
    /// Whether that is an extension that is off.
    Q_PROPERTY(bool canSwitchExtensionOn READ canSwitchExtensionOn NOTIFY sessionChanged)
    /// Whether the list of running apps has all that have a window.
    Q_PROPERTY(bool knowsRunningApps READ knowsRunningApps NOTIFY sessionChanged)
    /// The key combinations that go to the tab after, and to the one before, and that close the window.
    Q_PROPERTY(QVariantList nextTabKeys READ nextTabKeys CONSTANT)
    Q_PROPERTY(QVariantList previousTabKeys READ previousTabKeys CONSTANT)
    Q_PROPERTY(QVariantList closeKeys READ closeKeys CONSTANT)
    /// What became of settings that could not be loaded; empty when all was well.
    Q_PROPERTY(QString settingsLoss READ settingsLoss NOTIFY prefsChanged)
    /// Whether the desktop shows the status item.
    Q_PROPERTY(bool hasTray READ hasTray NOTIFY hasTrayChanged)
    /// Whether anything can tell in this session that the screen is shared.
    Q_PROPERTY(bool hasShareDetection READ hasShareDetection CONSTANT)
    /// Whether nothing can at this moment.
    Q_PROPERTY(bool isShareDetectionBlind READ isShareDetectionBlind NOTIFY sessionChanged)
    /// Whether the desktop's own tool keeps the program from starting at login.
    Q_PROPERTY(bool isLaunchSwitchedOff READ isLaunchSwitchedOff NOTIFY prefsChanged)
    /// Whether starting the program anew reveals nothing.
    Q_PROPERTY(bool canRestart READ canRestart NOTIFY sessionChanged)
    /// Whether the button for the settings of notifications found none to open.
    Q_PROPERTY(bool lacksFocusSettings READ lacksFocusSettings NOTIFY lacksFocusSettingsChanged)

public:
    /// All of them outlive the view.
    struct Services {
        SettingsModel& model;
        const AppCatalog& catalog;
        KeyboardShortcuts::KeyboardShortcuts& shortcuts;
        Platform::CaptureServices& capture;
        Platform::UrlOpener& urlOpener;
        Platform::Keyboard& keyboard;
        Platform::SystemShortcuts& systemShortcuts;
        Platform::Locale& locale;
        const Platform::HotKeyService& hotKeyService;
        const ScreenWatcher& screenWatcher;
        Platform::StatusItem& statusItem;
        Platform::SystemVersion& system;
        Platform::Workspace& workspace;
    };

    explicit SettingsView(const Services& services);

    /// The user wants the program to end and start anew.
    std::function<void()> onRestart = [] {};
    /// Whether that would be all right at this moment.
    std::function<bool()> mayRestart = [] { return true; };

    /// To be called on every showing of the window.
    void willShow();

    QString lang() const;
    bool isRightToLeft() const;
    ViewTexts* texts() { return &texts_; }
    SettingsSwitches* switches() { return &switches_; }
    QStringList languages() const;
    int languageIndex() const;
    void setLanguageIndex(int index);
    QStringList cameras() const;
    int cameraIndex() const;
    void setCameraIndex(int index);
    QStringList micTestModes() const;
    int micTestModeIndex() const;
    void setMicTestModeIndex(int index);
    bool showingInstalled() const { return showingInstalled_; }
    void setShowingInstalled(bool installed);
    bool showingPrivate() const { return showingPrivate_; }
    void setShowingPrivate(bool onlyPrivate);
    const QString& query() const { return apps_.query(); }
    void setQuery(const QString& query);
    QAbstractListModel* apps() { return &apps_; }
    ShortcutField* shortcut() { return &shortcut_; }
    QString shortcutReach() const;
    QString hidingObstacle() const;
    bool canSwitchExtensionOn() const { return answers_.obstacle == Platform::HidingObstacle::extensionOff; }
    bool knowsRunningApps() const { return answers_.isEveryWindowKnown; }
    QString settingsLoss() const;
    QVariantList nextTabKeys() const;
    QVariantList previousTabKeys() const;
    QVariantList closeKeys() const;
    bool hasTray() const { return services_.statusItem.hasPanel(); }
    bool hasShareDetection() const { return services_.screenWatcher.fn != nullptr; }
    bool isShareDetectionBlind() const { return answers_.isShareDetectionBlind; }
    bool isLaunchSwitchedOff() const { return services_.model.isLaunchSwitchedOff(); }
    bool canRestart() const { return answers_.canRestart; }
    bool lacksFocusSettings() const { return lacksFocusSettings_; }

    Q_INVOKABLE void toggleApp(int row) { apps_.toggle(row); }
    Q_INVOKABLE void openFocusSettings();
    Q_INVOKABLE void switchExtensionOn();
    Q_INVOKABLE void launchAllTheSame() { services_.model.launchAllTheSame(); }
    Q_INVOKABLE void restart() { onRestart(); }
    /// Takes over what has changed elsewhere, when the user returns to the window.
    Q_INVOKABLE void refresh();
    /// Asks the session again what it can do at this moment.
    Q_INVOKABLE void askSession();

Q_SIGNALS:
    void langChanged();
    void prefsChanged();
    void camerasChanged();
    void showingInstalledChanged();
    void showingPrivateChanged();
    void queryChanged();
    void hasTrayChanged();
    void sessionChanged();
    void lacksFocusSettingsChanged();
    /// The window is about to be shown anew: it remembers nothing of the last time.
    void shownAnew();

private:
    struct SessionAnswers {
        std::optional<Platform::HidingObstacle> obstacle;
        Platform::HotKeyReach shortcutReach = Platform::HotKeyReach::everywhere;
        bool isShareDetectionBlind = false;
        bool isEveryWindowKnown = true;
        bool canRestart = true;

        bool operator==(const SessionAnswers&) const = default;
    };

    void reloadEntries();
    /// Each once, under the name that the system has for it; `known` are all that it knows.
    std::vector<CatalogEntry> privateApps(const std::vector<CatalogEntry>& known) const;
    /// Those of them that stand in neither list.
    std::vector<CatalogEntry> unlistedApps(const std::vector<CatalogEntry>& known) const;
    /// These, and before them those that certainly are no longer installed.
    void setEntries(std::vector<CatalogEntry> privateApps, const std::vector<CatalogEntry>& others);
    void modelChanged();

    Services services_;
    std::string lang_;
    ViewTexts texts_;
    SettingsSwitches switches_;
    std::vector<CameraChoice> cameras_;
    bool showingInstalled_ = false;
    bool showingPrivate_ = false;
    bool lacksFocusSettings_ = false;
    /// As they were last shown.
    SessionAnswers answers_;
    AppChoiceModel apps_;
    ShortcutField shortcut_;
    Platform::Subscription panelObserver_;
};

} // namespace Curtain
