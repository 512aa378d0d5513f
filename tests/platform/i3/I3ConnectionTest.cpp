#include "platform/linux/i3/I3Connection.h"

#include "platform/linux/hotkeys/sway/SwayHotKeyService.h"
#include "platform/linux/windows/i3/I3Layout.h"
#include "platform/linux/windows/i3/I3Place.h"
#include "platform/linux/windows/i3/I3WindowSystem.h"
#include "tests/platform/i3/ScriptedI3.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::I3Connection;
using LinuxPlatform::I3Event;
using LinuxPlatform::I3Message;
using LinuxPlatform::I3MessageReader;
using LinuxPlatform::I3Request;
using LinuxPlatform::I3WindowSystem;
using LinuxPlatform::SwayHotKeyService;
using LinuxPlatform::WindowId;
using PlatformTests::message;
using PlatformTests::ScriptedI3;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;

constexpr auto whenSilent = Platform::HidingObstacle::waylandSession;

TEST(I3MessageReaderTest, PutsMessagesTogetherFromPiecesOfAnySize) {
    const auto bytes = message(4, "first") + message(0x80000003, "") + message(0, "third");
    for (qsizetype size = 1; size <= bytes.size(); ++size) {
        I3MessageReader reader;
        std::vector<std::string> payloads;
        for (qsizetype at = 0; at < bytes.size(); at += size) {
            const auto piece = bytes.mid(at, size);
            reader.add(piece.data(), static_cast<std::size_t>(piece.size()));
            while (const auto next = reader.next()) {
                payloads.push_back(next->payload.toStdString() + (next->isEvent() ? " event" : ""));
            }
        }
        EXPECT_THAT(payloads, ElementsAre("first", " event", "third")) << size;
        EXPECT_FALSE(reader.isBroken());
    }
}

TEST(I3MessageReaderTest, WhatIsNoMessageOrTooLongBreaksIt) {
    auto tooLong = message(4, "");
    constexpr std::uint32_t length = I3MessageReader::longestPayload + 1;
    std::memcpy(tooLong.data() + 6, &length, sizeof length);
    for (const auto& bytes : {QByteArray("HTTP/1.1 200 OK\r\n"), tooLong}) {
        I3MessageReader reader;
        reader.add(bytes.data(), static_cast<std::size_t>(bytes.size()));
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.isBroken());
        const auto good = message(4, "good");
        reader.add(good.data(), static_cast<std::size_t>(good.size()));
        EXPECT_FALSE(reader.next());
    }
}

struct I3ConnectionTest : testing::Test {
    ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    int connected = 0;
    int lost = 0;
    std::vector<std::string> events;
    std::vector<std::string> replies;
    I3Connection connection{server.path(),
                            queue,
                            {"window", "workspace"},
                            {[this] { ++connected; }, [this] { ++lost; },
                             [this](I3Event event, const QByteArray& payload) {
                                 events.push_back((event == I3Event::window ? "window " : "other ") +
                                                  payload.toStdString());
                             }}};

    void ask(const QByteArray& payload) {
        connection.ask(I3Request::runCommand, payload,
                       [this](const QByteArray& reply) { replies.push_back(reply.toStdString()); });
    }

    void meet() {
        connection.open();
        ASSERT_TRUE(server.accept());
        const auto subscription = server.next();
        ASSERT_TRUE(subscription);
        EXPECT_EQ(subscription->type, 2U);
        EXPECT_EQ(subscription->payload, "[\"window\",\"workspace\"]");
        server.say(message(I3Request::subscribe, "{\"success\":true}"));
    }

    void expectLost() {
        EXPECT_TRUE(spinUntil([&] { return lost == 1; }));
        EXPECT_FALSE(connection.isConnected());
        queue.advance(10.0);
        EXPECT_EQ(connected, 2);
        EXPECT_TRUE(server.accept());
    }
};

