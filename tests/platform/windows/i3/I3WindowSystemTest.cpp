#include "tests/platform/windows/i3/I3WindowFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <QJsonObject>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace PlatformTests {
namespace {

using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using TestSupport::spinUntil;

struct I3WindowSystemTest : testing::Test {
    I3WindowSystemTest() { follow(); }

    void follow() {
        subscription = system().addEventHandler(
            [this](WindowEvent event, const Window& window) { events.emplace_back(event, window.id); });
    }

    LinuxPlatform::I3WindowSystem& system() { return *world.system; }

    WindowId open(const std::string& name) {
        ids[name] = world.open(name);
        // It comes with the focus, late.
        EXPECT_TRUE(spinUntil([&] {
            const auto tree = I3Desktop::tree();
            const auto* const leaf = tree->find(ids[name]);
            return leaf != nullptr && leaf->node->isFocused;
        })) << I3Desktop::picture();
        return ids[name];
    }

    static std::string with(const std::string& name, const std::string& command) {
        return "[class=\"^" + name + "$\"] " + command + ";";
    }

    /// As commands name it.
    std::string numberOf(const std::string& name) {
        const auto tree = I3Desktop::tree();
        return std::to_string(tree->find(ids.at(name))->node->id);
    }

    void waitUntilDrawn(const std::string& name) { world.waitUntilDrawn(ids.at(name)); }

    bool isHidden(const std::string& name) {
        const auto& all = system().windows();
        const auto found = std::ranges::find(all, ids.at(name), &Window::id);
        return found != all.end() && found->isHidden;
    }

    bool areHidden(const std::vector<std::string>& names, bool hidden = true) {
        return std::ranges::all_of(names, [&](const auto& name) { return isHidden(name) == hidden; });
    }

    std::vector<WindowId> idsOf(const std::vector<std::string>& names) {
        std::vector<WindowId> list;
        for (const auto& name : names) {
            list.push_back(ids.at(name));
        }
        return list;
    }

    void hide(const std::vector<std::string>& names) {
        system().hide(idsOf(names));
        ASSERT_TRUE(spinUntil([&] { return areHidden(names); })) << I3Desktop::picture();
    }

    void show(const std::vector<std::string>& names) {
        system().show(idsOf(names));
        ASSERT_TRUE(spinUntil([&] { return areHidden(names, false); })) << I3Desktop::picture();
    }

    void expectPicture(const std::string& before) {
        EXPECT_TRUE(spinUntil([&] { return I3Desktop::picture() == before; })) << "before:\n"
                                                                               << before << "after:\n"
                                                                               << I3Desktop::picture();
    }

    /// Hides the windows and gives them back, after which everything is as it was.
    void goAndComeBack(const std::vector<std::string>& names) {
        const auto before = I3Desktop::picture();
        const auto tree = I3Desktop::tree();
        const auto* const focused = tree->focused();
        const bool hadFocus =
            focused != nullptr && std::ranges::find(names, focused->node->className) != names.end();
        hide(names);
        system().show(idsOf(names));
        if (hadFocus) {
            system().activate(idsOf(names));
        }
        ASSERT_TRUE(spinUntil([&] { return areHidden(names, false); })) << I3Desktop::picture();
        expectPicture(before);
    }

