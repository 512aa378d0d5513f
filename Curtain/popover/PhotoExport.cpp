#include "Curtain/popover/PhotoExport.h"

#include "Curtain/MeetingReadinessView.h"
#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"

#include <optional>
#include <string>
#include <utility>

namespace Curtain {
namespace {

PhotoNews newsOf(Platform::WriteOutcome outcome) {
    switch (outcome) {
    case Platform::WriteOutcome::written:
        return PhotoNews::saved;
    case Platform::WriteOutcome::noSpace:
        return PhotoNews::noSpace;
    case Platform::WriteOutcome::notAllowed:
        return PhotoNews::notAllowed;
    case Platform::WriteOutcome::failed:
        break;
    }
    return PhotoNews::notSaved;
}

/// Why a photo was not saved.
PlatformKey keyOf(PhotoNews news) {
    return news == PhotoNews::noSpace      ? PlatformKey::photoNotSavedNoSpace
           : news == PhotoNews::notAllowed ? PlatformKey::photoNotSavedNotAllowed
                                           : PlatformKey::photoNotSaved;
}

} // namespace

void PhotoExport::copy() {
    const auto& data = services_.camera.capturedData();
    if (data && services_.camera.capturedPhoto()) {
        services_.pasteboard.clearContents();
        const bool isCopied = services_.pasteboard.writeImage(*data);
        onNews(isCopied ? PhotoNews::copied : PhotoNews::notCopied);
    }
}

void PhotoExport::save() {
    const auto data = services_.camera.capturedData();
    if (!data) {
        return;
    }
    services_.application.activate(true);
    ++openPanels_;
    auto tell =
        lifetime_.weak([this, photo = std::weak_ptr(services_.camera.capturedPhoto())](
                           Platform::WriteOutcome outcome) { tellOfSaving(photo.lock(), newsOf(outcome)); });
    services_.savePanel.open(panelOptions(), lifetime_.weak([this, data = *data, tell = std::move(tell)](
                                                                const std::optional<std::string>& path) {
        panelDidClose();
        if (path) {
            services_.writer.write(data, *path, tell);
        }
    }));
}

Platform::SavePanelOptions PhotoExport::panelOptions() const {
    const auto lang = services_.language.code();
    const auto text = [&](auto key) { return std::string(PlatformWording::string(key, lang)); };
    const auto now = services_.wallClock.localTimestamp(services_.wallClock.now());
    return {"Curtain " + now + ".jpg",
            services_.userFolders.pictures(),
            "image/jpeg",
            text(CurtainCore::LocKey::saveFile),
            {"qrc:/Curtain/SavePanel.qml", text(CurtainCore::LocKey::cancel), text(PlatformKey::nameInUse),
             lang, CurtainCore::Localizer::isRightToLeft(lang)}};
}

void PhotoExport::panelDidClose() {
    --openPanels_;
    if (!isPanelOpen()) {
        onPanelsClosed();
    }
}

void PhotoExport::tellOfSaving(const std::shared_ptr<const Platform::Picture>& photo, PhotoNews news) {
    if (photo && photo == services_.camera.capturedPhoto()) {
        onNews(news);
    } else if (news != PhotoNews::saved) {
        // Whoever has put the photo away takes it for saved.
        services_.notifier.notifyPhotoNotSaved(keyOf(news));
    }
}

} // namespace Curtain
