#include "platform/linux/workspace/AppInstances.h"

#include <algorithm>
#include <span>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Process ids are small: this bit keeps connections, which stand in for unknown processes, apart from them.
constexpr std::uint64_t connectionFlag = std::uint64_t{1} << 63U;
/// However busy a window manager is, it has answered by then, or it will not.
constexpr Platform::MainQueue::Seconds answerDeadline{5};

std::uint64_t processOf(const Window& window) {
    return window.hints.process ? std::uint64_t{*window.hints.process} : connectionFlag | window.client;
}

} // namespace

AppInstances::AppInstances(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries,
                           ScopedApps& scopedApps, Platform::MainQueue& mainQueue, HiddenWindowsRecord record)
    : windowSystem_(windowSystem),
      identity_(identity),
      entries_(entries),
      scopedApps_(scopedApps),
      mainQueue_(mainQueue),
      record_(std::move(record)) {}

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

std::vector<WindowId> AppInstances::windowsOf(const std::string& bundleID) {
    regroupIfChanged();
    std::vector<WindowId> windows;
    if (const auto keys = keysByBundleIdentifier_.find(bundleID); keys != keysByBundleIdentifier_.end()) {
        for (const auto& key : keys->second) {
            const auto& more = instances_[positions_.at(key)].windows;
            windows.insert(windows.end(), more.begin(), more.end());
        }
    }
    return windows;
}

void AppInstances::hide(const AppInstanceKey& key) {
    const auto* const instance = find(key);
    if (instance == nullptr || instance->windows.empty()) {
        return;
    }
    auto hidden = instance->visibleWindows;
    for (const auto window : hidden) {
        auto& known = known_.at(window);
        known.takenAway = false;
        if (std::exchange(known.awaitedUntil, std::nullopt)) {
            known.hurriedUntil = newDeadline();
        }
    }
    for (const auto window : instance->windows) {
        if (std::exchange(known_.at(window).isToBeHiddenAnew, false)) {
            hidden.push_back(window);
        }
    }
    noteWhatWasPutAway(*instance);
    keepRecord();
    groupedGeneration_.reset();
    windowSystem_.hide(hidden);
}

void AppInstances::noteWhatWasPutAway(const AppInstance& instance) {
    if (!hasTakenFrom(instance.key.bundleIdentifier)) {
        return;
    }
    for (const auto window : instance.windows) {
        auto& known = known_.at(window);
        known.wasPutAwayBefore = !known.takenAway;
    }
}

bool AppInstances::hasTakenFrom(const std::string& bundleID) const {
    return std::ranges::any_of(keysByBundleIdentifier_.at(bundleID), [this](const AppInstanceKey& key) {
        return std::ranges::any_of(instances_[positions_.at(key)].windows, [this](WindowId window) {
            return known_.at(window).takenAway.has_value();
        });
    });
}

void AppInstances::unhide(const AppInstanceKey& key) {
    const auto* const instance = find(key);
    if (instance == nullptr || instance->windows.empty()) {
        return;
    }
    std::vector<WindowId> returning;
    std::vector<WindowId> untaken;
    for (const auto window : instance->windows) {
        auto& known = known_.at(window);
        const bool wasPutAwayBefore = std::exchange(known.wasPutAwayBefore, false);
        known.isToBeHiddenAnew = false;
        if (const auto taken = std::exchange(known.takenAway, std::nullopt)) {
            if (const bool wasSeenHidden = *taken; !wasSeenHidden) {
                known.hurriedUntil = newDeadline();
            }
            returning.push_back(window);
        } else if (!wasPutAwayBefore) {
            untaken.push_back(window);
        }
    }
    const auto& shown = returning.empty() ? untaken : returning;
    if (shown.empty()) {
        return;
    }
    for (const auto window : shown) {
        known_.at(window).awaitedUntil = newDeadline();
    }
    groupedGeneration_.reset();
    windowSystem_.show(shown);
    keepRecord();
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
    if (endWhatIsOverdue() || groupedGeneration_ != generation) {
        groupedGeneration_ = generation;
        regroup();
    }
}

