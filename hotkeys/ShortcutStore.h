#pragma once

#include "core/UserDefaults.h"
#include "hotkeys/Name.h"

namespace KeyboardShortcuts {

/// The user's choices in the user defaults: under "KeyboardShortcuts_" and the name's raw value either the
/// shortcut's stored form or, where a default was cleared, the boolean false.
class ShortcutStore {
public:
    /// `defaults` outlives the store.
    explicit ShortcutStore(CurtainCore::UserDefaults& defaults);

    /// Writes the default shortcut unless the user defaults hold an entry already.
    void writeDefaultIfAbsent(const Name& name);
    std::optional<Shortcut> shortcut(const Name& name) const;
    void write(const Shortcut& shortcut, const Name& name);
    /// Makes sure that the name has no shortcut, at the next launch neither.
    void clear(const Name& name);

private:
    CurtainCore::UserDefaults& defaults_;
};

} // namespace KeyboardShortcuts
