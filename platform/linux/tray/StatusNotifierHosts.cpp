#include "platform/linux/tray/StatusNotifierHosts.h"

#include "platform/linux/tray/StatusNotifierProtocol.h"

#include <QDBusVariant>

#include <limits>
#include <utility>

namespace LinuxPlatform {

using namespace StatusNotifierProtocol;

StatusNotifierHosts::StatusNotifierHosts(const QDBusConnection& bus, std::function<void()> onChange)
    : bus_(bus),
      onChange_(std::move(onChange)),
      owner_(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange),
      hostCame_(bus, watcherService, watcherPath, watcherInterface,
                QStringLiteral("StatusNotifierHostRegistered"), [this](const auto&) { ask(); }),
      hostLeft_(bus, watcherService, watcherPath, watcherInterface,
                QStringLiteral("StatusNotifierHostUnregistered"), [this](const auto&) { ask(); }) {
    QObject::connect(&owner_, &QDBusServiceWatcher::serviceOwnerChanged, &owner_,
                     [this](const QString&, const QString&, const QString& newOwner) {
                         answer_.reset();
                         settle({});
                         if (!newOwner.isEmpty()) {
                             ask();
                         }
                     });
    ask();
}

void StatusNotifierHosts::ask() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath, propertiesInterface,
                                                   QStringLiteral("Get"));
    question.setArguments({watcherInterface, QStringLiteral("IsStatusNotifierHostRegistered")});
    question.setAutoStartService(false);
    // Nobody waits, so a watcher that is stopped may answer whenever it goes on.
    answer_ =
        std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(question, std::numeric_limits<int>::max()));
    QObject::connect(answer_.get(), &QDBusPendingCallWatcher::finished, &owner_, [this] {
        const auto reply = answer_->reply();
        const auto arguments = reply.arguments();
        const bool hasHost = !answer_->isError() && !arguments.isEmpty() &&
                             arguments.first().value<QDBusVariant>().variant().toBool();
        settle(hasHost ? reply.service() : QString());
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