TEST_F(I3ConnectionTest, RepliesComeInOrderAmongEvents) {
    meet();
    ask("one");
    ask("two");
    server.say(message(0x80000003, "moved") + message(I3Request::runCommand, "1"));
    const auto half = message(I3Request::runCommand, "2");
    server.say(half.left(9));
    EXPECT_TRUE(spinUntil([&] { return replies.size() == 1; }));
    server.say(half.mid(9));
    EXPECT_TRUE(spinUntil([&] { return replies.size() == 2; }));
    EXPECT_THAT(replies, ElementsAre("1", "2"));
    EXPECT_THAT(events, ElementsAre("window moved"));
    EXPECT_EQ(connected, 1);
    EXPECT_EQ(lost, 0);
}

TEST_F(I3ConnectionTest, ConnectsAgainWhenItIsGoneInTheMidstOfAMessage) {
    meet();
    ask("one");
    server.say(message(I3Request::runCommand, "1").left(14));
    server.hangUp();
    expectLost();
    EXPECT_THAT(replies, IsEmpty());
}

TEST_F(I3ConnectionTest, WhatIsNoAnswerEndsTheConnection) {
    meet();
    server.say("nonsense, nonsense, nonsense");
    expectLost();
}

TEST_F(I3ConnectionTest, AnswerThatNobodyAskedForEndsTheConnection) {
    meet();
    ask("one");
    server.say(message(I3Request::getTree, "{}"));
    expectLost();
}

TEST_F(I3ConnectionTest, SilenceEndsTheConnection) {
    meet();
    EXPECT_TRUE(spinUntil([&] { return connected == 1; }));
    connection.finish(std::chrono::milliseconds(200));
    ask("one");
    queue.advance(4.9);
    EXPECT_EQ(lost, 0);
    queue.advance(5.2);
    EXPECT_EQ(lost, 1);
}

TEST_F(I3ConnectionTest, TriesLessAndLessOftenWhereNobodyListens) {
    server.stopListening();
    connection.open();
    EXPECT_FALSE(connection.isConnected());
    queue.advance(20.0);
    EXPECT_EQ(connected, 0);
    server.listen();
    queue.advance(5.0);
    EXPECT_EQ(connected, 1);
}

TEST_F(I3ConnectionTest, RequestsThatNobodyReadsEndTheConnection) {
    meet();
    connection.finish(std::chrono::milliseconds(200));
    const QByteArray large(1 << 20, ' ');
    for (int count = 0; count < 6; ++count) {
        ask(large);
    }
    queue.runReady();
    EXPECT_EQ(lost, 1);
}

TEST_F(I3ConnectionTest, FinishWaitsForAnswersAndNoLonger) {
    meet();
    ask("one");
    server.say(message(I3Request::runCommand, "1"));
    connection.finish(std::chrono::seconds(20));
    EXPECT_THAT(replies, ElementsAre("1"));
    ask("two");
    connection.finish(std::chrono::milliseconds(20));
    EXPECT_EQ(replies.size(), 1U);
}

// The window system in front of one that does not do what it should.

TEST(SilentI3Test, SaysThatItIsNotKnownYetAndThenThatNothingCanBeHidden) {
    const ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    I3WindowSystem system(server.path(), queue, nullptr, whenSilent);
    EXPECT_FALSE(system.knowsEveryWindow());
    EXPECT_EQ(system.hidingObstacle(), Platform::HidingObstacle::notKnownYet);
    EXPECT_THAT(system.windows(), IsEmpty());
    system.hide(std::array<LinuxPlatform::WindowId, 1>{7});
    system.show(std::array<LinuxPlatform::WindowId, 1>{7});
    queue.advance(5.1);
    EXPECT_EQ(system.hidingObstacle(), whenSilent);
}

