#include "platform/linux/windows/gnome/GnomeShellLink.h"

#include "platform/linux/windows/gnome/GnomeShellProtocol.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QList>
#include <QVariant>

#include <utility>

namespace LinuxPlatform {

using namespace GnomeShellProtocol;

namespace {

QVariant idsOf(std::span<const WindowId> windows) {
    QList<qulonglong> ids;
    for (const auto window : windows) {
        ids.append(window);
    }
    return QVariant::fromValue(ids);
}

std::vector<WindowId> idsIn(const QVariant& value) {
    const auto ids = qdbus_cast<QList<qulonglong>>(value);
    return {ids.begin(), ids.end()};
}

GnomeWindow windowIn(const QDBusArgument& argument) {
    qulonglong id = 0;
    QString instanceName;
    QString className;
    QString application;
    QString sandbox;
    unsigned process = 0;
    GnomeWindow window;
    argument.beginStructure();
    argument >> id >> instanceName >> className >> application >> sandbox >> process >> window.isHidden >>
        window.isInTaskList >> window.isHere;
    argument.endStructure();
    window.id = id;
    window.hints = {instanceName.toStdString(), className.toStdString(), sandbox.toStdString(),
                    application.toStdString(), std::nullopt};
    if (process != 0) {
        window.hints.process = process;
    }
    return window;
}

std::vector<GnomeWindow> windowsIn(const QVariant& value) {
    const auto argument = value.value<QDBusArgument>();
    std::vector<GnomeWindow> windows;
    argument.beginArray();
    while (!argument.atEnd()) {
        windows.push_back(windowIn(argument));
    }
    argument.endArray();
    return windows;
}

} // namespace

GnomeShellLink::GnomeShellLink(const QDBusConnection& bus, Handlers handlers)
    : bus_(bus),
      handlers_(std::move(handlers)),
      changed_(bus, extensionService, extensionPath, extensionInterface, QStringLiteral("Changed"),
               [this](const QDBusMessage& message) { receive(message); }),
      shell_(bus, shellService, [this] { meet(); }),
      extension_(bus, extensionService, [this] { meet(); }) {}

void GnomeShellLink::meet() {
    if (!shell_.isKnown() || !extension_.isKnown()) {
        return;
    }
    conversation_ = std::make_unique<QObject>();
    // Whoever else has the extension's name can hide nothing.
    if (extension_.owner().isEmpty() || extension_.owner() != shell_.owner()) {
        settle(State::absent);
        return;
    }
    settle(State::notKnownYet);
    askToWatch();
}

void GnomeShellLink::askToWatch() {
    auto question = QDBusMessage::createMethodCall(extension_.owner(), extensionPath, extensionInterface,
                                                   QStringLiteral("Watch"));
    question.setArguments({version});
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), conversation_.get());
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, conversation_.get(),
                     [this, answer] { noteWatch(*answer); });
}

void GnomeShellLink::noteWatch(QDBusPendingCallWatcher& answer) {
    answer.deleteLater();
    // A shell that was busy for too long may answer now.
    if (answer.isError() && answer.error().type() == QDBusError::NoReply) {
        askToWatch();
        return;
    }
    const auto arguments = answer.reply().arguments();
    const bool isFit = !answer.isError() && arguments.value(0).toUInt() == version;
    settle(isFit ? State::up : State::unfit);
}

void GnomeShellLink::settle(State state) {
    if (std::exchange(state_, state) != state) {
        handlers_.onStateChange();
    }
}

void GnomeShellLink::receive(const QDBusMessage& message) {
    const bool isAwaited = state_ == State::up || state_ == State::notKnownYet;
    if (!isAwaited || message.signature() != changedSignature) {
        return;
    }
    const auto arguments = message.arguments();
    GnomeWindowReport report{windowsIn(arguments[0]), idsIn(arguments[1]), idsIn(arguments[2]), std::nullopt};
    if (const auto focused = arguments[3].toULongLong(); focused != 0) {
        report.focused = focused;
    }
    handlers_.onReport(report);
}

void GnomeShellLink::hide(std::span<const WindowId> windows, Done done) {
    call(QStringLiteral("Hide"), {idsOf(windows)}, std::move(done));
}

void GnomeShellLink::show(std::span<const WindowId> windows) {
    call(QStringLiteral("Show"), {idsOf(windows)}, [](bool) {});
}

void GnomeShellLink::activate(WindowId window) {
    call(QStringLiteral("Activate"), {QVariant::fromValue<qulonglong>(window)}, [](bool) {});
}

void GnomeShellLink::call(const QString& method, const QVariantList& arguments, Done done) {
    if (state_ != State::up) {
        return;
    }
    auto request =
        QDBusMessage::createMethodCall(extension_.owner(), extensionPath, extensionInterface, method);
    request.setArguments(arguments);
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(request), conversation_.get());
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, conversation_.get(),
                     [answer, done = std::move(done)] {
                         answer->deleteLater();
                         done(!answer->isError());
                     });
}

} // namespace LinuxPlatform
