#pragma once

#include "tests/support/EventLoop.h"

#include <gtest/gtest.h>

namespace PlatformTests {

/// i3 is played by the test, in turn with the program.
struct ServedI3Test : testing::Test {
    /// Answers what has been asked so far.
    virtual void serve() = 0;

    template <class Condition>
    bool serveUntil(const Condition& condition) {
        return TestSupport::spinUntil([&] {
            serve();
            return condition();
        });
    }
};

} // namespace PlatformTests
