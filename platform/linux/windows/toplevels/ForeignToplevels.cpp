#include "platform/linux/windows/toplevels/ForeignToplevels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <wlr-foreign-toplevel-management-client.h>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t version = 1;
/// A request has 8 bytes, or 12.
constexpr std::size_t mostAtOnce = 50;

bool isReplaced(ForeignToplevels::Act earlier, ForeignToplevels::Act later) {
    const auto isActivation = [](auto act) { return act == ForeignToplevels::Act::activate; };
    return later == ForeignToplevels::Act::minimise || isActivation(earlier) == isActivation(later);
}

} // namespace

struct ForeignToplevels::RegistryEvents {
    static void global(void* data, wl_registry* /*registry*/, std::uint32_t name, const char* interfaceName,
                       std::uint32_t /*version*/) {
        static_cast<ForeignToplevels*>(data)->offered(name, interfaceName);
    }
    static void globalRemove(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}
};

struct ForeignToplevels::ManagerEvents {
    static void toplevel(void* data, zwlr_foreign_toplevel_manager_v1* /*manager*/,
                         zwlr_foreign_toplevel_handle_v1* handle) {
        static_cast<ForeignToplevels*>(data)->add(handle);
    }
    static void finished(void* data, zwlr_foreign_toplevel_manager_v1* /*manager*/) {
        auto& toplevels = *static_cast<ForeignToplevels*>(data);
        toplevels.offer_ = Offer::notMade;
        toplevels.forget();
    }
};

struct ForeignToplevels::HandleEvents {
    using Object = zwlr_foreign_toplevel_handle_v1;