    I3WindowWorld world;
    std::map<std::string, WindowId> ids;
    std::vector<std::pair<WindowEvent, WindowId>> events;
    Platform::Subscription subscription;
};

TEST_F(I3WindowSystemTest, TiledWindowsComeBackBetweenTheirNeighbours) {
    for (const auto* name : {"A", "B", "C", "D"}) {
        open(name);
    }
    I3Desktop::run(with("A", "resize grow right 100 px") + with("C", "resize shrink right 40 px"));
    goAndComeBack({"B"});
    goAndComeBack({"A"});
    goAndComeBack({"D"});
    goAndComeBack({"B", "C"});
    goAndComeBack({"A", "B", "C", "D"});
}

TEST_F(I3WindowSystemTest, GroupsAreMadeAgainWhenAllOfThemWasHidden) {
    open("A");
    open("B");
    I3Desktop::run(with("B", "split v"));
    open("C");
    I3Desktop::run(with("A", "resize grow right 100 px") + with("B", "resize grow down 60 px"));
    goAndComeBack({"A"});
    goAndComeBack({"B"});
    goAndComeBack({"C"});
    goAndComeBack({"B", "C"});
    goAndComeBack({"A", "B"});
    goAndComeBack({"A", "B", "C"});
}

TEST_F(I3WindowSystemTest, TabsAndStacksComeBackInTheirOrder) {
    open("A");
    open("B");
    I3Desktop::run(with("B", "split h") + with("B", "layout tabbed"));
    open("C");
    open("D");
    I3Desktop::run(with("A", "split v") + with("A", "layout stacking") + with("A", "focus"));
    open("E");
    I3Desktop::run(with("C", "focus"));
    goAndComeBack({"C"});
    goAndComeBack({"B", "D"});
    goAndComeBack({"A"});
    goAndComeBack({"A", "E"});
    goAndComeBack({"B", "C", "D"});
    goAndComeBack({"A", "B", "C", "D", "E"});
}

TEST_F(I3WindowSystemTest, FloatingWindowsKeepTheirPlaceAndStayOutOfTheScratchpad) {
    open("A");
    open("B");
    waitUntilDrawn("B");
    I3Desktop::run(
        with("B", "floating enable, resize set 300 px 200 px, move absolute position 100 px 120 px"));
    waitUntilDrawn("B");
    goAndComeBack({"B"});
    const auto before = I3Desktop::picture();
    // It would be put away as a window of the scratchpad.
    I3Desktop::ask(LinuxPlatform::I3Request::runCommand, with("B", "scratchpad show"));
    EXPECT_EQ(I3Desktop::picture(), before);
    I3Desktop::run("workspace 2");
    goAndComeBack({"B"});
    I3Desktop::run("workspace 1");
    expectPicture(before);
    I3Desktop::run(with("B", "sticky enable"));
    goAndComeBack({"B"});
    goAndComeBack({"A", "B"});
}

/// A and D stand side by side; B and C float together, one above the other.
struct I3FloatingGroupTest : I3WindowSystemTest {
    I3FloatingGroupTest() {
        for (const auto* name : {"A", "B", "C", "D"}) {
            open(name);
        }
        I3Desktop::run(with("B", "split v") + with("B", "mark together") +
                       with("C", "move container to mark together") + with("B", "unmark together"));
        I3Desktop::run(with("B", "focus") + "focus parent; floating enable");
        I3Desktop::run(with("A", "resize grow right 100 px") + with("A", "focus"));
        // i3 knows neither a command for the size of a group that floats nor one for the sizes within it.
        I3Desktop::run(I3Desktop::isSway()
                           ? withParentOf("B", "resize set 400 px 300 px") +
                                 with("B", "resize grow down 40 px")
                           : withParentOf("B", "resize grow right 300 px, resize grow down 200 px"));
        I3Desktop::run(withParentOf("B", "move absolute position 100 px 120 px"));
        for (const auto* name : {"A", "B", "C", "D"}) {
            waitUntilDrawn(name);
        }
    }

