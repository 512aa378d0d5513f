#include "platform/linux/dbus/PortalSetting.h"

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <utility>

namespace LinuxPlatform {
namespace {

const QString& service() {
    static const auto name = QStringLiteral("org.freedesktop.portal.Desktop");
    return name;
}

const QString& path() {
    static const auto name = QStringLiteral("/org/freedesktop/portal/desktop");
    return name;
}

const QString& interface() {
    static const auto name = QStringLiteral("org.freedesktop.portal.Settings");
    return name;
}

} // namespace

PortalSetting::PortalSetting(const QDBusConnection& bus, const QString& group, const QString& key,
                             Handler onValue)
    : onValue_(std::move(onValue)),
      changes_(bus, service(), path(), interface(), QStringLiteral("SettingChanged"),
               [this, group, key](const QDBusMessage& message) {
                   const auto arguments = message.arguments();
                   if (arguments.size() == 3 && arguments[0] == group && arguments[1] == key) {
                       report(arguments[2]);
                   }
               }) {
    auto question = QDBusMessage::createMethodCall(service(), path(), interface(), QStringLiteral("Read"));
    question.setArguments({group, key});
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(question), &changes_);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, &changes_, [this, answer] {
        const auto arguments = answer->reply().arguments();
        if (!answer->isError() && !arguments.isEmpty()) {
            report(arguments.first());
        }
        answer->deleteLater();
    });
}

void PortalSetting::report(QVariant value) {
    // Portals differ in how often they wrap the value.
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    onValue_(value);
}

} // namespace LinuxPlatform