AppInstances::Seconds AppInstances::newDeadline() {
    const auto deadline = mainQueue_.now() + answerDeadline;
    nextDeadline_ = nextDeadline_.value_or(deadline);
    return deadline;
}

bool AppInstances::endWhatIsOverdue() {
    const auto now = mainQueue_.now();
    if (!nextDeadline_ || now < *nextDeadline_) {
        return false;
    }
    nextDeadline_.reset();
    for (auto& [id, known] : known_) {
        // It comes into view whenever its turn has come, unless it is hidden again before.
        if (known.awaitedUntil && windowSystem_.isShowAwaited(id)) {
            known.awaitedUntil = now + answerDeadline;
        }
        for (auto* const deadline : {&known.awaitedUntil, &known.hurriedUntil}) {
            if (*deadline && now >= **deadline) {
                deadline->reset();
            } else if (*deadline) {
                nextDeadline_ = std::min(nextDeadline_.value_or(**deadline), **deadline);
            }
        }
    }
    return true;
}

void AppInstances::regroup() {
    entriesGeneration_ = entries_.generation();
    instances_.clear();
    positions_.clear();
    owners_.clear();
    keysByBundleIdentifier_.clear();
    std::erase_if(known_, [this](const auto& entry) { return !windowSystem_.exists(entry.first); });

    for (const auto& window : windowSystem_.windows()) {
        auto& known = knownWindow(window);
        identify(known, window);
        if (!known.identity) {
            continue;
        }
        takeNoteOf(known, window);
        const AppInstanceKey key{known.identity->bundleIdentifier, processOf(window)};
        const auto [position, isNew] = positions_.emplace(key, instances_.size());
        if (isNew) {
            instances_.push_back({key, known.identity->localizedName, {}, {}, false});
        }
        auto& instance = instances_[position->second];
        instance.windows.push_back(window.id);
        // One that is on its way back counts as visible: hiding it again has to catch up with it.
        if (!window.isHidden || known.awaitedUntil) {
            instance.visibleWindows.push_back(window.id);
        }
        instance.isInTaskList = instance.isInTaskList || window.isInTaskList;
        owners_.emplace(window.id, key);
    }

    keepRecord();
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

AppInstances::KnownWindow& AppInstances::knownWindow(const Window& window) {
    const auto [position, isNew] = known_.try_emplace(window.id);
    auto& known = position->second;
    if (isNew || known.birth != window.birth) {
        known = firstKnowledgeOf(window);
    }
    return known;
}

AppInstances::KnownWindow AppInstances::firstKnowledgeOf(const Window& window) {
    KnownWindow known;
    known.birth = window.birth;
    // One that can be seen was brought back meanwhile.
    if (record_.takeEarlier(window) && window.isHidden) {
        known.takenAway = true;
        known.isToBeHiddenAnew = true;
    }
    return known;
}

void AppInstances::keepRecord() {
    std::vector<Window> taken;
    for (const auto& [id, known] : known_) {
        if (known.takenAway) {
            taken.push_back({.id = id, .birth = known.birth, .hints = known.hints});
        }
    }
    record_.keep(taken);
}

void AppInstances::identify(KnownWindow& known, const Window& window) {
    if (known.entriesGeneration != entriesGeneration_ || known.hints != window.hints) {
        known.entriesGeneration = entriesGeneration_;
        known.hints = window.hints;
        known.identity = identity_.identify(window.hints);
    }
}

void AppInstances::takeNoteOf(KnownWindow& known, const Window& window) const {
    if (!window.isHidden) {
        // One that was asked back before it had gone may still go before it comes.
        if (known.awaitedUntil && !windowSystem_.isShowAwaited(window.id)) {
            known.awaitedUntil.reset();
        }
        known.wasPutAwayBefore = false;
    }
    if (known.takenAway && window.isHidden) {
        known.takenAway = true;
    } else if (known.takenAway.value_or(false) && !known.hurriedUntil) {
        // Its user brought it back.
        known.takenAway.reset();
        known.isToBeHiddenAnew = false;
    }
}

} // namespace LinuxPlatform
