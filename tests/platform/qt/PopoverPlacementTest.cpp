#include "platform/qt/screens/PopoverPlacement.h"

#include <gmock/gmock.h>

namespace {

using QtPlatform::PopoverPlacement::scale;
using QtPlatform::PopoverPlacement::topLeft;

const QRectF screen(0, 0, 1440, 900);
const QSizeF popover(700, 618);
const QRectF belowTopPanel(0, 28, 1440, 872);

TEST(PopoverPlacement, HangsCentredBelowAnItemInAPanelAtTheTop) {
    EXPECT_EQ(topLeft(QRectF(700, 0, 24, 28), popover, screen, belowTopPanel, false), QPointF(362, 34));
}

TEST(PopoverPlacement, StaysOnTheScreenBesideAnItemInTheCorner) {
    EXPECT_EQ(topLeft(QRectF(1410, 0, 24, 28), popover, screen, belowTopPanel, false), QPointF(732, 34));
    EXPECT_EQ(topLeft(QRectF(2, 0, 24, 28), popover, screen, belowTopPanel, false), QPointF(8, 34));
}

TEST(PopoverPlacement, StandsOnAPanelAtTheBottom) {
    EXPECT_EQ(topLeft(QRectF(700, 870, 24, 30), popover, screen, QRectF(0, 0, 1440, 868), false),
              QPointF(362, 244));
}

TEST(PopoverPlacement, StandsBesideAPanelAtTheSide) {
    EXPECT_EQ(topLeft(QRectF(4, 850, 24, 24), popover, screen, QRectF(32, 0, 1408, 900), false),
              QPointF(38, 282));
    EXPECT_EQ(topLeft(QRectF(1412, 20, 24, 24), popover, screen, QRectF(0, 0, 1408, 900), false),
              QPointF(702, 0));
}

TEST(PopoverPlacement, KeepsItsDistanceFromAPanelThatReservesNothing) {
    EXPECT_EQ(topLeft(QRectF(700, 0, 24, 28), popover, screen, screen, false), QPointF(362, 34));
}

TEST(PopoverPlacement, GoesIntoTheCornerOfThePanelWhenNobodyKnowsTheItem) {
    EXPECT_EQ(topLeft(std::nullopt, popover, screen, belowTopPanel, false), QPointF(732, 34));
    EXPECT_EQ(topLeft(std::nullopt, popover, screen, belowTopPanel, true), QPointF(8, 34));
    EXPECT_EQ(topLeft(std::nullopt, popover, screen, QRectF(0, 0, 1440, 868), false), QPointF(732, 244));
}

TEST(PopoverPlacement, ASecondScreenHasItsOwnCorners) {
    const QRectF second(1440, 0, 1024, 768);
    EXPECT_EQ(topLeft(QRectF(2400, 0, 24, 28), popover, second, QRectF(1440, 28, 1024, 740), false),
              QPointF(1756, 34));
}

TEST(PopoverPlacement, OneThatIsTooLargeBeginsAtTheTopLeft) {
    const QRectF small(0, 0, 640, 480);
    EXPECT_EQ(topLeft(QRectF(600, 0, 24, 24), popover, small, QRectF(0, 24, 640, 456), false),
              QPointF(8, 24));
}

TEST(PopoverPlacement, IsDrawnSmallerWhereTheScreenIsTooNarrow) {
    EXPECT_EQ(scale(popover, belowTopPanel), 1);
    EXPECT_EQ(scale(popover, QRectF(0, 0, 716, 618)), 1);
    EXPECT_DOUBLE_EQ(scale({700, 372}, QRectF(0, 20, 640, 380)), 624.0 / 700);
    EXPECT_DOUBLE_EQ(scale({700, 400}, QRectF(0, 20, 1440, 300)), 0.75);
    EXPECT_EQ(scale(popover, QRectF(0, 0, 100, 100)), 0.5) << "smaller it could not be read";
    EXPECT_EQ(scale(popover, QRectF()), 1) << "nothing is known of the screen";
}

} // namespace
