#include "platform/qt/screens/ScreenGeometry.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace QtPlatform::ScreenGeometry {

QScreen* screenAt(const QPoint& pixel) {
    const auto screens = QGuiApplication::screens();
    const auto found = std::ranges::find_if(screens, [&](const auto* screen) {
        return QRect(screen->geometry().topLeft(), screen->geometry().size() * screen->devicePixelRatio())
            .contains(pixel);
    });
    return found == screens.end() ? nullptr : *found;
}

QRectF inPoints(const QRect& pixels, const QScreen& screen) {
    const auto corner = screen.geometry().topLeft();
    const auto ratio = screen.devicePixelRatio();
    const QPointF offset = QPointF(pixels.topLeft() - corner) / ratio;
    return {QPointF(corner) + offset, QSizeF(pixels.size()) / ratio};
}

QPoint inPixels(const QPoint& point, const QScreen& screen) {
    const auto corner = screen.geometry().topLeft();
    return corner + (point - corner) * screen.devicePixelRatio();
}

double fittingScale(const QSizeF& wanted, const QSizeF& room) {
    constexpr double smallest = 0.5;
    return room.isEmpty()
               ? 1
               : std::clamp(std::min(room.width() / wanted.width(), room.height() / wanted.height()),
                            smallest, 1.0);
}

std::optional<QPoint> pointer() {
    const auto position = QCursor::pos();
    const auto* const screen = QGuiApplication::screenAt(position);
    return screen != nullptr ? std::optional(inPixels(position, *screen)) : std::nullopt;
}

QScreen* userScreen(bool isPointerKnown) {
    auto* const atPointer = isPointerKnown ? QGuiApplication::screenAt(QCursor::pos()) : nullptr;
    return atPointer != nullptr ? atPointer : QGuiApplication::primaryScreen();
}

} // namespace QtPlatform::ScreenGeometry