TEST(SilentI3Test, LayoutsThatAreNoneAreNotTakenIn) {
    for (const auto& layout : {QByteArray("["), QByteArray("[]"), QByteArray("{\"type\":\"root\""),
                               QByteArray(), QByteArray("{\"type\":\"con\"}"), QByteArray(1 << 20, '[')}) {
        EXPECT_EQ(LinuxPlatform::I3Tree::parse(layout), nullptr) << layout.left(20).toStdString();
    }
    const auto odd = LinuxPlatform::I3Tree::parse(
        "{\"type\":\"root\",\"nodes\":[7,null,{\"type\":\"workspace\",\"name\":8,\"nodes\":{\"a\":1}},"
        "{\"type\":\"con\",\"window\":-5},{\"type\":\"con\",\"window\":99999999999}],\"focus\":[\"x\"]}");
    ASSERT_NE(odd, nullptr);
    EXPECT_THAT(odd->leaves(), IsEmpty());
    EXPECT_EQ(odd->focusedWorkspace(), nullptr);
}

TEST(SilentI3Test, LayoutWithAClassThatIsNotUtf8IsTakenIn) {
    const auto tree = LinuxPlatform::I3Tree::parse(
        "{\"type\":\"root\",\"nodes\":[{\"type\":\"workspace\",\"name\":\"1\",\"nodes\":["
        "{\"type\":\"con\",\"window\":7,\"window_properties\":{\"class\":\"Caf\xe9\"}},"
        "{\"type\":\"con\",\"window\":8,\"window_properties\":{\"class\":\"Caf\xc3\xa9\"}}]}]}");
    ASSERT_NE(tree, nullptr);
    ASSERT_THAT(tree->leaves(), testing::SizeIs(2));
    EXPECT_THAT(tree->find(7)->node->className, testing::StartsWith("Caf"));
    EXPECT_EQ(tree->find(8)->node->className, "Caf\xc3\xa9");
}

TEST(SilentI3Test, RefusalThatIsNotUtf8IsRead) {
    EXPECT_THAT(LinuxPlatform::refusalsIn("[{\"success\":false,\"error\":\"No Caf\xe9\"}]"),
                ElementsAre(testing::StartsWith("No Caf")));
}

/// i3 is played by the test, in turn with the program.
struct ServedI3Test : testing::Test {
    /// Answers what has been asked so far.
    virtual void serve() = 0;

    template <class Condition>
    bool serveUntil(const Condition& condition) {
        return spinUntil([&] {
            serve();
            return condition();
        });
    }
};

/// Knows of a window in the scratchpad and refuses every command.
struct RefusingI3Test : ServedI3Test {
    RefusingI3Test() {
        LinuxPlatform::I3Place place;
        place.workspace = "1";
        place.levels = {{"splith", {{{7}, 0, {0, 0, 10, 20}}}, 0}};
        state.setString("taken", "session\n7 " + place.text() + "\n");
    }

    void serve() override {
        while (const auto request = server.next()) {
            switch (static_cast<I3Request>(request->type)) {
            case I3Request::getTree:
                server.say(message(I3Request::getTree, layout));
                break;
            case I3Request::runCommand:
                commands.push_back(request->payload.toStdString());
                server.say(message(I3Request::runCommand,
                                   R"([{"success":true},{"success":false,"error":"No such\nmark"}])"));
                break;
            default:
                server.say(message(request->type, "{\"success\":true}"));
            }
        }
    }

    const QByteArray layout =
        R"({"type":"root","swallows":[],"nodes":[{"type":"output","name":"__i3","nodes":[{"type":"con","nodes":[
        {"type":"workspace","name":"__i3_scratch","floating_nodes":[{"type":"floating_con","id":2,"nodes":[
        {"type":"con","id":3,"window":7}]}]}]}]},{"type":"output","name":"LVDS-1","nodes":[{"type":"con","nodes":[
        {"type":"workspace","name":"1","id":4,"focused":true}],"focus":[4]}]}]})";
    ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    TestSupport::MemoryUserDefaults state;
    TestSupport::RecordingLog log;
    std::vector<std::string> commands;
};

