#include "platform/linux/hotkeys/X11HotKeyService.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

// A member of a structure in there has this name.
#define explicit explicitMember // NOLINT
#include <xcb/xkb.h>
#undef explicit

namespace LinuxPlatform {

X11HotKeyService::X11HotKeyService(X11Connection& connection, Platform::MainQueue& mainQueue,
                                   Platform::Log& log, Platform::HotKeyReach reach)
    : connection_(connection),
      mainQueue_(mainQueue),
      log_(log),
      reach_(reach),
      keyboard_(connection) {
    detectAutoRepeat();
    watchActiveWindow();
    eventHandler_ = connection.addEventHandler([this](const auto& event) { handleEvent(event); });
}

X11HotKeyService::~X11HotKeyService() {
    for (const auto& hotKey : hotKeys_) {
        if (hotKey.grabbed) {
            ungrab(*hotKey.grabbed);
        }
    }
    connection_.flush();
}

Platform::HotKeyStatus X11HotKeyService::registerHotKey(const Platform::HotKeyCombination& combination,
                                                        Platform::HotKeyID id) {
    const auto translated = keyboard_.translate(combination);
    if (!translated) {
        return Platform::hotKeyInvalid;
    }
    if (!grab(*translated)) {
        return Platform::hotKeyExists;
    }
    hotKeys_.push_back({id, combination, translated, std::nullopt, false});
    return 0;
}

void X11HotKeyService::unregisterHotKey(Platform::HotKeyID id) {
    const auto found = std::ranges::find(hotKeys_, id, &HotKey::id);
    if (found == hotKeys_.end()) {
        return;
    }
    if (found->grabbed) {
        ungrab(*found->grabbed);
        connection_.flush();
    }
    hotKeys_.erase(found);
}

Platform::Subscription X11HotKeyService::installEventHandler(Handler handler) {
    return handlers_.add(std::move(handler));
}

void X11HotKeyService::detectAutoRepeat() {
    auto* const xcb = connection_.get();
    constexpr auto flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    // Without it a held key sends releases.
    const XcbPointer<xcb_xkb_per_client_flags_reply_t> reply(xcb_xkb_per_client_flags_reply(
        xcb, xcb_xkb_per_client_flags(xcb, XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0), nullptr));
    const auto* const extension = xcb_get_extension_data(xcb, &xcb_xkb_id);
    if (!reply || extension == nullptr || extension->present == 0) {
        return;
    }
    keyboardEvent_ = extension->first_event;
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(xcb, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, mapParts, mapParts, nullptr);
    connection_.flush();
}

void X11HotKeyService::watchActiveWindow() {
    activeWindowProperty_ = connection_.atoms(std::array{std::string_view("_NET_ACTIVE_WINDOW")}).front();
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &mask);
    connection_.flush();
}

void X11HotKeyService::handleEvent(const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentMark = 0x80;
    const auto type = event.response_type;
    if ((type & sentMark) != 0) {
        // Another program's, that looks as if the user had struck a key.
        return;
    }
    if (type == XCB_KEY_PRESS) {
        keyPressed(reinterpret_cast<const xcb_key_press_event_t&>(event));
    } else if (type == XCB_KEY_RELEASE) {
        keyReleased(reinterpret_cast<const xcb_key_release_event_t&>(event));
    } else if (type == XCB_MAPPING_NOTIFY || (keyboardEvent_ != 0 && type == keyboardEvent_)) {
        scheduleKeyboardChange();
    } else if (type == XCB_PROPERTY_NOTIFY &&
               reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == activeWindowProperty_) {
        scheduleAnotherTry();
    }
}

void X11HotKeyService::keyPressed(const xcb_key_press_event_t& event) {
    const auto modifiers = static_cast<std::uint16_t>(event.state & keyboard_.significantModifiers());
    for (auto& hotKey : hotKeys_) {
        const bool matches = hotKey.grabbed == X11Keyboard::Combination{event.detail, modifiers};
        if (matches && !std::exchange(hotKey.pressedKey, event.detail)) {
            deliver(Platform::HotKeyEvent::pressed, hotKey.id);
        }
    }
}

