#include "platform/linux/i3/I3Connection.h"

#include "platform/linux/hotkeys/sway/SwayHotKeyService.h"
#include "tests/platform/i3/ScriptedI3.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
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
using LinuxPlatform::SwayHotKeyService;
using PlatformTests::message;
using PlatformTests::ScriptedI3;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;

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

} // namespace
