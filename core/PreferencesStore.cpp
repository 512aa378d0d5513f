#include "core/PreferencesStore.h"

#include "core/PreferencesJson.h"

#include <utility>

namespace CurtainCore {
namespace {

constexpr std::string_view key = "curtain.preferences.v1";

} // namespace

PreferencesStore::PreferencesStore(UserDefaults& defaults) : defaults_(defaults) {}

PreferencesStore::Action::Action(const PreferencesStore& store) : store_(store) {
    ++store_.actions_;
}

PreferencesStore::Action::~Action() {
    if (--store_.actions_ == 0) {
        store_.loaded_.reset();
    }
}

Preferences PreferencesStore::load() const {
    if (actions_ == 0) {
        return read();
    }
    if (!loaded_) {
        loaded_ = read();
    }
    return *loaded_;
}

Preferences PreferencesStore::read() const {
    const auto bytes = defaults_.data(key);
    auto preferences = bytes ? decodePreferences(*bytes) : std::nullopt;
    if (bytes) {
        unreadable_.reset();
    }
    if (!preferences && bytes) {
        noteDamage(*bytes);
    } else if (!preferences && defaults_.contains(key)) {
        noteUnreadable();
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
        makeLossLast();
    } else if (const auto bytes = defaults_.data(key); bytes && holdsUnknownKeys(*bytes)) {
        // Beside it only: what is stored is still good where there is no room for a copy.
        static_cast<void>(defaults_.copyNow(key));
    }
    defaults_.setData(key, *document);
    loaded_.reset();
}

void PreferencesStore::noteDamage(const std::string& document) const {
    const auto hash = std::hash<std::string>()(document);
    if (hash == damagedDocument_) {
        return;
    }
    damagedDocument_ = hash;
    damage_ = PreferencesDamage{defaults_.copyNow(key)};
    tellDamage();
}

void PreferencesStore::noteUnreadable() const {
    if (!unreadable_) {
        unreadable_ = PreferencesDamage{};
        tellDamage();
    }
}

void PreferencesStore::makeLossLast() {
    if (unreadable_) {
        damage_ = std::exchange(unreadable_, std::nullopt);
        damagedDocument_.reset();
    }
}

void PreferencesStore::tellDamage() const {
    if (onDamage) {
        onDamage();
    }
}

bool PreferencesStore::holdsUnreadableDocument() const {
    const auto bytes = defaults_.data(key);
    return bytes ? !decodePreferences(*bytes) : defaults_.contains(key);
}

} // namespace CurtainCore
