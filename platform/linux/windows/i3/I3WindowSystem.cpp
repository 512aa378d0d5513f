#include "platform/linux/windows/i3/I3WindowSystem.h"

#include "platform/linux/windows/i3/I3Sizes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <utility>

namespace LinuxPlatform {
namespace {

using Seconds = Platform::MainQueue::Seconds;

/// i3 is back by then when it is restarted.
constexpr Seconds silenceDeadline{5};
/// A window that its user brought up is his again when it has not been hidden once more by then.
constexpr Seconds bringUpDeadline{1};
constexpr std::chrono::milliseconds startPatience{500};
constexpr std::chrono::milliseconds endPatience{500};
/// The sizes of a layout depend on one another from level to level.
constexpr std::size_t mostAdjustments = 4;

/// In one message. sway 1.7 keeps what it tells of one until it is through, for whoever listens, and ends a
/// connection that this makes longer than 4 MiB, and itself if it was the one that sent the message.
constexpr std::size_t mostAtOnce = 50;

/// Where something always moves, it is never at rest.
constexpr std::size_t mostLooksInVain = 3;

} // namespace

I3WindowSystem::I3WindowSystem(const std::filesystem::path& socket, Platform::MainQueue& queue,
                               std::unique_ptr<WindowSystem> x11, Platform::HidingObstacle whenSilent,
                               std::optional<EarlierValue> record, Platform::Log* log)
    : queue_(queue),
      x11_(std::move(x11)),
      whenSilent_(whenSilent),
      log_(log),
      watch_(socket, queue, [this](std::unique_ptr<const I3Tree> tree) { takeIn(std::move(tree)); }),
      list_(x11_.get()),
      taken_(std::move(record)),
      leaving_(queue),
      activation_(
          queue, [this] { return lookAtScene(); }, [this](WindowId window) { bringToFront(window); }),
      events_(queue, leaving_, [this](WindowId window) { return list_.find(window); }) {
    if (x11_) {
        x11Events_ = x11_->addEventHandler(
            [this](WindowEvent event, const Window& /*window*/) { handleX11Event(event); });
    }
    watch_.open(startPatience);
}

I3WindowSystem::~I3WindowSystem() {
    // What was asked for at the very end is to happen all the same.
    if (!toTake_.empty() || !toGiveBack_.empty() || !returned_.empty()) {
        watch_.finish(endPatience);
    }
    if (!toGiveBack_.empty() && watch_.isKnown()) {
        giveBackTheRest();
        watch_.finish(endPatience);
    }
}

std::optional<Platform::HidingObstacle> I3WindowSystem::hidingObstacle() {
    if (watch_.isKnown()) {
        return std::nullopt;
    }
    return watch_.silence() < silenceDeadline ? Platform::HidingObstacle::notKnownYet : whenSilent_;
}

bool I3WindowSystem::knowsEveryWindow() {
    return watch_.isKnown();
}

std::uint64_t I3WindowSystem::generation() {
    return list_.generation();
}

const std::vector<Window>& I3WindowSystem::windows() {
    return list_.windows();
}

bool I3WindowSystem::exists(WindowId window) const {
    return tree_ != nullptr && tree_->find(window) != nullptr;
}

bool I3WindowSystem::isHidden(WindowId window) const {
    const auto* const leaf = tree_ ? tree_->find(window) : nullptr;
    return leaf != nullptr && leaf->isInScratchpad();
}

Platform::Subscription I3WindowSystem::addEventHandler(EventHandler handler) {
    return events_.addHandler(std::move(handler));
}

void I3WindowSystem::handleX11Event(WindowEvent event) {
    if (event == WindowEvent::opened && tree_) {
        noteOpened();
    }
}

void I3WindowSystem::takeIn(std::unique_ptr<const I3Tree> tree) {
    const auto before = std::exchange(tree_, std::move(tree));
    list_.setTree(*tree_);
    if (before == nullptr) {
        forgetWhatIsNotLeftBehind();
    }
    noteScratchpad();
    noteChanges(before.get());
    noteWhatIsBack();
    if (watch_.isStale() && looksInVain_ < mostLooksInVain) {
        ++looksInVain_;
    } else {
        looksInVain_ = 0;
        carryOut();
    }
}

void I3WindowSystem::noteChanges(const I3Tree* before) {
    const auto isGone = [this](WindowId window) { return !exists(window); };
    leaving_.remove([&](WindowId window) { return isGone(window) || isHidden(window); });
    activation_.forget(isGone);
    taken_.forget(isGone);
    std::erase_if(described_, [&](const auto& described) { return isGone(described.first); });
    if (before == nullptr) {
        for (const auto& window : windows()) {
            described_.emplace(window.id, window.hints);
        }
        return;
    }
    noteOpened();
    for (const auto& leaf : tree_->leaves()) {
        const auto window = leaf.node->window;
        const auto* const earlier = before->find(window);
        const bool isBack = earlier != nullptr && earlier->isInScratchpad();
        const bool hadFocus = earlier != nullptr && earlier->node->isFocused;
        if (!leaf.isInScratchpad() && (isBack || (leaf.node->isFocused && !hadFocus))) {
            events_.announce(WindowEvent::activated, window);
        }
    }
}

void I3WindowSystem::noteOpened() {
    for (const auto& window : windows()) {
        const auto x11Window = tree_->find(window.id)->node->x11Window;
        // The X server tells in a moment whose it is.
        if (x11_ && x11Window && !x11_->exists(*x11Window)) {
            continue;
        }
        const auto [described, isNew] = described_.try_emplace(window.id, window.hints);
        if (isNew || described->second != window.hints) {
            described->second = window.hints;
            events_.announce(WindowEvent::opened, window.id);
        }
    }
}

void I3WindowSystem::noteScratchpad() {
    for (const auto& leaf : tree_->leaves()) {
        const auto window = leaf.node->window;
        if (leaf.isInScratchpad() && !taken_.contains(window)) {
            scratchpad_.insert(window);
        } else if (leaf.floating == nullptr) {
            scratchpad_.erase(window);
        }
    }
    std::erase_if(scratchpad_, [this](WindowId window) { return !exists(window); });
}

void I3WindowSystem::noteWhatIsBack() {
    taken_.forget([this](WindowId window) { return !isHidden(window) && isReturning(window); });
    for (const auto& taken : taken_.all()) {
        if (isHidden(taken.id) || toTake_.contains(taken.id)) {
            broughtUp_.erase(taken.id);
        } else if (broughtUp_.emplace(taken.id, queue_.now()).second) {
            queue_.asyncAfter(bringUpDeadline, lifetime_.weak([this, id = taken.id] {
                const auto since = broughtUp_.find(id);
                if (since != broughtUp_.end() && queue_.now() - since->second >= bringUpDeadline) {
                    broughtUp_.erase(since);
                    taken_.forget(std::array{id});
                }
            }));
        }
    }
    std::erase_if(broughtUp_, [this](const auto& window) { return !taken_.contains(window.first); });
}

void I3WindowSystem::forgetWhatIsNotLeftBehind() {
    // A window in view was brought up, or has the number of one that is gone; so may one in the scratchpad.
    taken_.forget([this](WindowId window) {
        const auto place = placeOf(window);
        const auto process = processOf(window);
        return !isHidden(window) || !place || (place->process && process && *place->process != *process);
    });
}

void I3WindowSystem::hide(std::span<const WindowId> windows) {
    leaving_.add(windows);
    for (const auto window : windows) {
        toGiveBack_.erase(window);
        toTake_.insert(window);
    }
    if (toFocus_ && toTake_.contains(*toFocus_)) {
        toFocus_.reset();
    }
    std::erase_if(returned_, [this](const I3Return& returned) { return toTake_.contains(returned.window); });
    watch_.look();
}

void I3WindowSystem::show(std::span<const WindowId> windows) {
    for (const auto window : windows) {
        toTake_.erase(window);
        toGiveBack_.insert(window);
    }
    watch_.look();
}

void I3WindowSystem::activate(std::span<const WindowId> windows) {
    activation_.request(windows);
}

void I3WindowSystem::carryOut() {
    if (!toTake_.empty()) {
        take();
    } else if (!toGiveBack_.empty()) {
        giveBack();
    } else if (!returned_.empty()) {
        settleReturned();
    } else if (const auto window = std::exchange(toFocus_, std::nullopt)) {
        command(commandToFocus(*tree_, *window));
    } else {
        settleUnsized();
    }
}

void I3WindowSystem::take() {
    std::vector<TakenWindow> places;
    std::vector<WindowId> windows;
    for (const auto id : toTake_) {
        const auto* const leaf = tree_->find(id);
        if (leaf == nullptr || leaf->isInScratchpad()) {
            continue;
        }
        windows.push_back(id);
        if (!taken_.contains(id)) {
            places.push_back({id, placeOf(*leaf).text()});
        }
    }
    const auto* const focused = tree_->focused();
    activation_.noteHiding(windows, focused != nullptr ? std::optional(focused->node->window) : std::nullopt);
    taken_.take(places);
    std::erase_if(unsized_, [this](const I3Return& returned) { return taken_.contains(returned.window); });
    std::ranges::stable_partition(
        windows, [this](WindowId window) { return tree_->isVisible(*tree_->find(window)->workspace); });
    const auto first = std::span(windows).first(std::min(windows.size(), mostAtOnce));
    toTake_ = {windows.begin() + std::ssize(first), windows.end()};
    command(commandsToTake(*tree_, first, {windows.begin(), windows.end()}));
    if (!toGiveBack_.empty()) {
        watch_.look();
    }
}

I3Place I3WindowSystem::placeOf(const I3Leaf& leaf) {
    auto place = I3Place::of(leaf);
    const auto window = leaf.node->window;
    place.process = processOf(window);
    place.isOfScratchpad = place.isOfScratchpad || scratchpad_.contains(window);
    for (const auto& returned : unsized_) {
        place.takeSizes(returned.place);
    }
    return place;
}

void I3WindowSystem::giveBack() {
    std::string commands;
    const auto returns = nextToGiveBack(commands);
    // One that comes later gets the focus then.
    const auto toFocus = toFocus_ && toGiveBack_.contains(*toFocus_) ? std::nullopt : toFocus_;
    if (const auto toReturn = commandsToReturn(*tree_, returns, toFocus); !toReturn.empty()) {
        if (toFocus) {
            toFocus_.reset();
        }
        commands += toReturn;
    }
    if (returned_.empty()) {
        refusal_.reset();
    }
    std::ranges::copy(returns, std::back_inserter(returned_));
    adjustmentsLeft_ = mostAdjustments;
    command(commands);
    if (commands.empty() && (toFocus_ || !toGiveBack_.empty())) {
        watch_.look();
    }
}

std::vector<I3Return> I3WindowSystem::nextToGiveBack(std::string& commands) {
    std::vector<WindowId> thereAlready;
    std::vector<WindowId> withoutPlace;
    std::vector<I3Return> returns;
    for (const auto id : std::exchange(toGiveBack_, {})) {
        if (!isHidden(id)) {
            thereAlready.push_back(id);
        } else if (auto place = placeOf(id)) {
            returns.push_back({id, std::move(*place)});
        } else {
            withoutPlace.push_back(id);
        }
    }
    taken_.forget(thereAlready);
    // What stood together comes back together.
    std::ranges::stable_sort(returns, {}, [](const I3Return& returned) { return returned.place.workspace; });
    for (; returns.size() > mostAtOnce; returns.pop_back()) {
        toGiveBack_.insert(returns.back().window);
    }
    for (; returns.size() + withoutPlace.size() > mostAtOnce; withoutPlace.pop_back()) {
        toGiveBack_.insert(withoutPlace.back());
    }
    for (const auto id : withoutPlace) {
        commands += commandsToBringUp(*tree_, id);
    }
    return returns;
}

void I3WindowSystem::giveBackTheRest() {
    while (!toGiveBack_.empty()) {
        std::string commands;
        std::vector<I3Return> returns;
        for (std::size_t moved = 0; moved < mostAtOnce && !toGiveBack_.empty(); ++moved) {
            const auto id = *toGiveBack_.begin();
            toGiveBack_.erase(toGiveBack_.begin());
            if (auto place = placeOf(id)) {
                returns.push_back({id, std::move(*place)});
            } else {
                commands += commandsToBringUp(*tree_, id);
            }
        }
        command(commands + commandsToReturnAnywhere(*tree_, returns));
    }
}

void I3WindowSystem::settleReturned() {
    if (const auto refusal = std::exchange(refusal_, std::nullopt)) {
        bringUpWhatIsStillAway(*refusal);
    }
    if (adjustmentsLeft_ > 0) {
        --adjustmentsLeft_;
        if (const auto commands = commandsToAdjust(*tree_, returned_); !commands.empty()) {
            command(commands);
            return;
        }
    }
    command(commandsToFinish(*tree_, returned_));
    std::ranges::copy_if(returned_, std::back_inserter(unsized_),
                         [this](const I3Return& returned) { return !isSizeKnown(returned.window); });
    returned_.clear();
    if (toFocus_) {
        watch_.look();
    }
}

void I3WindowSystem::bringUpWhatIsStillAway(const std::string& refusal) {
    const auto isAway = [this](const I3Return& returned) { return isHidden(returned.window); };
    std::vector<WindowId> away;
    for (const auto& returned : returned_) {
        if (isAway(returned)) {
            away.push_back(returned.window);
        }
    }
    taken_.forget([&](WindowId window) { return isHidden(window) && isReturning(window); });
    std::erase_if(returned_, isAway);
    for (std::size_t first = 0; first < away.size(); first += mostAtOnce) {
        std::string commands;
        for (const auto window : std::span(away).subspan(first, std::min(mostAtOnce, away.size() - first))) {
            commands += commandsToBringUp(*tree_, window);
        }
        command(commands);
    }
    if (!away.empty() && log_ != nullptr) {
        log_->writeLine("Curtain: a window could not be put back to its place: " + refusal);
    }
}

void I3WindowSystem::settleUnsized() {
    const auto isOver = [this](const I3Return& returned) {
        return !exists(returned.window) || isHidden(returned.window);
    };
    std::erase_if(unsized_, isOver);
    std::vector<I3Return> seen;
    std::ranges::copy_if(unsized_, std::back_inserter(seen),
                         [this](const I3Return& returned) { return isSizeKnown(returned.window); });
    const auto commands = commandsToAdjust(*tree_, seen);
    if (!commands.empty() && adjustmentsLeft_ > 0) {
        --adjustmentsLeft_;
        command(commands);
    } else if (!seen.empty()) {
        std::erase_if(unsized_, [this](const I3Return& returned) { return isSizeKnown(returned.window); });
        adjustmentsLeft_ = mostAdjustments;
    }
}

bool I3WindowSystem::isSizeKnown(WindowId window) const {
    const auto* const leaf = tree_->find(window);
    return leaf != nullptr && areSizesKnown(*tree_, *leaf);
}

void I3WindowSystem::command(const std::string& commands) {
    if (!commands.empty()) {
        watch_.command(commands, [this](const QByteArray& reply) { noteRefusals(reply); });
    }
}

void I3WindowSystem::noteRefusals(const QByteArray& reply) {
    // Of what was asked for windows that are gone, nothing is missed.
    for (auto& refusal : refusalsIn(reply)) {
        refusal_ = std::move(refusal);
    }
}

bool I3WindowSystem::isReturning(WindowId window) const {
    return std::ranges::find(returned_, window, &I3Return::window) != returned_.end();
}

std::optional<I3Place> I3WindowSystem::placeOf(WindowId window) const {
    const auto text = taken_.placeOf(window);
    return text ? I3Place::fromText(*text) : std::nullopt;
}

std::optional<std::uint32_t> I3WindowSystem::processOf(WindowId window) {
    const auto found = list_.find(window);
    return found ? found->hints.process : std::nullopt;
}

WindowActivation::Scene I3WindowSystem::lookAtScene() const {
    WindowActivation::Scene scene;
    if (!tree_) {
        return scene;
    }
    scene.stackingOrder = tree_->windowsByFocus();
    std::ranges::reverse(scene.stackingOrder);
    scene.isHere = [this](WindowId window) {
        const auto* const leaf = tree_->find(window);
        const auto place = isShowAwaited(window) ? placeOf(window) : std::nullopt;
        const auto* const workspace = place             ? tree_->workspaceNamed(place->workspace)
                                      : leaf != nullptr ? leaf->workspace
                                                        : nullptr;
        return workspace != nullptr && tree_->isVisible(*workspace);
    };
    return scene;
}

void I3WindowSystem::bringToFront(WindowId window) {
    toFocus_ = window;
    watch_.lookAgain();
}

} // namespace LinuxPlatform
