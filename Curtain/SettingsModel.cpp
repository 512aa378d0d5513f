#include "Curtain/SettingsModel.h"

#include "core/Localizer.h"

#include <algorithm>
#include <vector>

namespace Curtain {
namespace {

bool contains(const std::vector<CurtainCore::TargetApp>& apps, const std::string& bundleID) {
    return std::ranges::any_of(apps, [&](const auto& app) { return app.bundleID == bundleID; });
}

} // namespace

SettingsModel::SettingsModel(CurtainCore::PreferencesStore& store, Platform::Locale& locale,
                             Platform::LoginItem& loginItem, Platform::Log& log)
    : store_(store),
      locale_(locale),
      loginItem_(loginItem),
      log_(log),
      prefs_(store.load()) {}

std::string SettingsModel::lang() const {
    return std::string(CurtainCore::Localizer::resolve(prefs_.language, locale_.preferredLanguageCode()));
}

void SettingsModel::reload() {
    auto stored = store_.load();
    const bool isOff = loginItem_.isSwitchedOff().value_or(isLoginItemOff_);
    if (stored != prefs_ || isOff != isLoginItemOff_) {
        prefs_ = std::move(stored);
        isLoginItemOff_ = isOff;
        Q_EMIT prefsChanged();
    }
}

bool SettingsModel::isSelected(const CatalogEntry& entry) const {
    return contains(prefs_.targetApps, entry.bundleID);
}

void SettingsModel::toggle(const CatalogEntry& entry) {
    const bool wasSelected = isSelected(entry);
    change([&](auto& stored) {
        if (wasSelected) {
            std::erase_if(stored.targetApps, [&](const auto& app) { return app.bundleID == entry.bundleID; });
        } else if (!contains(stored.targetApps, entry.bundleID)) {
            stored.targetApps.push_back({entry.bundleID, entry.name});
        }
    });
    if (wasSelected) {
        Q_EMIT privateAppRemoved(entry.bundleID);
    } else {
        Q_EMIT privateAppAdded(entry.bundleID);
    }
}

void SettingsModel::setLaunchAtLogin(bool on) {
    change([&](auto& stored) {
        stored.launchAtLogin = on;
        loginItemChanged(on ? loginItem_.registerItem() : loginItem_.unregisterItem());
    });
}

void SettingsModel::launchAllTheSame() {
    change([&](auto& stored) {
        stored.launchAtLogin = true;
        loginItemChanged(loginItem_.registerAnew());
    });
}

void SettingsModel::loginItemChanged(const std::optional<std::string>& error) {
    isLoginItemOff_ = loginItem_.isSwitchedOff().value_or(isLoginItemOff_);
    if (error) {
        log_.writeLine("Curtain SMAppService: " + *error);
    }
}

void SettingsModel::save() {
    store_.save(prefs_);
    Q_EMIT prefsChanged();
}

} // namespace Curtain
