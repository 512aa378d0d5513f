#include "platform/linux/windows/i3/I3WindowSystem.h"

#include "platform/linux/windows/i3/I3Layout.h"
#include "platform/linux/windows/i3/I3Place.h"
#include "tests/platform/i3/ScriptedI3.h"
#include "tests/platform/windows/i3/ServedI3Test.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::I3Request;
using LinuxPlatform::I3WindowSystem;
using LinuxPlatform::WindowId;
using PlatformTests::message;
using PlatformTests::ScriptedI3;
using PlatformTests::ServedI3Test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto whenSilent = Platform::HidingObstacle::waylandSession;

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

} // namespace
