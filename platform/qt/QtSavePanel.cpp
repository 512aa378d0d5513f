#include "platform/qt/QtSavePanel.h"

#include <QFileDialog>
#include <QMimeDatabase>
#include <QObject>

#include <utility>

namespace QtPlatform {

QtSavePanel::QtSavePanel() = default;

QtSavePanel::~QtSavePanel() = default;

void QtSavePanel::open(const Platform::SavePanelOptions& options,
                       std::function<void(const std::optional<std::string>& path)> completion) {
    if (dialog_ && dialog_->isVisible()) {
        dialog_->raise();
        dialog_->activateWindow();
        return;
    }
    dialog_ = std::make_unique<QFileDialog>();
    // So does the popover, which would cover it otherwise.
    dialog_->setWindowFlag(Qt::WindowStaysOnTopHint);
    const auto mimeType = QString::fromStdString(options.mimeType);
    dialog_->setAcceptMode(QFileDialog::AcceptSave);
    dialog_->setFileMode(QFileDialog::AnyFile);
    dialog_->setMimeTypeFilters({mimeType});
    dialog_->setDefaultSuffix(QMimeDatabase().mimeTypeForName(mimeType).preferredSuffix());
    if (options.folder) {
        dialog_->setDirectory(QString::fromStdString(*options.folder));
    }
    dialog_->selectFile(QString::fromStdString(options.proposedName));
    QObject::connect(dialog_.get(), &QDialog::finished, dialog_.get(),
                     [this, completion = std::move(completion)](int result) {
                         const auto files = dialog_->selectedFiles();
                         const bool isChosen = result == QDialog::Accepted && !files.isEmpty();
                         completion(isChosen ? std::optional(files.first().toStdString()) : std::nullopt);
                     });
    dialog_->open();
    dialog_->raise();
    dialog_->activateWindow();
}

} // namespace QtPlatform
