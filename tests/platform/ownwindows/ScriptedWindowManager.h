#pragma once

#include "tests/support/X11TestClient.h"

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace TestSupport {

/// Says about windows what the test wants it to say, and does nothing of its own accord: a window manager
/// that heeds no request. Windows map themselves.
class ScriptedWindowManager {
public:
    static constexpr std::uint32_t normal = 1;
    static constexpr std::uint32_t iconic = 3;

    ScriptedWindowManager() : checkWindow_(client_.create("check", "Check")) {
        for (const auto window : {checkWindow_, client_.root()}) {
            client_.setNumbers(window, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, std::array{checkWindow_});
        }
    }

    /// What stands around a window with its title bar; on the screen until the test unmaps it.
    xcb_window_t frame(xcb_window_t window) {
        const auto frame = client_.open("frame", "Frame");
        xcb_reparent_window(client_.get(), window, frame, 0, 20);
        client_.sync();
        return frame;
    }

    void unmap(xcb_window_t window) {
        xcb_unmap_window(client_.get(), window);
        client_.sync();
    }

    void map(xcb_window_t window) { client_.map(window); }

    /// As one that lists no windows at all, or only while there are some.
    void support(std::initializer_list<std::string_view> hints) {
        client_.setNumbers(client_.root(), "_NET_SUPPORTED", XCB_ATOM_ATOM, atoms(hints));
    }

    /// Exactly these windows.
    void list(const std::vector<xcb_window_t>& windows) {
        for (const auto* const name : {"_NET_CLIENT_LIST", "_NET_CLIENT_LIST_STACKING"}) {
            client_.setNumbers(client_.root(), name, XCB_ATOM_WINDOW, windows);
        }
    }

    void setManagerState(xcb_window_t window, std::uint32_t state) {
        client_.setNumbers(window, "WM_STATE", client_.atom("WM_STATE"), std::array{state, 0U});
    }

    void setStates(xcb_window_t window, std::initializer_list<std::string_view> names) {
        client_.setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, atoms(names));
    }

    void setActive(xcb_window_t window) {
        client_.setNumbers(client_.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, std::array{window});
    }

    /// As at a proper end: nothing stays of what it said about the session.
    void withdraw() {
        for (const auto* const name :
             {"_NET_CLIENT_LIST", "_NET_SUPPORTING_WM_CHECK", "_NET_ACTIVE_WINDOW"}) {
            xcb_delete_property(client_.get(), client_.root(), client_.atom(name));
        }
        client_.sync();
    }

private:
    std::vector<std::uint32_t> atoms(std::initializer_list<std::string_view> names) const {
        std::vector<std::uint32_t> list;
        for (const auto name : names) {
            list.push_back(client_.atom(name));
        }
        return list;
    }

    X11TestClient client_;
    xcb_window_t checkWindow_;
};

} // namespace TestSupport
