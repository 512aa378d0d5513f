#include "platform/linux/shortcutlists/XfconfShortcuts.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {
namespace {

QVariantMap mapIn(const QDBusMessage& reply) {
    const auto arguments = reply.arguments();
    return arguments.isEmpty() ? QVariantMap() : qdbus_cast<QVariantMap>(arguments.first());
}

/// Properties are named /commands/custom/<Primary><Alt>t. The defaults count until the user has lists of his
/// own.
bool holds(const QVariantMap& properties, const WantedShortcut& wanted) {
    for (const auto* const group : {"/commands/", "/xfwm4/"}) {
        const auto custom = QLatin1String(group) + QLatin1String("custom/");
        const bool hasCustom = std::ranges::any_of(
            properties.keys(), [&](const QString& name) { return name.startsWith(custom); });
        const auto prefix = hasCustom ? custom : QLatin1String(group) + QLatin1String("default/");
        for (auto property = properties.begin(); property != properties.end(); ++property) {
            const bool isUsed = property.key().startsWith(prefix) && !property.value().toString().isEmpty();
            if (isUsed &&
                wanted.matches(Accelerator::fromGtk(property.key().mid(prefix.size()).toStdString()))) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

XfconfShortcuts::XfconfShortcuts(QDBusConnection bus) : bus_(std::move(bus)) {}

void XfconfShortcuts::ask(const WantedShortcut& wanted, Answer answer) {
    auto call =
        QDBusMessage::createMethodCall(QStringLiteral("org.xfce.Xfconf"), QStringLiteral("/org/xfce/Xfconf"),
                                       QStringLiteral("org.xfce.Xfconf"), QStringLiteral("GetAllProperties"));
    call.setArguments({QStringLiteral("xfce4-keyboard-shortcuts"), QStringLiteral("/")});
    call.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), &questions_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &questions_,
                     [watcher, wanted, answer = std::move(answer)] {
                         watcher->deleteLater();
                         answer(!watcher->isError() && holds(mapIn(watcher->reply()), wanted));
                     });
}

} // namespace LinuxPlatform
