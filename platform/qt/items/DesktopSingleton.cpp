#include "platform/qt/items/DesktopSingleton.h"

#include <QQmlEngine>
#include <QVariant>

namespace QtPlatform {
namespace {

constexpr const char* styleOfEngine = "desktopStyle";

} // namespace

void DesktopSingleton::serve(QQmlEngine& engine, DesktopStyle& style) {
    QQmlEngine::setObjectOwnership(&style, QQmlEngine::CppOwnership);
    engine.setProperty(styleOfEngine, QVariant::fromValue(&style));
}

DesktopStyle* DesktopSingleton::create(QQmlEngine* engine, QJSEngine* /*scripts*/) {
    return engine->property(styleOfEngine).value<DesktopStyle*>();
}

} // namespace QtPlatform
