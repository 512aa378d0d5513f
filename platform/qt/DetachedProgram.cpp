#include "platform/qt/DetachedProgram.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace QtPlatform {

bool startDetached(const std::vector<std::string>& command) {
    const auto program =
        QStandardPaths::findExecutable(command.empty() ? QString() : QString::fromStdString(command.front()));
    if (program.isEmpty()) {
        return false;
    }
    QStringList arguments;
    for (std::size_t index = 1; index < command.size(); ++index) {
        arguments.append(QString::fromStdString(command[index]));
    }
    return QProcess::startDetached(program, arguments);
}

} // namespace QtPlatform
