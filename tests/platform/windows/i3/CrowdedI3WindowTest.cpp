#include "platform/linux/windows/i3/I3WindowSystem.h"

#include "tests/platform/i3/ScriptedI3.h"
#include "tests/platform/windows/i3/ServedI3Test.h"
#include "tests/platform/workspace/PrivacyMode.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::I3Request;
using LinuxPlatform::I3WindowSystem;
using LinuxPlatform::WindowId;
using PlatformTests::message;
using PlatformTests::ScriptedI3;
using testing::IsEmpty;

constexpr auto whenSilent = Platform::HidingObstacle::waylandSession;

/// Knows of many windows, all in view or all in the scratchpad, and is as slow to answer as the test wants.
struct CrowdedI3Test : PlatformTests::ServedI3Test {
    CrowdedI3Test() {
        EXPECT_TRUE(server.accept());
        EXPECT_TRUE(serveUntil([&] { return system.knowsEveryWindow(); }));
    }

    void serve() override {
        while (const auto request = server.next()) {
            asked.push_back(static_cast<I3Request>(request->type));
            if (asked.back() == I3Request::runCommand) {
                messages.push_back(request->payload.toStdString());
                carryOut(messages.back());
            } else if (asked.back() == I3Request::getTree && layoutsLeft == 0) {
                isSilent = true;
            }
            if (isSilent) {
                owed.push_back(asked.back());
            } else {
                answer(asked.back());
            }
        }
    }

    void answer(I3Request request) {
        if (request == I3Request::runCommand) {
            server.say(message(request, R"([{"success":true}])"));
        } else if (request == I3Request::getTree) {
            --layoutsLeft;
            server.say(message(request, layout()));
        } else {
            server.say(message(request, "{\"success\":true}"));
        }
    }

    /// It says what it owes, and goes on.
    void speakAgain() {
        layoutsLeft = std::numeric_limits<std::size_t>::max();
        isSilent = false;
        for (const auto request : std::exchange(owed, {})) {
            answer(request);
        }
    }

    void carryOut(const std::string& commands) {
        for (auto window = WindowId{firstWindow}; window < firstWindow + count; ++window) {
            const auto has = [&](const std::string& command) {
                return commands.find("[con_id=" + std::to_string(window) + "] " + command) !=
                       std::string::npos;
            };
            if (has("move scratchpad")) {
                away.insert(window);
            } else if (has("move --no-auto-back-and-forth container to workspace") ||
                       has("scratchpad show")) {
                away.erase(window);
            }
        }
    }

    QByteArray layout() const {
        QByteArray inView;
        QByteArray elsewhere;
        QByteArray hidden;
        for (auto window = WindowId{firstWindow}; window < firstWindow + count; ++window) {
            const auto number = QByteArray::number(static_cast<qulonglong>(window));
            auto& list = away.contains(window)                   ? hidden
                         : window < firstWindow + countElsewhere ? elsewhere
                                                                 : inView;
            list += (list.isEmpty() ? "" : ",") + QByteArray(R"({"type":"con","id":)") + number +
                    (window == firstWindow ? R"(,"pid":1,"app_id":"ours"})" : R"(,"pid":1})");
        }
        return R"({"type":"root","nodes":[{"type":"output","name":"__i3","nodes":[{"type":"workspace",
            "name":"__i3_scratch","floating_nodes":[)" +
               hidden +
               R"(]}]},{"type":"output","name":"LVDS-1","nodes":[{"type":"workspace","name":"1","id":4,
            "nodes":[)" +
               inView + R"(]},{"type":"workspace","name":"2","id":5,"nodes":[)" + elsewhere +
               R"(]}],"focus":[4,5]}]})";
    }

    /// The system ends, and waits for nothing but what is said here meanwhile.
    void endSystem() {
        std::thread thread([this] {
            while (server.awaitRequest()) {
                serve();
            }
        });
        owned.reset();
        thread.join();
    }

    /// Until everything that was asked before is answered.
    void settle() {
        const auto known = system.generation();
        system.show({});
        EXPECT_TRUE(serveUntil([&] { return system.generation() > known; }));
    }

    std::vector<WindowId> all() const {
        std::vector<WindowId> windows(count);
        std::ranges::generate(windows, [next = WindowId{firstWindow}]() mutable { return next++; });
        return windows;
    }

    /// How many windows the longest message moves.
    std::ptrdiff_t mostInOneMessage(const std::string& command) const {
        std::ptrdiff_t most = 0;
        for (auto text : messages) {
            std::ptrdiff_t moved = 0;
            for (auto at = text.find(command); at != std::string::npos; at = text.find(command, at + 1)) {
                ++moved;
            }
            most = std::max(most, moved);
        }
        return most;
    }

    static constexpr std::size_t count = 120;
    static constexpr WindowId firstWindow = 1000;
    /// Of the first windows, on a workspace that nobody looks at.
    std::size_t countElsewhere = 0;
    std::set<WindowId> away;
    std::vector<I3Request> asked;
    std::vector<std::string> messages;
    /// Until it carries out what it is told and says nothing more.
    std::size_t layoutsLeft = std::numeric_limits<std::size_t>::max();
    bool isSilent = false;
    std::vector<I3Request> owed;
    ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    std::optional<I3WindowSystem> owned{std::in_place, server.path(), queue, nullptr, whenSilent};
    I3WindowSystem& system = *owned;
};

