/// PaintedProgram CLASS RRGGBB: a program whose windows show nothing but that colour. Told on its standard
/// input what to do next, it prints the identifier of the window that it means:
///     window      opens a window
///     dialog      opens one that belongs to the first
///     menu        opens a menu, past the window manager
///     tooltip     opens a tool tip, likewise
///     return      maps the first window again, as programs do that come to the front by themselves
///     close       closes the newest
/// It ends with its input, or with the display.
#include "tests/support/X11TestClient.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

class PaintedWindows {
public:
    PaintedWindows(std::string name, std::uint32_t colour) : name_(std::move(name)), colour_(colour) {}

    /// The window that is meant; none for a word that is not known.
    xcb_window_t obey(std::string_view word) {
        if (word == "window") {
            return open({});
        }
        if (word == "dialog") {
            return open("_NET_WM_WINDOW_TYPE_DIALOG");
        }
        if (word == "menu") {
            return popUp("_NET_WM_WINDOW_TYPE_POPUP_MENU");
        }
        if (word == "tooltip") {
            return popUp("_NET_WM_WINDOW_TYPE_TOOLTIP");
        }
        if (word == "return") {
            client_.map(windows_.front());
            return windows_.front();
        }
        return word == "close" ? close() : xcb_window_t{XCB_WINDOW_NONE};
    }

private:
    xcb_window_t create(std::string_view type) {
        const auto window = client_.create(name_, name_);
        xcb_change_window_attributes(client_.get(), window, XCB_CW_BACK_PIXEL, &colour_);
        if (!type.empty()) {
            client_.setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, std::array{client_.atom(type)});
        }
        windows_.push_back(window);
        return window;
    }

    xcb_window_t open(std::string_view type) {
        const auto window = create(type);
        if (!type.empty()) {
            client_.setNumbers(window, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array{windows_.front()});
        }
        client_.map(window);
        return window;
    }

    xcb_window_t popUp(std::string_view type) {
        const auto window = create(type);
        const std::uint32_t isOverride = 1;
        xcb_change_window_attributes(client_.get(), window, XCB_CW_OVERRIDE_REDIRECT, &isOverride);
        client_.map(window);
        return window;
    }

    xcb_window_t close() {
        const auto window = windows_.back();
        windows_.pop_back();
        client_.destroy(window);
        return window;
    }

    TestSupport::X11TestClient client_;
    std::string name_;
    std::uint32_t colour_;
    std::vector<xcb_window_t> windows_;
};

} // namespace

int main(int argumentCount, char** argumentList) {
    const std::span arguments(argumentList, static_cast<std::size_t>(argumentCount));
    if (arguments.size() != 3) {
        return EXIT_FAILURE;
    }
    constexpr int hexadecimal = 16;
    PaintedWindows windows(arguments[1],
                           static_cast<std::uint32_t>(std::strtoul(arguments[2], nullptr, hexadecimal)));
    std::string word;
    while (std::getline(std::cin, word)) {
        const auto window = windows.obey(word);
        if (window == XCB_WINDOW_NONE) {
            return EXIT_FAILURE;
        }
        std::cout << window << std::endl;
    }
    return EXIT_SUCCESS;
}
