#include "tests/platform/windows/x11/X11WindowFixture.h"

#include <array>

namespace {

using LinuxPlatform::WindowId;
using TestSupport::spinUntil;

/// Under a window manager that does not hide windows when it is asked to.
struct X11IgnoredHidingTest : PlatformTests::X11WindowFixture {};

TEST_F(X11IgnoredHidingTest, IsFoundOutAndTheWindowStaysVisible) {
    const auto window = openListed("a", "A");
    EXPECT_EQ(system.hidingObstacle(), std::nullopt) << "nobody has asked it for anything yet";
    system.hide(std::array{WindowId{window}});
    EXPECT_TRUE(spinUntil(
        [&] { return system.hidingObstacle() == Platform::HidingObstacle::windowManagerIgnoresHiding; }));
    EXPECT_FALSE(isHidden(window));
    EXPECT_TRUE(system.knowsEveryWindow());
}

} // namespace
