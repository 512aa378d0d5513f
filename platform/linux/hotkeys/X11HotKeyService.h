#pragma once

#include "platform/HotKeyService.h"
#include "platform/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/keyboard/X11Keyboard.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Hot keys as passive key grabs on the root window, whatever locks are on.
class X11HotKeyService : public Platform::HotKeyService {
public:
    /// All outlive this object. `log` is told when a change of the keyboard costs a hot key, and when it is
    /// back. `reach` is how far the server hears the keyboard.
    X11HotKeyService(X11Connection& connection, Platform::MainQueue& mainQueue, Platform::Log& log,
                     Platform::HotKeyReach reach);
    ~X11HotKeyService() override;

    Platform::HotKeyReach reach() const override { return reach_; }
    bool canTakeKeyboard() const override { return reach() == Platform::HotKeyReach::everywhere; }
    Platform::HotKeyStatus registerHotKey(const Platform::HotKeyCombination& combination,
                                          Platform::HotKeyID id) override;
    void unregisterHotKey(Platform::HotKeyID id) override;
    Platform::Subscription installEventHandler(Handler handler) override;

private:
    struct HotKey {
        Platform::HotKeyID id;
        Platform::HotKeyCombination combination;
        /// Absent while the keyboard does not have the combination, or where another program had it when the
        /// keyboard changed.
        std::optional<X11Keyboard::Combination> grabbed;
        /// The key that is down, be the combination another one meanwhile.
        std::optional<xcb_keycode_t> pressedKey;
        bool isReportedMissing = false;
    };

    void detectAutoRepeat();
    void watchActiveWindow();
    void handleEvent(const xcb_generic_event_t& event);
    void keyPressed(const xcb_key_press_event_t& event);
    void keyReleased(const xcb_key_release_event_t& event);
    void scheduleKeyboardChange();
    void keyboardChanged();
    void scheduleAnotherTry();
    void grabMissing();
    void reportMissing();
    bool grab(const X11Keyboard::Combination& combination);
    void ungrab(const X11Keyboard::Combination& combination);
    void deliver(Platform::HotKeyEvent event, Platform::HotKeyID id);

    X11Connection& connection_;
    Platform::MainQueue& mainQueue_;
    Platform::Log& log_;
    Platform::HotKeyReach reach_;
    X11Keyboard keyboard_;
    std::uint8_t keyboardEvent_ = 0;
    xcb_atom_t activeWindowProperty_ = XCB_ATOM_NONE;
    bool isKeyboardChangeScheduled_ = false;
    bool isAnotherTryScheduled_ = false;
    std::vector<HotKey> hotKeys_;
    Platform::Subscribers<Platform::HotKeyEvent, Platform::HotKeyID> handlers_;
    Platform::Subscription eventHandler_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
