#pragma once

#include <optional>

namespace Platform {

/// Why no app can be hidden.
enum class HidingObstacle {
    /// The session's windows are those of a Wayland compositor that lets nobody hide them.
    waylandSession,
    /// Nothing manages the windows.
    noWindowManager,
    /// What hides them is installed, and the desktop loads it when its next session begins.
    nextSessionNeeded,
    /// Something manages the windows, and does not do what it is asked when one is to be hidden.
    windowManagerIgnoresHiding,
    /// What hides them would be an extension of the desktop's shell, and it is not installed.
    extensionMissing,
    /// It is installed and switched off.
    extensionOff,
    /// It is there and does not work.
    extensionFails,
    /// The session has not answered yet.
    notKnownYet,
};

/// Main thread only; answers at once.
class SystemVersion {
public:
    virtual ~SystemVersion() = default;

    /// 14 where apps can be hidden, 0 where they cannot and where that is not known yet.
    virtual int majorVersion() = 0;
    /// Absent only where apps can be hidden.
    virtual std::optional<HidingObstacle> hidingObstacle() = 0;
    /// Does on the user's word what can be done here about `extensionOff`; nothing about other obstacles. The
    /// obstacle says what came of it, and is `notKnownYet` until then.
    virtual void switchExtensionOn() = 0;
};

} // namespace Platform
