#pragma once

#include "platform/Subscription.h"

#include <cstdint>
#include <functional>

namespace Platform {

struct HotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;

    bool operator==(const HotKeyID&) const = default;
};

/// Bits of `HotKeyCombination::modifiers`.
namespace HotKeyModifier {
inline constexpr std::int64_t command = 256;
inline constexpr std::int64_t shift = 512;
inline constexpr std::int64_t option = 2048;
inline constexpr std::int64_t control = 4096;
inline constexpr std::int64_t function = 131072;
} // namespace HotKeyModifier

struct HotKeyCombination {
    /// As in platform/KeyCode.h.
    std::int64_t keyCode = 0;
    std::int64_t modifiers = 0;
};

enum class HotKeyEvent { pressed, released };

/// 0 for success.
using HotKeyStatus = std::int32_t;
/// Another program holds the combination.
inline constexpr HotKeyStatus hotKeyExists = -9878;
/// This keyboard or this session has no such combination.
inline constexpr HotKeyStatus hotKeyInvalid = -9879;

/// Where a combination is heard that the user types.
enum class HotKeyReach {
    /// Wherever the user types it.
    everywhere,
    /// Only while a window of an X11 program has the focus, as an X server tells that serves a Wayland
    /// session.
    inX11WindowsOnly,
    /// Nowhere: every combination is refused.
    nowhere,
};

/// Key combinations that reach this program from wherever the user types them. Main thread only.
class HotKeyService {
public:
    using Handler = std::function<void(HotKeyEvent, HotKeyID)>;

    virtual ~HotKeyService() = default;

    virtual HotKeyReach reach() const = 0;
    /// Whether a window of this program can have every key for a while, those included that others hold.
    virtual bool canTakeKeyboard() const = 0;
    virtual HotKeyStatus registerHotKey(const HotKeyCombination& combination, HotKeyID id) = 0;
    /// Does nothing for an identifier that is not registered.
    virtual void unregisterHotKey(HotKeyID id) = 0;
    /// `handler` is called on the main queue: once for a press, however long the key repeats, and once for
    /// the release of the key, in whatever order the modifiers are let go.
    virtual Subscription installEventHandler(Handler handler) = 0;
};

} // namespace Platform
