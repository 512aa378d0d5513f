#pragma once

#include "platform/SavePanel.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QFileDialog;

namespace QtPlatform {

/// The file dialog of the desktop where the toolkit knows it, inside a sandbox that of the portal; else the
/// toolkit's own. Needs a QApplication.
class QtSavePanel : public Platform::SavePanel {
public:
    QtSavePanel();
    ~QtSavePanel() override;
    QtSavePanel(const QtSavePanel&) = delete;
    QtSavePanel& operator=(const QtSavePanel&) = delete;

    void open(const Platform::SavePanelOptions& options,
              std::function<void(const std::optional<std::string>& path)> completion) override;

private:
    std::unique_ptr<QFileDialog> dialog_;
    /// Empty once it has been called.
    std::function<void(const std::optional<std::string>& path)> completion_;
};

} // namespace QtPlatform
