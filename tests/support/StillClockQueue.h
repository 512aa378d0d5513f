#pragma once

#include "platform/qt/QtMainQueue.h"

namespace TestSupport {

/// The event loop's queue with a clock that stands still: however long the machine stalls, nobody's patience
/// ends because of what the clock says.
class StillClockQueue : public QtPlatform::QtMainQueue {
public:
    Seconds now() const override { return Seconds(0); }
};

} // namespace TestSupport
