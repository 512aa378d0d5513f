#include "platform/linux/tray/DBusMenu.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

namespace LinuxPlatform {

struct DBusMenuLayout {
    int identifier = 0;
    QVariantMap properties;
    /// Each holds a DBusMenuLayout.
    QList<QDBusVariant> children;
};

struct DBusMenuProperties {
    int identifier = 0;
    QVariantMap properties;
};

struct DBusMenuEvent {
    int identifier = 0;
    QString name;
    QDBusVariant data;
    unsigned int time = 0;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout) {
    argument.beginStructure();
    argument << layout.identifier << layout.properties << layout.children;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout) {
    argument.beginStructure();
    argument >> layout.identifier >> layout.properties >> layout.children;
    argument.endStructure();
    return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& item) {
    argument.beginStructure();
    argument << item.identifier << item.properties;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& item) {
    argument.beginStructure();
    argument >> item.identifier >> item.properties;
    argument.endStructure();
    return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event) {
    argument.beginStructure();
    argument << event.identifier << event.name << event.data << event.time;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event) {
    argument.beginStructure();
    argument >> event.identifier >> event.name >> event.data >> event.time;
    argument.endStructure();
    return argument;
}

namespace {

const auto menuInterface = QStringLiteral("com.canonical.dbusmenu");
const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const auto textDirectionProperty = QStringLiteral("TextDirection");

constexpr auto introspection = R"xml(
<interface name="com.canonical.dbusmenu">
  <property name="Version" type="u" access="read"/>
  <property name="TextDirection" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconThemePath" type="as" access="read"/>
  <method name="GetLayout">
    <arg type="i" direction="in"/><arg type="i" direction="in"/><arg type="as" direction="in"/>
    <arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/>
  </method>
  <method name="GetGroupProperties">
    <arg type="ai" direction="in"/><arg type="as" direction="in"/><arg type="a(ia{sv})" direction="out"/>
  </method>
  <method name="GetProperty">
    <arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <method name="Event">
    <arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/>
    <arg type="u" direction="in"/>
  </method>
  <method name="EventGroup"><arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/></method>
  <method name="AboutToShow"><arg type="i" direction="in"/><arg type="b" direction="out"/></method>
  <method name="AboutToShowGroup">
    <arg type="ai" direction="in"/><arg type="ai" direction="out"/><arg type="ai" direction="out"/>
  </method>
  <signal name="LayoutUpdated"><arg type="u"/><arg type="i"/></signal>
</interface>
)xml";

constexpr int rootIdentifier = 0;

bool looksAlike(const Platform::MenuItem& one, const Platform::MenuItem& other) {
    return one.title == other.title && (one.action == nullptr) == (other.action == nullptr);
}

bool looksAlike(const Platform::Menu& one, const Platform::Menu& other) {
    return one.isRightToLeft == other.isRightToLeft &&
           std::ranges::equal(one.items, other.items,
                              [](const auto& left, const auto& right) { return looksAlike(left, right); });
}

} // namespace

DBusMenu::DBusMenu(QDBusConnection bus, QString path, Content content, Content open)
    : bus_(std::move(bus)),
      path_(std::move(path)),
      content_(std::move(content)),
      open_(std::move(open)) {
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    bus_.registerVirtualObject(path_, this);
}

DBusMenu::~DBusMenu() {
    bus_.unregisterObject(path_);
}

QString DBusMenu::introspect(const QString& /*path*/) const {
    return QString::fromLatin1(introspection);
}

bool DBusMenu::handleMessage(const QDBusMessage& message, const QDBusConnection& bus) {
    const auto arguments = message.arguments();
    std::optional<QVariantList> values;
    if (message.interface() == propertiesInterface) {
        values = answerAboutProperties(message.member(), arguments);
    } else if (message.interface() == menuInterface) {
        values = answer(message.member(), arguments);
    }
    if (!values) {
        return false;
    }
    bus.send(message.createReply(*values));
    if (message.interface() == menuInterface) {
        runClicked(message.member(), arguments);
    }
    return true;
}

/// Returns whether the menu looks other than before.
bool DBusMenu::refresh(const Content& content) {
    auto menu = content();
    if (!menu) {
        return false;
    }
    const bool isOther = !menu_ || !looksAlike(*menu_, *menu);
    if (isOther && menu_) {
        firstIdentifier_ += static_cast<int>(menu_->items.size());
    }
    const bool isTurned = menu_ && menu_->isRightToLeft != menu->isRightToLeft;
    menu_ = std::move(menu);
    revision_ += isOther ? 1 : 0;
    if (isTurned) {
        announceTextDirection();
    }
    return isOther;
}

void DBusMenu::announceLayout() {
    auto signal = QDBusMessage::createSignal(path_, menuInterface, QStringLiteral("LayoutUpdated"));
    signal.setArguments({revision_, rootIdentifier});
    bus_.send(signal);
}

void DBusMenu::announceTextDirection() {
    auto signal = QDBusMessage::createSignal(path_, propertiesInterface, QStringLiteral("PropertiesChanged"));
    signal.setArguments(
        {menuInterface, QVariantMap{{textDirectionProperty, textDirection()}}, QStringList()});
    bus_.send(signal);
}

