#include "platform/linux/departures/I3WorkspaceSwitches.h"

#include "tests/platform/i3/ScriptedI3.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdint>
#include <optional>
#include <vector>

namespace {

using LinuxPlatform::I3Request;
using PlatformTests::message;

constexpr std::uint32_t workspaceEvent = 0x80000000;

struct Workspace {
    int id = 0;
    const char* output = "A";
    bool isVisible = true;
};

struct I3WorkspaceSwitchesTest : testing::Test {
    PlatformTests::ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    std::vector<Workspace> workspaces{{1, "A"}, {2, "A", false}, {3, "B"}};
    int switches = 0;
    LinuxPlatform::I3WorkspaceSwitches watch{server.path(), queue, [this] { ++switches; }};

    I3WorkspaceSwitchesTest() {
        EXPECT_TRUE(server.accept());
        answer(I3Request::subscribe, R"({"success":true})");
        answerWithWorkspaces();
    }

    void answer(I3Request expected, const QByteArray& text) {
        std::optional<LinuxPlatform::I3Message> request;
        ASSERT_TRUE(TestSupport::spinUntil([&] { return (request = server.next()).has_value(); }));
        ASSERT_EQ(request->type, static_cast<std::uint32_t>(expected));
        server.say(message(expected, text));
    }

    void answerWithWorkspaces() {
        QJsonArray list;
        for (const auto& workspace : workspaces) {
            list.append(QJsonObject{{"id", workspace.id},
                                    {"output", QString::fromLatin1(workspace.output)},
                                    {"visible", workspace.isVisible}});
        }
        answer(I3Request::getWorkspaces, QJsonDocument(list).toJson());
    }

    void sayFocus(const char* oldOutput, const char* output) {
        const QJsonObject news{{"change", "focus"},
                               {"old", QJsonObject{{"output", QString::fromLatin1(oldOutput)}}},
                               {"current", QJsonObject{{"output", QString::fromLatin1(output)}}}};
        server.say(message(workspaceEvent, QJsonDocument(news).toJson()));
    }

    /// The request that comes last shows that all answers before were taken.
    void settle() {
        sayUrgent();
        answerWithWorkspaces();
        sayUrgent();
        ASSERT_TRUE(TestSupport::spinUntil([&] { return server.next().has_value(); }));
    }

    void sayUrgent() { server.say(message(workspaceEvent, R"({"change":"urgent"})")); }
};

TEST_F(I3WorkspaceSwitchesTest, TellsOfAWorkspaceThatTakesThePlaceOfAnother) {
    workspaces = {{1, "A", false}, {2, "A"}, {3, "B"}};
    sayFocus("A", "A");
    answerWithWorkspaces();
    settle();
    EXPECT_EQ(switches, 1);
}

TEST_F(I3WorkspaceSwitchesTest, TellsOfOneOnAnOutputThatTheFocusHadLeft) {
    sayFocus("A", "B");
    answerWithWorkspaces();
    workspaces = {{1, "A", false}, {2, "A"}, {3, "B"}};
    sayFocus("B", "A");
    answerWithWorkspaces();
    settle();
    EXPECT_EQ(switches, 1);
}

TEST_F(I3WorkspaceSwitchesTest, AFocusThatGoesBackBeforeAnybodyCouldLookIsNoSwitch) {
    sayFocus("A", "A");
    sayFocus("A", "A");
    answerWithWorkspaces();
    answerWithWorkspaces();
    settle();
    EXPECT_EQ(switches, 0);
}

TEST_F(I3WorkspaceSwitchesTest, WorkspacesAndOutputsThatComeAndGoTakeNothingOutOfView) {
    workspaces = {{1, "A"}, {3, "B"}};
    sayFocus("A", "A");
    answerWithWorkspaces();
    workspaces = {{1, "A"}, {4, "C"}};
    sayFocus("A", "C");
    answerWithWorkspaces();
    settle();
    EXPECT_EQ(switches, 0);
}

TEST_F(I3WorkspaceSwitchesTest, AWindowManagerThatWasStartedAgainBeginsAnew) {
    server.hangUp();
    ASSERT_TRUE(TestSupport::spinUntil([&] {
        queue.advance(1);
        return server.hasClient();
    }));
    ASSERT_TRUE(server.accept());
    workspaces = {{11, "A"}, {13, "B"}};
    answer(I3Request::subscribe, R"({"success":true})");
    answerWithWorkspaces();
    workspaces = {{11, "A"}, {14, "B"}};
    sayFocus("A", "B");
    answerWithWorkspaces();
    settle();
    EXPECT_EQ(switches, 1);
}

} // namespace
