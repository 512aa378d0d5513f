#pragma once

#include "platform/Menu.h"

#include <QObject>
#include <QVariantList>
#include <qqmlregistration.h>

#include <functional>

namespace QtPlatform {

/// A menu as its view reads it.
class MenuModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The pop-up menu makes it")
    /// Of each its `title`, empty for a separator, and whether it `canBeChosen`.
    Q_PROPERTY(QVariantList entries READ entries CONSTANT)
    Q_PROPERTY(QString lang READ lang CONSTANT)
    Q_PROPERTY(bool isRightToLeft READ isRightToLeft CONSTANT)

public:
    /// `close` takes the view from the screen.
    MenuModel(Platform::Menu menu, std::function<void()> close);

    QVariantList entries() const;
    QString lang() const { return QString::fromStdString(menu_.lang); }
    bool isRightToLeft() const { return menu_.isRightToLeft; }

    Q_INVOKABLE void close() const { close_(); }
    /// Closes the menu; what was chosen is done once the view's event has been dealt with.
    Q_INVOKABLE void choose(int index) const;

private:
    Platform::Menu menu_;
    std::function<void()> close_;
};

} // namespace QtPlatform
