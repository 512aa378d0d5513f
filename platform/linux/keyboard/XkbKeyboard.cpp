#include "platform/linux/keyboard/XkbKeyboard.h"

#include "platform/linux/keyboard/KeyPositions.h"

#include <QString>
#include <QStringList>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// What the accents of dead keys look like, in the order of their symbols from dead_grave on.
constexpr std::array<std::string_view, 13> deadKeys{"`", "´", "^", "~", "¯", "˘", "˙",
                                                    "¨", "˚", "˝", "ˇ", "¸", "˛"};

/// Empty for a symbol that cannot be seen.
QString textOf(xkb_keysym_t symbol) {
    if (symbol >= XKB_KEY_dead_grave && symbol < XKB_KEY_dead_grave + deadKeys.size()) {
        const auto text = deadKeys.at(symbol - XKB_KEY_dead_grave);
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }
    // The keypad's keys write what others write too.
    if (symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_9) {
        return {};
    }
    std::array<char, 16> buffer{};
    if (xkb_keysym_to_utf8(symbol, buffer.data(), buffer.size()) <= 0) {
        return {};
    }
    const auto text = QString::fromUtf8(buffer.data());
    const bool isVisible =
        !text.isEmpty() && (text[0].isSurrogate() || (text[0].isPrint() && !text[0].isSpace()));
    return isVisible ? text : QString();
}

} // namespace

XkbKeyboard::XkbKeyboard(X11Connection* connection, std::string currentDesktop)
    : connection_(connection),
      currentDesktop_(std::move(currentDesktop)),
      context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {}

std::optional<std::int64_t> XkbKeyboard::keyCode(std::uint32_t scanCode) {
    if (!keymap_) {
        read();
    }
    const auto* const name =
        keymap_ && scanCode != 0 ? xkb_keymap_key_get_name(keymap_.get(), scanCode) : nullptr;
    return name != nullptr ? KeyPositions::keyCode(name) : std::nullopt;
}

std::optional<std::string> XkbKeyboard::keyLabel(std::int64_t keyCode) {
    read();
    const auto key = scanCode(keyCode);
    if (!key) {
        return std::nullopt;
    }
    const auto textAt = [&](xkb_level_index_t level) {
        const xkb_keysym_t* symbols = nullptr;
        const auto layouts = xkb_keymap_num_layouts_for_key(keymap_.get(), *key);
        const auto layout = layout_ < layouts ? layout_ : 0;
        return xkb_keymap_key_get_syms_by_level(keymap_.get(), *key, layout, level, &symbols) == 1
                   ? textOf(symbols[0])
                   : QString();
    };
    const auto plain = textAt(0);
    const auto shifted = textAt(1);
    if (plain.isEmpty()) {
        return std::nullopt;
    }
    // The layout knows its capitals: those of a Turkish i have a dot.
    const bool isLetter = plain[0].isLetter() && !shifted.isEmpty() && shifted[0].isUpper();
    return (isLetter ? shifted : plain).toStdString();
}

Platform::ModifierStyle XkbKeyboard::modifierStyle() {
    const auto names = QString::fromStdString(currentDesktop_).split(QLatin1Char(':'));
    return names.contains(QLatin1String("KDE"), Qt::CaseInsensitive) ? Platform::ModifierStyle{"Meta", true}
                                                                     : Platform::ModifierStyle();
}

void XkbKeyboard::beep() {
    if (connection_ != nullptr) {
        xcb_bell(connection_->get(), 0);
        connection_->flush();
    }
}

std::vector<xkb_keysym_t> XkbKeyboard::symbols(std::int64_t keyCode) {
    read();
    std::vector<xkb_keysym_t> result;
    const auto key = scanCode(keyCode);
    if (!key) {
        return result;
    }
    constexpr xkb_level_index_t levels = 2;
    for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts_for_key(keymap_.get(), *key);
         ++layout) {
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* symbols = nullptr;
            const auto count = xkb_keymap_key_get_syms_by_level(keymap_.get(), *key, layout, level, &symbols);
            result.insert(result.end(), symbols, symbols + count);
        }
    }
    return result;
}

void XkbKeyboard::read() {
    keymap_.reset();
    layout_ = 0;
    if (!context_) {
        return;
    }
    auto* const xcb = connection_ != nullptr ? connection_->get() : nullptr;
    const bool hasExtension =
        xcb != nullptr && xkb_x11_setup_xkb_extension(
                              xcb, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                              XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr) == 1;
    if (!hasExtension) {
        keymap_.reset(xkb_keymap_new_from_names(context_.get(), nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS));
        return;
    }
    const auto device = xkb_x11_get_core_keyboard_device_id(xcb);
    keymap_.reset(xkb_x11_keymap_new_from_device(context_.get(), xcb, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap_) {
        return;
    }
    const std::unique_ptr<xkb_state, Unref<xkb_state_unref>> state(
        xkb_x11_state_new_from_device(keymap_.get(), xcb, device));
    if (state) {
        layout_ = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    }
}

std::optional<xkb_keycode_t> XkbKeyboard::scanCodeOf(std::int64_t keyCode) {
    if (!keymap_) {
        read();
    }
    return scanCode(keyCode);
}

std::optional<xkb_keycode_t> XkbKeyboard::scanCode(std::int64_t keyCode) const {
    const auto name = std::string(KeyPositions::xkbName(keyCode));
    const auto key =
        keymap_ && !name.empty() ? xkb_keymap_key_by_name(keymap_.get(), name.c_str()) : XKB_KEYCODE_INVALID;
    return key != XKB_KEYCODE_INVALID ? std::optional(key) : std::nullopt;
}

} // namespace LinuxPlatform
