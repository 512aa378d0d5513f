#include "platform/linux/savepanel/PortalSavePanel.h"

#include "platform/linux/savepanel/PortalFileFilter.h"

#include <QByteArray>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QMimeDatabase>
#include <QStringList>
#include <QUrl>

#include <filesystem>
#include <system_error>
#include <utility>

namespace LinuxPlatform {
namespace {

const QString fileChooser = QStringLiteral("org.freedesktop.portal.FileChooser");

QVariantMap optionsOf(const Platform::SavePanelOptions& options) {
    const auto type = QString::fromStdString(options.mimeType);
    QVariantMap map{
        {QStringLiteral("modal"), true},
        {QStringLiteral("current_name"), QString::fromStdString(options.proposedName)},
        {QStringLiteral("filters"),
         QVariant::fromValue(QList<PortalFileFilter>{
             {QMimeDatabase().mimeTypeForName(type).comment(), {{PortalFileFilter::Rule::mimeType, type}}}})},
    };
    std::error_code error;
    if (options.folder && std::filesystem::is_directory(*options.folder, error)) {
        // With the zero at its end, as the portal wants it.
        map.insert(QStringLiteral("current_folder"),
                   QByteArray(options.folder->c_str(), static_cast<qsizetype>(options.folder->size() + 1)));
    }
    return map;
}

/// Absent when none was chosen.
std::optional<std::string> chosenFile(const QVariantMap& results) {
    const auto addresses = results.value(QStringLiteral("uris")).toStringList();
    if (addresses.isEmpty()) {
        return std::nullopt;
    }
    const QUrl address(addresses.first());
    return (address.isLocalFile() ? address.toLocalFile() : addresses.first()).toStdString();
}

} // namespace

PortalSavePanel::PortalSavePanel(QDBusConnection bus, std::function<QString()> window,
                                 std::unique_ptr<Platform::SavePanel> otherwise)
    : bus_(std::move(bus)),
      window_(std::move(window)),
      otherwise_(std::move(otherwise)) {
    registerPortalFileFilter();
}

void PortalSavePanel::open(const Platform::SavePanelOptions& options,
                           std::function<void(const std::optional<std::string>& path)> completion) {
    const auto superseded = std::exchange(completion_, std::move(completion));
    version_.reset();
    if (const auto request = std::exchange(request_, nullptr)) {
        request->withdraw();
    }
    if (bus_.isConnected()) {
        askForVersion(options);
    } else {
        openOther(options);
    }
    if (superseded) {
        superseded(std::nullopt);
    }
}

void PortalSavePanel::askForVersion(const Platform::SavePanelOptions& options) {
    version_ = std::make_unique<QObject>();
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setArguments({fileChooser, QStringLiteral("version")});
    auto* const watcher = new QDBusPendingCallWatcher(
        bus_.asyncCall(question, PortalRequest::patience.count()), version_.get());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, version_.get(), [this, watcher, options] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        const bool isThere = reply.isValid() && reply.value().variant().toUInt() >= 1;
        // It is what is calling.
        version_.release()->deleteLater();
        if (isThere) {
            ask(options);
        } else {
            openOther(options);
        }
    });
}

void PortalSavePanel::ask(const Platform::SavePanelOptions& options) {
    request_ = std::make_unique<PortalRequest>(
        bus_,
        PortalRequest::Question{fileChooser,
                                QStringLiteral("SaveFile"),
                                {window_(), QString::fromStdString(options.title)},
                                optionsOf(options)},
        [this, options](std::optional<unsigned> response, const QVariantMap& results) {
            // Kept until here: it is what is calling.
            const auto request = std::move(request_);
            if (!response) {
                openOther(options);
                return;
            }
            const auto completion = std::exchange(completion_, nullptr);
            completion(chosenFile(results));
        });
}

void PortalSavePanel::openOther(const Platform::SavePanelOptions& options) {
    otherwise_->open(options, std::exchange(completion_, nullptr));
}

} // namespace LinuxPlatform
