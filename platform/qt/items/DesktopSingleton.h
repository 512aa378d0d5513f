#pragma once

#include "platform/qt/items/DesktopStyle.h"

#include <QtQml>

class QJSEngine;
class QQmlEngine;

namespace QtPlatform {

/// The name under which QML knows the style that its engine serves. Main thread only.
struct DesktopSingleton {
    Q_GADGET
    QML_FOREIGN(QtPlatform::DesktopStyle)
    QML_NAMED_ELEMENT(Desktop)
    QML_SINGLETON

public:
    /// `style` outlives what the engine makes.
    static void serve(QQmlEngine& engine, DesktopStyle& style);
    /// For QML.
    static DesktopStyle* create(QQmlEngine* engine, QJSEngine* scripts);
};

} // namespace QtPlatform
