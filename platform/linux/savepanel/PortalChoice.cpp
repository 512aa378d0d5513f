#include "platform/linux/savepanel/PortalChoice.h"

#include <QFileInfo>
#include <QMimeDatabase>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace LinuxPlatform {
namespace {

/// Whether the path is one of those under which the portal hands single files into a sandbox.
bool isHandedIn(const QString& path) {
    const auto runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !runtime.isEmpty() && path.startsWith(runtime + QStringLiteral("/doc/"));
}

QString withEnding(const QString& path, const std::string& mimeType) {
    const auto kind = QMimeDatabase().mimeTypeForName(QString::fromStdString(mimeType));
    if (!kind.isValid() || kind.suffixes().contains(QFileInfo(path).suffix(), Qt::CaseInsensitive) ||
        isHandedIn(path)) {
        return path;
    }
    const auto complete = path + QLatin1Char('.') + kind.preferredSuffix();
    // The dialog has not asked whether to replace that one.
    const QFileInfo file(complete);
    return file.exists() || file.isSymLink() ? path : complete;
}

} // namespace

std::optional<std::string> portalChoice(const QVariantMap& results, const std::string& mimeType) {
    const auto addresses = results.value(QStringLiteral("uris")).toStringList();
    if (addresses.isEmpty()) {
        return std::nullopt;
    }
    const QUrl address(addresses.first());
    return (address.isLocalFile() ? withEnding(address.toLocalFile(), mimeType) : addresses.first())
        .toStdString();
}

} // namespace LinuxPlatform
