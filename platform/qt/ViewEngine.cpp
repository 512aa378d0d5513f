#include "platform/qt/ViewEngine.h"

#include "platform/qt/Items.h"
#include "platform/qt/ViewImages.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <array>

namespace QtPlatform {

void DesktopStyle::setReducedMotion(bool reduced) {
    if (reduced != reducedMotion_) {
        reducedMotion_ = reduced;
        Q_EMIT changed();
    }
}

void DesktopStyle::setLanguage(const QString& language) {
    if (language != language_) {
        language_ = language;
        Q_EMIT changed();
    }
}

QString DesktopStyle::fontFamily() const {
    static constexpr std::array generic{"", "Sans", "Sans Serif", "sans-serif"};
    const auto chosen = QGuiApplication::font().family();
    const auto isChosen =
        std::ranges::none_of(generic, [&](const char* name) { return chosen == QLatin1String(name); });
    const auto preferred = QStringLiteral("Inter");
    // A generic name means that nobody chose a font. The preferred one has no Indic letters.
    return isChosen || language_ == "hi" || !QFontDatabase::hasFamily(preferred) ? chosen : preferred;
}

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
        registerItems();
        engine_ = std::make_unique<QQmlEngine>();
        engine_->addImageProvider(QStringLiteral("symbol"), new SymbolImages);
        engine_->addImageProvider(QStringLiteral("icon"), new IconImages);
        engine_->rootContext()->setContextProperty(QStringLiteral("Desktop"), &style_);
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
