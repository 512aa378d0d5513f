#include "platform/linux/session/XServerQuestion.h"

#include "platform/linux/x11/X11Connection.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace LinuxPlatform {
namespace {

constexpr std::string_view guestExtension = "XWAYLAND";
constexpr std::string_view guestOutput = "XWAYLAND";

/// What a connection needs for a few questions; it is no part of an event loop.
class Question {
public:
    explicit Question(const std::string& display) : connection_(xcb_connect(display.c_str(), &screen_)) {}

    bool isConnected() const { return xcb_connection_has_error(get()) == 0; }
    xcb_connection_t* get() const { return connection_.get(); }

    template <auto receive, class Cookie>
    auto reply(Cookie cookie) const {
        auto* const received = receive(get(), cookie, nullptr);
        return XcbPointer<std::remove_pointer_t<decltype(received)>>(received);
    }

    xcb_window_t root() const {
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(get()));
        for (int index = screen_; index > 0 && screens.rem > 1; --index) {
            xcb_screen_next(&screens);
        }
        return screens.data->root;
    }

    /// The bytes of a property; empty when it is not there.
    std::string property(xcb_window_t window, std::string_view name) const {
        constexpr std::uint32_t mostWords = 1024;
        const auto atom = reply<xcb_intern_atom_reply>(
            xcb_intern_atom(get(), 1, static_cast<std::uint16_t>(name.size()), name.data()));
        const auto value = !atom || atom->atom == XCB_ATOM_NONE
                               ? nullptr
                               : reply<xcb_get_property_reply>(xcb_get_property(get(), 0, window, atom->atom,
                                                                                XCB_ATOM_ANY, 0, mostWords));
        if (!value) {
            return {};
        }
        return {static_cast<const char*>(xcb_get_property_value(value.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(value.get()))};
    }

    std::optional<xcb_window_t> windowIn(xcb_window_t holder, std::string_view name) const {
        const auto bytes = property(holder, name);
        xcb_window_t window = XCB_WINDOW_NONE;
        if (bytes.size() >= sizeof window) {
            std::copy_n(bytes.data(), sizeof window, reinterpret_cast<char*>(&window));
        }
        return window != XCB_WINDOW_NONE ? std::optional(window) : std::nullopt;
    }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    int screen_ = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
};

std::vector<std::string> outputNames(const Question& question) {
    std::vector<std::string> names;
    const auto* const extension = xcb_get_extension_data(question.get(), &xcb_randr_id);
    if (extension == nullptr || extension->present == 0) {
        return names;
    }
    // As the server knows them; the other request makes it look at the connectors, which takes long.
    question.reply<xcb_randr_query_version_reply>(
        xcb_randr_query_version(question.get(), XCB_RANDR_MAJOR_VERSION, XCB_RANDR_MINOR_VERSION));
    const auto resources = question.reply<xcb_randr_get_screen_resources_current_reply>(
        xcb_randr_get_screen_resources_current(question.get(), question.root()));
    if (!resources) {
        return names;
    }
    const std::span outputs(
        xcb_randr_get_screen_resources_current_outputs(resources.get()),
        static_cast<std::size_t>(xcb_randr_get_screen_resources_current_outputs_length(resources.get())));
    for (const auto output : outputs) {
        const auto info = question.reply<xcb_randr_get_output_info_reply>(
            xcb_randr_get_output_info(question.get(), output, resources->config_timestamp));
        if (info) {
            names.emplace_back(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info.get())),
                               static_cast<std::size_t>(xcb_randr_get_output_info_name_length(info.get())));
        }
    }
    return names;
}

std::optional<bool> isXWayland(const Question& question) {
    const auto extension = question.reply<xcb_query_extension_reply>(xcb_query_extension(
        question.get(), static_cast<std::uint16_t>(guestExtension.size()), guestExtension.data()));
    if (extension && extension->present != 0) {
        return true;
    }
    const auto outputs = outputNames(question);
    if (outputs.empty()) {
        return std::nullopt;
    }
    return std::ranges::any_of(outputs, [](const auto& name) { return name.starts_with(guestOutput); });
}

/// A window manager shows a window that names itself, so that one which has ended is not taken for one that
/// runs.
std::optional<std::string> windowManager(const Question& question) {
    constexpr std::string_view check = "_NET_SUPPORTING_WM_CHECK";
    const auto window = question.windowIn(question.root(), check);
    if (!window || question.windowIn(*window, check) != window) {
        return std::nullopt;
    }
    const auto name = question.property(*window, "_NET_WM_NAME");
    // Some end it with a zero byte.
    const auto text = name.substr(0, name.find('\0'));
    return text.empty() ? std::nullopt : std::optional(text);
}

} // namespace

std::optional<XServerAnswer> askXServer(const std::string& display) {
    const Question question(display);
    if (!question.isConnected()) {
        return std::nullopt;
    }
    return XServerAnswer{isXWayland(question), windowManager(question),
                         question.property(question.root(), "I3_SOCKET_PATH")};
}

} // namespace LinuxPlatform
