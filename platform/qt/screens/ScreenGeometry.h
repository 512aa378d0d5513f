#pragma once

#include <QPoint>
#include <QRect>
#include <QRectF>
#include <QSizeF>

#include <optional>

class QScreen;

/// Conversions between pixels of the whole screen, which panels and X11 speak, and Qt's units, here called
/// points. The corner of a screen is where its pixels begin.
namespace QtPlatform::ScreenGeometry {

/// Null when no screen shows that pixel.
QScreen* screenAt(const QPoint& pixel);
QRectF inPoints(const QRect& pixels, const QScreen& screen);
QPoint inPixels(const QPoint& point, const QScreen& screen);
/// 1, or less where something has to be drawn smaller to fit into the room there is; never too small to be
/// read. Where no room is known there is enough.
double fittingScale(const QSizeF& wanted, const QSizeF& room);
/// The pixel under the pointer; absent when no screen shows it. To be asked only where a program learns where
/// the pointer is also outside its windows.
std::optional<QPoint> pointer();
/// The screen that the user works on: the one with the pointer where that is known, or else the first. Null
/// without any.
QScreen* userScreen(bool isPointerKnown);

} // namespace QtPlatform::ScreenGeometry
