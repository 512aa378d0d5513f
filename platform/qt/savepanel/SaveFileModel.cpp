#include "platform/qt/savepanel/SaveFileModel.h"

#include <QDir>
#include <QFileInfo>
#include <QKeySequence>
#include <QMimeDatabase>

#include <utility>

namespace QtPlatform {
namespace {

QString existingFolder(const std::optional<std::string>& folder) {
    const auto wanted = folder ? QString::fromStdString(*folder) : QString();
    return QDir(wanted).exists() && !wanted.isEmpty() ? wanted : QDir::homePath();
}

} // namespace

SaveFileModel::SaveFileModel(const Platform::SavePanelOptions& options, Done done)
    : options_(options),
      done_(std::move(done)),
      proposedName_(QString::fromStdString(options.proposedName)),
      folder_(existingFolder(options.folder)) {}

QString SaveFileModel::saveTitle() const {
    return QString::fromStdString(options_.title);
}

QString SaveFileModel::cancelTitle() const {
    return QString::fromStdString(options_.look.cancelTitle);
}

void SaveFileModel::propose(const QString& name) {
    proposedName_ = name;
    Q_EMIT proposedNameChanged();
}

QStringList SaveFileModel::folders() const {
    const QDir here(folder_);
    auto names = here.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::LocaleAware);
    if (!here.isRoot()) {
        names.prepend(QStringLiteral(".."));
    }
    return names;
}

QVariantList SaveFileModel::cancelKeys() {
    QVariantList keys{QStringLiteral("Escape")};
    for (const auto& sequence : QKeySequence::keyBindings(QKeySequence::Close)) {
        keys << sequence.toString(QKeySequence::PortableText);
    }
    return keys;
}

void SaveFileModel::enter(const QString& name) {
    const auto path = QDir::cleanPath(QDir(folder_).filePath(name));
    if (QDir(path).exists()) {
        folder_ = path;
        forgetProblem();
    }
    // One that is gone is not to be seen any more.
    Q_EMIT folderChanged();
}

void SaveFileModel::save(const QString& name) {
    const auto trimmed = name.trimmed();
    if (trimmed.isEmpty() || trimmed.endsWith(QLatin1Char('/'))) {
        return;
    }
    const auto path = withEnding(QDir::cleanPath(QDir(folder_).filePath(trimmed)));
    const QFileInfo file(path);
    if (file.exists() || file.isSymLink()) {
        setProblem(QString::fromStdString(options_.look.nameInUse));
        return;
    }
    done_(path.toStdString());
}

void SaveFileModel::cancel() const {
    done_(std::nullopt);
}

void SaveFileModel::setProblem(const QString& problem) {
    if (std::exchange(problem_, problem) != problem) {
        Q_EMIT problemChanged();
    }
}

QString SaveFileModel::withEnding(const QString& path) const {
    const auto kind = QMimeDatabase().mimeTypeForName(QString::fromStdString(options_.mimeType));
    const bool hasOne = kind.suffixes().contains(QFileInfo(path).suffix(), Qt::CaseInsensitive);
    return hasOne || !kind.isValid() ? path : path + QLatin1Char('.') + kind.preferredSuffix();
}

} // namespace QtPlatform
