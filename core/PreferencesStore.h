#pragma once

#include "core/Preferences.h"
#include "core/UserDefaults.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace CurtainCore {

/// A stored document that could not be loaded, so that the defaults stand in for it.
struct PreferencesDamage {
    /// The name of the copy that was kept; absent where the document cannot even be read.
    std::optional<std::string> copy;

    bool operator==(const PreferencesDamage&) const = default;
};

/// Loads and saves the whole record, without a cache: every `load` reads the user defaults again. Main thread
/// only.
class PreferencesStore {
public:
    /// `defaults` outlives the store.
    explicit PreferencesStore(UserDefaults& defaults);

    /// The stored record; every field at its default when nothing, or nothing valid, is stored.
    Preferences load() const;

    /// The last document found that could not be loaded, for as long as this object lives; one that could not
    /// even be read only until it is read after all.
    const std::optional<PreferencesDamage>& damage() const { return unreadable_ ? unreadable_ : damage_; }
    /// Called inside `load`, once for each such document.
    std::function<void()> onDamage;

    /// Replaces the stored document. A stored document that could not be loaded is kept beside the new one.
    void save(const Preferences& preferences);

private:
    bool holdsUnreadableDocument() const;
    void noteDamage(const std::string& document) const;
    void noteUnreadable() const;
    /// Nobody will read any more what is about to be replaced.
    void makeLossLast();
    void tellDamage() const;

    UserDefaults& defaults_;
    // Loading changes nothing but what is known of the damage.
    mutable std::optional<PreferencesDamage> damage_;
    /// Tells one damaged document from another.
    mutable std::optional<std::size_t> damagedDocument_;
    /// There while the stored document cannot even be read.
    mutable std::optional<PreferencesDamage> unreadable_;
};

} // namespace CurtainCore
