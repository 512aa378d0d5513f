#include "core/PreferencesStore.h"

#include "core/PreferencesJson.h"

#include <utility>

namespace CurtainCore {
namespace {

constexpr std::string_view key = "curtain.preferences.v1";

} // namespace

PreferencesStore::PreferencesStore(UserDefaults& defaults) : defaults_(defaults) {}

Preferences PreferencesStore::load() const {
    const auto bytes = defaults_.data(key);
    auto preferences = bytes ? decodePreferences(*bytes) : std::nullopt;
    if (!preferences && (bytes || defaults_.contains(key))) {
        noteDamage(bytes);
    }
    return preferences ? std::move(*preferences) : Preferences{};
}

void PreferencesStore::save(const Preferences& preferences) {
    const auto document = encodePreferences(preferences);
    if (!document) {
        return;
    }
    if (holdsUnreadableDocument()) {
        defaults_.keepCopy(key);
    }
    defaults_.setData(key, *document);
}

void PreferencesStore::noteDamage(const std::optional<std::string>& document) const {
    const auto hash = document ? std::hash<std::string>()(*document) : 0;
    if (damage_ && hash == damagedDocument_) {
        return;
    }
    damagedDocument_ = hash;
    damage_ = PreferencesDamage{document ? defaults_.copyNow(key) : std::nullopt};
    if (onDamage) {
        onDamage();
    }
}

bool PreferencesStore::holdsUnreadableDocument() const {
    const auto bytes = defaults_.data(key);
    return bytes ? !decodePreferences(*bytes) : defaults_.contains(key);
}

} // namespace CurtainCore
