#include "platform/linux/savepanel/PortalFileFilter.h"

#include <QDBusMetaType>

namespace LinuxPlatform {

QDBusArgument& operator<<(QDBusArgument& argument, const PortalFileFilter::Rule& rule) {
    argument.beginStructure();
    argument << rule.kind << rule.value;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFileFilter::Rule& rule) {
    argument.beginStructure();
    argument >> rule.kind >> rule.value;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const PortalFileFilter& filter) {
    argument.beginStructure();
    argument << filter.name << filter.rules;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFileFilter& filter) {
    argument.beginStructure();
    argument >> filter.name >> filter.rules;
    argument.endStructure();
    return argument;
}

void registerPortalFileFilter() {
    qDBusRegisterMetaType<PortalFileFilter::Rule>();
    qDBusRegisterMetaType<QList<PortalFileFilter::Rule>>();
    qDBusRegisterMetaType<PortalFileFilter>();
    qDBusRegisterMetaType<QList<PortalFileFilter>>();
}

} // namespace LinuxPlatform
