#include "platform/qt/QtUuidSource.h"

#include <QUuid>

namespace QtPlatform {

std::string QtUuidSource::makeUuid() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace QtPlatform
