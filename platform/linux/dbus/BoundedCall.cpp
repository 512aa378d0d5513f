#include "platform/linux/dbus/BoundedCall.h"

#include <QDBusPendingCallWatcher>

#include <limits>
#include <utility>

namespace LinuxPlatform {

BoundedCall::BoundedCall(const QDBusConnection& bus, Platform::MainQueue& queue, const QDBusMessage& question,
                         std::chrono::milliseconds patience, Answered answered)
    : answered_(std::move(answered)) {
    // The bus library has a clock of its own, which is not that of the queue.
    constexpr auto never = std::numeric_limits<int>::max();
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(question, never), &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_, [this, watcher] {
        watcher->deleteLater();
        settle(watcher->reply());
    });
    queue.asyncAfter(patience, lifetime_.weak([this] { settle(std::nullopt); }));
}

void BoundedCall::settle(const std::optional<QDBusMessage>& answer) {
    if (const auto answered = std::exchange(answered_, nullptr)) {
        answered(answer);
    }
}

} // namespace LinuxPlatform
