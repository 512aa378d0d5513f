#pragma once

#include "platform/Workspace.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// One instance of an app; writes what is asked of it into the workspace's list of calls.
class FakeRunningApplication : public Platform::RunningApplication {
public:
    FakeRunningApplication(std::vector<std::string>& calls, const std::optional<std::string>& bundleID)
        : identifier(bundleID),
          name(bundleID),
          calls_(calls) {}

    std::optional<std::string> identifier;
    std::optional<std::string> name;
    Platform::ActivationPolicy policy = Platform::ActivationPolicy::regular;
    bool hidden = false;
    /// Whether it goes when it is asked to hide.
    bool obeys = true;
    /// What the calls call it.
    std::string label = identifier.value_or("unknown");

    std::optional<std::string> bundleIdentifier() const override { return identifier; }
    std::optional<std::string> localizedName() const override { return name; }
    Platform::ActivationPolicy activationPolicy() const override { return policy; }
    bool isHidden() const override { return hidden; }

    void hide() override {
        calls_.push_back("hide " + label);
        hidden = hidden || obeys;
    }

    void unhide() override {
        calls_.push_back("unhide " + label);
        hidden = false;
    }

    void activate(Platform::ActivationOptions options) override {
        calls_.push_back("activate " + label + " " + std::to_string(static_cast<unsigned>(options)));
    }

private:
    std::vector<std::string>& calls_;
};

/// A workspace whose apps are started, stopped and brought to the front by the test.
class FakeWorkspace : public Platform::Workspace {
public:
    FakeWorkspace() = default;
    /// Notes in `events` when it is asked for something, too.
    explicit FakeWorkspace(std::vector<std::string>& events) : events_(&events) {}

    std::vector<std::string> calls;
    std::map<std::string, std::string> urls;
    /// By the scheme of an address.
    std::map<std::string, std::string> handlers;
    std::map<std::string, Platform::Image> icons;
    std::vector<Platform::WorkspaceNotification> observed;
    int queries = 0;
    bool everyWindowIsKnown = true;

    FakeRunningApplication& run(const std::optional<std::string>& identifier) {
        applications_.push_back(std::make_shared<FakeRunningApplication>(calls, identifier));
        return *applications_.back();
    }

    /// The name of the first instance.
    std::optional<std::string>& nameOf(const std::string& identifier) {
        const auto instances = runningApplicationsWithBundleIdentifier(identifier);
        return static_cast<FakeRunningApplication&>(*instances.at(0)).name;
    }

    void quitAll() { applications_.clear(); }

    void post(Platform::WorkspaceNotification notification,
              const std::shared_ptr<Platform::RunningApplication>& application) {
        for (const auto& [token, entry] : std::map(observers_)) {
            if (entry.first == notification) {
                entry.second(application);
            }
        }
    }

    /// Brings the first instance to the front.
    void bringToFront(const std::string& identifier) {
        const auto instances = runningApplicationsWithBundleIdentifier(identifier);
        static_cast<FakeRunningApplication&>(*instances.at(0)).hidden = false;
        post(Platform::WorkspaceNotification::didActivateApplication, instances.at(0));
    }

    Platform::RunningApplications runningApplications() override {
        return {applications_.begin(), applications_.end()};
    }

    bool knowsEveryWindow() override { return everyWindowIsKnown; }

    Platform::RunningApplications
    runningApplicationsWithBundleIdentifier(const std::string& bundleID) override {
        ++queries;
        Platform::RunningApplications found;
        for (const auto& application : applications_) {
            if (application->identifier == bundleID) {
                found.push_back(application);
            }
        }
        return found;
    }

    Platform::Subscription addObserver(Platform::WorkspaceNotification notification,
                                       Observer observer) override {
        observed.push_back(notification);
        if (events_ != nullptr) {
            events_->emplace_back("workspace observer");
        }
        const auto token = ++lastToken_;
        observers_.emplace(token, std::pair(notification, std::move(observer)));
        return Platform::Subscription([this, token] { observers_.erase(token); });
    }

    std::optional<std::string> urlForApplicationWithBundleIdentifier(const std::string& bundleID) override {
        const auto found = urls.find(bundleID);
        return found == urls.end() ? std::nullopt : std::optional(found->second);
    }

    std::optional<std::string> urlForApplicationToOpen(const std::string& url) override {
        const auto found = handlers.find(url.substr(0, url.find(':')));
        return found == handlers.end() ? std::nullopt : std::optional(found->second);
    }

    std::optional<Platform::Image> iconForFile(const std::string& path) override {
        const auto found = icons.find(path);
        return found == icons.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::vector<std::shared_ptr<FakeRunningApplication>> applications_;
    std::vector<std::string>* events_ = nullptr;
    int lastToken_ = 0;
    std::map<int, std::pair<Platform::WorkspaceNotification, Observer>> observers_;
};

} // namespace TestSupport
