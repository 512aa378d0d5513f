#include "platform/linux/donotdisturb/QuietServers.h"

#include "platform/linux/donotdisturb/BusQuietRoad.h"
#include "platform/linux/donotdisturb/GSettingsQuietRoad.h"
#include "platform/linux/donotdisturb/LxqtQuietRoad.h"
#include "platform/linux/donotdisturb/MakoModes.h"
#include "platform/linux/system/BoundedFile.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace LinuxPlatform {
namespace {

using Habits = Platform::DoNotDisturb::Habits;

const QString notifications = QStringLiteral("org.freedesktop.Notifications");
const QString notificationsPath = QStringLiteral("/org/freedesktop/Notifications");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString propertiesChanged = QStringLiteral("PropertiesChanged");

constexpr auto on = "on";
constexpr auto off = "off";

std::string onOrOff(bool isOn) {
    return isOn ? on : off;
}

QDBusMessage message(const QString& service, const QString& path, const QString& interface,
                     const QString& method, const QVariantList& arguments = {}) {
    auto call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments);
    return call;
}

QVariant inVariant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

/// The first value of an answer, out of its wrapping; invalid when there is none.
QVariant valueIn(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage) {
        return {};
    }
    const auto value = answer.arguments().value(0);
    return value.metaType() == QMetaType::fromType<QDBusVariant>() ? value.value<QDBusVariant>().variant()
                                                                   : value;
}

