#pragma once

#include "Curtain/AppCatalog.h"
#include "core/PreferencesStore.h"
#include "platform/Locale.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"

#include <QObject>

#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace Curtain {

/// The settings window's working copy of the preferences: every change is saved at once. Main thread only.
class SettingsModel : public QObject {
    Q_OBJECT

public:
    /// The services outlive the model.
    SettingsModel(CurtainCore::PreferencesStore& store, Platform::Locale& locale,
                  Platform::LoginItem& loginItem, Platform::Log& log);

    const CurtainCore::Preferences& prefs() const { return prefs_; }
    /// What was lost of the preferences, for the settings to say; absent when nothing was.
    const std::optional<CurtainCore::PreferencesDamage>& damage() const { return store_.damage(); }
    /// The code of the language of all texts.
    std::string lang() const;

    /// Takes over what others have stored since, and what the desktop's tool has made of the launch at login.
    void reload();
    /// Changes one field of what is stored.
    template <class Field>
    void set(Field CurtainCore::Preferences::*field, std::type_identity_t<Field> value) {
        change([&](auto& stored) { stored.*field = std::move(value); });
    }
    bool isSelected(const CatalogEntry& entry) const;
    /// Takes the app out of the private ones, or puts it at their end. What the user saw decides which, even
    /// where others have changed the list meanwhile.
    void toggle(const CatalogEntry& entry);
    /// The preference keeps the user's wish even where the system refuses it.
    void setLaunchAtLogin(bool on);
    /// Whether the desktop's own tool stands against the user's wish that it is launched.
    bool isLaunchSwitchedOff() const { return prefs_.launchAtLogin && isLoginItemOff_; }
    /// Grants that wish all the same.
    void launchAllTheSame();

Q_SIGNALS:
    void prefsChanged();
    /// The list is stored already.
    void privateAppAdded(const std::string& bundleID);
    void privateAppRemoved(const std::string& bundleID);

private:
    template <class Change>
    void change(const Change& apply) {
        prefs_ = store_.load();
        apply(prefs_);
        save();
    }
    void save();
    void loginItemChanged(const std::optional<std::string>& error);

    CurtainCore::PreferencesStore& store_;
    Platform::Locale& locale_;
    Platform::LoginItem& loginItem_;
    Platform::Log& log_;
    CurtainCore::Preferences prefs_;
    /// As it was last seen: it is read from a file.
    bool isLoginItemOff_ = false;
};

} // namespace Curtain
