#include "platform/linux/tray/StatusNotifierHosts.h"

#include "platform/linux/tray/StatusNotifierProtocol.h"

#include <QDBusVariant>

#include <limits>
#include <utility>

namespace LinuxPlatform {

using namespace StatusNotifierProtocol;

StatusNotifierHosts::StatusNotifierHosts(const QDBusConnection& bus, const QString& service,
                                         std::function<void()> onChange)
    : bus_(bus),
      onChange_(std::move(onChange)),
      owner_(bus, service, [this] { ownerChanged(); }),
      hostCame_(bus, service, watcherPath, watcherInterface, QStringLiteral("StatusNotifierHostRegistered"),
                [this](const auto&) { ask(); }),
      hostLeft_(bus, service, watcherPath, watcherInterface, QStringLiteral("StatusNotifierHostUnregistered"),
                [this](const auto&) { ask(); }) {}

void StatusNotifierHosts::ownerChanged() {
    answer_.reset();
    if (isKnown_ || owner_.owner().isEmpty()) {
        settle({});
    }
    ask();
}

void StatusNotifierHosts::ask() {
    if (owner_.owner().isEmpty()) {
        return;
    }
    auto question = QDBusMessage::createMethodCall(owner_.owner(), watcherPath, propertiesInterface,
                                                   QStringLiteral("Get"));
    question.setArguments({watcherInterface, QStringLiteral("IsStatusNotifierHostRegistered")});
    // Nobody waits, so a watcher that is stopped may answer whenever it goes on.
    answer_ =
        std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(question, std::numeric_limits<int>::max()));
    QObject::connect(answer_.get(), &QDBusPendingCallWatcher::finished, answer_.get(), [this] {
        const auto arguments = answer_->reply().arguments();
        const bool hasHost = !answer_->isError() && !arguments.isEmpty() &&
                             arguments.first().value<QDBusVariant>().variant().toBool();
        settle(hasHost ? owner_.owner() : QString());
    });
}

void StatusNotifierHosts::settle(const QString& watcher) {
    if (std::exchange(isKnown_, true) && watcher == watcher_) {
        return;
    }
    watcher_ = watcher;
    onChange_();
}

} // namespace LinuxPlatform