TEST_F(RefusingI3Test, WhatCannotBePutBackIsBroughtUpAndTheRefusalIsLogged) {
    I3WindowSystem system(server.path(), queue, nullptr, whenSilent,
                          LinuxPlatform::EarlierValue(state, "taken", "session"), &log);
    ASSERT_TRUE(server.accept());
    ASSERT_TRUE(serveUntil([&] { return system.knowsEveryWindow(); }));
    EXPECT_TRUE(state.contains("taken"));
    system.show(std::array<LinuxPlatform::WindowId, 1>{7});
    ASSERT_TRUE(serveUntil([&] { return commands.size() == 2; }));
    EXPECT_THAT(commands[0],
                testing::HasSubstr("move --no-auto-back-and-forth container to workspace \"1\""));
    EXPECT_EQ(commands[1], "[con_id=3] fullscreen disable;[con_id=3] scratchpad show;");
    EXPECT_FALSE(state.contains("taken"));
    EXPECT_THAT(log.lines, ElementsAre("Curtain: a window could not be put back to its place: No such mark"));
}

/// Has the windows 7 and 8 in the scratchpad, where Curtain put them, and 9 in view.
struct ScriptedI3WindowTest : ServedI3Test {
    ScriptedI3WindowTest() {
        EXPECT_TRUE(server.accept());
        EXPECT_TRUE(serveUntil([&] { return system.knowsEveryWindow(); }));
    }

    LinuxPlatform::EarlierValue record() {
        LinuxPlatform::I3Place place;
        place.workspace = "1";
        place.levels = {{"splith", {{{7}, 0, {0, 0, 10, 20}}}, 0}};
        state.setString("taken", "session\n7 " + place.text() + "\n8 " + place.text() + "\n");
        return {state, "taken", "session"};
    }

    void serve() override {
        while (const auto request = server.next()) {
            switch (static_cast<I3Request>(request->type)) {
            case I3Request::getTree:
                ++looks;
                server.say(before);
                server.say(message(I3Request::getTree, layout));
                break;
            case I3Request::runCommand:
                commands += request->payload.toStdString();
                server.say(message(I3Request::runCommand, R"([{"success":true}])"));
                break;
            default:
                server.say(message(request->type, "{\"success\":true}"));
            }
        }
    }

    /// Until everything that was asked before is answered.
    void settle() {
        const auto known = system.generation();
        system.show({});
        EXPECT_TRUE(serveUntil([&] { return system.generation() > known; }));
    }

    QByteArray layout =
        R"({"type":"root","swallows":[],"nodes":[{"type":"output","name":"__i3","nodes":[{"type":"con","nodes":[
        {"type":"workspace","name":"__i3_scratch","floating_nodes":[{"type":"floating_con","id":2,"nodes":[
        {"type":"con","id":3,"window":7}]},{"type":"floating_con","id":5,"nodes":[
        {"type":"con","id":6,"window":8}]}]}]}]},{"type":"output","name":"LVDS-1","nodes":[{"type":"con","nodes":[
        {"type":"workspace","name":"1","id":4,"focus":[9],"nodes":[
        {"type":"con","id":9,"window":9,"focused":true}]}],"focus":[4]}]}]})";
    /// What it says ahead of every layout.
    QByteArray before;
    ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    TestSupport::MemoryUserDefaults state;
    int looks = 0;
    std::string commands;
    I3WindowSystem system{server.path(), queue, nullptr, whenSilent, record()};
};

TEST_F(ScriptedI3WindowTest, NothingIsKnownAfterALayoutThatCannotBeRead) {
    const auto good = std::exchange(layout, "{\"type\":");
    queue.advance(10.0);
    server.say(message(0x80000003, "{\"change\":\"new\"}"));
    ASSERT_TRUE(serveUntil([&] { return !system.knowsEveryWindow(); }));
    EXPECT_EQ(system.hidingObstacle(), Platform::HidingObstacle::notKnownYet);
    queue.advance(5.1);
    EXPECT_EQ(system.hidingObstacle(), whenSilent);
    layout = good;
    server.say(message(0x80000003, "{\"change\":\"new\"}"));
    EXPECT_TRUE(serveUntil([&] { return system.knowsEveryWindow(); }));
    EXPECT_EQ(system.hidingObstacle(), std::nullopt);
}

