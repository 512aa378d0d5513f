#pragma once

#include "platform/Subscription.h"

#include <functional>

namespace QtPlatform {

/// Calls `handler` on the main thread when the process is asked to end (SIGINT, SIGTERM, SIGHUP), so that it
/// can leave the event loop and clean up. A signal that the process was started to ignore stays ignored. One
/// subscription a process.
Platform::Subscription onTerminationSignal(std::function<void()> handler);

/// Whether such a signal has come that `handler` was not told of any more: for whoever goes on after the end.
bool isTerminationPending();

} // namespace QtPlatform
