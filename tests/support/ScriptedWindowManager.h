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
        std::vector<std::uint32_t> atoms;
        for (const auto name : names) {
            atoms.push_back(client_.atom(name));
        }
        client_.setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, atoms);
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
    X11TestClient client_;
    xcb_window_t checkWindow_;
};

} // namespace TestSupport
