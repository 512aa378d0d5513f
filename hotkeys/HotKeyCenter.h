#pragma once

#include "hotkeys/Shortcut.h"
#include "platform/HotKeyService.h"
#include "platform/Log.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace KeyboardShortcuts {

/// Registers shortcuts with the system's hot-key service, each under an identifier of its own, and calls
/// back. Main thread only.
class HotKeyCenter {
public:
    using Handler = std::function<void(const Shortcut&)>;

    /// Both outlive the centre.
    HotKeyCenter(Platform::HotKeyService& service, Platform::Log& log);
    ~HotKeyCenter();
    HotKeyCenter(const HotKeyCenter&) = delete;
    HotKeyCenter& operator=(const HotKeyCenter&) = delete;

    /// Does nothing for a shortcut that is registered already. A refused one is said in the log and stays
    /// inactive.
    void registerShortcut(const Shortcut& shortcut, Handler onKeyDown, Handler onKeyUp);
    void unregisterShortcut(const Shortcut& shortcut);
    /// Whether it is registered, or will be tried after the pause.
    bool holds(const Shortcut& shortcut) const;

    /// Gives the keys back to whoever has the keyboard until `resume`. Shortcuts may be registered and
    /// unregistered meanwhile.
    void pause();
    void resume();

private:
    struct HotKey {
        Shortcut shortcut;
        Handler onKeyDown;
        Handler onKeyUp;
    };

    void handle(Platform::HotKeyEvent event, Platform::HotKeyID id);

    Platform::HotKeyService& service_;
    Platform::Log& log_;
    std::uint32_t lastId_ = 0;
    std::map<std::uint32_t, HotKey> hotKeys_;
    bool isPaused_ = false;
    /// Those to be registered after the pause.
    std::vector<HotKey> waiting_;
    std::optional<Platform::Subscription> eventHandler_;
};

} // namespace KeyboardShortcuts
