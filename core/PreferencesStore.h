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

/// Loads and saves the whole record. Every `load` reads the user defaults again, but for those of one action.
/// Main thread only.
class PreferencesStore {
public:
    /// What the user or the desktop made the program do: while it lives, the user defaults are read for the
    /// first `load` and for the first one after a `save`. One inside another is a part of it.
    class Action {
    public:
        /// `store` outlives the action.
        explicit Action(const PreferencesStore& store);
        ~Action();
        Action(const Action&) = delete;
        Action& operator=(const Action&) = delete;

    private:
        const PreferencesStore& store_;
    };

    /// `defaults` outlives the store.
    explicit PreferencesStore(UserDefaults& defaults);

    /// The stored record; every field at its default when nothing, or nothing valid, is stored.
    Preferences load() const;

    /// The last document found that could not be loaded, for as long as this object lives; one that could not
    /// even be read only until it is read after all.
    const std::optional<PreferencesDamage>& damage() const { return unreadable_ ? unreadable_ : damage_; }
    /// Called inside `load`, once for each such document.
    std::function<void()> onDamage;

    /// Replaces the stored document. One that could not be loaded is kept beside the new one, and so is one
    /// with keys that this version does not know and would lose.
    void save(const Preferences& preferences);

private:
    Preferences read() const;
    bool holdsUnreadableDocument() const;
    void noteDamage(const std::string& document) const;
    void noteUnreadable() const;
    /// Nobody will read any more what is about to be replaced.
    void makeLossLast();
    void tellDamage() const;

    UserDefaults& defaults_;
    mutable int actions_ = 0;
    /// Only within an action.
    mutable std::optional<Preferences> loaded_;
    // Loading changes nothing but what is known of the damage.
    mutable std::optional<PreferencesDamage> damage_;
    /// Tells one damaged document from another.
    mutable std::optional<std::size_t> damagedDocument_;
    /// There while the stored document cannot even be read.
    mutable std::optional<PreferencesDamage> unreadable_;
};

} // namespace CurtainCore
