#pragma once

#include "platform/MainQueue.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace LinuxPlatform {

/// Asks services of the session bus and waits for the answer, but not for long, and starts none. One that did
/// not answer in time is left alone for a while. Main thread only.
class DesktopBus {
public:
    /// `clock` outlives this object.
    DesktopBus(QDBusConnection bus, Platform::MainQueue& clock,
               std::chrono::milliseconds deadline = std::chrono::seconds(1));

    /// Absent when the bus does not answer; empty when there is none.
    std::optional<std::set<std::string>> names();
    /// The reply or an error.
    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {});
    /// The process that owns a name.
    std::optional<std::uint32_t> process(const QString& service);

private:
    QDBusConnection bus_;
    Platform::MainQueue& clock_;
    std::chrono::milliseconds deadline_;
    std::map<QString, Platform::MainQueue::Seconds> leftAloneUntil_;
};

inline bool isReply(const QDBusMessage& message) {
    return message.type() == QDBusMessage::ReplyMessage;
}

/// Whether the service did what it was asked for; absent when it has not said so yet.
std::optional<bool> isDone(const QDBusMessage& answer);

} // namespace LinuxPlatform
