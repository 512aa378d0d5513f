#pragma once

#include "platform/CaptureServices.h"

#include <QImage>
#include <QRectF>
#include <QSize>

namespace QtPlatform {

/// The part of a picture at a size in pixels, smoothed where it is larger or smaller. The toolkit's own
/// painter would wake several threads for that with every picture. `part` lies inside the picture, and
/// neither it nor `size` is empty.
QImage fitted(const Platform::Picture& picture, const QRectF& part, const QSize& size, bool isMirrored);

} // namespace QtPlatform
