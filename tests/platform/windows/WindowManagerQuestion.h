#pragma once

#include "tests/support/EventLoop.h"
#include "tests/support/X11TestClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace TestSupport {

/// Whether a window manager is there that answers in its turn how wide its frames are.
inline bool doesManagerAnswer(const X11TestClient& client) {
    const auto checkWindow = client.numbers(client.root(), "_NET_SUPPORTING_WM_CHECK");
    const auto supported = client.numbers(client.root(), "_NET_SUPPORTED");
    return !checkWindow.empty() &&
           client.numbers(checkWindow.front(), "_NET_SUPPORTING_WM_CHECK") == checkWindow &&
           std::ranges::count(supported, client.atom("_NET_REQUEST_FRAME_EXTENTS")) > 0;
}

/// Returns when the window manager has taken in all that happened before this, where it tells: it takes one
/// after the other. It lists a window before it has given it its frame, its place and the focus.
inline void waitForManager(X11TestClient& client) {
    if (!doesManagerAnswer(client)) {
        return;
    }
    const auto window = client.create("question", "Question");
    client.ask(window, "_NET_REQUEST_FRAME_EXTENTS", {});
    EXPECT_TRUE(spinUntil([&] { return !client.numbers(window, "_NET_FRAME_EXTENTS").empty(); },
                          std::chrono::minutes(1)));
    client.destroy(window);
}

/// Before anything else is made: the next connection gets the identifiers of the last one, so whatever the
/// window manager still does with the windows of that one it would do to new ones.
inline void waitForManager() {
    X11TestClient client;
    // Nor must the question be about a window that has the identifier of one of those.
    for (int identifier = 0; identifier < 1000; ++identifier) {
        xcb_generate_id(client.get());
    }
    waitForManager(client);
}

} // namespace TestSupport
