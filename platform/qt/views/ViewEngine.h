#pragma once

#include "platform/View.h"
#include "platform/qt/items/DesktopStyle.h"

#include <memory>

class QObject;
class QQmlEngine;
class QQuickItem;

namespace QtPlatform {

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
