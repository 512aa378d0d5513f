#include "platform/qt/savepanel/QtSavePanel.h"

#include "platform/qt/savepanel/SaveFileModel.h"

#include <utility>

namespace QtPlatform {
namespace {

constexpr Platform::Size windowSize{480, 400};

} // namespace

QtSavePanel::QtSavePanel(Platform::Windows& windows) : windows_(windows) {}

QtSavePanel::~QtSavePanel() {
    // Its end is no answer.
    completion_ = nullptr;
    window_.reset();
}

void QtSavePanel::open(const Platform::SavePanelOptions& options,
                       std::function<void(const std::optional<std::string>& path)> completion) {
    const auto superseded = std::exchange(completion_, std::move(completion));
    if (window_ && window_->isVisible()) {
        model_->propose(QString::fromStdString(options.proposedName));
    } else {
        openWindow(options);
    }
    window_->makeKeyAndOrderFront();
    if (superseded) {
        superseded(std::nullopt);
    }
    if (!window_->isVisible()) {
        answer(std::nullopt);
    }
}

void QtSavePanel::openWindow(const Platform::SavePanelOptions& options) {
    model_ = std::make_shared<SaveFileModel>(options, [this](const auto& path) {
        answer(path);
        window_->close();
    });
    Platform::WindowStyle style;
    style.isKeptAbove = true;
    window_ = windows_.makeWindow({options.look.view, model_}, windowSize, style);
    window_->setTitle(options.title);
    window_->setOnWillClose([this] { answer(std::nullopt); });
    window_->center();
}

void QtSavePanel::answer(const std::optional<std::string>& path) {
    if (const auto completion = std::exchange(completion_, nullptr)) {
        completion(path);
    }
}

} // namespace QtPlatform
