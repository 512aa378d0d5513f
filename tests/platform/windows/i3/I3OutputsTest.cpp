#include "tests/platform/windows/i3/I3WindowFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace PlatformTests {
namespace {

using LinuxPlatform::WindowId;
using TestSupport::spinUntil;

/// Two outputs: the left one shows the workspace "left", the right one, which has the focus, "right".
struct I3OutputsTest : testing::Test {
    I3OutputsTest() {
        if (outputs().size() < 2) {
            I3Desktop::run("create_output");
        }
        EXPECT_TRUE(spinUntil([] { return outputs().size() == 2; })) << I3Desktop::picture();
        const auto names = outputs();
        I3Desktop::run("focus output " + names.front() + "; workspace left; focus output " + names.back() +
                       "; workspace right");
    }

    static std::vector<std::string> outputs() {
        const auto tree = I3Desktop::tree();
        std::vector<std::string> names;
        for (const auto* const output : tree->outputs()) {
            names.push_back(output->name);
        }
        return names;
    }

    void goAndComeBack(const std::vector<WindowId>& windows) {
        const auto before = I3Desktop::picture();
        const auto seen = view();
        world.system->hide(windows);
        ASSERT_TRUE(spinUntil([&] { return areHidden(windows, true); })) << I3Desktop::picture();
        EXPECT_EQ(view(), seen);
        world.system->show(windows);
        ASSERT_TRUE(spinUntil([&] { return areHidden(windows, false); })) << I3Desktop::picture();
        EXPECT_TRUE(spinUntil([&] { return I3Desktop::picture() == before; })) << "before:\n"
                                                                               << before << "after:\n"
                                                                               << I3Desktop::picture();
    }

    static bool areHidden(const std::vector<WindowId>& windows, bool hidden) {
        const auto tree = I3Desktop::tree();
        return std::ranges::all_of(
            windows, [&](WindowId window) { return tree->find(window)->isInScratchpad() == hidden; });
    }

    /// Which output shows which workspace.
    static std::string view() {
        const auto picture = I3Desktop::picture();
        return picture.substr(0, picture.find("\n    "));
    }

    I3WindowWorld world;
};

TEST_F(I3OutputsTest, ShowWhatTheyShowedWhileWindowsOutOfViewGoAndComeBack) {
    I3Desktop::run("workspace other");
    const auto other = world.open("A");
    world.open("B");
    // Nothing else is on it.
    I3Desktop::run("workspace right");
    goAndComeBack({other});
    const auto here = world.open("C");
    goAndComeBack({other});
    goAndComeBack({other, here});
}

TEST_F(I3OutputsTest, ShowWhatTheyShowedWhenTheOtherOneIsEmptied) {
    I3Desktop::run("workspace other");
    const auto other = world.open("A");
    world.open("B");
    I3Desktop::run("workspace right");
    const auto here = world.open("C");
    I3Desktop::run("workspace left");
    world.open("D");
    goAndComeBack({other, here});
    goAndComeBack({here});
}

} // namespace
} // namespace PlatformTests
