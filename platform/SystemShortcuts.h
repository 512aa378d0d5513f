#pragma once

#include "platform/HotKeyService.h"

#include <functional>

namespace Platform {

/// Tells which key combinations the desktop or another program has taken.
class SystemShortcuts {
public:
    /// Receives whether the combination is known to be taken.
    using Answer = std::function<void(bool isTaken)>;

    virtual ~SystemShortcuts() = default;

    /// `answer` is called once, on the main queue, and never from inside this call. Whoever has not answered
    /// within a second is not waited for. Main thread only.
    virtual void isTaken(const HotKeyCombination& combination, Answer answer) = 0;
};

} // namespace Platform
