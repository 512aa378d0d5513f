#include "platform/qt/items/MenuModel.h"

#include <QCoreApplication>
#include <QVariantMap>

#include <utility>

namespace QtPlatform {

MenuModel::MenuModel(Platform::Menu menu, std::function<void()> close)
    : menu_(std::move(menu)),
      close_(std::move(close)) {}

QVariantList MenuModel::entries() const {
    QVariantList entries;
    for (const auto& item : menu_.items) {
        entries << QVariantMap{{QStringLiteral("title"), QString::fromStdString(item.title)},
                               {QStringLiteral("canBeChosen"), item.action != nullptr}};
    }
    return entries;
}

void MenuModel::choose(int index) const {
    close_();
    if (const auto& action = menu_.items.at(static_cast<std::size_t>(index)).action) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), action, Qt::QueuedConnection);
    }
}

} // namespace QtPlatform
