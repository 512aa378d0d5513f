#pragma once

#include <QPoint>
#include <QRect>
#include <QRectF>

#include <optional>

class QScreen;

/// Conversions between pixels of the whole screen, which panels and X11 speak, and Qt's units, here called
/// points. The corner of a screen is where its pixels begin.
namespace QtPlatform::ScreenGeometry {

/// Null when no screen shows that pixel.
QScreen* screenAt(const QPoint& pixel);
QRectF inPoints(const QRect& pixels, const QScreen& screen);
/// The pixel under the pointer; absent where a program does not learn where the pointer is outside its
/// windows.
std::optional<QPoint> pointer();

} // namespace QtPlatform::ScreenGeometry
