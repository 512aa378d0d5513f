#include "platform/linux/savepanel/PortalSavePanel.h"

#include "platform/linux/savepanel/PortalChoice.h"
#include "platform/linux/savepanel/PortalFileFilter.h"

#include <QByteArray>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QMimeDatabase>

#include <filesystem>
#include <system_error>
#include <utility>

namespace LinuxPlatform {
namespace {

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
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

/// 0 where it tells none.
unsigned versionIn(const QDBusMessage& answer) {
    return answer.arguments().value(0).value<QDBusVariant>().variant().toUInt();
}

} // namespace

PortalSavePanel::PortalSavePanel(QDBusConnection bus, Platform::MainQueue& queue,
                                 std::function<QString()> window,
                                 std::unique_ptr<Platform::SavePanel> otherwise)
    : bus_(std::move(bus)),
      queue_(queue),
      window_(std::move(window)),
      otherwise_(std::move(otherwise)),
      portal_(bus_, portalName, [] {}) {
    registerPortalFileFilter();
}

void PortalSavePanel::open(const Platform::SavePanelOptions& options,
                           std::function<void(const std::optional<std::string>& path)> completion) {
    const auto superseded = std::exchange(completion_, std::move(completion));
    version_.reset();
    if (const auto request = std::exchange(request_, nullptr)) {
        request->withdraw();
    }
    if (othersOpen_ > 0 || isPortalSilent() || !bus_.isConnected()) {
        openOther(options);
    } else {
        askForVersion({options, window_(), portal_.owner()});
    }
    if (superseded) {
        superseded(std::nullopt);
    }
}

void PortalSavePanel::askForVersion(const Opening& opening) {
    auto question = QDBusMessage::createMethodCall(
        portalName, QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setArguments({fileChooser, QStringLiteral("version")});
    version_ = std::make_unique<BoundedCall>(bus_, queue_, question, PortalRequest::patience,
                                             [this, opening](const std::optional<QDBusMessage>& answer) {
                                                 // Kept until here: it is what is calling.
                                                 const auto call = std::move(version_);
                                                 if (answer && versionIn(*answer) >= 1) {
                                                     ask(opening);
                                                     return;
                                                 }
                                                 if (!answer) {
                                                     silentPortal_ = opening.portal;
                                                 }
                                                 openOther(opening.options);
                                             });
}

void PortalSavePanel::ask(const Opening& opening) {
    request_ = std::make_unique<PortalRequest>(
        bus_, queue_,
        PortalRequest::Question{fileChooser,
                                QStringLiteral("SaveFile"),
                                {opening.window, QString::fromStdString(opening.options.title)},
                                optionsOf(opening.options)},
        [this, opening](PortalRequest::Outcome outcome, const QVariantMap& results) {
            // Kept until here: it is what is calling.
            const auto request = std::move(request_);
            switch (outcome) {
            case PortalRequest::Outcome::silent:
                silentPortal_ = opening.portal;
                request->withdraw();
                [[fallthrough]];
            case PortalRequest::Outcome::departed:
            case PortalRequest::Outcome::notAsked:
                openOther(opening.options);
                return;
            case PortalRequest::Outcome::yes:
            case PortalRequest::Outcome::no:
            case PortalRequest::Outcome::noAnswer:
                break;
            }
            const auto completion = std::exchange(completion_, nullptr);
            completion(portalChoice(results, opening.options.mimeType));
        });
}

void PortalSavePanel::openOther(const Platform::SavePanelOptions& options) {
    ++othersOpen_;
    otherwise_->open(options, [this, completion = std::exchange(completion_, nullptr)](const auto& path) {
        --othersOpen_;
        completion(path);
    });
}

} // namespace LinuxPlatform
