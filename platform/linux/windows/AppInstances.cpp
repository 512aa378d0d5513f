#include "platform/linux/windows/AppInstances.h"

#include <algorithm>
#include <span>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Process ids are small: this bit keeps connections, which stand in for unknown processes, apart from them.
constexpr std::uint64_t connectionFlag = std::uint64_t{1} << 63U;

std::uint64_t processOf(const Window& window) {
    return window.hints.process ? std::uint64_t{*window.hints.process} : connectionFlag | window.client;
}

} // namespace

AppInstances::AppInstances(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries,
                           ScopedApps& scopedApps)
    : windowSystem_(windowSystem),
      identity_(identity),
      entries_(entries),
      scopedApps_(scopedApps) {}

const std::vector<AppInstance>& AppInstances::all() {
    lookForWindowless();
    regroupIfChanged();
    return instances_;
}

std::vector<AppInstanceKey> AppInstances::withBundleIdentifier(const std::string& bundleID) {
    lookForWindowless();
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
    if (instance == nullptr || instance->windows.empty()) {
        return;
    }
    const auto hidden = instance->visibleWindows;
    for (const auto window : hidden) {
        takenAway_.insert_or_assign(window, false);
        if (askedBack_.erase(window) > 0) {
            hurried_.insert(window);
        }
    }
    groupedGeneration_.reset();
    windowSystem_.hide(hidden);
}

void AppInstances::unhide(const AppInstanceKey& key) {
    const auto* const instance = find(key);
    if (instance == nullptr || instance->windows.empty()) {
        return;
    }
    std::vector<WindowId> returning;
    for (const auto window : instance->windows) {
        const auto taken = takenAway_.find(window);
        if (taken == takenAway_.end()) {
            continue;
        }
        if (const bool wasSeenHidden = taken->second; !wasSeenHidden) {
            hurried_.insert(window);
        }
        takenAway_.erase(taken);
        returning.push_back(window);
    }
    const auto& shown = returning.empty() ? instance->windows : returning;
    askedBack_.insert(shown.begin(), shown.end());
    groupedGeneration_.reset();
    windowSystem_.show(shown);
}

void AppInstances::activate(const AppInstanceKey& key) {
    // A window that its user put away is not to come back with the others.
    const auto* const instance = find(key);
    if (instance != nullptr && !instance->windows.empty()) {
        windowSystem_.activate(instance->visibleWindows);
    }
}

void AppInstances::lookForWindowless() {
    const auto& running = scopedApps_.running();
    if (std::exchange(scopedGeneration_, scopedApps_.generation()) != scopedApps_.generation()) {
        scoped_ = running;
        groupedGeneration_.reset();
    }
}

void AppInstances::regroupIfChanged() {
    const auto generation = windowSystem_.generation();
    if (groupedGeneration_ != generation) {
        groupedGeneration_ = generation;
        regroup();
    }
}

void AppInstances::regroup() {
    if (const auto entriesGeneration = entries_.generation(); entriesGeneration_ != entriesGeneration) {
        entriesGeneration_ = entriesGeneration;
        identities_.clear();
    }
    instances_.clear();
    positions_.clear();
    owners_.clear();
    keysByBundleIdentifier_.clear();
    std::erase_if(identities_, [this](const auto& entry) { return !windowSystem_.exists(entry.first); });
    std::erase_if(takenAway_, [this](const auto& entry) { return !windowSystem_.exists(entry.first); });
    for (auto* const windows : {&askedBack_, &hurried_}) {
        std::erase_if(*windows, [this](WindowId window) { return !windowSystem_.exists(window); });
    }

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
        forgetIfBroughtBack(window);
        if (!window.isHidden) {
            askedBack_.erase(window.id);
        }
        // One that is on its way back counts as visible: hiding it again has to catch up with it.
        if (!window.isHidden || askedBack_.contains(window.id)) {
            instance.visibleWindows.push_back(window.id);
        }
        instance.isInTaskList = instance.isInTaskList || window.isInTaskList;
        owners_.emplace(window.id, key);
    }

    addWindowless();

    std::stable_partition(instances_.begin(), instances_.end(),
                          [](const auto& instance) { return !instance.visibleWindows.empty(); });
    for (std::size_t index = 0; index < instances_.size(); ++index) {
        const auto& key = instances_[index].key;
        positions_[key] = index;
        keysByBundleIdentifier_[key.bundleIdentifier].push_back(key);
    }
}

void AppInstances::addWindowless() {
    const auto countWithWindows = instances_.size();
    for (const auto& app : scoped_) {
        // Other apps may have windows in there, as the programs in a terminal have.
        const bool hasWindow = std::ranges::any_of(
            std::span(instances_).first(countWithWindows), [&](const AppInstance& instance) {
                const auto process = instance.key.process;
                return instance.key.bundleIdentifier == app.identifier.bundleIdentifier &&
                       ((process & connectionFlag) != 0 ||
                        std::ranges::binary_search(app.processes, static_cast<std::uint32_t>(process)));
            });
        const AppInstanceKey key{app.identifier.bundleIdentifier, app.leader};
        if (!hasWindow && positions_.emplace(key, instances_.size()).second) {
            instances_.push_back({key, app.identifier.localizedName, {}, {}, false});
        }
    }
}

void AppInstances::forgetIfBroughtBack(const Window& window) {
    const auto taken = takenAway_.find(window.id);
    if (taken == takenAway_.end()) {
        return;
    }
    if (window.isHidden) {
        taken->second = true;
    } else if (taken->second && !hurried_.contains(window.id)) {
        takenAway_.erase(taken);
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
