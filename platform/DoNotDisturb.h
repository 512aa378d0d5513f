#pragma once

#include "platform/Subscription.h"

#include <functional>
#include <optional>

namespace Platform {

/// The desktop's switch that keeps notices from the screen. Nothing here waits for the desktop's answer,
/// except the destructor and, where the switch is a setting or a file, whatever turns it: until that is
/// stored, a setting for half a second at most. Main thread only.
class DoNotDisturb {
public:
    /// What the desktop does with notices while the switch is on.
    struct Habits {
        /// Even those go that were on the screen before.
        bool hidesShown = false;
        /// What was kept from the screen appears when the switch is turned off.
        bool showsHeldAfterwards = false;

        bool operator==(const Habits&) const = default;
    };

    virtual ~DoNotDisturb() = default;

    /// Absent where the desktop does not say.
    virtual std::optional<bool> isOn() = 0;
    /// Told of every change of `isOn`, as far as the desktop announces them.
    virtual Subscription addObserver(std::function<void()> onChange) = 0;
    virtual Habits habits() const = 0;

    /// Turns the switch on until `giveBack`. One that is on already is left alone, and so is one that its
    /// user turns meanwhile. Whether it came to be on, `isOn` tells. What is held outlives this object, for a
    /// later run to give back.
    virtual void hold() = 0;
    /// Leaves the switch as it was before `hold`, be it one of an earlier run, unless its user has turned it
    /// since.
    virtual void giveBack() = 0;
    /// Whether something is to be given back.
    virtual bool isHeld() const = 0;
};

} // namespace Platform
