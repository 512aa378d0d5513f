#pragma once

#include "platform/Image.h"

#include <QColor>
#include <QIcon>

namespace QtPlatform {

/// An icon with a pixmap for each size that panels use. A template image is drawn in `templateColor`. Null
/// when there is no such picture.
QIcon renderIcon(const Platform::Image& image, const QColor& templateColor);

} // namespace QtPlatform
