#pragma once

#include <QPoint>
#include <QRect>
#include <QRectF>

class QScreen;

/// Conversions between pixels of the whole screen, which panels and X11 speak, and Qt's units, here called
/// points. The corner of a screen is where its pixels begin.
namespace QtPlatform::ScreenGeometry {

/// Null when no screen shows that pixel.
QScreen* screenAt(const QPoint& pixel);
QRectF inPoints(const QRect& pixels, const QScreen& screen);

} // namespace QtPlatform::ScreenGeometry