TEST_F(ScriptedI3WindowTest, WindowIsHiddenThoughTheLayoutChangesAllTheTime) {
    before = message(0x80000003, "{\"change\":\"move\"}");
    system.hide(std::array<WindowId, 1>{9});
    EXPECT_TRUE(serveUntil([&] { return commands.starts_with("[con_id=9] move scratchpad;"); }));
}

TEST_F(ScriptedI3WindowTest, WorkspaceThatWantsAttentionSaysNothingOfTheLayout) {
    settle();
    const auto earlier = looks;
    server.say(message(0x80000000, "{\"change\":\"urgent\"}"));
    settle();
    EXPECT_EQ(looks, earlier + 1);
    server.say(message(0x80000000, "{\"change\":\"init\"}"));
    EXPECT_TRUE(serveUntil([&] { return looks == earlier + 2; }));
}

TEST_F(ScriptedI3WindowTest, WindowThatWasHiddenMeanwhileDoesNotGetTheFocus) {
    const std::array<WindowId, 1> window{7};
    system.show(window);
    system.activate(window);
    queue.runReady();
    system.hide(window);
    settle();
    system.show(window);
    ASSERT_TRUE(serveUntil([&] { return !commands.empty(); }));
    EXPECT_THAT(commands, testing::HasSubstr("[con_id=3] move"));
    EXPECT_THAT(commands, testing::Not(testing::HasSubstr("[con_id=3] focus;")));
}

TEST_F(ScriptedI3WindowTest, WindowThatStaysInTheScratchpadDoesNotGetTheFocus) {
    const auto tree = LinuxPlatform::I3Tree::parse(layout);
    ASSERT_NE(tree, nullptr);
    LinuxPlatform::I3Place place;
    place.workspace = "1";
    place.levels = {{"splith", {{{8}, 0, {0, 0, 10, 20}}}, 0}};
    const std::array returns{LinuxPlatform::I3Return{8, place}};
    EXPECT_THAT(commandsToReturn(*tree, returns, 7), testing::Not(testing::HasSubstr("[con_id=3] focus;")));
    EXPECT_THAT(commandsToReturn(*tree, returns, 8), testing::HasSubstr("[con_id=6] focus;"));
    EXPECT_THAT(commandsToReturn(*tree, returns, 9), testing::HasSubstr("[con_id=9] focus;"));
}

TEST_F(ScriptedI3WindowTest, ABorderIsGivenBackWithoutATouchOfTheFocus) {
    const auto tree = LinuxPlatform::I3Tree::parse(layout);
    ASSERT_NE(tree, nullptr);
    LinuxPlatform::I3Place place;
    place.border = "none";
    const std::array returns{LinuxPlatform::I3Return{9, place}};
    EXPECT_EQ(commandsToFinish(*tree, returns), "[con_id=9] border none;");
}

/// Knows of many windows, all in view or all in the scratchpad, and is as slow to answer as the test wants.
struct CrowdedI3Test : ServedI3Test {
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
                if (!isSilent) {
                    server.say(message(I3Request::runCommand, R"([{"success":true}])"));
                }
            } else if (asked.back() == I3Request::getTree) {
                if (layoutsLeft == 0) {
                    isSilent = true;
                    continue;
                }
                --layoutsLeft;
                server.say(message(I3Request::getTree, layout()));
            } else {
                server.say(message(request->type, "{\"success\":true}"));
            }
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
            list +=
                (list.isEmpty() ? "" : ",") + QByteArray(R"({"type":"con","id":)") + number + R"(,"pid":1})";
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
    const auto known = system.generation();
    system.show({});
    ASSERT_TRUE(serveUntil([&] { return system.generation() > known; }));
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return !messages.empty(); }));
    EXPECT_EQ(away.size(), 50);
    EXPECT_GE(*away.begin(), firstWindow + countElsewhere);
    ASSERT_TRUE(serveUntil([&] { return away.size() == count; }));
}

