#include "platform/qt/QtResources.h"

#include <QCoreApplication>
#include <QFile>

namespace QtPlatform {
namespace {

std::optional<std::string> pathIfThere(const std::string& path) {
    return QFile::exists(QString::fromStdString(path)) ? std::optional(path) : std::nullopt;
}

} // namespace

std::optional<std::string> QtResources::pathForResource(const std::string& name,
                                                        const std::string& extension) {
    // Qt draws no PDF.
    return pathIfThere(":/curtain/" + name + "." + (extension == "pdf" ? "svg" : extension));
}

std::optional<std::string> QtResources::shortVersion() {
    const auto version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? std::nullopt : std::optional(version.toStdString());
}

std::optional<std::string> QtResources::pathForSystemSymbol(const std::string& name) {
    return pathIfThere(":/curtain/symbols/" + name + ".svg");
}

} // namespace QtPlatform
