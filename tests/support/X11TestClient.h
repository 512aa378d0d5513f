#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

/// A program with windows, as far as the X server can tell: a connection of its own.
class X11TestClient {
public:
    /// `display` is that of the environment where it is null.
    explicit X11TestClient(const char* display = nullptr)
        : connection_(xcb_connect(display, nullptr), &xcb_disconnect) {}

    xcb_connection_t* get() const { return connection_.get(); }
    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(get())).data->root; }

    xcb_atom_t atom(std::string_view name) const {
        const LinuxPlatform::XcbPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            get(), xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
        // There is none where the server is gone.
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    /// A window that is not shown yet; its place is its user's, so that no window manager looks for another.
    xcb_window_t create(std::string_view instanceName, std::string_view className) {
        const auto window = xcb_generate_id(get());
        xcb_create_window(get(), XCB_COPY_FROM_PARENT, window, root(), 30, 40, 200, 150, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        std::string value(instanceName);
        value.push_back('\0');
        value.append(className).push_back('\0');
        setBytes(window, "WM_CLASS", value);
        constexpr std::array<std::uint32_t, 18> userPlacedAndSized{1U | 2U};
        setNumbers(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, userPlacedAndSized);
        return window;
    }

    xcb_window_t open(std::string_view instanceName, std::string_view className) {
        const auto window = create(instanceName, className);
        map(window);
        return window;
    }

    void map(xcb_window_t window) {
        xcb_map_window(get(), window);
        sync();
    }

    void destroy(xcb_window_t window) {
        xcb_destroy_window(get(), window);
        sync();
    }

    void setBytes(xcb_window_t window, std::string_view property, std::string_view bytes) {
        // A request holds 256 KiB: longer values are sent in pieces.
        constexpr std::size_t piece = 100'000;
        auto mode = XCB_PROP_MODE_REPLACE;
        do {
            const auto part = bytes.substr(0, piece);
            xcb_change_property(get(), static_cast<std::uint8_t>(mode), window, atom(property),
                                XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(part.size()), part.data());
            bytes.remove_prefix(part.size());
            mode = XCB_PROP_MODE_APPEND;
        } while (!bytes.empty());
        sync();
    }

    void setNumbers(xcb_window_t window, std::string_view property, xcb_atom_t type,
                    std::span<const std::uint32_t> numbers) {
        xcb_change_property(get(), XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                            static_cast<std::uint32_t>(numbers.size()), numbers.data());
        sync();
    }

    std::vector<std::uint32_t> numbers(xcb_window_t window, std::string_view property) const {
        const LinuxPlatform::XcbPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            get(), xcb_get_property(get(), 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 65536),
            nullptr));
        if (!reply || reply->format != 32) {
            return {};
        }
        std::vector<std::uint32_t> values(reply->value_len);
        std::copy_n(static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())), values.size(),
                    values.begin());
        return values;
    }

    bool isListed(xcb_window_t window) const { return contains(numbers(root(), "_NET_CLIENT_LIST"), window); }

    bool isHidden(xcb_window_t window) const {
        return contains(numbers(window, "_NET_WM_STATE"), atom("_NET_WM_STATE_HIDDEN"));
    }

    /// Absent for a window that is gone.
    std::optional<std::uint8_t> mapState(xcb_window_t window) const {
        const LinuxPlatform::XcbPointer<xcb_get_window_attributes_reply_t> reply(
            xcb_get_window_attributes_reply(get(), xcb_get_window_attributes(get(), window), nullptr));
        return reply ? std::optional(reply->map_state) : std::nullopt;
    }

    /// Whether it and all that it stands in are mapped.
    bool isViewable(xcb_window_t window) const { return mapState(window) == XCB_MAP_STATE_VIEWABLE; }

    /// This program's windows on the screen, bottom to top. Some window managers are late to write it down.
    std::vector<xcb_window_t> stackingOrder() const {
        std::vector<xcb_window_t> order;
        for (const auto top : children(root())) {
            appendWindowsIn(top, order);
        }
        return order;
    }

    xcb_window_t activeWindow() const {
        const auto list = numbers(root(), "_NET_ACTIVE_WINDOW");
        return list.empty() ? xcb_window_t{XCB_WINDOW_NONE} : list.front();
    }

    std::optional<std::uint32_t> desktop(xcb_window_t window) const {
        const auto list = numbers(window, "_NET_WM_DESKTOP");
        return list.empty() ? std::nullopt : std::optional(list.front());
    }

    /// A request to the window manager about a window.
    void ask(xcb_window_t window, std::string_view message, std::initializer_list<std::uint32_t> data) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom(message);
        std::copy(data.begin(), data.end(), event.data.data32);
        xcb_send_event(get(), 0, root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&event));
        sync();
    }

    void sync() const {
        const LinuxPlatform::XcbPointer<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(get(), xcb_get_input_focus(get()), nullptr));
    }

private:
    std::vector<xcb_window_t> children(xcb_window_t window) const {
        const LinuxPlatform::XcbPointer<xcb_query_tree_reply_t> reply(
            xcb_query_tree_reply(get(), xcb_query_tree(get(), window), nullptr));
        if (!reply) {
            return {};
        }
        const auto* const first = xcb_query_tree_children(reply.get());
        return {first, first + xcb_query_tree_children_length(reply.get())};
    }

    bool owns(xcb_window_t window) const {
        const auto* const setup = xcb_get_setup(get());
        return (window & ~setup->resource_id_mask) == setup->resource_id_base;
    }

    /// Window managers put frames around windows.
    void appendWindowsIn(xcb_window_t window, std::vector<xcb_window_t>& order) const {
        if (owns(window)) {
            order.push_back(window);
            return;
        }
        for (const auto child : children(window)) {
            appendWindowsIn(child, order);
        }
    }

    static bool contains(const std::vector<std::uint32_t>& list, std::uint32_t value) {
        return std::find(list.begin(), list.end(), value) != list.end();
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
};

} // namespace TestSupport
