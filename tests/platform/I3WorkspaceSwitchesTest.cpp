#include "platform/linux/departures/I3WorkspaceSwitches.h"

#include "tests/platform/ScriptedI3.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

namespace {

using PlatformTests::message;

constexpr std::uint32_t workspaceEvent = 0x80000000;

struct I3WorkspaceSwitchesTest : testing::Test {
    PlatformTests::ScriptedI3 server;
    TestSupport::HandDrivenQueue queue;
    int switches = 0;
    LinuxPlatform::I3WorkspaceSwitches watch{server.path(), queue, [this] { ++switches; }};

    I3WorkspaceSwitchesTest() { EXPECT_TRUE(server.accept()); }

    void say(const QByteArray& news) { server.say(message(workspaceEvent, news)); }
};

TEST_F(I3WorkspaceSwitchesTest, SubscribesToWorkspaces) {
    ASSERT_TRUE(server.awaitRequest());
    const auto request = server.next();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->payload, QByteArray(R"(["workspace"])"));
}

TEST_F(I3WorkspaceSwitchesTest, TellsOfAWorkspaceThatTakesThePlaceOfAnother) {
    say(R"({"change":"init","current":{"output":"A"},"old":null})");
    say(R"({"change":"focus","current":{"output":"A"},"old":null})");
    say(R"({"change":"focus","current":{"output":"B"},"old":{"output":"A"}})");
    say(R"({"change":"empty","current":{"output":"A"},"old":{"output":"A"}})");
    say(R"({"change":"focus","current":{"output":"B"},"old":{"output":"B"}})");
    EXPECT_TRUE(TestSupport::spinUntil([&] { return switches > 0; }));
    EXPECT_EQ(switches, 1) << "only the last one takes what was in view away";
}

} // namespace