    static void title(void* /*data*/, Object* /*handle*/, const char* /*title*/) {}
    static void applicationId(void* data, Object* /*handle*/, const char* applicationId) {
        static_cast<Handle*>(data)->state.applicationId = applicationId;
    }
    static void outputEnter(void* /*data*/, Object* /*handle*/, wl_output* /*output*/) {}
    static void outputLeave(void* /*data*/, Object* /*handle*/, wl_output* /*output*/) {}
    static void state(void* data, Object* /*handle*/, wl_array* states) {
        const std::span held(static_cast<const std::uint32_t*>(states->data),
                             states->size / sizeof(std::uint32_t));
        const auto holds = [&](std::uint32_t state) { return std::ranges::find(held, state) != held.end(); };
        auto& handle = *static_cast<Handle*>(data);
        handle.state.isMinimised = holds(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
        handle.state.isActivated = holds(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
    }
    static void done(void* data, Object* /*handle*/) {
        const auto& handle = *static_cast<Handle*>(data);
        handle.owner->handlers_.onChanged(handle.id, handle.state);
    }
    static void closed(void* data, Object* /*handle*/) {
        const auto& handle = *static_cast<Handle*>(data);
        handle.owner->remove(handle);
    }
    static void parent(void* /*data*/, Object* /*handle*/, Object* /*parent*/) {}
};

ForeignToplevels::ForeignToplevels(const std::filesystem::path& socket, Platform::MainQueue& queue,
                                   Handlers handlers, Patience patience)
    : queue_(queue),
      handlers_(std::move(handlers)),
      patience_(patience),
      connection_(socket, queue,
                  {[this](wl_display& display) { greet(display); },
                   [this] {
                       registry_.reset();
                       offer_ = Offer::notKnown;
                       forget();
                   }}) {}

ForeignToplevels::~ForeignToplevels() {
    // What was asked for at the very end is to happen all the same.
    connection_.finish(patience_.atEnd);
}

void ForeignToplevels::open() {
    connection_.open();
    connection_.finish(patience_.atStart);
}

void ForeignToplevels::greet(wl_display& display) {
    static constexpr wl_registry_listener listener{RegistryEvents::global, RegistryEvents::globalRemove};
    registry_.reset(wl_display_get_registry(&display));
    wl_registry_add_listener(registry_.get(), &listener, this);
    connection_.sync([this] { look(); });
}

void ForeignToplevels::offered(std::uint32_t name, const std::string& interfaceName) {
    if (interfaceName == wl_seat_interface.name && !seat_) {
        seat_.reset(
            static_cast<wl_seat*>(wl_registry_bind(registry_.get(), name, &wl_seat_interface, version)));
    }
    if (interfaceName == zwlr_foreign_toplevel_manager_v1_interface.name && !manager_) {
        static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{ManagerEvents::toplevel,
                                                                            ManagerEvents::finished};
        manager_.reset(static_cast<zwlr_foreign_toplevel_manager_v1*>(
            wl_registry_bind(registry_.get(), name, &zwlr_foreign_toplevel_manager_v1_interface, version)));
        zwlr_foreign_toplevel_manager_v1_add_listener(manager_.get(), &listener, this);
    }
}

void ForeignToplevels::look() {
    offer_ = manager_ ? Offer::made : Offer::notMade;
    if (offer_ == Offer::made) {
        connection_.sync([this] {
            isListed_ = manager_ != nullptr;
            if (isListed_) {
                handlers_.onListed();
                send();
            }
        });
    }
}

void ForeignToplevels::add(zwlr_foreign_toplevel_handle_v1* object) {
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        HandleEvents::title,       HandleEvents::applicationId, HandleEvents::outputEnter,
        HandleEvents::outputLeave, HandleEvents::state,         HandleEvents::done,
        HandleEvents::closed,      HandleEvents::parent};
    auto handle = std::make_unique<Handle>();
    handle->owner = this;
    handle->id = ++lastId_;
    handle->object.reset(object);
    zwlr_foreign_toplevel_handle_v1_add_listener(object, &listener, handle.get());
    handles_.emplace(handle->id, std::move(handle));
}

void ForeignToplevels::remove(const Handle& handle) {
    const auto id = handle.id;
    auto* const object = handles_.at(id)->object.release();
    handles_.erase(id);
    zwlr_foreign_toplevel_handle_v1_destroy(object);
    handlers_.onClosed(id);
}

void ForeignToplevels::forget() {
    waiting_.clear();
    sent_.clear();
    askedAt_.reset();
    isListed_ = false;
    handles_.clear();
    manager_.reset();
    seat_.reset();
    handlers_.onLost();
}

void ForeignToplevels::ask(Act act, std::span<const WindowId> windows) {
    const std::set<WindowId> named(windows.begin(), windows.end());
    std::erase_if(waiting_, [&](const auto& request) {
        return named.contains(request.second) && isReplaced(request.first, act);
    });
    for (const auto window : windows) {
        waiting_.emplace_back(act, window);
    }
    send();
}

std::optional<ForeignToplevels::Act> ForeignToplevels::lastAsked(WindowId window) const {
    const auto last = std::find_if(waiting_.rbegin(), waiting_.rend(), [&](const auto& request) {
        return request.second == window && request.first != Act::activate;
    });
    if (last != waiting_.rend()) {
        return last->first;
    }
    const auto sent = sent_.find(window);
    return sent != sent_.end() ? std::optional(sent->second) : std::nullopt;
}

void ForeignToplevels::send() {
    if (!isListed_ || askedAt_ || waiting_.empty()) {
        return;
    }
    for (std::size_t count = 0; count < mostAtOnce && !waiting_.empty(); ++count) {
        const auto [act, window] = waiting_.front();
        waiting_.pop_front();
        if (const auto handle = handles_.find(window); handle != handles_.end()) {
            carryOut(act, *handle->second);
            if (act != Act::activate) {
                sent_[window] = act;
            }
        }
    }
    askedAt_ = queue_.now();
    connection_.sync([this] {
        askedAt_.reset();
        sent_.clear();
        send();
        if (!askedAt_) {
            handlers_.onTaken();
        }
    });
}

void ForeignToplevels::carryOut(Act act, const Handle& handle) {
    switch (act) {
    case Act::minimise:
        zwlr_foreign_toplevel_handle_v1_set_minimized(handle.object.get());
        break;
    case Act::restore:
        zwlr_foreign_toplevel_handle_v1_unset_minimized(handle.object.get());
        break;
    case Act::activate:
        if (seat_) {
            zwlr_foreign_toplevel_handle_v1_activate(handle.object.get(), seat_.get());
        }
        break;
    }
}

} // namespace LinuxPlatform
