#include "platform/linux/donotdisturb/BusQuietRoad.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>

#include <chrono>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::chrono::milliseconds waitingPatience{500};

std::optional<bool> isDone(const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return true;
    }
    const auto error = QDBusError(answer).type();
    const bool isSilence =
        error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut;
    return isSilence ? std::nullopt : std::optional(false);
}

} // namespace

void BusQuietRoad::read(std::function<void(std::optional<std::string> state)> onState) {
    call(question(), [this, onState = std::move(onState)](const auto& answer) { onState(stateIn(answer)); });
}

void BusQuietRoad::write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) {
    call(order(state), [this, onDone = std::move(onDone)](const auto& answer) {
        const auto done = isDone(answer);
        if (done == true) {
            ordered(answer);
        }
        onDone(done);
    });
}

void BusQuietRoad::follow(const QString& sender, const QString& path, const QString& interface,
                          const QString& name) {
    signals_.push_back(
        std::make_unique<DBusSignal>(bus_, sender, path, interface, name, [this](const auto& /*message*/) {
            if (onNews) {
                onNews();
            }
        }));
}

void BusQuietRoad::call(const QDBusMessage& message,
                        std::function<void(const QDBusMessage& answer)> onAnswer) {
    auto unaided = message;
    unaided.setAutoStartService(false);
    if (isWaiting_) {
        onAnswer(bus_.call(unaided, QDBus::Block, static_cast<int>(waitingPatience.count())));
        return;
    }
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(unaided), &calls_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &calls_,
                     [watcher, onAnswer = std::move(onAnswer)] {
                         watcher->deleteLater();
                         onAnswer(watcher->reply());
                     });
}

} // namespace LinuxPlatform
