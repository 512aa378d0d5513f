#include "core/PreferencesStore.h"

#include "core/PreferencesJson.h"

namespace CurtainCore {
namespace {

constexpr std::string_view key = "curtain.preferences.v1";

} // namespace

PreferencesStore::PreferencesStore(UserDefaults& defaults) : defaults_(defaults) {}

Preferences PreferencesStore::load() const {
    const auto bytes = defaults_.data(key);
    if (!bytes) {
        return {};
    }
    return decodePreferences(*bytes).value_or(Preferences{});
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

bool PreferencesStore::holdsUnreadableDocument() const {
    const auto bytes = defaults_.data(key);
    return bytes ? !decodePreferences(*bytes) : defaults_.contains(key);
}

} // namespace CurtainCore
