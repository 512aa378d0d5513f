#include "platform/linux/windows/WindowEvents.h"

#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <array>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::LeavingWindows;
using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowEvents;
using LinuxPlatform::WindowId;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

struct WindowEventsTest : testing::Test {
    WindowEventsTest() {
        for (const WindowId id : {1U, 2U}) {
            windows[id].id = id;
        }
    }

    std::optional<Window> find(WindowId id) const {
        const auto found = windows.find(id);
        return found != windows.end() ? std::optional(found->second) : std::nullopt;
    }

    std::map<WindowId, Window> windows;
    TestSupport::HandDrivenQueue queue;
    LeavingWindows leaving{queue};
    WindowEvents events{queue, leaving, [this](WindowId id) { return find(id); }};
    std::vector<std::pair<WindowEvent, WindowId>> told;
    Platform::Subscription subscription = events.addHandler(
        [this](WindowEvent event, const Window& window) { told.emplace_back(event, window.id); });
};

TEST_F(WindowEventsTest, AreToldLaterAndInTheirOrder) {
    events.announce(WindowEvent::opened, 2);
    events.announce(WindowEvent::activated, 2);
    events.announce(WindowEvent::opened, 1);
    EXPECT_THAT(told, IsEmpty());
    queue.runReady();
    EXPECT_THAT(told, ElementsAre(Pair(WindowEvent::opened, 2), Pair(WindowEvent::activated, 2),
                                  Pair(WindowEvent::opened, 1)));
}

TEST_F(WindowEventsTest, OfAWindowThatIsGoneNothingIsTold) {
    events.announce(WindowEvent::opened, 1);
    windows.erase(1);
    queue.runReady();
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(WindowEventsTest, WhatWasHiddenMeanwhileHasNotBeenActivated) {
    for (const WindowId id : {1U, 2U}) {
        events.announce(WindowEvent::opened, id);
        events.announce(WindowEvent::activated, id);
    }
    windows[1].isHidden = true;
    leaving.add(std::array<WindowId, 1>{2});
    queue.runReady();
    EXPECT_THAT(told, ElementsAre(Pair(WindowEvent::opened, 1), Pair(WindowEvent::opened, 2)));
}

TEST_F(WindowEventsTest, WhatIsAnnouncedWhileOthersAreToldComesAfterThem) {
    const auto second = events.addHandler([this](WindowEvent, const Window& window) {
        if (window.id == 1) {
            events.announce(WindowEvent::opened, 2);
        }
    });
    events.announce(WindowEvent::opened, 1);
    queue.runReady();
    EXPECT_THAT(told, ElementsAre(Pair(WindowEvent::opened, 1), Pair(WindowEvent::opened, 2)));
}

} // namespace
