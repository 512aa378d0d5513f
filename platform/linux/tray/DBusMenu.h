#pragma once

#include "platform/Menu.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace LinuxPlatform {

struct DBusMenuLayout;

/// A menu as a com.canonical.dbusmenu object, which the panel draws itself.
class DBusMenu : public QDBusVirtualObject {
public:
    /// What the menu holds now.
    using Content = std::function<std::optional<Platform::Menu>()>;

    /// Panels may ask for the `content` at any time; `open` gives it when one is about to show it.
    DBusMenu(QDBusConnection bus, QString path, Content content, Content open);
    ~DBusMenu() override;
    DBusMenu(const DBusMenu&) = delete;
    DBusMenu& operator=(const DBusMenu&) = delete;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override;

private:
    bool refresh(const Content& content);
    void announceLayout();
    void announceTextDirection();
    std::optional<QVariantList> answer(const QString& method, const QVariantList& arguments);
    std::optional<QVariantList> answerAboutProperties(const QString& method, const QVariantList& arguments);
    void runClicked(const QString& method, const QVariantList& arguments) const;
    void click(int identifier) const;
    DBusMenuLayout layout(int identifier, int depth) const;
    QVariantMap itemProperties(int identifier) const;
    const Platform::MenuItem* item(int identifier) const;
    QString textDirection() const;

    QDBusConnection bus_;
    QString path_;
    Content content_;
    Content open_;
    std::optional<Platform::Menu> menu_;
    /// Items of different layouts never share a number, so that a late click cannot mean another item.
    int firstIdentifier_ = 1;
    unsigned int revision_ = 0;
};

} // namespace LinuxPlatform
