#pragma once

#include "platform/qt/items/Appearance.h"

#include <QObject>
#include <QString>

namespace QtPlatform {

/// What the desktop asks of every view; QML knows it as `Desktop`.
class DesktopStyle : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    Q_PROPERTY(bool isContrastHigh READ isContrastHigh NOTIFY changed)
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY changed)
    Q_PROPERTY(QString fontFamily READ fontFamily NOTIFY changed)

public:
    bool reducedMotion() const { return appearance_.isMotionReduced; }
    bool isDark() const { return appearance_.isDark; }
    bool isContrastHigh() const { return appearance_.isContrastHigh; }
    const Appearance& appearance() const { return appearance_; }
    void setAppearance(const Appearance& appearance);
    /// That of the views' texts, by its two-letter code.
    const QString& language() const { return language_; }
    void setLanguage(const QString& language);
    QString fontFamily() const;

Q_SIGNALS:
    void changed();

private:
    Appearance appearance_;
    QString language_ = QStringLiteral("en");
};

} // namespace QtPlatform
