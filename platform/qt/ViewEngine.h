#pragma once

#include "platform/View.h"
#include "platform/qt/Appearance.h"

#include <QObject>
#include <QString>

#include <memory>

class QQmlEngine;
class QQuickItem;

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

/// Loads views, all from one QML engine with one cache of types and images. The engine comes into being with
/// the first view. Outlives every item that it makes. Main thread only.
class ViewEngine {
public:
    ViewEngine();
    ~ViewEngine();
    ViewEngine(const ViewEngine&) = delete;
    ViewEngine& operator=(const ViewEngine&) = delete;

    DesktopStyle& style() { return style_; }
    QQmlEngine& engine();

    /// The view's root item, in the language that the model's property `lang` names, which keeps the view's
    /// model alive. Aborts when the description is not in order: it is part of the program.
    std::unique_ptr<QQuickItem> makeItem(const Platform::View& view);
    /// Gives an item that this engine made the model of another view of the same source.
    void setModel(QQuickItem& item, const Platform::View& view);

private:
    void prepareFor(QObject& model);

    DesktopStyle style_;
    std::unique_ptr<QQmlEngine> engine_;
};

} // namespace QtPlatform