std::optional<bool> boolIn(const QVariant& value) {
    return value.metaType() == QMetaType::fromType<bool>() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<std::string> switchIn(const QDBusMessage& answer) {
    const auto isOn = boolIn(valueIn(answer));
    return isOn ? std::optional(onOrOff(*isOn)) : std::nullopt;
}

/// One that is on or off, and no more.
class OnOffRoad : public BusQuietRoad {
public:
    using BusQuietRoad::BusQuietRoad;

    bool isQuiet(const std::string& state) const override { return state == on; }
    std::string quietened(const std::string& /*state*/) const override { return on; }
};

/// Source: xfce4-notifyd's channel in xfconf. The property is not there before it is turned the first time.
class XfceRoad : public OnOffRoad {
public:
    explicit XfceRoad(const QDBusConnection& bus) : OnOffRoad(bus) {
        follow(service, path, service, QStringLiteral("PropertyChanged"));
        follow(service, path, service, QStringLiteral("PropertyRemoved"));
    }

    std::string name() const override { return "xfce"; }
    Habits habits() const override { return {}; }
    bool isRemembered() const override { return true; }

protected:
    QDBusMessage question() const override { return ask(QStringLiteral("GetProperty"), {}); }

    std::optional<std::string> stateIn(const QDBusMessage& answer) override {
        if (answer.errorName() == QLatin1String("org.xfce.Xfconf.Error.PropertyNotFound") ||
            answer.errorName() == QLatin1String("org.xfce.Xfconf.Error.ChannelNotFound")) {
            return unset;
        }
        return switchIn(answer);
    }

    QDBusMessage order(const std::string& state) const override {
        return state == unset ? ask(QStringLiteral("ResetProperty"), {false})
                              : ask(QStringLiteral("SetProperty"), {inVariant(state == on)});
    }

private:
    static constexpr auto unset = "unset";
    const QString service = QStringLiteral("org.xfce.Xfconf");
    const QString path = QStringLiteral("/org/xfce/Xfconf");

    QDBusMessage ask(const QString& method, const QVariantList& furtherArguments) const {
        return message(service, path, service, method,
                       QVariantList{QStringLiteral("xfce4-notifyd"), QStringLiteral("/do-not-disturb")} +
                           furtherArguments);
    }
};

/// Source: dunst(5) and its interface org.dunstproject.cmd0. Since 1.12 there are levels: whoever is paused
/// at a lower one than the highest sees what its rules let through. A state is the level or, before that,
/// whether it is paused.
class DunstRoad : public BusQuietRoad {
public:
    explicit DunstRoad(const QDBusConnection& bus) : BusQuietRoad(bus) {
        follow(notifications, notificationsPath, properties, propertiesChanged);
    }

    std::string name() const override { return "dunst"; }
    Habits habits() const override { return {.hidesShown = true, .showsHeldAfterwards = true}; }
    bool isRemembered() const override { return false; }
    bool isQuiet(const std::string& state) const override { return state == on || state == highest; }
    std::string quietened(const std::string& state) const override { return state == off ? on : highest; }

protected:
    QDBusMessage question() const override {
        return message(notifications, notificationsPath, properties, QStringLiteral("GetAll"), {interface});
    }

    std::optional<std::string> stateIn(const QDBusMessage& answer) override {
        if (answer.type() != QDBusMessage::ReplyMessage) {
            return std::nullopt;
        }
        const auto values = qdbus_cast<QVariantMap>(answer.arguments().value(0));
        if (const auto level = values.value(levelName); level.metaType() == QMetaType::fromType<uint>()) {
            return std::to_string(level.toUInt());
        }
        const auto isPaused = boolIn(values.value(pausedName));
        return isPaused ? std::optional(onOrOff(*isPaused)) : std::nullopt;
    }

    QDBusMessage order(const std::string& state) const override {
        const bool isSwitch = state == on || state == off;
        const auto value =
            isSwitch ? QVariant(state == on) : QVariant::fromValue(QString::fromStdString(state).toUInt());
        return message(notifications, notificationsPath, properties, QStringLiteral("Set"),
                       {interface, isSwitch ? pausedName : levelName, inVariant(value)});
    }

private:
    static constexpr auto highest = "100";
    const QString interface = QStringLiteral("org.dunstproject.cmd0");
    const QString levelName = QStringLiteral("pauseLevel");
    const QString pausedName = QStringLiteral("paused");
};

/// Source: mako(5), makoctl(1) and its interface fr.emersion.Mako. Which mode hides notices is up to the
/// user's configuration; mako takes any name without a word. A state is the mode that hides them now.
class MakoRoad : public BusQuietRoad {
public:
    MakoRoad(const QDBusConnection& bus, std::filesystem::path configuration)
        : BusQuietRoad(bus),
          configuration_(std::move(configuration)) {}

    std::string name() const override { return "mako"; }
    Habits habits() const override { return {.hidesShown = true, .showsHeldAfterwards = true}; }
    bool isRemembered() const override { return false; }
    bool isQuiet(const std::string& state) const override { return state != off; }
    std::string quietened(const std::string& /*state*/) const override { return quietModes_.front(); }

protected:
    QDBusMessage question() const override {
        return message(notifications, path, interface, QStringLiteral("ListModes"));
    }

    std::optional<std::string> stateIn(const QDBusMessage& answer) override {
        constexpr std::size_t configurationAtMost = 1U << 20U;
        quietModes_ = quietMakoModes(readStartOfFile(configuration_, configurationAtMost));
        if (answer.type() != QDBusMessage::ReplyMessage || quietModes_.empty()) {
            return std::nullopt;
        }
        modes_ = answer.arguments().value(0).toStringList();
        const auto mode = quietMode();
        return mode == quietModes_.end() ? off : *mode;
    }

    /// The user's other modes stay.
    QDBusMessage order(const std::string& state) const override {
        auto modes = modes_;
        if (state != off) {
            modes.append(QString::fromStdString(state));
        } else if (const auto mode = quietMode(); mode != quietModes_.end()) {
            modes.removeAll(QString::fromStdString(*mode));
        }
        return message(notifications, path, interface, QStringLiteral("SetModes"), {modes});
    }

private:
    const QString path = QStringLiteral("/fr/emersion/Mako");
    const QString interface = QStringLiteral("fr.emersion.Mako");

    /// The one that was in force when the modes were read.
    std::vector<std::string>::const_iterator quietMode() const {
        return std::ranges::find_if(
            quietModes_, [&](const auto& mode) { return modes_.contains(QString::fromStdString(mode)); });
    }

    std::filesystem::path configuration_;
    /// Never empty once a state has been told.
    std::vector<std::string> quietModes_;
    /// As they were read last.
    QStringList modes_;
};

/// Source: the interface org.erikreider.swaync.cc.
class SwayNotificationCenterRoad : public OnOffRoad {
public:
    explicit SwayNotificationCenterRoad(const QDBusConnection& bus) : OnOffRoad(bus) {
        follow(service, path, service, QStringLiteral("Subscribe"));
        follow(service, path, service, QStringLiteral("SubscribeV2"));
    }

    std::string name() const override { return "swaync"; }
    /// Older ones let stand what is shown.
    Habits habits() const override { return {.hidesShown = true}; }
    bool isRemembered() const override { return true; }

protected:
    QDBusMessage question() const override {
        return message(service, path, service, QStringLiteral("GetDnd"));
    }
    std::optional<std::string> stateIn(const QDBusMessage& answer) override { return switchIn(answer); }
    QDBusMessage order(const std::string& state) const override {
        return message(service, path, service, QStringLiteral("SetDnd"), {state == on});
    }

private:
    const QString service = QStringLiteral("org.erikreider.swaync.cc");
    const QString path = QStringLiteral("/org/erikreider/swaync/cc");
};

/// Source: the interface org.buddiesofbudgie.budgie.Dispatcher. What a program pauses is a switch beside the
/// user's own, and the one that is held.
class BudgieRoad : public BusQuietRoad {
public:
    explicit BudgieRoad(const QDBusConnection& bus) : BusQuietRoad(bus) {
        follow(service, path, properties, propertiesChanged);
        follow(service, path, interface, QStringLiteral("DoNotDisturbChanged"));
    }

    std::string name() const override { return "budgie"; }
    Habits habits() const override { return {}; }
    bool isRemembered() const override { return false; }
    bool isQuiet(const std::string& state) const override { return state != off; }
    std::string quietened(const std::string& /*state*/) const override { return on; }

    void read(std::function<void(std::optional<std::string> state)> onState) override {
        call(message(service, path, interface, QStringLiteral("GetDoNotDisturb")),
             [this, onState = std::move(onState)](const auto& answer) {
                 isUsersOn_ = boolIn(valueIn(answer));
                 BusQuietRoad::read(onState);
             });
    }

protected:
    QDBusMessage question() const override {
        return message(service, path, properties, QStringLiteral("Get"), {interface, paused});
    }

    std::optional<std::string> stateIn(const QDBusMessage& answer) override {
        const auto isPaused = boolIn(valueIn(answer));
        if (!isPaused || !isUsersOn_) {
            return std::nullopt;
        }
        return *isPaused ? on : *isUsersOn_ ? usersOn : off;
    }

    QDBusMessage order(const std::string& state) const override {
        return message(service, path, properties, QStringLiteral("Set"),
                       {interface, paused, inVariant(state == on)});
    }

private:
    static constexpr auto usersOn = "user's";
    const QString service = QStringLiteral("org.budgie_desktop.Notifications");
    const QString path = QStringLiteral("/org/budgie_desktop/Notifications");
    const QString interface = QStringLiteral("org.buddiesofbudgie.budgie.Dispatcher");
    const QString paused = QStringLiteral("NotificationsPaused");
    std::optional<bool> isUsersOn_;
};

/// Source: the property and the methods that Plasma adds to org.freedesktop.Notifications, as its capability
/// "inhibitions" announces. It ends by itself with the connection that asked for it.
class InhibitionRoad : public OnOffRoad {
public:
    explicit InhibitionRoad(const QDBusConnection& bus) : OnOffRoad(bus) {
        follow(notifications, notificationsPath, properties, propertiesChanged);
    }

    std::string name() const override { return "plasma"; }
    Habits habits() const override { return {.hidesShown = true, .showsHeldAfterwards = true}; }
    bool isRemembered() const override { return false; }

protected:
    QDBusMessage question() const override {
        return message(notifications, notificationsPath, properties, QStringLiteral("Get"),
                       {notifications, QStringLiteral("Inhibited")});
    }

    std::optional<std::string> stateIn(const QDBusMessage& answer) override { return switchIn(answer); }

    QDBusMessage order(const std::string& state) const override {
        if (state == on) {
            return message(
                notifications, notificationsPath, notifications, QStringLiteral("Inhibit"),
                {QStringLiteral("com.curtain.Curtain"), QStringLiteral("Screen sharing"), QVariantMap()});
        }
        return message(notifications, notificationsPath, notifications, QStringLiteral("UnInhibit"),
                       {QVariant::fromValue(cookie_)});
    }

    void ordered(const QDBusMessage& answer) override {
        if (const auto cookie = valueIn(answer); cookie.isValid()) {
            cookie_ = cookie.toUInt();
        }
    }

private:
    /// Of the latest inhibition; none has this number.
    std::uint32_t cookie_ = 0;
};

std::unique_ptr<QuietRoad> settingRoad(const char* name, const char* schema, const char* key,
                                       const char* quietValue) {
    return std::make_unique<GSettingsQuietRoad>(name, GSettingsKey(schema, key), quietValue);
}

} // namespace

