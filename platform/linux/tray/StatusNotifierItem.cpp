#include "platform/linux/tray/StatusNotifierItem.h"

#include "platform/linux/tray/DBusMenu.h"
#include "platform/linux/tray/StatusNotifierProtocol.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFileInfo>
#include <QGuiApplication>
#include <QList>
#include <QVariantMap>
#include <QtEndian>

#include <array>
#include <optional>
#include <utility>

namespace LinuxPlatform {

/// A picture as the protocol has it: its pixels are ARGB, the most significant byte first.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;
};

struct StatusNotifierToolTip {
    QString title;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.pixels;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.pixels;
    argument.endStructure();
    return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierToolTip& toolTip) {
    argument.beginStructure();
    argument << QString() << QList<StatusNotifierPixmap>() << toolTip.title << QString();
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierToolTip& toolTip) {
    QString text;
    QList<StatusNotifierPixmap> pixmaps;
    argument.beginStructure();
    argument >> text >> pixmaps >> toolTip.title >> text;
    argument.endStructure();
    return argument;
}

namespace {

using namespace StatusNotifierProtocol;

const auto menuPath = QStringLiteral("/Menu");

constexpr auto introspection = R"xml(
<interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
</interface>
)xml";

/// The folder with the icon themes of an installed Curtain.
QString iconThemesFolder() {
    return QFileInfo(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/icons"))
        .canonicalFilePath();
}

/// The name under which the panel finds the picture by itself, to draw a symbolic one in its own colour.
/// Empty when only pixels can be given.
QString iconName(const Platform::Image& image) {
    auto source = QString::fromStdString(image.source);
    if (!source.startsWith('/') && !source.startsWith(':')) {
        return source;
    }
    const auto themes = iconThemesFolder();
    auto name = QStringLiteral("com.curtain.Curtain-%1-symbolic").arg(QFileInfo(source).baseName());
    const bool isInstalled =
        image.isTemplate && !themes.isEmpty() &&
        QFileInfo::exists(QStringLiteral("%1/hicolor/symbolic/apps/%2.svg").arg(themes, name));
    return isInstalled ? name : QString();
}

StatusNotifierPixmap pixmap(const QImage& image) {
    const auto pixels = image.convertToFormat(QImage::Format_ARGB32);
    StatusNotifierPixmap result{pixels.width(), pixels.height(), QByteArray(pixels.sizeInBytes(), '\0')};
    qToBigEndian<quint32>(pixels.constBits(), pixels.sizeInBytes() / 4, result.pixels.data());
    return result;
}

/// What a call of the panel means; absent for what is no click of ours.
std::optional<std::uint64_t> eventType(const QString& method) {
    if (method == QStringLiteral("Activate")) {
        return Platform::EventType::leftMouseUp;
    }
    if (method == QStringLiteral("ContextMenu")) {
        return Platform::EventType::rightMouseUp;
    }
    if (method == QStringLiteral("SecondaryActivate")) {
        return Platform::EventType::otherMouseUp;
    }
    return std::nullopt;
}

/// Null when the panel does not say where, which many express by zeros.
QRect place(const QVariantList& arguments) {
    if (arguments.size() < 2) {
        return {};
    }
    const QPoint point(arguments[0].toInt(), arguments[1].toInt());
    return point.isNull() ? QRect() : QRect(point, QSize(1, 1));
}

} // namespace

