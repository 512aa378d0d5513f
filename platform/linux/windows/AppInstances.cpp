#include "platform/linux/windows/AppInstances.h"

#include <algorithm>
#include <iterator>

namespace LinuxPlatform {
namespace {

/// Process ids are small: this bit keeps connections, which stand in for unknown processes, apart from them.
constexpr std::uint64_t connectionFlag = std::uint64_t{1} << 63U;

std::uint64_t processOf(const Window& window) {
    return window.hints.process ? std::uint64_t{*window.hints.process} : connectionFlag | window.client;
}

} // namespace

AppInstances::AppInstances(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries)
    : windowSystem_(windowSystem),
      identity_(identity),
      entries_(entries) {}

const std::vector<AppInstance>& AppInstances::all() {
    regroupIfChanged();
    return instances_;
}

std::vector<AppInstanceKey> AppInstances::withBundleIdentifier(const std::string& bundleID) {
    regroupIfChanged();
    const auto found = keysByBundleIdentifier_.find(bundleID);
    return found == keysByBundleIdentifier_.end() ? std::vector<AppInstanceKey>{} : found->second;
}

const AppInstance* AppInstances::find(const AppInstanceKey& key) {
    regroupIfChanged();
    const auto found = positions_.find(key);
    return found == positions_.end() ? nullptr : &instances_[found->second];
}

std::optional<AppInstanceKey> AppInstances::owning(WindowId window) {
    regroupIfChanged();
    const auto found = owners_.find(window);
    return found == owners_.end() ? std::nullopt : std::optional(found->second);
}

void AppInstances::hide(const AppInstanceKey& key) {
    const auto* const instance = find(key);
    if (instance == nullptr) {
        return;
    }
    for (const auto window : instance->visibleWindows) {
        takenAway_.insert(window);
        askedBack_.erase(window);
    }
    windowSystem_.hide(instance->visibleWindows);
}

void AppInstances::unhide(const AppInstanceKey& key) {
    const auto* const instance = find(key);
    if (instance == nullptr) {
        return;
    }
    std::vector<WindowId> returning;
    for (const auto window : instance->windows) {
        if (takenAway_.erase(window) > 0) {
            returning.push_back(window);
        }
    }
    const auto& shown = returning.empty() ? instance->windows : returning;
    askedBack_.insert(shown.begin(), shown.end());
    windowSystem_.show(shown);
}

void AppInstances::activate(const AppInstanceKey& key) {
    const auto* const instance = find(key);
    if (instance == nullptr) {
        return;
    }
    // A window that its user put away is not to come back with the others.
    auto candidates = instance->visibleWindows;
    std::ranges::copy_if(instance->windows, std::back_inserter(candidates),
                         [this](WindowId window) { return askedBack_.contains(window); });
    windowSystem_.activate(candidates);
}

void AppInstances::regroupIfChanged() {
    const auto generation = windowSystem_.generation();
    if (groupedGeneration_ == generation) {
        return;
    }
    groupedGeneration_ = generation;
    if (const auto entriesGeneration = entries_.generation(); entriesGeneration_ != entriesGeneration) {
        entriesGeneration_ = entriesGeneration;
        identities_.clear();
    }
    instances_.clear();
    positions_.clear();
    owners_.clear();
    keysByBundleIdentifier_.clear();
    std::erase_if(identities_, [this](const auto& entry) { return !windowSystem_.exists(entry.first); });
    std::erase_if(takenAway_, [this](WindowId window) { return !windowSystem_.exists(window); });

    for (const auto& window : windowSystem_.windows()) {
        const auto& identity = identityOf(window);
        if (!identity) {
            continue;
        }
        const AppInstanceKey key{identity->bundleIdentifier, processOf(window)};
        const auto [position, isNew] = positions_.emplace(key, instances_.size());
        if (isNew) {
            instances_.push_back({key, identity->localizedName, {}, {}, false});
        }
        auto& instance = instances_[position->second];
        instance.windows.push_back(window.id);
        if (!window.isHidden) {
            instance.visibleWindows.push_back(window.id);
            askedBack_.erase(window.id);
        }
        instance.isInTaskList = instance.isInTaskList || window.isInTaskList;
        owners_.emplace(window.id, key);
    }

    std::stable_partition(instances_.begin(), instances_.end(),
                          [](const auto& instance) { return !instance.visibleWindows.empty(); });
    for (std::size_t index = 0; index < instances_.size(); ++index) {
        const auto& key = instances_[index].key;
        positions_[key] = index;
        keysByBundleIdentifier_[key.bundleIdentifier].push_back(key);
    }
}

const std::optional<AppIdentifier>& AppInstances::identityOf(const Window& window) {
    const auto found = identities_.find(window.id);
    if (found != identities_.end() && found->second.first == window.hints) {
        return found->second.second;
    }
    auto& entry = identities_[window.id];
    entry = {window.hints, identity_.identify(window.hints)};
    return entry.second;
}

} // namespace LinuxPlatform
