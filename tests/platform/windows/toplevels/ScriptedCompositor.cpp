#include "tests/platform/windows/toplevels/ScriptedCompositor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <wlr-foreign-toplevel-management-server.h>

namespace PlatformTests {

/// What clients ask for.
struct ScriptedCompositor::Requests {
    static Toplevel& windowOf(wl_resource* handle) {
        return *static_cast<Toplevel*>(wl_resource_get_user_data(handle));
    }

    template <void (ScriptedCompositor::*act)(Toplevel&)>
    static void note(const char* what, wl_resource* handle) {
        // A window that is closed already.
        if (wl_resource_get_user_data(handle) == nullptr) {
            return;
        }
        auto& window = windowOf(handle);
        window.compositor->asked_.push_back(what + std::to_string(window.number));
        (window.compositor->*act)(window);
    }

    static void ignore(wl_client* /*client*/, wl_resource* /*handle*/) {}
    static void minimise(wl_client* /*client*/, wl_resource* handle) {
        note<&ScriptedCompositor::minimise>("minimise ", handle);
    }
    static void restore(wl_client* /*client*/, wl_resource* handle) {
        note<&ScriptedCompositor::restore>("restore ", handle);
    }
    static void activate(wl_client* /*client*/, wl_resource* handle, wl_resource* /*seat*/) {
        note<&ScriptedCompositor::activateAsAsked>("activate ", handle);
    }
    static void setRectangle(wl_client* /*client*/, wl_resource* /*handle*/, wl_resource* /*surface*/,
                             std::int32_t /*x*/, std::int32_t /*y*/, std::int32_t /*width*/,
                             std::int32_t /*height*/) {}
    static void setFullscreen(wl_client* /*client*/, wl_resource* /*handle*/, wl_resource* /*output*/) {}
    static void destroy(wl_client* /*client*/, wl_resource* handle) { wl_resource_destroy(handle); }
    static void gone(wl_resource* handle) {
        if (wl_resource_get_user_data(handle) != nullptr) {
            windowOf(handle).handles.erase(handle);
        }
    }
    static void managerGone(wl_resource* manager) {
        static_cast<ScriptedCompositor*>(wl_resource_get_user_data(manager))->managers_.erase(manager);
    }

    static constexpr struct zwlr_foreign_toplevel_handle_v1_interface handle {
        .set_maximized = ignore, .unset_maximized = ignore, .set_minimized = minimise,
        .unset_minimized = restore, .activate = activate, .close = ignore, .set_rectangle = setRectangle,
        .destroy = destroy, .set_fullscreen = setFullscreen, .unset_fullscreen = ignore
    };
    static constexpr struct zwlr_foreign_toplevel_manager_v1_interface manager { .stop = ignore };
};

ScriptedCompositor::ScriptedCompositor(Protocol protocol) {
    listen();
    tasksArrived_ = eventfd(0, EFD_CLOEXEC);
    wl_event_loop_add_fd(wl_display_get_event_loop(display_), tasksArrived_, WL_EVENT_READABLE, runTasks,
                         this);
    wl_global_create(display_, &wl_seat_interface, 1, this, bindSeat);
    if (protocol == Protocol::offered) {
        constexpr int version = 3;
        wl_global_create(display_, &zwlr_foreign_toplevel_manager_v1_interface, version, this, bindManager);
    }
    thread_ = std::thread([this] { wl_display_run(display_); });
}

ScriptedCompositor::~ScriptedCompositor() {
    perform([this] {
        wl_display_destroy_clients(display_);
        wl_display_terminate(display_);
    });
    thread_.join();
    wl_display_destroy(display_);
    ::close(tasksArrived_);
}

void ScriptedCompositor::listen() {
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto text = path().string();
    std::memcpy(address.sun_path, text.data(), text.size());
    EXPECT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener, 4), 0);
    EXPECT_EQ(wl_display_add_socket_fd(display_, listener), 0);
}

void ScriptedCompositor::hand(std::packaged_task<void()> task) {
    const std::scoped_lock lock(mutex_);
    tasks_.push_back(std::move(task));
    eventfd_write(tasksArrived_, 1);
}

void ScriptedCompositor::perform(const std::function<void()>& task) {
    std::packaged_task<void()> packaged(task);
    auto done = packaged.get_future();
    hand(std::move(packaged));
    done.get();
}

int ScriptedCompositor::runTasks(int descriptor, std::uint32_t /*mask*/, void* data) {
    auto& compositor = *static_cast<ScriptedCompositor*>(data);
    eventfd_t ignored = 0;
    eventfd_read(descriptor, &ignored);
    std::vector<std::packaged_task<void()>> tasks;
    {
        const std::scoped_lock lock(compositor.mutex_);
        tasks = std::exchange(compositor.tasks_, {});
    }
    for (auto& task : tasks) {
        task();
    }
    return 0;
}

void ScriptedCompositor::bindSeat(wl_client* client, void* /*data*/, std::uint32_t version,
                                  std::uint32_t id) {
    auto* const seat = wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(seat, nullptr, nullptr, nullptr);
    wl_seat_send_capabilities(seat, 0);
}

void ScriptedCompositor::bindManager(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
    auto& compositor = *static_cast<ScriptedCompositor*>(data);
    ++compositor.connections_;
    auto* const manager = wl_resource_create(client, &zwlr_foreign_toplevel_manager_v1_interface,
                                             static_cast<int>(version), id);
    wl_resource_set_implementation(manager, &Requests::manager, data, Requests::managerGone);
    compositor.managers_.insert(manager);
    if (compositor.refuses_) {
        wl_resource_post_error(manager, 0, "no");
        return;
    }
    for (const auto& [number, window] : compositor.windows_) {
        compositor.introduce(*window, manager);
    }
}

