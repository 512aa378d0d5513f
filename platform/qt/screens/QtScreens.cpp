#include "platform/qt/screens/QtScreens.h"

#include "platform/qt/screens/ScreenGeometry.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace QtPlatform {
namespace {

/// As high as a panel may be of which nothing is known, and which would cover what lies under it.
constexpr double unknownPanel = 36;

Platform::Rect toRect(const QRectF& rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

/// What is left of the frame beside a panel, which lies along one of its edges.
QRectF without(const QRectF& frame, const QRectF& panel) {
    const auto taken = frame.intersected(panel);
    if (taken.isEmpty()) {
        return frame;
    }
    auto left = frame;
    if (taken.width() >= taken.height()) {
        if (taken.top() <= frame.top()) {
            left.setTop(taken.bottom());
        } else {
            left.setBottom(taken.top());
        }
    } else if (taken.left() <= frame.left()) {
        left.setLeft(taken.right());
    } else {
        left.setRight(taken.left());
    }
    return left;
}

} // namespace

QtScreens::QtScreens(WindowManagerLink windowManager) : windowManager_(std::move(windowManager)) {}

std::vector<Platform::Screen> QtScreens::screens() {
    std::vector<Platform::Screen> result;
    for (const auto* const screen : QGuiApplication::screens()) {
        result.push_back(describe(*screen));
    }
    return result;
}

std::optional<Platform::Screen> QtScreens::main() {
    const auto* const screen = ScreenGeometry::userScreen(windowManager_.isPointerKnown);
    return screen != nullptr ? std::optional(describe(*screen)) : std::nullopt;
}

std::optional<Platform::Screen> QtScreens::at(const Platform::Point& pixel) {
    const auto* const screen =
        ScreenGeometry::screenAt(QPoint(static_cast<int>(pixel.x), static_cast<int>(pixel.y)));
    return screen != nullptr ? std::optional(describe(*screen)) : std::nullopt;
}

std::optional<Platform::Point> QtScreens::mouseLocation() {
    if (!windowManager_.isPointerKnown) {
        return std::nullopt;
    }
    const auto position = QCursor::pos();
    return Platform::Point{static_cast<double>(position.x()), static_cast<double>(position.y())};
}

QRectF QtScreens::visibleFrame(const QScreen& screen) const {
    if (!windowManager_.panels) {
        return screen.availableGeometry();
    }
    QRectF frame = screen.geometry();
    for (const auto& panel : windowManager_.panels()) {
        frame = without(frame, ScreenGeometry::inPoints(panel, screen));
    }
    return frame;
}

QRectF QtScreens::freePart(const QScreen& screen) const {
    const auto frame = visibleFrame(screen);
    const bool arePanelsUnknown =
        windowManager_.isCompositor && !windowManager_.panels && frame == QRectF(screen.geometry());
    return arePanelsUnknown ? frame.adjusted(0, unknownPanel, 0, -unknownPanel) : frame;
}

Platform::Screen QtScreens::describe(const QScreen& screen) const {
    return {toRect(screen.geometry()), toRect(visibleFrame(screen))};
}

} // namespace QtPlatform
