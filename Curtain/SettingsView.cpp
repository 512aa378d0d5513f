#include "Curtain/SettingsView.h"

#include "Curtain/HidingWording.h"
#include "Curtain/HotkeyManager.h"
#include "Curtain/NotificationChecker.h"
#include "Curtain/PlatformWording.h"
#include "Curtain/SettingsLoss.h"
#include "Curtain/ViewText.h"
#include "core/Localizer.h"

#include <QGuiApplication>
#include <QKeySequence>

#include <algorithm>
#include <array>
#include <utility>

namespace Curtain {
namespace {

using CurtainCore::AppLanguage;
using CurtainCore::LocKey;
using CurtainCore::MicrophoneTestMode;
using CurtainCore::Preferences;

/// Each language's own name, in the order of the enumeration, which begins with the system's.
constexpr std::array<const char*, 8> nativeNames{"English", "Español",   "中文",     "हिन्दी",
                                                 "العربية", "Português", "Français", "Русский"};

constexpr std::array<std::pair<LocKey, MicrophoneTestMode>, 2> modes{{
    {LocKey::micPlayback, MicrophoneTestMode::threeSecondPlayback},
    {LocKey::micLiveMonitor, MicrophoneTestMode::liveMonitor},
}};

constexpr std::array<const char*, 2> nextTabSequences{"Ctrl+Tab", "Ctrl+PgDown"};
constexpr std::array<const char*, 2> previousTabSequences{"Ctrl+Shift+Tab", "Ctrl+PgUp"};

QVariantList listOf(const std::array<const char*, 2>& sequences) {
    return {QString::fromLatin1(sequences[0]), QString::fromLatin1(sequences[1])};
}

QList<QKeySequence> closeSequences() {
    // The platform names these, and there is one only with an application that has windows.
    return qGuiApp ? QKeySequence::keyBindings(QKeySequence::Close) : QList<QKeySequence>();
}

KeyboardShortcuts::MenuItem menuItem(const QKeySequence& sequence) {
    using namespace KeyboardShortcuts;
    constexpr std::array<std::pair<Qt::KeyboardModifier, std::uint64_t>, 4> flags{{
        {Qt::ShiftModifier, ModifierFlag::shift},
        {Qt::ControlModifier, ModifierFlag::control},
        {Qt::AltModifier, ModifierFlag::option},
        {Qt::MetaModifier, ModifierFlag::command},
    }};
    const auto combination = sequence[0];
    MenuItem item;
    switch (combination.key()) {
    case Qt::Key_PageUp:
        item.keyEquivalent = "Page Up";
        break;
    case Qt::Key_PageDown:
        item.keyEquivalent = "Page Down";
        break;
    default:
        item.keyEquivalent =
            QKeySequence(combination.key()).toString(QKeySequence::PortableText).toStdString();
    }
    for (const auto& [modifier, flag] : flags) {
        item.modifierFlags |= combination.keyboardModifiers().testFlag(modifier) ? flag : 0;
    }
    return item;
}

/// Everything that SettingsView.qml acts on with a modifier.
std::vector<KeyboardShortcuts::MenuItem> windowShortcuts() {
    std::vector<KeyboardShortcuts::MenuItem> items;
    for (const auto& sequence : closeSequences()) {
        items.push_back(menuItem(sequence));
    }
    for (const auto& sequences : {nextTabSequences, previousTabSequences}) {
        for (const auto* const sequence : sequences) {
            items.push_back(menuItem(QKeySequence(QString::fromLatin1(sequence))));
        }
    }
    return items;
}

} // namespace

SettingsView::SettingsView(const Services& services)
    : services_(services),
      lang_(services.model.lang()),
      texts_(lang_),
      switches_(services.model),
      apps_(services.model, services.catalog, services.locale.preferredLanguageCode()),
      shortcut_(
          {services.shortcuts, services.keyboard, services.systemShortcuts},
          HotkeyManager::togglePrivacy(services.shortcuts), windowShortcuts(), [this] { return lang_; },
          services.hotKeyService.canTakeKeyboard()),
      panelObserver_(services.statusItem.addPanelObserver([this] { Q_EMIT hasTrayChanged(); })) {
    connect(&services_.model, &SettingsModel::prefsChanged, this, &SettingsView::modelChanged);
    connect(this, &SettingsView::langChanged, &shortcut_, &ShortcutField::langChanged);
    cameras_ = CameraPreviewManager::availableCameras(services_.capture);
    reloadEntries();
}

QString SettingsView::settingsLoss() const {
    const auto& damage = services_.model.damage();
    return damage ? QString::fromStdString(settingsLossText(*damage, lang_)) : QString();
}

QVariantList SettingsView::nextTabKeys() const {
    return listOf(nextTabSequences);
}

QVariantList SettingsView::previousTabKeys() const {
    return listOf(previousTabSequences);
}

QVariantList SettingsView::closeKeys() const {
    QVariantList keys;
    for (const auto& sequence : closeSequences()) {
        keys.push_back(sequence.toString(QKeySequence::PortableText));
    }
    return keys;
}

void SettingsView::willShow() {
    cameras_ = CameraPreviewManager::availableCameras(services_.capture);
    Q_EMIT camerasChanged();
    showingInstalled_ = false;
    Q_EMIT showingInstalledChanged();
    showingPrivate_ = false;
    Q_EMIT showingPrivateChanged();
    setQuery({});
    lacksFocusSettings_ = false;
    Q_EMIT lacksFocusSettingsChanged();
    shortcut_.dismissAlert();
    refresh();
    Q_EMIT shownAnew();
}

QString SettingsView::lang() const {
    return QString::fromStdString(lang_);
}

bool SettingsView::isRightToLeft() const {
    return CurtainCore::Localizer::isRightToLeft(lang_);
}

QStringList SettingsView::languages() const {
    QStringList names{toQString(PlatformWording::string(LocKey::systemOption, lang_))};
    for (const auto* const name : nativeNames) {
        names.push_back(QString::fromUtf8(name));
    }
    return names;
}

int SettingsView::languageIndex() const {
    return static_cast<int>(services_.model.prefs().language);
}

void SettingsView::setLanguageIndex(int index) {
    constexpr auto languages = CurtainCore::allCases<AppLanguage>();
    if (index >= 0 && index < static_cast<int>(languages.size())) {
        services_.model.set(&Preferences::language, languages.at(static_cast<std::size_t>(index)));
    }
}

QStringList SettingsView::cameras() const {
    QStringList names{toQString(PlatformWording::string(LocKey::defaultOption, lang_))};
    for (const auto& camera : cameras_) {
        names.push_back(shownName(camera.name, camera.id));
    }
    return names;
}

int SettingsView::cameraIndex() const {
    const auto& selected = services_.model.prefs().selectedCameraID;
    const auto found = selected ? std::ranges::find(cameras_, *selected, &CameraChoice::id) : cameras_.end();
    // A camera that is not plugged in stays the user's choice; the default one serves for it meanwhile.
    return found == cameras_.end() ? 0 : static_cast<int>(found - cameras_.begin()) + 1;
}

void SettingsView::setCameraIndex(int index) {
    if (index == 0) {
        services_.model.set(&Preferences::selectedCameraID, std::nullopt);
    } else if (index > 0 && index <= static_cast<int>(cameras_.size())) {
        services_.model.set(&Preferences::selectedCameraID, cameras_[static_cast<std::size_t>(index) - 1].id);
    }
}

QStringList SettingsView::micTestModes() const {
    QStringList names;
    for (const auto& [key, mode] : modes) {
        names.push_back(toQString(PlatformWording::string(key, lang_)));
    }
    return names;
}

int SettingsView::micTestModeIndex() const {
    const auto mode = services_.model.prefs().microphoneTestMode;
    return mode == MicrophoneTestMode::threeSecondPlayback ? 0 : 1;
}

void SettingsView::setMicTestModeIndex(int index) {
    if (index >= 0 && index < static_cast<int>(modes.size())) {
        services_.model.set(&Preferences::microphoneTestMode,
                            modes.at(static_cast<std::size_t>(index)).second);
    }
}

void SettingsView::setShowingInstalled(bool installed) {
    if (installed != showingInstalled_) {
        showingInstalled_ = installed;
        reloadEntries();
        Q_EMIT showingInstalledChanged();
    }
}

void SettingsView::setShowingPrivate(bool onlyPrivate) {
    if (onlyPrivate != showingPrivate_) {
        showingPrivate_ = onlyPrivate;
        reloadEntries();
        Q_EMIT showingPrivateChanged();
    }
}

void SettingsView::setQuery(const QString& query) {
    if (query != apps_.query()) {
        apps_.setQuery(query);
        Q_EMIT queryChanged();
    }
}

void SettingsView::openFocusSettings() {
    lacksFocusSettings_ = !NotificationChecker::openFocusSettings(services_.urlOpener);
    Q_EMIT lacksFocusSettingsChanged();
}

QString SettingsView::shortcutReach() const {
    switch (answers_.shortcutReach) {
    case Platform::HotKeyReach::everywhere:
        return QStringLiteral("everywhere");
    case Platform::HotKeyReach::inX11WindowsOnly:
        return QStringLiteral("inX11WindowsOnly");
    case Platform::HotKeyReach::nowhere:
        break;
    }
    return QStringLiteral("nowhere");
}

QString SettingsView::hidingObstacle() const {
    return answers_.obstacle ? toQString(HidingWording::reason(*answers_.obstacle, lang_)) : QString();
}

void SettingsView::switchExtensionOn() {
    services_.system.switchExtensionOn();
    askSession();
}

void SettingsView::askSession() {
    const SessionAnswers answers{services_.system.hidingObstacle(), services_.hotKeyService.reach(),
                                 services_.screenWatcher.isBlind(), services_.workspace.knowsEveryWindow(),
                                 mayRestart()};
    if (std::exchange(answers_, answers) != answers) {
        Q_EMIT sessionChanged();
    }
}

void SettingsView::refresh() {
    askSession();
    services_.model.reload();
    reloadEntries();
    Q_EMIT shortcut_.changed();
}

void SettingsView::reloadEntries() {
    if (showingPrivate_) {
        setEntries(privateApps(services_.catalog.allApps()), {});
    } else if (showingInstalled_) {
        setEntries(unlistedApps(services_.catalog.allApps()), services_.catalog.installedApps());
    } else {
        apps_.setEntries(services_.catalog.runningApps());
    }
}

void SettingsView::setEntries(std::vector<CatalogEntry> privateApps,
                              const std::vector<CatalogEntry>& others) {
    const auto rest =
        std::stable_partition(privateApps.begin(), privateApps.end(),
                              [this](const CatalogEntry& app) { return services_.catalog.isGone(app); });
    std::vector<CatalogEntry> entries(rest, privateApps.end());
    entries.insert(entries.end(), others.begin(), others.end());
    apps_.setEntries(std::move(entries), {privateApps.begin(), rest});
}

std::vector<CatalogEntry> SettingsView::privateApps(const std::vector<CatalogEntry>& known) const {
    std::vector<CatalogEntry> apps;
    for (const auto& app : services_.model.prefs().targetApps) {
        if (std::ranges::find(apps, app.bundleID, &CatalogEntry::bundleID) == apps.end()) {
            const auto entry = std::ranges::find(known, app.bundleID, &CatalogEntry::bundleID);
            apps.push_back(entry == known.end() ? CatalogEntry{app.bundleID, app.displayName} : *entry);
        }
    }
    return apps;
}

std::vector<CatalogEntry> SettingsView::unlistedApps(const std::vector<CatalogEntry>& known) const {
    auto unlisted = privateApps(known);
    std::erase_if(unlisted, [&](const CatalogEntry& app) {
        return std::ranges::find(known, app.bundleID, &CatalogEntry::bundleID) != known.end();
    });
    return unlisted;
}

void SettingsView::modelChanged() {
    if (auto lang = services_.model.lang(); lang != lang_) {
        lang_ = std::move(lang);
        texts_.setLang(lang_);
        Q_EMIT langChanged();
        Q_EMIT sessionChanged();
    }
    Q_EMIT prefsChanged();
    Q_EMIT camerasChanged();
}

} // namespace Curtain
