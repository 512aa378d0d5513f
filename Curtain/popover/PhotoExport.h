#pragma once

#include "Curtain/CameraPreviewManager.h"
#include "Curtain/Notifier.h"
#include "Curtain/PhotoWriter.h"
#include "Curtain/UserLanguage.h"
#include "platform/Application.h"
#include "platform/Lifetime.h"
#include "platform/Pasteboard.h"
#include "platform/SavePanel.h"
#include "platform/UserFolders.h"
#include "platform/WallClock.h"

#include <functional>
#include <memory>

namespace Curtain {

enum class PhotoNews;

/// Takes the test photo to the clipboard and to files. Main thread only.
class PhotoExport {
public:
    /// All of them outlive this object.
    struct Services {
        CameraPreviewManager& camera;
        PhotoWriter& writer;
        Notifier& notifier;
        const UserLanguage& language;
        Platform::Pasteboard& pasteboard;
        Platform::SavePanel& savePanel;
        Platform::UserFolders& userFolders;
        Platform::WallClock& wallClock;
        Platform::Application& application;
    };

    explicit PhotoExport(const Services& services) : services_(services) {}

    /// What became of the photo that is to be seen.
    std::function<void(PhotoNews)> onNews;
    /// The last open panel was answered.
    std::function<void()> onPanelsClosed;

    bool isPanelOpen() const { return openPanels_ > 0; }
    void copy();
    /// Asks where to.
    void save();

private:
    Platform::SavePanelOptions panelOptions() const;
    void panelDidClose();
    /// In the review of that photo while it stands there, else, where it is lost, in a notice.
    void tellOfSaving(const std::shared_ptr<const Platform::Picture>& photo, PhotoNews news);

    Services services_;
    int openPanels_ = 0;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
