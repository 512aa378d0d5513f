#include "platform/qt/screens/PopoverPlacement.h"

#include "platform/qt/screens/ScreenGeometry.h"

#include <algorithm>

namespace QtPlatform::PopoverPlacement {
namespace {

constexpr double gap = 6;
constexpr double edgeDistance = 8;

/// Keeps a stretch inside another; one that is too long begins where the other does.
double clamped(double start, double length, double from, double to) {
    return std::max(from, std::min(start, to - length));
}

} // namespace

QPointF topLeft(const std::optional<QRectF>& item, const QSizeF& popover, const QRectF& screen,
                const QRectF& visibleFrame, bool isRightToLeft) {
    const auto across = [&](double center) {
        return clamped(center - popover.width() / 2, popover.width(), visibleFrame.left() + edgeDistance,
                       visibleFrame.right() - edgeDistance);
    };
    const auto along = [&](double start) {
        return clamped(start, popover.height(), visibleFrame.top(), visibleFrame.bottom());
    };
    if (!item) {
        const bool isPanelBelow = screen.bottom() - visibleFrame.bottom() > visibleFrame.top() - screen.top();
        return {
            across(isRightToLeft ? visibleFrame.left() : visibleFrame.right()),
            along(isPanelBelow ? visibleFrame.bottom() - popover.height() - gap : visibleFrame.top() + gap)};
    }
    const auto center = item->center();
    if (center.x() < visibleFrame.left()) {
        return {visibleFrame.left() + gap, along(center.y() - popover.height() / 2)};
    }
    if (center.x() > visibleFrame.right()) {
        return {visibleFrame.right() - popover.width() - gap, along(center.y() - popover.height() / 2)};
    }
    const bool isBelow = center.y() < screen.center().y();
    const double below = std::max(item->bottom(), visibleFrame.top()) + gap;
    const double above = std::min(item->top(), visibleFrame.bottom()) - popover.height() - gap;
    return {across(center.x()), along(isBelow ? below : above)};
}

double scale(const QSizeF& popover, const QRectF& visibleFrame) {
    return ScreenGeometry::fittingScale(popover, visibleFrame.size() - QSizeF(2 * edgeDistance, 0));
}

} // namespace QtPlatform::PopoverPlacement