TEST_F(CrowdedI3Test, EverythingComesBackAtTheEndThoughNoLayoutIsToldAnyMore) {
    system.hide(all());
    ASSERT_TRUE(serveUntil([&] { return away.size() == count; }));
    const auto known = system.generation();
    system.show({});
    ASSERT_TRUE(serveUntil([&] { return system.generation() > known; }));
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
    const auto known = system.generation();
    system.show({});
    ASSERT_TRUE(serveUntil([&] { return system.generation() > known; }));
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

/// A sway that is another program, as the service waits for it.
struct AwaitedSwayTest : testing::Test {
    /// On another thread, until the service hangs up.
    void answer() {
        answers = std::jthread([this] {
            for (bool isMet = server.awaitClient() && server.accept(); isMet; isMet = server.awaitRequest()) {
                while (const auto request = server.next()) {
                    const bool isConfiguration =
                        request->type == static_cast<std::uint32_t>(I3Request::getConfig);
                    server.say(message(request->type, isConfiguration ? configuration : success));
                }
            }
        });
    }

    SwayHotKeyService::Keys keys{[](std::int64_t) { return std::optional(43U); },
                                 [](std::int64_t) { return std::vector<xkb_keysym_t>{XKB_KEY_h}; }};
    ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    TestSupport::RecordingLog log;
    TestSupport::MemoryUserDefaults state;
    QByteArray configuration = "{\"config\":\"bindsym Ctrl+h nop Caf\xe9\"}";
    QByteArray success = "[{\"success\":true}]";
    std::jthread answers;
};

TEST_F(AwaitedSwayTest, IsWaitedFor) {
    answer();
    SwayHotKeyService service(server.path(), queue, log, keys,
                              LinuxPlatform::EarlierValue(state, "bound", "session"),
                              {.start = std::chrono::seconds(30)});
    EXPECT_EQ(service.reach(), Platform::HotKeyReach::everywhere);
    EXPECT_EQ(service.registerHotKey({4, Platform::HotKeyModifier::control}, {1, 1}), Platform::hotKeyExists);
}

TEST_F(AwaitedSwayTest, WhatAnEarlierRunBoundIsRememberedUntilItCanBeTakenAway) {
    state.setString("bound", "session\nCtrl+43");
    {
        const SwayHotKeyService service(server.path(), queue, log, keys,
                                        LinuxPlatform::EarlierValue(state, "bound", "session"),
                                        {.start = std::chrono::milliseconds(0)});
        EXPECT_EQ(service.reach(), Platform::HotKeyReach::nowhere);
    }
    EXPECT_EQ(state.string("bound"), "session\nCtrl+43");
}

TEST(I3PlaceTest, ComesBackFromItsTextAndNonsenseDoesNot) {
    LinuxPlatform::I3Place place;
    place.process = 4711;
    place.workspace = "1: \"a\"\n\\ \x01";
    place.output = "eDP-1";
    place.isFullscreen = true;
    place.border = "pixel";
    place.borderWidth = 2;
    place.levels = {{"splith", {{{1, 2}, 94217178633792, {0, 0, 10, 20}}, {{3}, 0, {10, 0, 5, 5}}}, 1}};
    EXPECT_EQ(place.text().find('\n'), std::string::npos);
    EXPECT_EQ(LinuxPlatform::I3Place::fromText(place.text()), place);
    place.levels[0].index = 2;
    EXPECT_FALSE(LinuxPlatform::I3Place::fromText(place.text()));
    for (const auto* text : {"", "{", "7", "{}", "{\"workspace\":\"\"}"}) {
        EXPECT_FALSE(LinuxPlatform::I3Place::fromText(text)) << text;
    }
}

} // namespace
