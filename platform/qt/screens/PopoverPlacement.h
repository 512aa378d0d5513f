#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

namespace QtPlatform::PopoverPlacement {

/// The top left corner of a popover that hangs from a status item, wholly inside the visible frame as far as
/// it fits. All in points. `item` is absent when nobody knows where it is: then the popover goes into the
/// corner where panels have their trays.
QPointF topLeft(const std::optional<QRectF>& item, const QSizeF& popover, const QRectF& screen,
                const QRectF& visibleFrame, bool isRightToLeft);

/// How large a popover is drawn: 1, or less where the visible frame is too small for it.
double scale(const QSizeF& popover, const QRectF& visibleFrame);

} // namespace QtPlatform::PopoverPlacement