void ScriptedCompositor::introduce(Toplevel& window, wl_resource* manager) {
    auto* const handle =
        wl_resource_create(wl_resource_get_client(manager), &zwlr_foreign_toplevel_handle_v1_interface,
                           wl_resource_get_version(manager), 0);
    wl_resource_set_implementation(handle, &Requests::handle, &window, Requests::gone);
    window.handles.insert(handle);
    zwlr_foreign_toplevel_manager_v1_send_toplevel(manager, handle);
    // Everything is told once more, as usual.
    tellName(window);
    tellState(window);
}

void ScriptedCompositor::tellName(const Toplevel& window) {
    for (auto* const handle : window.handles) {
        zwlr_foreign_toplevel_handle_v1_send_title(handle, "title");
        zwlr_foreign_toplevel_handle_v1_send_app_id(handle, window.applicationId.c_str());
        zwlr_foreign_toplevel_handle_v1_send_done(handle);
    }
}

void ScriptedCompositor::tellState(const Toplevel& window) {
    std::vector<std::uint32_t> held;
    if (window.isMinimised) {
        held.push_back(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
    }
    if (window.isActivated) {
        held.push_back(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
    }
    wl_array states{held.size() * sizeof(std::uint32_t), 0, held.data()};
    for (auto* const handle : window.handles) {
        zwlr_foreign_toplevel_handle_v1_send_state(handle, &states);
        zwlr_foreign_toplevel_handle_v1_send_done(handle);
    }
}

void ScriptedCompositor::minimise(Toplevel& window) {
    if (!heedsHiding_) {
        return;
    }
    window.isMinimised = true;
    const bool hadFocus = std::exchange(window.isActivated, false);
    tellState(window);
    // The focus passes to the one that was opened last.
    for (auto other = windows_.rbegin(); hadFocus && other != windows_.rend(); ++other) {
        if (!other->second->isMinimised) {
            activate(*other->second);
            return;
        }
    }
}

void ScriptedCompositor::restore(Toplevel& window) {
    // As labwc does.
    if (window.isMinimised) {
        activate(window);
    }
}

void ScriptedCompositor::activateAsAsked(Toplevel& window) {
    if (!window.isMinimised || activatingRestores_) {
        activate(window);
    }
}

void ScriptedCompositor::activate(Toplevel& window) {
    for (const auto& [number, other] : windows_) {
        if (other.get() != &window && std::exchange(other->isActivated, false)) {
            tellState(*other);
        }
    }
    window.isMinimised = false;
    window.isActivated = true;
    tellState(window);
}

ScriptedCompositor::Window ScriptedCompositor::open(const std::string& applicationId) {
    Window number = 0;
    perform([&] {
        number = ++lastWindow_;
        auto& window = *windows_.emplace(number, std::make_unique<Toplevel>()).first->second;
        window.compositor = this;
        window.number = number;
        window.applicationId = applicationId;
        for (auto* const manager : managers_) {
            introduce(window, manager);
        }
        activate(window);
    });
    return number;
}

void ScriptedCompositor::rename(Window window, const std::string& applicationId) {
    perform([&] {
        windows_.at(window)->applicationId = applicationId;
        tellName(*windows_.at(window));
    });
}

void ScriptedCompositor::close(Window window) {
    perform([&] {
        for (auto* const handle : windows_.at(window)->handles) {
            zwlr_foreign_toplevel_handle_v1_send_closed(handle);
            wl_resource_set_user_data(handle, nullptr);
        }
        windows_.erase(window);
    });
}

void ScriptedCompositor::focus(Window window) {
    perform([&] { activate(*windows_.at(window)); });
}

void ScriptedCompositor::repeat(Window window) {
    perform([&] {
        tellName(*windows_.at(window));
        tellState(*windows_.at(window));
    });
}

ScriptedCompositor::Window ScriptedCompositor::focused() {
    Window focused = 0;
    perform([&] {
        for (const auto& [number, window] : windows_) {
            focused = window->isActivated ? number : focused;
        }
    });
    return focused;
}

bool ScriptedCompositor::isMinimised(Window window) {
    bool isMinimised = false;
    perform([&] { isMinimised = windows_.at(window)->isMinimised; });
    return isMinimised;
}

std::vector<std::string> ScriptedCompositor::asked() {
    std::vector<std::string> asked;
    perform([&] { asked = asked_; });
    return asked;
}

int ScriptedCompositor::connections() {
    int connections = 0;
    perform([&] { connections = connections_; });
    return connections;
}

void ScriptedCompositor::setHeedsHiding(bool heedsHiding) {
    perform([&] { heedsHiding_ = heedsHiding; });
}

void ScriptedCompositor::setActivatingRestores(bool activatingRestores) {
    perform([&] { activatingRestores_ = activatingRestores; });
}

void ScriptedCompositor::setRefuses(bool refuses) {
    perform([&] {
        refuses_ = refuses;
        for (auto* const manager : refuses ? managers_ : std::set<wl_resource*>()) {
            wl_resource_post_error(manager, 0, "no");
        }
    });
}

void ScriptedCompositor::finish() {
    perform([&] {
        for (auto* const manager : managers_) {
            zwlr_foreign_toplevel_manager_v1_send_finished(manager);
        }
    });
}

void ScriptedCompositor::freeze() {
    thawed_ = {};
    hand(std::packaged_task<void()>([this] { thawed_.get_future().wait(); }));
}

void ScriptedCompositor::thaw() {
    thawed_.set_value();
}

void ScriptedCompositor::startAnew() {
    perform([&] {
        wl_display_destroy_clients(display_);
        windows_.clear();
        lastWindow_ = 0;
    });
}

} // namespace PlatformTests
