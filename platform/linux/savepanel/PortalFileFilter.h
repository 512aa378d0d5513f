#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

namespace LinuxPlatform {

/// Which files org.freedesktop.portal.FileChooser shows: `(sa(us))`.
struct PortalFileFilter {
    struct Rule {
        static constexpr uint mimeType = 1;

        uint kind = mimeType;
        QString value;
    };

    QString name;
    QList<Rule> rules;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalFileFilter::Rule& rule);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFileFilter::Rule& rule);
QDBusArgument& operator<<(QDBusArgument& argument, const PortalFileFilter& filter);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFileFilter& filter);

/// Before the first is sent or read.
void registerPortalFileFilter();

} // namespace LinuxPlatform

Q_DECLARE_METATYPE(LinuxPlatform::PortalFileFilter::Rule)
Q_DECLARE_METATYPE(LinuxPlatform::PortalFileFilter)
