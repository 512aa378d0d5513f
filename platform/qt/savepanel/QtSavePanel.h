#pragma once

#include "platform/SavePanel.h"
#include "platform/Windows.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace QtPlatform {

class SaveFileModel;

/// A panel of this program's own, for desktops that have none to offer. It never replaces a file.
class QtSavePanel : public Platform::SavePanel {
public:
    /// `windows` outlive the panel.
    explicit QtSavePanel(Platform::Windows& windows);
    ~QtSavePanel() override;
    QtSavePanel(const QtSavePanel&) = delete;
    QtSavePanel& operator=(const QtSavePanel&) = delete;

    void open(const Platform::SavePanelOptions& options,
              std::function<void(const std::optional<std::string>& path)> completion) override;

private:
    void openWindow(const Platform::SavePanelOptions& options);
    void answer(const std::optional<std::string>& path);

    Platform::Windows& windows_;
    std::shared_ptr<SaveFileModel> model_;
    std::unique_ptr<Platform::Window> window_;
    /// Empty once it has been called.
    std::function<void(const std::optional<std::string>& path)> completion_;
};

} // namespace QtPlatform
