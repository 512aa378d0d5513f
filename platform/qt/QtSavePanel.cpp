#include "platform/qt/QtSavePanel.h"

#include <QDir>
#include <QFileDialog>
#include <QMimeDatabase>
#include <QObject>

#include <utility>

namespace QtPlatform {

QtSavePanel::QtSavePanel() = default;

QtSavePanel::~QtSavePanel() = default;

void QtSavePanel::open(const Platform::SavePanelOptions& options,
                       std::function<void(const std::optional<std::string>& path)> completion) {
    const auto superseded = std::exchange(completion_, std::move(completion));
    if (dialog_ && dialog_->isVisible()) {
        dialog_->selectFile(QString::fromStdString(options.proposedName));
        dialog_->raise();
        dialog_->activateWindow();
        if (superseded) {
            superseded(std::nullopt);
        }
        return;
    }
    dialog_ = std::make_unique<QFileDialog>();
    // So does the popover, which would cover it otherwise.
    dialog_->setWindowFlag(Qt::WindowStaysOnTopHint);
    dialog_->setWindowTitle(QString::fromStdString(options.title));
    const auto mimeType = QString::fromStdString(options.mimeType);
    dialog_->setAcceptMode(QFileDialog::AcceptSave);
    dialog_->setFileMode(QFileDialog::AnyFile);
    dialog_->setMimeTypeFilters({mimeType});
    dialog_->setDefaultSuffix(QMimeDatabase().mimeTypeForName(mimeType).preferredSuffix());
    const auto folder = options.folder ? QString::fromStdString(*options.folder) : QString();
    dialog_->setDirectory(QDir(folder).exists() && !folder.isEmpty() ? folder : QDir::homePath());
    dialog_->selectFile(QString::fromStdString(options.proposedName));
    QObject::connect(dialog_.get(), &QDialog::finished, dialog_.get(), [this](int result) {
        const auto files = dialog_->selectedFiles();
        const bool isChosen = result == QDialog::Accepted && !files.isEmpty();
        const auto answer = std::exchange(completion_, nullptr);
        answer(isChosen ? std::optional(files.first().toStdString()) : std::nullopt);
    });
    dialog_->open();
    dialog_->raise();
    dialog_->activateWindow();
}

} // namespace QtPlatform