TEST_F(CrowdedI3Test, WindowsGoAndComeBackAFewAtATime) {
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return away.size() == count; }));
    EXPECT_EQ(mostInOneMessage("move scratchpad"), 50);
    EXPECT_EQ(messages.size(), 3);
    messages.clear();
    system.show(all());
    ASSERT_TRUE(serveUntil([&] { return away.empty(); }));
    EXPECT_EQ(mostInOneMessage("container to workspace"), 50);
}

TEST_F(CrowdedI3Test, OnlyWhatIsToComeBackDoesWhenThatIsSaidInTheMidstOfIt) {
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return !messages.empty(); }));
    const std::vector<WindowId> others = {firstWindow, firstWindow + count - 1};
    system.show(others);
    ASSERT_TRUE(serveUntil([&] { return away.size() == count - others.size(); }));
    EXPECT_FALSE(away.contains(others.front()));
    EXPECT_FALSE(away.contains(others.back()));
}

TEST_F(CrowdedI3Test, WhatIsInViewGoesFirst) {
    countElsewhere = 60;
    settle();
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return !messages.empty(); }));
    EXPECT_EQ(away.size(), 50);
    EXPECT_GE(*away.begin(), firstWindow + countElsewhere);
    ASSERT_TRUE(serveUntil([&] { return away.size() == count; }));
}

TEST_F(CrowdedI3Test, EverythingComesBackAtTheEndThoughNoLayoutIsToldAnyMore) {
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return away.size() == count; }));
    settle();
    messages.clear();
    layoutsLeft = 1;
    system.show(all());
    ASSERT_TRUE(serveUntil([&] { return isSilent; }));
    EXPECT_EQ(away.size(), count - 50);
    endSystem();
    EXPECT_THAT(away, IsEmpty());
    EXPECT_EQ(messages.size(), 3);
    EXPECT_EQ(mostInOneMessage("container to workspace"), 50);
}

TEST_F(CrowdedI3Test, WhatIsJustBeingHiddenComesBackAtTheEndToo) {
    layoutsLeft = 1;
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return isSilent; }));
    EXPECT_EQ(away.size(), 50);
    system.show(all());
    endSystem();
    EXPECT_THAT(away, IsEmpty());
    EXPECT_EQ(mostInOneMessage("container to workspace"), 50);
}

TEST_F(CrowdedI3Test, TheUsersOwnScratchpadIsCalledUpAFewAtATime) {
    const auto windows = all();
    away = {windows.begin(), windows.end()};
    settle();
    system.show(windows);
    ASSERT_TRUE(serveUntil([&] { return away.empty(); }));
    EXPECT_EQ(mostInOneMessage("scratchpad show"), 50);
    EXPECT_EQ(messages.size(), 3);
}

TEST_F(CrowdedI3Test, WindowsThatOpenAtOnceCostTwoLooks) {
    asked.clear();
    QByteArray news;
    for (std::size_t window = 0; window < count; ++window) {
        news += message(0x80000003, "{\"change\":\"new\"}") + message(0x80000003, "{\"change\":\"focus\"}");
    }
    const auto known = system.generation();
    server.say(news);
    ASSERT_TRUE(serveUntil([&] { return system.generation() == known + 2; }));
    EXPECT_EQ(std::ranges::count(asked, I3Request::getTree), 2);
}

TEST_F(CrowdedI3Test, LongLayoutsAreAskedForOneAfterAnother) {
    asked.clear();
    for (int turn = 0; turn < 10; ++turn) {
        system.show({});
    }
    const auto known = system.generation();
    ASSERT_TRUE(serveUntil([&] { return system.generation() > known; }));
    EXPECT_EQ(std::ranges::count(asked, I3Request::getTree), 2);
}

/// The first window is that of a private app, which is given back.
struct ReturningI3WindowTest : CrowdedI3Test {
    ReturningI3WindowTest() {
        privacy.engine.activate({"ours"});
        EXPECT_TRUE(serveUntil([&] { return isHidden(); }));
        settle();
        privacy.engine.deactivate();
    }

    bool isHidden() {
        const auto& all = system.windows();
        const auto found = std::ranges::find(all, WindowId{firstWindow}, &LinuxPlatform::Window::id);
        return found != all.end() && found->isHidden;
    }

    /// i3 is busy for a while, then shows it, and does not tell so.
    void comeUntold() {
        queue.advance(3);
        // For the return, and before for the focus that is asked for with it.
        layoutsLeft = 2;
        ASSERT_TRUE(serveUntil([&] { return isSilent; }));
        EXPECT_THAT(away, IsEmpty());
        EXPECT_TRUE(isHidden()) << "as far as is known";
    }

    PlatformTests::PrivacyMode privacy{system, queue};
};

TEST_F(ReturningI3WindowTest, IsAwaitedUntilItsReturnIsTold) {
    EXPECT_TRUE(system.isShowAwaited(firstWindow));
    comeUntold();
    EXPECT_TRUE(system.isShowAwaited(firstWindow));
    speakAgain();
    EXPECT_TRUE(serveUntil([&] { return !isHidden() && !system.isShowAwaited(firstWindow); }));
}

TEST_F(ReturningI3WindowTest, IsHiddenAgainHoweverLateItsReturnIsTold) {
    comeUntold();
    queue.advance(2.5);
    privacy.engine.activate({"ours"});
    EXPECT_FALSE(system.isShowAwaited(firstWindow));
    speakAgain();
    EXPECT_TRUE(serveUntil([&] { return away.contains(firstWindow) && isHidden(); }));
}

} // namespace
