#pragma once

#include "core/Preferences.h"
#include "core/UserDefaults.h"

namespace CurtainCore {

/// Loads and saves the whole record, without a cache: every `load` reads the user defaults again. Main thread
/// only.
class PreferencesStore {
public:
    /// `defaults` outlives the store.
    explicit PreferencesStore(UserDefaults& defaults);

    /// The stored record; every field at its default when nothing, or nothing valid, is stored.
    Preferences load() const;

    /// Replaces the stored document. A stored document that could not be loaded is kept beside the new one.
    void save(const Preferences& preferences);

private:
    bool holdsUnreadableDocument() const;

    UserDefaults& defaults_;
};

} // namespace CurtainCore
