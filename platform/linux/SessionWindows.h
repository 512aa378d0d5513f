#pragma once

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/session/SessionEnvironment.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/x11/X11Connection.h"

#include <memory>
#include <optional>

namespace LinuxPlatform {

/// Whether a script in KWin is to list and hide the windows of this session, as Curtain itself loads one.
bool isScriptedKWin(const SessionEnvironment& environment);

/// Whether GNOME Shell has this session's windows and keys, for Curtain's extension to be asked for them.
bool isGnomeShell(const SessionEnvironment& environment);

/// Whether the windows of this session have the same identifiers in the next run of this program.
bool hasLastingWindowIdentifiers(const SessionEnvironment& environment);

/// What lists and hides the windows of this session. `x11` may be null, where there is no X server; it and
/// the queue outlive the result. `takenWindows` is where it is written down what was hidden, for sessions
/// that do not remember where a window stood. `log`, which outlives the result, is told what the session
/// refuses; null where nobody reads it.
std::unique_ptr<WindowSystem> windowsOfSession(const SessionEnvironment& environment, X11Connection* x11,
                                               Platform::MainQueue& queue,
                                               std::optional<EarlierValue> takenWindows = std::nullopt,
                                               Platform::Log* log = nullptr);

} // namespace LinuxPlatform