    /// What holds the window and is no window.
    std::string withParentOf(const std::string& name, const std::string& command) {
        const auto tree = I3Desktop::tree();
        return "[con_id=" + std::to_string(tree->find(ids.at(name))->ancestors.back()->id) + "] " + command +
               ";";
    }
};

TEST_F(I3FloatingGroupTest, GoesAndComesBackAsAWhole) {
    goAndComeBack({"B", "C"});
    goAndComeBack({"A", "B", "C"});
    goAndComeBack({"A", "B", "C", "D"});
    I3Desktop::run(with("C", "focus"));
    goAndComeBack({"B", "C"});
    I3Desktop::run(withParentOf("B", "sticky enable"));
    goAndComeBack({"B", "C"});
    I3Desktop::run(withParentOf("B", "sticky disable") + "workspace 2");
    goAndComeBack({"B", "C"});
    goAndComeBack({"C"});
}

TEST_F(I3FloatingGroupTest, ItsWindowsGoAndComeBackWithoutTheOthers) {
    const auto before = I3Desktop::picture();
    hide({"B"});
    EXPECT_FALSE(isHidden("C"));
    show({"B"});
    expectPicture(before);
    goAndComeBack({"C"});
    goAndComeBack({"A", "C", "D"});
    I3Desktop::run(with("B", "focus"));
    goAndComeBack({"B"});
    hide({"B"});
    hide({"C"});
    show({"B", "C"});
    I3Desktop::run(with("A", "focus"));
    expectPicture(before);
}

TEST_F(I3FloatingGroupTest, OneComesBackWhileTheOthersStayAway) {
    const auto before = I3Desktop::picture();
    hide({"B", "C"});
    show({"B"});
    EXPECT_TRUE(isHidden("C"));
    show({"C"});
    expectPicture(before);
}

TEST_F(I3FloatingGroupTest, TabsInItComeBackInTheirOrder) {
    I3Desktop::run(with("C", "split h") + with("C", "layout tabbed") + with("C", "focus"));
    open("E");
    I3Desktop::run(with("A", "focus"));
    goAndComeBack({"E"});
    goAndComeBack({"C"});
    goAndComeBack({"B"});
    goAndComeBack({"C", "E"});
    goAndComeBack({"B", "C", "E"});
}

TEST_F(I3FloatingGroupTest, OfTheUsersScratchpadGoesBackThere) {
    I3Desktop::run(withParentOf("B", "move scratchpad"));
    ASSERT_TRUE(spinUntil([&] { return areHidden({"B", "C"}); }));
    goAndComeBack({"A"});
    EXPECT_TRUE(areHidden({"B", "C"}));
    I3Desktop::run(withParentOf("B", "scratchpad show"));
    ASSERT_TRUE(spinUntil([&] { return areHidden({"B", "C"}, false); }));
    goAndComeBack({"B", "C"});
    I3Desktop::run(withParentOf("B", "scratchpad show"));
    EXPECT_TRUE(spinUntil([&] { return areHidden({"B", "C"}); })) << I3Desktop::picture();
}

TEST_F(I3WindowSystemTest, FullscreenComesBack) {
    open("A");
    open("B");
    open("C");
    I3Desktop::run(with("A", "resize grow right 50 px") + with("B", "focus") +
                   with("B", "fullscreen enable"));
    waitUntilDrawn("B");
    goAndComeBack({"B"});
    waitUntilDrawn("B");
    goAndComeBack({"A", "B", "C"});
    waitUntilDrawn("B");
    I3Desktop::run(with("B", "fullscreen disable"));
    waitUntilDrawn("B");
    I3Desktop::run(
        with("B", "floating enable, resize set 300 px 200 px, move absolute position 100 px 120 px"));
    waitUntilDrawn("B");
    const auto before = I3Desktop::picture();
    I3Desktop::run(with("B", "fullscreen enable"));
    waitUntilDrawn("B");
    goAndComeBack({"B"});
    waitUntilDrawn("B");
    I3Desktop::run(with("B", "fullscreen disable"));
    expectPicture(before);
}

TEST_F(I3WindowSystemTest, WhatOthersHaveFullscreenStaysSoWhenWindowsComeBack) {
    open("A");
    open("B");
    open("C");
    I3Desktop::run(with("A", "resize grow right 90 px"));
    I3Desktop::run("workspace 2");
    open("D");
    I3Desktop::run(with("B", "focus"));
    const auto before = I3Desktop::picture();
    const auto isFilledByB = [this] {
        const auto* const leaf = I3Desktop::tree()->find(ids.at("B"));
        return leaf->node->isFullscreen && leaf->node->isFocused && leaf->floating == nullptr;
    };
    for (const auto& names : {std::vector<std::string>{"D"}, {"A"}, {"C"}, {"A", "C"}, {"A", "C", "D"}}) {
        I3Desktop::run(with("B", "fullscreen enable"));
        waitUntilDrawn("B");
        hide(names);
        show(names);
        EXPECT_TRUE(spinUntil(isFilledByB)) << I3Desktop::picture();
        waitUntilDrawn("B");
        // What came back behind it is seen now.
        I3Desktop::run(with("B", "fullscreen disable"));
        expectPicture(before);
    }
}

TEST_F(I3WindowSystemTest, WhatBecomesFullscreenWhileHiddenComesBackAsItWas) {
    open("A");
    open("B");
    open("C");
    const auto before = I3Desktop::picture();
    hide({"A", "B"});
    I3Desktop::run(with("A", "fullscreen enable") + with("B", "fullscreen enable"));
    show({"A", "B"});
    expectPicture(before);
}

TEST_F(I3WindowSystemTest, AnEmptyWorkspaceInViewStaysWhenWindowsOfAnotherComeBack) {
    for (const auto* const name : {"A", "B", "C", "D"}) {
        open(name);
    }
    I3Desktop::run("workspace 3");
    hide({"A", "B", "C"});
    const auto number = [] {
        const auto tree = I3Desktop::tree();
        const auto* const workspace = tree->workspaceNamed("3");
        return workspace != nullptr ? workspace->id : 0;
    };
    const auto before = number();
    show({"A", "B", "C"});
    EXPECT_EQ(number(), before) << I3Desktop::picture();
}

TEST_F(I3WindowSystemTest, WindowsOfOtherWorkspacesGoAndComeBackUnseen) {
    open("A");
    open("B");
    I3Desktop::run(I3Desktop::isSway() ? "workspace '2: other; \"one\", too'"
                                       : "workspace \"2: other; \\\"one\\\", too\"");
    open("C");
    open("D");
    I3Desktop::run(with("C", "resize grow right 100 px"));
    const auto other = I3Desktop::picture();
    I3Desktop::run("workspace 1");
    const auto before = I3Desktop::picture();
    goAndComeBack({"C"});
    goAndComeBack({"A", "C"});
    goAndComeBack({"A", "B", "C"});
    I3Desktop::run("workspace 3");
    goAndComeBack({"A", "B", "C", "D"});
    I3Desktop::run("workspace 1");
    expectPicture(before);
    if (I3Desktop::isSway()) {
        I3Desktop::run(with("D", "focus"));
        expectPicture(other);
    }
}

TEST_F(I3WindowSystemTest, TheUsersOwnScratchpadIsLeftAlone) {
    open("A");
    open("B");
    open("C");
    waitUntilDrawn("B");
    I3Desktop::run(with("B", "move scratchpad") + with("C", "focus"));
    ASSERT_TRUE(spinUntil([&] { return isHidden("B"); }));
    goAndComeBack({"A"});
    EXPECT_TRUE(isHidden("B"));
    // One that was called up from there goes back there when its user wants it to.
    I3Desktop::run(with("B", "scratchpad show"));
    ASSERT_TRUE(spinUntil([&] { return !isHidden("B"); }));
    waitUntilDrawn("B");
    goAndComeBack({"B"});
    I3Desktop::run(with("B", "scratchpad show"));
    EXPECT_TRUE(spinUntil([&] { return isHidden("B"); })) << I3Desktop::picture();
}

TEST_F(I3WindowSystemTest, WindowThatItsUserBringsUpIsAnnouncedAndKeepsItsFirstPlace) {
    open("A");
    open("B");
    open("C");
    const auto before = I3Desktop::picture();
    hide({"A"});
    events.clear();
    I3Desktop::run(with("A", "scratchpad show"));
    // That the X server knows more of the last one by now may be told first.
    ASSERT_TRUE(spinUntil([&] {
        return std::ranges::find(events, std::pair(WindowEvent::activated, ids["A"])) != events.end();
    }));
    hide({"A"});
    show({"A"});
    I3Desktop::run(with("C", "focus"));
    expectPicture(before);
}

TEST_F(I3WindowSystemTest, TheNextRunGivesBackWhatACrashLeftBehind) {
    open("A");
    open("B");
    open("C");
    I3Desktop::run(with("A", "resize grow right 100 px") + with("B", "focus"));
    const auto before = I3Desktop::picture();
    hide({"A"});
    subscription = {};
    world.start();
    ASSERT_TRUE(isHidden("A"));
    system().show(std::array{ids["A"]});
    ASSERT_TRUE(spinUntil([&] { return !isHidden("A"); }));
    expectPicture(before);
    EXPECT_FALSE(world.state.contains("taken"));
}

TEST_F(I3WindowSystemTest, PlaceOfAWindowThatWasBroughtUpAfterACrashIsNotGoneBy) {
    open("A");
    open("B");
    hide({"A"});
    subscription = {};
    world.system.reset();
    I3Desktop::run(with("A", "scratchpad show, floating disable") +
                   with("A", "swap container with con_id " + numberOf("B")) + with("A", "move right"));
    const auto before = I3Desktop::picture();
    world.start();
    ASSERT_FALSE(isHidden("A"));
    EXPECT_FALSE(world.state.contains("taken"));
    goAndComeBack({"A"});
    EXPECT_LT(before.find("B "), before.find("A ")) << before;
}

TEST_F(I3WindowSystemTest, PlaceOfAnotherProcessIsNotGoneBy) {
    open("A");
    open("B");
    hide({"A"});
    subscription = {};
    world.system.reset();
    auto record = world.state.string("taken").value();
    const auto process = "\"process\":" + std::to_string(getpid());
    ASSERT_NE(record.find(process), std::string::npos) << record;
    record.replace(record.find(process), process.size(), "\"process\":1");
    world.state.setString("taken", record);
    world.start();
    ASSERT_TRUE(isHidden("A"));
    EXPECT_FALSE(world.state.contains("taken"));
    // It is its user's.
    show({"A"});
    const auto tree = I3Desktop::tree();
    EXPECT_NE(tree->find(ids["A"])->floating, nullptr) << I3Desktop::picture();
}

TEST_F(I3WindowSystemTest, WhatIsAskedForAtTheVeryEndHappens) {
    open("A");
    open("B");
    const auto before = I3Desktop::picture();
    hide({"A"});
    system().show(std::array{ids["A"]});
    world.system.reset();
    expectPicture(before);
}

TEST_F(I3WindowSystemTest, WindowsComeBackToTheirWorkspacesWithoutALookAtTheLayout) {
    for (const auto* const name : {"A", "Floating", "B"}) {
        open(name);
    }
    waitUntilDrawn("Floating");
    I3Desktop::run(with("Floating", "floating enable, resize set 300 px 200 px"));
    waitUntilDrawn("Floating");
    const auto tree = I3Desktop::tree();
    std::vector<LinuxPlatform::I3Return> returns;
    for (const auto* const name : {"A", "Floating", "B"}) {
        returns.push_back({ids[name], LinuxPlatform::I3Place::of(*tree->find(ids[name]))});
    }
    hide({"A", "Floating"});
    I3Desktop::run("workspace 2");
    I3Desktop::run(commandsToReturnAnywhere(*I3Desktop::tree(), returns));
    const auto after = I3Desktop::tree();
    for (const auto& [window, place] : returns) {
        const auto& leaf = *after->find(window);
        EXPECT_EQ(leaf.workspace->name, "1") << I3Desktop::picture();
        EXPECT_EQ(leaf.floating != nullptr, place.isFloating) << I3Desktop::picture();
        EXPECT_FALSE(leaf.node->isOfScratchpad);
    }
    EXPECT_EQ(after->focusedWorkspace()->name, "2");
}

/// With rules of the user's for windows.
struct I3RulesTest : I3WindowSystemTest {
    void SetUp() override {
        ASSERT_TRUE(I3Desktop::owns(path)) << path << " is somebody's own";
        before = TestSupport::readFile(path);
        write(*before +
              "\nassign [class=\"^Assigned$\"] workspace 7\n"
              "for_window [class=\"^Ruled$\"] floating enable, move absolute position 40 px 50 px\n");
    }
    void TearDown() override {
        if (before) {
            write(*before);
        }
    }

