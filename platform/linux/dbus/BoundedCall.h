#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <chrono>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// One question over a message bus that need not be answered. Its end is no answer. Main thread only; nothing
/// here waits.
class BoundedCall {
public:
    /// A reply or an error; absent where none has come in time.
    using Answered = std::function<void(const std::optional<QDBusMessage>& answer)>;

    /// `answered` is called once, not before the constructor has returned, and may end the call. `queue`
    /// outlives it, and tells the time.
    BoundedCall(const QDBusConnection& bus, Platform::MainQueue& queue, const QDBusMessage& question,
                std::chrono::milliseconds patience, Answered answered);

private:
    void settle(const std::optional<QDBusMessage>& answer);

    Answered answered_;
    Platform::Lifetime lifetime_;
    /// Receives the answer.
    QObject context_;
};

} // namespace LinuxPlatform
