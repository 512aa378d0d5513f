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

} // namespace QtPlatform::PopoverPlacement
