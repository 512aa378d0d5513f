#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/windows/WindowId.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>

struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace LinuxPlatform {

/// The windows of a Wayland compositor that lets other programs list them and change their states. Source:
/// the protocol wlr-foreign-toplevel-management, version 1, whose description stands beside
/// `WaylandConnection`. Main thread only.
class ForeignToplevels {
public:
    enum class Act { minimise, restore, activate };

    /// What the compositor tells of a window.
    struct State {
        std::string applicationId;
        bool isMinimised = false;
        bool isActivated = false;
    };

    struct Handlers {
        /// A window is new, or different. Those that are there already come first, then `onListed`.
        std::function<void(WindowId window, const State& state)> onChanged;
        std::function<void(WindowId window)> onClosed;
        std::function<void()> onListed;
        /// The compositor has taken what it was asked last.
        std::function<void()> onTaken;
        /// No window is known any more; those that are told of later have other identifiers.
        std::function<void()> onLost;
    };

    enum class Offer { notKnown, made, notMade };

    /// How long the only waits last.
    struct Patience {
        std::chrono::milliseconds atStart{500};
        std::chrono::milliseconds atEnd{500};
    };

    /// `queue` outlives this object. The handlers do not end it.
    ForeignToplevels(const std::filesystem::path& socket, Platform::MainQueue& queue, Handlers handlers,
                     Patience patience);
    ~ForeignToplevels();
    ForeignToplevels(const ForeignToplevels&) = delete;
    ForeignToplevels& operator=(const ForeignToplevels&) = delete;

    /// To be called once. Waits a moment for a compositor that answers at once.
    void open();
    /// Whether the compositor that is there speaks the protocol.
    Offer offer() const { return offer_; }
    bool isListed() const { return isListed_; }
    /// In the order in which it is asked. Of what is still to be asked of a window, minimising and restoring
    /// replace each other, and who is to be minimised is not activated before.
    void ask(Act act, std::span<const WindowId> windows);
    /// Whether that is the last that the compositor was asked of the window, and it has not taken it yet.
    bool isToBeMinimised(WindowId window) const { return lastAsked(window) == Act::minimise; }
    bool isToBeRestored(WindowId window) const { return lastAsked(window) == Act::restore; }
    /// Since when the compositor owes an answer.
    std::optional<Platform::MainQueue::Seconds> askedAt() const { return askedAt_; }

private:
    struct Handle {
        ForeignToplevels* owner = nullptr;
        WindowId id = 0;
        State state;
        WaylandObject<zwlr_foreign_toplevel_handle_v1> object;
    };
    struct RegistryEvents;
    struct ManagerEvents;
    struct HandleEvents;

    void greet(wl_display& display);
    void offered(std::uint32_t name, const std::string& interfaceName);
    void look();
    void add(zwlr_foreign_toplevel_handle_v1* object);
    void remove(const Handle& handle);
    void forget();
    void send();
    /// Activation aside.
    std::optional<Act> lastAsked(WindowId window) const;
    void carryOut(Act act, const Handle& handle);

    Platform::MainQueue& queue_;
    Handlers handlers_;
    Patience patience_;
    WaylandConnection connection_;
    WaylandObject<wl_registry> registry_;
    WaylandObject<wl_seat> seat_;
    WaylandObject<zwlr_foreign_toplevel_manager_v1> manager_;
    std::map<WindowId, std::unique_ptr<Handle>> handles_;
    WindowId lastId_ = 0;
    Offer offer_ = Offer::notKnown;
    bool isListed_ = false;
    std::deque<std::pair<Act, WindowId>> waiting_;
    /// Sent, activation aside, and not taken yet.
    std::map<WindowId, Act> sent_;
    std::optional<Platform::MainQueue::Seconds> askedAt_;
};

} // namespace LinuxPlatform
