#include "platform/linux/departures/X11WorkspaceSwitches.h"

#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <string_view>

namespace {

using LinuxPlatform::X11Connection;
using LinuxPlatform::X11WorkspaceSwitches;

/// On a server without a window manager, whose part the test plays.
struct X11WorkspaceSwitchesTest : testing::Test {
    std::unique_ptr<X11Connection> manager = X11Connection::open();
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    xcb_atom_t property = manager->atoms(std::array{std::string_view("_NET_CURRENT_DESKTOP")}).front();
    int switches = 0;

    ~X11WorkspaceSwitchesTest() override { forget(); }

    void show(std::uint32_t workspace) {
        xcb_change_property(manager->get(), XCB_PROP_MODE_REPLACE, manager->root(), property,
                            XCB_ATOM_CARDINAL, 32, 1, &workspace);
        settle();
    }
    void forget() {
        xcb_delete_property(manager->get(), manager->root(), property);
        settle();
    }
    /// What the server has done by then has been heard of.
    void settle() const {
        manager->serverTime();
        connection->serverTime();
    }
};

TEST_F(X11WorkspaceSwitchesTest, TellsOfAnotherWorkspaceAndNotOfTheSameOne) {
    show(0);
    const X11WorkspaceSwitches watch(*connection, [this] { ++switches; });
    show(0);
    EXPECT_EQ(switches, 0);
    show(1);
    EXPECT_EQ(switches, 1);
    show(1);
    EXPECT_EQ(switches, 1);
    show(0);
    EXPECT_EQ(switches, 2);
}

TEST_F(X11WorkspaceSwitchesTest, AWindowManagerThatBeginsOrEndsIsNoSwitch) {
    const X11WorkspaceSwitches watch(*connection, [this] { ++switches; });
    show(2);
    forget();
    show(3);
    EXPECT_EQ(switches, 0);
    show(4);
    EXPECT_EQ(switches, 1);
}

} // namespace
