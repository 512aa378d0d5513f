#include "platform/qt/views/ViewEngine.h"

#include "platform/qt/items/DesktopSingleton.h"
#include "platform/qt/screens/ImageRendering.h"
#include "platform/qt/views/ViewImages.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

namespace QtPlatform {

ViewEngine::ViewEngine() {
    const auto software = QStringLiteral("software");
    // It takes a third of the memory that a graphics driver does.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND") && QQuickWindow::sceneGraphBackend() != software) {
        QQuickWindow::setSceneGraphBackend(software);
    }
}

ViewEngine::~ViewEngine() = default;

QQmlEngine& ViewEngine::engine() {
    if (!engine_) {
        engine_ = std::make_unique<QQmlEngine>();
        engine_->addImageProvider(QStringLiteral("symbol"), new SymbolImages);
        engine_->addImageProvider(QStringLiteral("icon"), new IconImages(&renderImage));
        // Where the modules of the views are.
        engine_->addImportPath(QStringLiteral("qrc:/"));
        DesktopSingleton::serve(*engine_, style_);
    }
    return *engine_;
}

std::unique_ptr<QQuickItem> ViewEngine::makeItem(const Platform::View& view) {
    prepareFor(*view.model);
    QQmlComponent component(&engine(), QUrl(QString::fromStdString(view.source)));
    if (!component.isReady()) {
        qFatal("%s", qPrintable(component.errorString()));
    }
    auto* const object = component.createWithInitialProperties(
        {{QStringLiteral("model"), QVariant::fromValue(view.model.get())}});
    auto* const item = qobject_cast<QQuickItem*>(object);
    if (item == nullptr) {
        qFatal("%s", qPrintable(component.errorString()));
    }
    return std::unique_ptr<QQuickItem>(item);
}

void ViewEngine::setModel(QQuickItem& item, const Platform::View& view) {
    prepareFor(*view.model);
    item.setProperty("model", QVariant::fromValue(view.model.get()));
}

void ViewEngine::prepareFor(QObject& model) {
    QQmlEngine::setObjectOwnership(&model, QQmlEngine::CppOwnership);
    const auto language = model.property("lang").toString();
    if (!language.isEmpty()) {
        style_.setLanguage(language);
    }
}

} // namespace QtPlatform
