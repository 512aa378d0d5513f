#pragma once

#include "platform/UserNotificationCenter.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// A notification centre whose user is the test.
class FakeUserNotificationCenter : public Platform::UserNotificationCenter {
public:
    FakeUserNotificationCenter() = default;
    /// Notes in `events` when it is asked for something, too.
    explicit FakeUserNotificationCenter(std::vector<std::string>& events) : events_(&events) {}

    /// What stands on the screen, oldest first.
    std::vector<Platform::NotificationRequest> delivered;
    /// Every request, those that replaced an earlier one included.
    std::vector<Platform::NotificationRequest> added;
    std::vector<Platform::NotificationCategory> categories;
    /// The names of the operations, in the order in which they came.
    std::vector<std::string> calls;
    std::vector<std::uint64_t> authorizationOptions;
    std::vector<std::function<void(bool)>> pendingAuthorizations;
    Platform::UserNotificationCenterDelegate* delegate = nullptr;
    int completions = 0;
    /// Never takes what was added.
    bool isSilent = false;

    /// What the user does with a notification.
    void answer(const Platform::NotificationRequest& request, const std::string& action) {
        delegate->didReceive({action, request}, [this] { ++completions; });
    }

    void setDelegate(Platform::UserNotificationCenterDelegate* newDelegate) override {
        calls.emplace_back("delegate");
        if (events_ != nullptr) {
            events_->emplace_back("notification delegate");
        }
        delegate = newDelegate;
    }

    void setNotificationCategories(std::vector<Platform::NotificationCategory> newCategories) override {
        calls.emplace_back("categories");
        categories = std::move(newCategories);
    }

    void add(const Platform::NotificationRequest& request) override {
        calls.emplace_back("add");
        added.push_back(request);
        std::erase_if(delivered, [&](const auto& other) { return other.identifier == request.identifier; });
        delivered.push_back(request);
    }

    void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override {
        calls.emplace_back("remove");
        std::erase_if(delivered, [&](const auto& request) {
            return std::ranges::find(identifiers, request.identifier) != identifiers.end();
        });
    }

    void whenDelivered(std::function<void()> task) override {
        if (!isSilent) {
            task();
        }
    }

    void requestAuthorization(std::uint64_t options,
                              std::function<void(bool isGranted)> completion) override {
        calls.emplace_back("authorization");
        authorizationOptions.push_back(options);
        pendingAuthorizations.push_back(std::move(completion));
    }

private:
    std::vector<std::string>* events_ = nullptr;
};

} // namespace TestSupport
