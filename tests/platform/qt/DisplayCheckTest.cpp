#include "platform/qt/DisplayCheck.h"

#include <QtGlobal>

#include <gmock/gmock.h>

namespace {

struct DisplayCheckTest : testing::Test {
    QByteArray before = qgetenv("QT_QPA_PLATFORM");

    ~DisplayCheckTest() override { qputenv("QT_QPA_PLATFORM", before); }
};

TEST_F(DisplayCheckTest, PrefersXToWaylandAndLeavesOtherChoicesAlone) {
    for (const auto* chosen : {"", "xcb", "wayland", "wayland-egl", "wayland;xcb", "xcb:option;wayland"}) {
        qputenv("QT_QPA_PLATFORM", chosen);
        EXPECT_TRUE(QtPlatform::showsItselfThroughX()) << chosen;
        {
            const QtPlatform::PreferredDisplay preferred;
            EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "xcb") << chosen;
        }
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), chosen);
    }
    for (const auto* chosen : {"offscreen", "vnc:size=640x480", "minimal"}) {
        qputenv("QT_QPA_PLATFORM", chosen);
        EXPECT_FALSE(QtPlatform::showsItselfThroughX()) << chosen;
        const QtPlatform::PreferredDisplay preferred;
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), chosen);
    }
}

TEST_F(DisplayCheckTest, ProgramsThatAreStartedLaterChooseForThemselves) {
    qunsetenv("QT_QPA_PLATFORM");
    { const QtPlatform::PreferredDisplay preferred; }
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
}

} // namespace
