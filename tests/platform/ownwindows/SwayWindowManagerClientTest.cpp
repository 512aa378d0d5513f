#include "platform/linux/ownwindows/SwayWindowManagerClient.h"

#include "tests/platform/i3/ScriptedI3.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using LinuxPlatform::I3Request;
using PlatformTests::message;
using PlatformTests::ScriptedI3;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::spinUntil;

constexpr std::uint32_t windowEvent = 0x80000003;
constexpr const char* moveCommand = "[id=7] move absolute position 20 px 30 px";

struct SwayWindowManagerClientTest : testing::Test {
    SwayWindowManagerClientTest() { EXPECT_TRUE(server.accept()); }

    /// What it is asked, in the order in which that comes; subscriptions are granted.
    std::vector<std::string> serve(const QByteArray& reply) {
        std::vector<std::string> commands;
        spinUntil([&] {
            while (const auto request = server.next()) {
                const bool isCommand = request->type == static_cast<std::uint32_t>(I3Request::runCommand);
                server.say(message(request->type, isCommand ? reply : R"({"success":true})"));
                if (isCommand) {
                    commands.push_back(request->payload.toStdString());
                }
            }
            return !commands.empty();
        });
        return commands;
    }

    void place() {
        client.place(7, {20, 30}, [this] { ++arrivals; });
    }

    ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    LinuxPlatform::SwayWindowManagerClient client{server.path(), queue, std::chrono::seconds(30)};
    const QByteArray done = R"([{"success":true}])";
    const QByteArray refused = R"([{"success":false,"error":"No matching node."}])";
    int arrivals = 0;
};

TEST_F(SwayWindowManagerClientTest, AWindowIsMovedOnceItIsThere) {
    place();
    EXPECT_THAT(serve(refused), ElementsAre(moveCommand));
    server.say(message(windowEvent, R"({"change":"new","container":{"window":8}})"));
    server.say(message(windowEvent, R"({"change":"focus","container":{"window":7}})"));
    server.say(message(windowEvent, R"({"change":"new","container":{"window":7}})"));
    EXPECT_THAT(serve(done), ElementsAre(moveCommand));
    EXPECT_TRUE(spinUntil([&] { return arrivals > 0; }));
    queue.advance(1);
    EXPECT_EQ(arrivals, 1);
}

TEST_F(SwayWindowManagerClientTest, AWindowThatIsThereAlreadyIsMovedAtOnce) {
    place();
    EXPECT_THAT(serve(done), ElementsAre(moveCommand));
    EXPECT_TRUE(spinUntil([&] { return arrivals == 1; }));
}

TEST_F(SwayWindowManagerClientTest, SilenceKeepsNoWindowFromBeingSeen) {
    place();
    queue.advance(2.99);
    EXPECT_EQ(arrivals, 0);
    queue.advance(0.01);
    EXPECT_EQ(arrivals, 1);
}

TEST_F(SwayWindowManagerClientTest, AWindowThatIsShownLateIsMovedAllTheSame) {
    place();
    EXPECT_THAT(serve(refused), ElementsAre(moveCommand));
    queue.advance(3);
    EXPECT_EQ(arrivals, 1);
    server.say(message(windowEvent, R"({"change":"new","container":{"window":7}})"));
    EXPECT_THAT(serve(done), ElementsAre(moveCommand));
    EXPECT_EQ(arrivals, 1);
}

TEST_F(SwayWindowManagerClientTest, AWindowThatCannotBeMovedIsSeenASecondAfterItCame) {
    place();
    EXPECT_THAT(serve(refused), ElementsAre(moveCommand));
    queue.advance(1);
    server.say(message(windowEvent, R"({"change":"new","container":{"window":7}})"));
    EXPECT_THAT(serve(refused), ElementsAre(moveCommand));
    EXPECT_EQ(arrivals, 0);
    queue.advance(1);
    EXPECT_EQ(arrivals, 1);
}

/// sway as another program, since its answers are waited for.
struct SwayPanelsTest : SwayWindowManagerClientTest {
    std::vector<QRect> panelsWhere(const QByteArray& outputs, const QByteArray& workspaces) {
        answers = 0;
        const std::jthread sway([&] {
            while (answers < 2 && server.awaitRequest()) {
                while (const auto request = server.next()) {
                    const bool isOfOutputs =
                        request->type == static_cast<std::uint32_t>(I3Request::getOutputs);
                    const bool isOfWorkspaces =
                        request->type == static_cast<std::uint32_t>(I3Request::getWorkspaces);
                    answers += isOfOutputs || isOfWorkspaces ? 1 : 0;
                    server.say(message(request->type, isOfOutputs      ? outputs
                                                      : isOfWorkspaces ? workspaces
                                                                       : R"({"success":true})"));
                }
            }
        });
        return client.panels();
    }

    std::atomic<int> answers = 0;
};

TEST_F(SwayPanelsTest, AreWhatTheWorkspacesInViewLeaveOfTheirOutputs) {
    const auto panels = panelsWhere(
        R"([{"name":"A","rect":{"x":0,"y":0,"width":100,"height":80}},
            {"name":"B","rect":{"x":100,"y":0,"width":50,"height":40}}])",
        R"([{"output":"A","visible":true,"rect":{"x":4,"y":10,"width":96,"height":65}},
            {"output":"A","visible":false,"rect":{"x":50,"y":40,"width":10,"height":10}},
            {"output":"B","visible":true,"rect":{"x":100,"y":0,"width":50,"height":40}}])");
    EXPECT_THAT(panels,
                UnorderedElementsAre(QRect(0, 0, 100, 10), QRect(0, 75, 100, 5), QRect(0, 10, 4, 65)));
}

TEST_F(SwayPanelsTest, AreNoneWhereTheAnswersMakeNoSense) {
    EXPECT_THAT(panelsWhere(R"([{"name":7}, 8])", R"([{"output":"A","visible":true,"rect":9}, {}])"),
                IsEmpty());
    EXPECT_EQ(answers, 2);
    EXPECT_THAT(panelsWhere("{", ""), IsEmpty());
    EXPECT_EQ(answers, 2);
}

} // namespace