void X11HotKeyService::keyReleased(const xcb_key_release_event_t& event) {
    for (auto& hotKey : hotKeys_) {
        // The modifiers may be up already.
        if (hotKey.pressedKey == event.detail) {
            hotKey.pressedKey.reset();
            deliver(Platform::HotKeyEvent::released, hotKey.id);
        }
    }
}

void X11HotKeyService::scheduleKeyboardChange() {
    // One change of the keyboard is announced many times over.
    if (!std::exchange(isKeyboardChangeScheduled_, true)) {
        mainQueue_.async(lifetime_.weak([this] {
            isKeyboardChangeScheduled_ = false;
            keyboardChanged();
        }));
    }
}

void X11HotKeyService::keyboardChanged() {
    X11Keyboard keyboard(connection_);
    const bool isSame =
        keyboard.lockCombinations() == keyboard_.lockCombinations() &&
        std::ranges::all_of(hotKeys_, [&](const HotKey& hotKey) {
            return keyboard.translate(hotKey.combination) == keyboard_.translate(hotKey.combination);
        });
    if (isSame) {
        // Hot keys that are registered later may differ on it.
        keyboard_ = std::move(keyboard);
        return;
    }
    for (auto& hotKey : hotKeys_) {
        if (hotKey.grabbed) {
            ungrab(*hotKey.grabbed);
            hotKey.grabbed.reset();
        }
    }
    keyboard_ = std::move(keyboard);
    grabMissing();
    reportMissing();
}

void X11HotKeyService::scheduleAnotherTry() {
    // Nothing tells that another program gives a combination back; but when one quits, the focus changes.
    const bool isMissing =
        std::ranges::any_of(hotKeys_, [](const HotKey& hotKey) { return !hotKey.grabbed; });
    if (isMissing && !std::exchange(isAnotherTryScheduled_, true)) {
        mainQueue_.async(lifetime_.weak([this] {
            isAnotherTryScheduled_ = false;
            grabMissing();
        }));
    }
}

void X11HotKeyService::grabMissing() {
    for (auto& hotKey : hotKeys_) {
        const auto wanted = hotKey.grabbed ? std::nullopt : keyboard_.translate(hotKey.combination);
        if (wanted && grab(*wanted)) {
            hotKey.grabbed = wanted;
            if (std::exchange(hotKey.isReportedMissing, false)) {
                log_.writeLine("Curtain: the shortcut works again");
            }
        }
    }
}

void X11HotKeyService::reportMissing() {
    for (auto& hotKey : hotKeys_) {
        if (!hotKey.grabbed && !std::exchange(hotKey.isReportedMissing, true)) {
            log_.writeLine(
                keyboard_.translate(hotKey.combination)
                    ? "Curtain: the keyboard has changed, and another program holds the shortcut now"
                    : "Curtain: the keyboard has changed, and does not have the shortcut's keys now");
        }
    }
}

bool X11HotKeyService::grab(const X11Keyboard::Combination& combination) {
    std::vector<xcb_void_cookie_t> requests;
    for (const auto locks : keyboard_.lockCombinations()) {
        requests.push_back(xcb_grab_key_checked(connection_.get(), 0, connection_.root(),
                                                static_cast<std::uint16_t>(combination.modifiers | locks),
                                                combination.keyCode, XCB_GRAB_MODE_ASYNC,
                                                XCB_GRAB_MODE_ASYNC));
    }
    bool isGranted = !requests.empty();
    for (const auto request : requests) {
        const XcbPointer<xcb_generic_error_t> error(xcb_request_check(connection_.get(), request));
        isGranted = isGranted && !error;
    }
    if (!isGranted) {
        ungrab(combination);
        connection_.flush();
    }
    return isGranted;
}

void X11HotKeyService::ungrab(const X11Keyboard::Combination& combination) {
    for (const auto locks : keyboard_.lockCombinations()) {
        xcb_ungrab_key(connection_.get(), combination.keyCode, connection_.root(),
                       static_cast<std::uint16_t>(combination.modifiers | locks));
    }
}

void X11HotKeyService::deliver(Platform::HotKeyEvent event, Platform::HotKeyID id) {
    mainQueue_.async(lifetime_.weak([this, event, id] { handlers_.tell(event, id); }));
}

} // namespace LinuxPlatform
