#include "platform/linux/windows/gnome/GnomeExtensionState.h"

#include "platform/linux/windows/gnome/GnomeShellProtocol.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QVariantMap>

#include <utility>

namespace LinuxPlatform {

using namespace GnomeShellProtocol;

namespace {

/// As in GNOME Shell 43, js/misc/extensionUtils.js, ExtensionState; later versions have other words for the
/// same numbers.
GnomeExtensionState::State stateIn(const QVariantMap& information) {
    using State = GnomeExtensionState::State;
    switch (information.value(QStringLiteral("state")).toInt()) {
    case 1:
        return State::on;
    case 2:
    case 6:
    case 7:
        return State::off;
    case 3:
    case 4:
        return State::failed;
    case 5:
    case 8:
        return State::notKnownYet;
    default:
        return State::notFound;
    }
}

} // namespace

GnomeExtensionState::GnomeExtensionState(const QDBusConnection& bus, std::function<void()> onChange)
    : bus_(bus),
      onChange_(std::move(onChange)),
      changed_(bus, shellService, shellPath, extensionsInterface, QStringLiteral("ExtensionStateChanged"),
               [this](const QDBusMessage& message) {
                   if (message.arguments().value(0).toString() == extensionUuid) {
                       ask();
                   }
               }),
      shell_(bus, shellService, [this] { ask(); }) {}

void GnomeExtensionState::ask() {
    answer_.reset();
    if (shell_.owner().isEmpty()) {
        settle(State::noShell);
        return;
    }
    auto question = QDBusMessage::createMethodCall(shell_.owner(), shellPath, extensionsInterface,
                                                   QStringLiteral("GetExtensionInfo"));
    question.setArguments({extensionUuid});
    answer_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(question));
    QObject::connect(answer_.get(), &QDBusPendingCallWatcher::finished, answer_.get(), [this] {
        const auto information = qdbus_cast<QVariantMap>(answer_->reply().arguments().value(0));
        settle(answer_->isError() ? State::failed : stateIn(information));
    });
}

void GnomeExtensionState::switchOn() {
    if (state_ != State::off) {
        return;
    }
    auto request = QDBusMessage::createMethodCall(shell_.owner(), shellPath, extensionsInterface,
                                                  QStringLiteral("EnableExtension"));
    request.setArguments({extensionUuid});
    settle(State::notKnownYet);
    answer_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(request));
    QObject::connect(
        answer_.get(), &QDBusPendingCallWatcher::finished, answer_.get(), [this] { ask(); },
        // What it answers to may take its place.
        Qt::QueuedConnection);
}

void GnomeExtensionState::settle(State state) {
    if (std::exchange(state_, state) != state) {
        onChange_();
    }
}

} // namespace LinuxPlatform