std::unique_ptr<QuietRoad> quietRoadOf(const NotificationServer& server, const QDBusConnection& bus,
                                       const std::filesystem::path& configFolder) {
    const auto& name = server.name;
    if (name == QLatin1String("Xfce Notify Daemon")) {
        return std::make_unique<XfceRoad>(bus);
    }
    if (name == QLatin1String("Notification Daemon") && server.vendor == QLatin1String("MATE")) {
        return settingRoad("mate", "org.mate.NotificationDaemon", "do-not-disturb", "true");
    }
    if (name == QLatin1String("lxqt-notificationd")) {
        return std::make_unique<LxqtQuietRoad>(configFolder / "lxqt" / "notifications.conf");
    }
    if (name == QLatin1String("cinnamon")) {
        return settingRoad("cinnamon", "org.cinnamon.desktop.notifications", "display-notifications",
                           "false");
    }
    if (name == QLatin1String("gnome-shell")) {
        return settingRoad("gnome", "org.gnome.desktop.notifications", "show-banners", "false");
    }
    if (name == QLatin1String("Budgie Notification Server")) {
        return std::make_unique<BudgieRoad>(bus);
    }
    if (name == QLatin1String("dunst")) {
        return std::make_unique<DunstRoad>(bus);
    }
    if (name == QLatin1String("mako")) {
        return std::make_unique<MakoRoad>(bus, configFolder / "mako" / "config");
    }
    if (name == QLatin1String("SwayNotificationCenter")) {
        return std::make_unique<SwayNotificationCenterRoad>(bus);
    }
    return std::make_unique<InhibitionRoad>(bus);
}

} // namespace LinuxPlatform