    static std::string configuration() {
        const auto version = LinuxPlatform::jsonOf(I3Desktop::ask(LinuxPlatform::I3Request::getVersion));
        return version.object().value(QLatin1String("loaded_config_file_name")).toString().toStdString();
    }

    void write(const std::string& text) const {
        TestSupport::writeFile(path, text);
        I3Desktop::run("reload");
        // sway reads it later.
        EXPECT_TRUE(spinUntil([&] {
            const auto reply = LinuxPlatform::jsonOf(I3Desktop::ask(LinuxPlatform::I3Request::getConfig));
            return reply.object().value(QLatin1String("config")).toString().toStdString() == text;
        }));
    }

    const std::string path = configuration();
    std::optional<std::string> before;
};

TEST_F(I3RulesTest, AreNotAppliedAgainToWhatComesBack) {
    open("A");
    open("Ruled");
    waitUntilDrawn("Ruled");
    goAndComeBack({"Ruled"});
    I3Desktop::run(with("Ruled", "floating disable"));
    waitUntilDrawn("Ruled");
    goAndComeBack({"Ruled"});
    goAndComeBack({"A", "Ruled"});
    ids["Assigned"] = world.open("Assigned");
    ASSERT_TRUE(spinUntil([&] {
        const auto tree = I3Desktop::tree();
        return tree->find(ids["Assigned"])->workspace->name == "7";
    })) << I3Desktop::picture();
    goAndComeBack({"Assigned"});
    I3Desktop::run(with("Assigned", "move container to workspace 1"));
    goAndComeBack({"Assigned"});
    goAndComeBack({"A", "Assigned", "Ruled"});
}

TEST_F(I3WindowSystemTest, ReloadAndRestartCostNothing) {
    open("A");
    open("B");
    const auto before = I3Desktop::picture();
    hide({"A"});
    I3Desktop::run("reload");
    if (!I3Desktop::isSway()) {
        I3Desktop::ask(LinuxPlatform::I3Request::runCommand, "restart");
        ASSERT_TRUE(spinUntil([&] { return !system().knowsEveryWindow(); }));
        EXPECT_EQ(system().hidingObstacle(), Platform::HidingObstacle::notKnownYet);
        ASSERT_TRUE(spinUntil([&] { return system().knowsEveryWindow(); }));
    }
    EXPECT_TRUE(isHidden("A"));
    EXPECT_FALSE(system().hidingObstacle());
    show({"A"});
    I3Desktop::run(with("B", "focus"));
    expectPicture(before);
}

} // namespace
} // namespace PlatformTests
