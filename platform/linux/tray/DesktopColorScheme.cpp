#include "platform/linux/tray/DesktopColorScheme.h"

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

const QVariantList& setting() {
    static const QVariantList names{QStringLiteral("org.freedesktop.appearance"),
                                    QStringLiteral("color-scheme")};
    return names;
}

} // namespace

DesktopColorScheme::DesktopColorScheme(const QDBusConnection& bus, Handler onChange)
    : onChange_(std::move(onChange)),
      changes_(bus, service(), path(), interface(), QStringLiteral("SettingChanged"),
               [this](const QDBusMessage& message) {
                   const auto arguments = message.arguments();
                   if (arguments.size() == 3 && arguments.first(2) == setting()) {
                       report(arguments[2]);
                   }
               }) {
    auto question = QDBusMessage::createMethodCall(service(), path(), interface(), QStringLiteral("Read"));
    question.setArguments(setting());
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(question), &changes_);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, &changes_, [this, answer] {
        const auto arguments = answer->reply().arguments();
        if (!answer->isError() && !arguments.isEmpty()) {
            report(arguments.first());
        }
        answer->deleteLater();
    });
}

void DesktopColorScheme::report(QVariant value) {
    // Portals differ in how often they wrap the number.
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    switch (value.toUInt()) {
    case 1:
        return onChange_(ColorScheme::dark);
    case 2:
        return onChange_(ColorScheme::light);
    default:
        return onChange_(std::nullopt);
    }
}

} // namespace LinuxPlatform
