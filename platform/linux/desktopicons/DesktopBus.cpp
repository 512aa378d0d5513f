#include "platform/linux/desktopicons/DesktopBus.h"

#include <QDBusError>

#include <utility>

namespace LinuxPlatform {
namespace {

constexpr Platform::MainQueue::Seconds restAfterSilence{10};

const QString& busService() {
    static const auto name = QStringLiteral("org.freedesktop.DBus");
    return name;
}

const QString& busPath() {
    static const auto name = QStringLiteral("/org/freedesktop/DBus");
    return name;
}

bool isSilence(const QDBusMessage& answer) {
    const auto error = QDBusError(answer).type();
    return error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut;
}

} // namespace

DesktopBus::DesktopBus(QDBusConnection bus, Platform::MainQueue& clock, std::chrono::milliseconds deadline)
    : bus_(std::move(bus)),
      clock_(clock),
      deadline_(deadline) {}

std::optional<std::set<std::string>> DesktopBus::names() {
    std::set<std::string> names;
    if (!bus_.isConnected()) {
        return names;
    }
    const auto answer = call(busService(), busPath(), busService(), QStringLiteral("ListNames"));
    if (!isReply(answer)) {
        return std::nullopt;
    }
    for (const auto& name : answer.arguments().value(0).toStringList()) {
        names.insert(name.toStdString());
    }
    return names;
}

QDBusMessage DesktopBus::call(const QString& service, const QString& path, const QString& interface,
                              const QString& method, const QVariantList& arguments) {
    auto question = QDBusMessage::createMethodCall(service, path, interface, method);
    question.setArguments(arguments);
    question.setAutoStartService(false);
    if (const auto found = leftAloneUntil_.find(service); found != leftAloneUntil_.end()) {
        if (clock_.now() < found->second) {
            return question.createErrorReply(QDBusError::NoReply, QStringLiteral("left alone"));
        }
        leftAloneUntil_.erase(found);
    }
    auto answer = bus_.call(question, QDBus::Block, static_cast<int>(deadline_.count()));
    if (!isReply(answer) && isSilence(answer)) {
        leftAloneUntil_[service] = clock_.now() + restAfterSilence;
    }
    return answer;
}

std::optional<std::uint32_t> DesktopBus::process(const QString& service) {
    const auto answer =
        call(busService(), busPath(), busService(), QStringLiteral("GetConnectionUnixProcessID"), {service});
    bool isNumber = false;
    const auto process = answer.arguments().value(0).toUInt(&isNumber);
    return isReply(answer) && isNumber ? std::optional<std::uint32_t>(process) : std::nullopt;
}

std::optional<bool> isDone(const QDBusMessage& answer) {
    if (isReply(answer)) {
        return true;
    }
    return isSilence(answer) ? std::nullopt : std::optional(false);
}

} // namespace LinuxPlatform