class StatusNotifierItem::Object : public QDBusVirtualObject {
public:
    Object(const QString& watcher, const std::optional<QDBusConnection>& registrar, TrayIconContent content,
           const TrayToolkit& toolkit, const TemplateTint& tint)
        : content_(std::move(content)),
          toolkit_(toolkit),
          tint_(tint),
          connectionName_(QStringLiteral("StatusNotifierItem-%1").arg(reinterpret_cast<quintptr>(this))),
          bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName_)),
          menu_(bus_, menuPath, content_.menu, content_.openMenu) {
        qDBusRegisterMetaType<StatusNotifierPixmap>();
        qDBusRegisterMetaType<QList<StatusNotifierPixmap>>();
        qDBusRegisterMetaType<StatusNotifierToolTip>();
        bus_.registerVirtualObject(itemPath, this);
        auto registration = QDBusMessage::createMethodCall(watcher, watcherPath, watcherInterface,
                                                           QStringLiteral("RegisterStatusNotifierItem"));
        registration.setArguments({bus_.baseService()});
        registrar.value_or(bus_).asyncCall(registration);
    }

    ~Object() override {
        bus_.unregisterObject(itemPath);
        QDBusConnection::disconnectFromBus(connectionName_);
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void setImage(const Platform::Image& image) {
        content_.image = image;
        announceIcon();
    }

    void setToolTip(const QString& text) {
        if (std::exchange(content_.toolTip, text) != text) {
            bus_.send(QDBusMessage::createSignal(itemPath, itemInterface, QStringLiteral("NewToolTip")));
        }
    }

    void announceIcon() {
        bus_.send(QDBusMessage::createSignal(itemPath, itemInterface, QStringLiteral("NewIcon")));
    }

    QString introspect(const QString&) const override { return QString::fromLatin1(introspection); }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.interface() == propertiesInterface) {
            return answerAboutProperties(message, bus);
        }
        if (message.type() != QDBusMessage::MethodCallMessage || message.interface() != itemInterface) {
            return false;
        }
        // Whoever is answered may let go of the key at once.
        const bool isControlHeld = QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ControlModifier);
        bus.send(message.createReply());
        if (const auto type = eventType(message.member())) {
            content_.onClick({*type, isControlHeld ? Platform::EventModifier::control : 0},
                             place(message.arguments()));
        }
        return true;
    }

private:
    bool answerAboutProperties(const QDBusMessage& message, const QDBusConnection& bus) const {
        const auto arguments = message.arguments();
        if (arguments.isEmpty() || arguments.first() != itemInterface) {
            return false;
        }
        const auto all = properties();
        if (message.member() == QStringLiteral("GetAll")) {
            return bus.send(message.createReply(QVariant(all)));
        }
        const auto name = arguments.value(1).toString();
        if (message.member() != QStringLiteral("Get") || !all.contains(name)) {
            return false;
        }
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(all[name]))));
    }

    QVariantMap properties() const {
        const auto name = iconName(content_.image);
        return {
            {QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
            {QStringLiteral("Id"), QStringLiteral("com.curtain.Curtain")},
            {QStringLiteral("Title"), QStringLiteral("Curtain")},
            {QStringLiteral("Status"), QStringLiteral("Active")},
            {QStringLiteral("WindowId"), 0},
            {QStringLiteral("IconThemePath"), name.isEmpty() ? QString() : iconThemesFolder()},
            {QStringLiteral("IconName"), name},
            {QStringLiteral("IconPixmap"), QVariant::fromValue(pixmaps())},
            {QStringLiteral("IconAccessibleDesc"), content_.toolTip},
            {QStringLiteral("ToolTip"), QVariant::fromValue(StatusNotifierToolTip{content_.toolTip})},
            {QStringLiteral("ItemIsMenu"), false},
            {QStringLiteral("Menu"), QVariant::fromValue(QDBusObjectPath(menuPath))},
        };
    }

    QList<StatusNotifierPixmap> pixmaps() const {
        QList<StatusNotifierPixmap> pixmaps;
        for (const int size : trayIconSizes) {
            const auto image = toolkit_.render(content_.image, tint_.colorOn({}), size);
            if (!image.isNull()) {
                pixmaps.append(pixmap(image));
            }
        }
        return pixmaps;
    }

    TrayIconContent content_;
    const TrayToolkit& toolkit_;
    const TemplateTint& tint_;
    QString connectionName_;
    QDBusConnection bus_;
    DBusMenu menu_;
};

StatusNotifierItem::StatusNotifierItem(const QString& watcher,
                                       const std::optional<QDBusConnection>& registrar,
                                       TrayIconContent content, const TrayToolkit& toolkit,
                                       const TemplateTint& tint)
    : object_(std::make_unique<Object>(watcher, registrar, std::move(content), toolkit, tint)) {}

StatusNotifierItem::~StatusNotifierItem() = default;

void StatusNotifierItem::setImage(const Platform::Image& image) {
    object_->setImage(image);
}

void StatusNotifierItem::setToolTip(const QString& text) {
    object_->setToolTip(text);
}

std::optional<QRect> StatusNotifierItem::geometry() const {
    return std::nullopt;
}

void StatusNotifierItem::updateTint() {
    object_->announceIcon();
}

} // namespace LinuxPlatform