std::optional<QVariantList> DBusMenu::answer(const QString& method, const QVariantList& arguments) {
    if (method == QStringLiteral("GetLayout") && arguments.size() == 3) {
        if (!menu_) {
            refresh(content_);
        }
        return QVariantList{revision_,
                            QVariant::fromValue(layout(arguments[0].toInt(), arguments[1].toInt()))};
    }
    if (method == QStringLiteral("GetGroupProperties") && arguments.size() == 2) {
        const auto asked = qdbus_cast<QList<int>>(arguments[0]);
        QList<DBusMenuProperties> items;
        const auto addIfAsked = [&](int identifier) {
            if (asked.isEmpty() || asked.contains(identifier)) {
                items.append({identifier, itemProperties(identifier)});
            }
        };
        addIfAsked(rootIdentifier);
        for (std::size_t index = 0; menu_ && index < menu_->items.size(); ++index) {
            addIfAsked(firstIdentifier_ + static_cast<int>(index));
        }
        return QVariantList{QVariant::fromValue(items)};
    }
    if (method == QStringLiteral("GetProperty") && arguments.size() == 2) {
        const auto properties = itemProperties(arguments[0].toInt());
        const auto name = arguments[1].toString();
        return properties.contains(name)
                   ? std::optional(QVariantList{QVariant::fromValue(QDBusVariant(properties[name]))})
                   : std::nullopt;
    }
    if (method == QStringLiteral("AboutToShow") || method == QStringLiteral("AboutToShowGroup")) {
        const bool isOther = refresh(open_);
        if (isOther) {
            announceLayout();
        }
        if (method == QStringLiteral("AboutToShow")) {
            return QVariantList{isOther};
        }
        const auto updated = isOther ? QList<int>{rootIdentifier} : QList<int>{};
        return QVariantList{QVariant::fromValue(updated), QVariant::fromValue(QList<int>{})};
    }
    if (method == QStringLiteral("Event") && arguments.size() == 4) {
        return QVariantList{};
    }
    if (method == QStringLiteral("EventGroup") && arguments.size() == 1) {
        return QVariantList{QVariant::fromValue(QList<int>{})};
    }
    return std::nullopt;
}

std::optional<QVariantList> DBusMenu::answerAboutProperties(const QString& method,
                                                            const QVariantList& arguments) {
    if (arguments.value(0) != menuInterface) {
        return std::nullopt;
    }
    if (!menu_) {
        refresh(content_);
    }
    const QVariantMap all{
        {QStringLiteral("Version"), 3U},
        {textDirectionProperty, textDirection()},
        {QStringLiteral("Status"), QStringLiteral("normal")},
        {QStringLiteral("IconThemePath"), QStringList()},
    };
    if (method == QStringLiteral("GetAll")) {
        return QVariantList{all};
    }
    const auto name = arguments.value(1).toString();
    if (method == QStringLiteral("Get") && all.contains(name)) {
        return QVariantList{QVariant::fromValue(QDBusVariant(all[name]))};
    }
    return std::nullopt;
}

void DBusMenu::runClicked(const QString& method, const QVariantList& arguments) const {
    const auto clicked = QStringLiteral("clicked");
    if (method == QStringLiteral("Event") && arguments[1].toString() == clicked) {
        click(arguments[0].toInt());
    } else if (method == QStringLiteral("EventGroup")) {
        const auto events = qdbus_cast<QList<DBusMenuEvent>>(arguments[0]);
        // A menu closes with the first click.
        const auto first = std::ranges::find(events, clicked, &DBusMenuEvent::name);
        if (first != events.end()) {
            click(first->identifier);
        }
    }
}

void DBusMenu::click(int identifier) const {
    const auto* const clicked = item(identifier);
    if (clicked != nullptr && clicked->action) {
        // A copy, since the action may bring about another menu.
        const auto action = clicked->action;
        action();
    }
}

DBusMenuLayout DBusMenu::layout(int identifier, int depth) const {
    DBusMenuLayout layout{identifier, itemProperties(identifier), {}};
    if (identifier == rootIdentifier && depth != 0 && menu_) {
        for (int index = 0; index < static_cast<int>(menu_->items.size()); ++index) {
            layout.children.append(
                QDBusVariant(QVariant::fromValue(this->layout(firstIdentifier_ + index, 0))));
        }
    }
    return layout;
}

QVariantMap DBusMenu::itemProperties(int identifier) const {
    if (identifier == rootIdentifier) {
        return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
    }
    const auto* const item = this->item(identifier);
    if (item == nullptr) {
        return {};
    }
    if (item->isSeparator()) {
        return {{QStringLiteral("type"), QStringLiteral("separator")}};
    }
    return {
        // A single underscore would be taken for the mark of a mnemonic.
        {QStringLiteral("label"), QString::fromStdString(item->title).replace('_', "__")},
        {QStringLiteral("enabled"), item->action != nullptr},
    };
}

const Platform::MenuItem* DBusMenu::item(int identifier) const {
    const auto index = std::int64_t{identifier} - firstIdentifier_;
    const bool isThere = menu_ && index >= 0 && index < std::ssize(menu_->items);
    return isThere ? &menu_->items[static_cast<std::size_t>(index)] : nullptr;
}

QString DBusMenu::textDirection() const {
    return menu_ && menu_->isRightToLeft ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

} // namespace LinuxPlatform
