#pragma once

#include "tests/platform/windows/WindowManagerQuestion.h"
#include "tests/support/EventLoop.h"
#include "tests/support/X11TestClient.h"

#include <gtest/gtest.h>

#include <chrono>

namespace PlatformTests {

/// Before anything else is made: a new connection gets the window identifiers of the one before, so the
/// window manager has to have seen that its windows are gone.
struct EmptyDesktop {
    EmptyDesktop() {
        {
            const TestSupport::X11TestClient client;
            // It may have had hundreds.
            EXPECT_TRUE(TestSupport::spinUntil(
                [&] { return client.numbers(client.root(), "_NET_CLIENT_LIST").empty(); },
                std::chrono::minutes(1)));
        }
        // Those that were gone before it listed them are not among those.
        TestSupport::waitForManager();
    }
};

} // namespace PlatformTests
