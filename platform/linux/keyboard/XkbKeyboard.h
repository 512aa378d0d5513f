#pragma once

#include "platform/Keyboard.h"
#include "platform/linux/x11/X11Connection.h"

#include <xkbcommon/xkbcommon.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// The keyboard of the X server, or where there is none the one that the environment describes.
class XkbKeyboard : public Platform::Keyboard {
public:
    /// `connection` outlives this object; null where there is no X server. `currentDesktop` is the value of
    /// XDG_CURRENT_DESKTOP.
    XkbKeyboard(X11Connection* connection, std::string currentDesktop);

    std::optional<std::int64_t> keyCode(std::uint32_t scanCode) override;
    std::optional<std::string> keyLabel(std::int64_t keyCode) override;
    Platform::ModifierStyle modifierStyle() override;
    void beep() override;

    /// Everything that a key can mean without modifiers or with Shift alone, in any of the layouts.
    std::vector<xkb_keysym_t> symbols(std::int64_t keyCode);
    /// The key's number; absent where the keyboard has none there.
    std::optional<xkb_keycode_t> scanCodeOf(std::int64_t keyCode);

private:
    template <auto unref>
    struct Unref {
        template <class Object>
        void operator()(Object* object) const {
            unref(object);
        }
    };

    /// A layout can change at any moment, and reading it takes a few round trips.
    void read();
    std::optional<xkb_keycode_t> scanCode(std::int64_t keyCode) const;

    X11Connection* connection_;
    std::string currentDesktop_;
    std::unique_ptr<xkb_context, Unref<xkb_context_unref>> context_;
    std::unique_ptr<xkb_keymap, Unref<xkb_keymap_unref>> keymap_;
    xkb_layout_index_t layout_ = 0;
};

} // namespace LinuxPlatform
