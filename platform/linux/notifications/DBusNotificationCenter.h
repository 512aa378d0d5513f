#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/UserNotificationCenter.h"
#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Notifications by way of org.freedesktop.Notifications (version 1.2 of that protocol) on the
/// session bus. A server that is slow, that ends and comes back or that appears late still gets what was
/// posted shortly before; nothing waits for it. What stood on the screen of a server that ended is gone.
class DBusNotificationCenter : public Platform::UserNotificationCenter {
public:
    /// `applicationName` is what people read; `desktopEntry` names the program's desktop entry and its icon.
    /// `mainQueue` outlives this object.
    DBusNotificationCenter(const QDBusConnection& bus, Platform::MainQueue& mainQueue,
                           std::string applicationName, std::string desktopEntry);

    void setDelegate(Platform::UserNotificationCenterDelegate* delegate) override;
    void setNotificationCategories(std::vector<Platform::NotificationCategory> categories) override;
    void add(const Platform::NotificationRequest& request) override;
    void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override;
    void whenDelivered(std::function<void()> task) override;
    /// Nobody is asked on this desktop.
    void requestAuthorization(std::uint64_t options, std::function<void(bool isGranted)> completion) override;

private:
    /// A notification that the server has not taken yet.
    struct Post {
        /// Later posts have higher numbers.
        std::uint64_t number = 0;
        Platform::NotificationRequest request;
        std::vector<Platform::NotificationAction> actions;
        bool hasSound = false;
        Platform::MainQueue::Seconds postedAt{};
        /// How many servers have ended while it waited.
        int servers = 0;
        /// Whether it is to go as soon as its number is known.
        bool isWithdrawn = false;
    };

    /// A notification that stands on the screen.
    struct Shown {
        std::uint32_t serverId = 0;
        Platform::NotificationRequest request;
        std::set<std::string> actions;
    };

    struct Capabilities {
        bool hasActions = false;
        bool hasMarkup = false;
        bool hasSound = false;
    };

    void present(const Platform::NotificationRequest& request, std::uint64_t options);
    void ownerChanged();
    void sendWaiting();
    void askCapabilities();
    void capabilitiesAnswered(const QDBusMessage& reply);
    void send(const Post& post);
    void sent(const std::string& identifier, const QDBusMessage& reply);
    void putBack(const Post& post);
    void tellIfDelivered();
    void close(std::uint32_t serverId);
    void actionInvoked(const QDBusMessage& message);
    void closed(const QDBusMessage& message);
    /// What it is about may have its number on its way.
    void keepForLater(const QDBusMessage& message);
    void lookAtEarlySignals();
    QVariantMap hints(const Post& post) const;
    QStringList actions(const Post& post) const;
    /// The shown notification with the server's number that the message begins with.
    std::map<std::string, Shown>::iterator shownIn(const QDBusMessage& message);
    /// Calls the server, or has the bus start one. `onReply` is not called any more once somebody else is the
    /// server.
    void call(const QString& method, const QVariantList& arguments,
              std::function<void(const QDBusMessage& reply)> onReply);

    QDBusConnection bus_;
    Platform::MainQueue& mainQueue_;
    std::string applicationName_;
    std::string desktopEntry_;
    Platform::UserNotificationCenterDelegate* delegate_ = nullptr;
    std::vector<Platform::NotificationCategory> categories_;

    BusNameOwner owner_;
    /// The unique bus name of the server, under which no other can be taken for it; empty where there is
    /// none.
    QString server_;
    DBusSignal actionInvoked_;
    DBusSignal closed_;

    std::uint64_t lastNumber_ = 0;
    /// Oldest first; at most one with each identifier.
    std::vector<Post> waiting_;
    /// Those that the server has been handed and has not answered yet, by their identifier.
    std::map<std::string, Post> inFlight_;
    std::vector<std::function<void()>> awaitingDelivery_;
    std::map<std::string, Shown> shown_;
    /// What the server said of numbers that nobody knew yet: a reply may be handed over after the signals
    /// that followed it.
    std::vector<QDBusMessage> earlySignals_;
    std::optional<Capabilities> capabilities_;
    bool isAskingCapabilities_ = false;
    /// Counts the changes of the server, so that an answer of an earlier one is told from those of the
    /// present.
    std::uint64_t generation_ = 0;
    /// Owns those that are not answered yet.
    QObject calls_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
