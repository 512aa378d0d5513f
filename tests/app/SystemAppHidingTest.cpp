#include "Curtain/SystemAppHiding.h"

#include "tests/support/FakeWorkspace.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeWorkspace;

struct SystemAppHidingTest : testing::Test {
    FakeWorkspace workspace;
    Curtain::SystemAppHiding hiding{workspace};
};

TEST_F(SystemAppHidingTest, AppThatDoesNotRunIsNotFound) {
    EXPECT_FALSE(hiding.isRunning("a"));
    EXPECT_EQ(hiding.isHidden("a"), std::nullopt);
    hiding.hide("a");
    hiding.unhide("a");
    EXPECT_THAT(workspace.calls, IsEmpty());
}

TEST_F(SystemAppHidingTest, IdentifiersAreMatchedExactly) {
    workspace.run("A");
    EXPECT_FALSE(hiding.isRunning("a"));
    EXPECT_TRUE(hiding.isRunning("A"));
}

TEST_F(SystemAppHidingTest, AsksAfreshOnEveryCall) {
    workspace.run("a");
    EXPECT_TRUE(hiding.isRunning("a"));
    workspace.quitAll();
    EXPECT_FALSE(hiding.isRunning("a"));
}

TEST_F(SystemAppHidingTest, HiddenStateIsThatOfTheFirstInstance) {
    auto& first = workspace.run("a");
    auto& second = workspace.run("a");
    second.hidden = true;
    EXPECT_EQ(hiding.isHidden("a"), false);
    first.hidden = true;
    second.hidden = false;
    EXPECT_EQ(hiding.isHidden("a"), true);
}

TEST_F(SystemAppHidingTest, HidesEveryInstanceInOrder) {
    workspace.run("a").label = "first";
    workspace.run("b");
    workspace.run("a").label = "second";
    hiding.hide("a");
    EXPECT_THAT(workspace.calls, ElementsAre("hide first", "hide second"));
}

TEST_F(SystemAppHidingTest, ShowsAndActivatesEveryInstanceInOrder) {
    workspace.run("a").label = "first";
    workspace.run("a").label = "second";
    hiding.unhide("a");
    EXPECT_THAT(workspace.calls,
                ElementsAre("unhide first", "activate first 2", "unhide second", "activate second 2"));
}

} // namespace
