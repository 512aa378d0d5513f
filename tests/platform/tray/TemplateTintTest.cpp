#include "platform/linux/tray/TemplateTint.h"

#include <gmock/gmock.h>

namespace {

using LinuxPlatform::ColorScheme;
using LinuxPlatform::TemplateTint;

const QColor black(0, 0, 0);
const QColor white(255, 255, 255);
const QColor darkRed(0x80, 0, 0);

bool isLight(const QColor& color) {
    return color.lightnessF() > 0.8F;
}

bool isDark(const QColor& color) {
    return color.lightnessF() < 0.2F;
}

TEST(TemplateTintTest, isSeenOnThePanelsGround) {
    const TemplateTint tint(darkRed);
    for (const int level : {0, 40, 80, 100}) {
        EXPECT_TRUE(isLight(tint.colorOn({{}, QColor(level, level, level)}))) << level;
    }
    for (const int level : {140, 180, 220, 255}) {
        EXPECT_TRUE(isDark(tint.colorOn({{}, QColor(level, level, level)}))) << level;
    }
}

TEST(TemplateTintTest, judgesColoursByHowBrightTheyLook) {
    const TemplateTint tint(darkRed);
    EXPECT_TRUE(isLight(tint.colorOn({{}, QColor(0, 0, 255)})));
    EXPECT_TRUE(isDark(tint.colorOn({{}, QColor(0, 255, 0)})));
}

TEST(TemplateTintTest, takesTheColourThatTheTrayNames) {
    const TemplateTint tint(white);
    EXPECT_EQ(tint.colorOn({darkRed, {}}), darkRed);
    EXPECT_EQ(tint.colorOn({darkRed, white}), darkRed);
}

TEST(TemplateTintTest, doesNotTakeAColourThatCannotBeSeen) {
    const TemplateTint tint(darkRed);
    EXPECT_TRUE(isLight(tint.colorOn({darkRed, black})));
    EXPECT_TRUE(isDark(tint.colorOn({white, QColor(230, 230, 230)})));
}

TEST(TemplateTintTest, followsTheDesktopsSchemeWhereThePanelTellsNothing) {
    TemplateTint tint(darkRed);
    tint.setColorScheme(ColorScheme::dark);
    EXPECT_TRUE(isLight(tint.colorOn({})));
    EXPECT_TRUE(isDark(tint.colorOn({{}, white})));
    tint.setColorScheme(ColorScheme::light);
    EXPECT_TRUE(isDark(tint.colorOn({})));
}

TEST(TemplateTintTest, fallsBackToTheColourOfText) {
    TemplateTint tint(darkRed);
    EXPECT_EQ(tint.colorOn({}), darkRed);
    tint.setColorScheme(ColorScheme::dark);
    tint.setColorScheme({});
    EXPECT_EQ(tint.colorOn({}), darkRed);
}

} // namespace
