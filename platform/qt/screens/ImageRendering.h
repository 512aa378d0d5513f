#pragma once

#include "platform/Image.h"

#include <QColor>
#include <QImage>

namespace QtPlatform {

/// The picture with `size` pixels on each side. A template image is drawn in `templateColor`. Null when there
/// is no such picture. Files may be drawn on any thread, names of icons on the main thread only.
QImage renderImage(const Platform::Image& image, const QColor& templateColor, int size);

} // namespace QtPlatform
