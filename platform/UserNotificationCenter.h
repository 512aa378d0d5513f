#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// Bits of what may be shown for a notification.
namespace NotificationOption {
inline constexpr std::uint64_t sound = 2;
inline constexpr std::uint64_t alert = 4;
inline constexpr std::uint64_t banner = 16;
} // namespace NotificationOption

/// A button of a notification.
struct NotificationAction {
    std::string identifier;
    std::string title;

    bool operator==(const NotificationAction&) const = default;
};

/// A kind of notification and its buttons.
struct NotificationCategory {
    std::string identifier;
    std::vector<NotificationAction> actions;

    bool operator==(const NotificationCategory&) const = default;
};

struct NotificationContent {
    std::string title;
    std::string body;
    std::string categoryIdentifier;
    std::map<std::string, std::string> userInfo;

    bool operator==(const NotificationContent&) const = default;
};

/// Delivered at once. One with the identifier of an earlier notification takes its place.
struct NotificationRequest {
    std::string identifier;
    NotificationContent content;

    bool operator==(const NotificationRequest&) const = default;
};

struct NotificationResponse {
    /// Of the click on the notification itself.
    static constexpr const char* defaultActionIdentifier = "com.apple.UNNotificationDefaultActionIdentifier";

    std::string actionIdentifier;
    NotificationRequest request;
};

/// Receives what becomes of notifications, on the main thread.
class UserNotificationCenterDelegate {
public:
    virtual ~UserNotificationCenterDelegate() = default;

    virtual void didReceive(const NotificationResponse& response,
                            const std::function<void()>& completion) = 0;
    /// `completion` receives the options with which to present it while the program is in front.
    virtual void willPresent(const NotificationRequest& request,
                             const std::function<void(std::uint64_t options)>& completion) = 0;
};

/// The desktop's notifications. Nothing here waits for the desktop. Main thread only.
class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;

    /// `delegate` outlives the centre or is replaced before it goes; null for none.
    virtual void setDelegate(UserNotificationCenterDelegate* delegate) = 0;
    /// Replaces all categories.
    virtual void setNotificationCategories(std::vector<NotificationCategory> categories) = 0;
    virtual void add(const NotificationRequest& request) = 0;
    /// Takes them off the screen, and those back that are still on their way; identifiers of none are
    /// passed over.
    virtual void removeDeliveredNotifications(const std::vector<std::string>& identifiers) = 0;
    /// `task` runs once the desktop has taken what was added so far, or is not going to.
    virtual void whenDelivered(std::function<void()> task) = 0;
    /// `completion` may run on any thread.
    virtual void requestAuthorization(std::uint64_t options,
                                      std::function<void(bool isGranted)> completion) = 0;
};

} // namespace Platform
