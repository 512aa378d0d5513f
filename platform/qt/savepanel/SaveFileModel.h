#pragma once

#include "platform/SavePanel.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>
#include <string>

namespace QtPlatform {

/// Where a file is to be saved, as the panel's view reads and changes it.
class SaveFileModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString saveTitle READ saveTitle CONSTANT)
    Q_PROPERTY(QString cancelTitle READ cancelTitle CONSTANT)
    Q_PROPERTY(QString lang READ lang CONSTANT)
    Q_PROPERTY(bool isRightToLeft READ isRightToLeft CONSTANT)
    Q_PROPERTY(QString proposedName READ proposedName NOTIFY proposedNameChanged)
    Q_PROPERTY(QString folder READ folder NOTIFY folderChanged)
    /// The names of the folders that it holds, after ".." for the one that holds it.
    Q_PROPERTY(QStringList folders READ folders NOTIFY folderChanged)
    /// Why the last name cannot be taken; empty for no reason.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    /// What does the same as `cancel`, as text: Escape, and what closes windows on this desktop.
    Q_PROPERTY(QVariantList cancelKeys READ cancelKeys CONSTANT)

public:
    using Done = std::function<void(const std::optional<std::string>& path)>;

    /// `done` is called for every `save` that has a path and for every `cancel`.
    SaveFileModel(const Platform::SavePanelOptions& options, Done done);

    QString saveTitle() const;
    QString cancelTitle() const;
    QString lang() const { return QString::fromStdString(options_.look.lang); }
    bool isRightToLeft() const { return options_.look.isRightToLeft; }
    QString proposedName() const { return proposedName_; }
    void propose(const QString& name);
    QString folder() const { return folder_; }
    QStringList folders() const;
    QString problem() const { return problem_; }
    static QVariantList cancelKeys();

    /// One of `folders`.
    Q_INVOKABLE void enter(const QString& name);
    /// A name in the folder, or a path. One without the kind's ending gets it.
    Q_INVOKABLE void save(const QString& name);
    Q_INVOKABLE void cancel() const;
    /// The name is another one now.
    Q_INVOKABLE void forgetProblem() { setProblem({}); }

Q_SIGNALS:
    void proposedNameChanged();
    void folderChanged();
    void problemChanged();

private:
    void setProblem(const QString& problem);
    QString withEnding(const QString& path) const;

    Platform::SavePanelOptions options_;
    Done done_;
    QString proposedName_;
    QString folder_;
    QString problem_;
};

} // namespace QtPlatform
