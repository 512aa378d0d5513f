#include "platform/qt/ViewEngine.h"

#include "platform/qt/Items.h"
#include "platform/qt/ViewImages.h"

#include <QFont>
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
namespace {

/// Faces for what the interface's own has no letters for, best first. Without them the session's language
/// chooses: outside a Chinese session it draws Chinese in Japanese shapes.
QStringList facesFor(const QString& language) {
    if (language == "zh") {
        return {QStringLiteral("Noto Sans CJK SC"),    QStringLiteral("Noto Sans SC"),
                QStringLiteral("Source Han Sans SC"),  QStringLiteral("Source Han Sans CN"),
                QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("WenQuanYi Zen Hei")};
    }
    if (language == "ar") {
        return {QStringLiteral("Noto Sans Arabic"), QStringLiteral("Noto Sans Arabic UI")};
    }
    return {};
}

/// A family whose missing letters come from these faces.
QString familyWith(const QString& family, const QString& language) {
    const auto faces = facesFor(language);
    if (faces.isEmpty()) {
        return family;
    }
    const auto name = family + QStringLiteral(" for ") + language;
    QFont::insertSubstitutions(name, QStringList{family} + faces);
    return name;
}

} // namespace

void DesktopStyle::setAppearance(const Appearance& appearance) {
    if (appearance != appearance_) {
        appearance_ = appearance;
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
    const auto& family =
        isChosen || language_ == "hi" || !QFontDatabase::hasFamily(preferred) ? chosen : preferred;
    return familyWith(family, language_);
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
