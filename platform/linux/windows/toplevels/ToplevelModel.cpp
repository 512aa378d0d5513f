#include "platform/linux/windows/toplevels/ToplevelModel.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Programs of X11 are told of by one half of their window class.
WindowHints hintsOf(const std::string& applicationId) {
    WindowHints hints;
    hints.instanceName = applicationId;
    hints.className = applicationId;
    hints.applicationId = applicationId;
    return hints;
}

/// Nothing tells the processes of an app apart, so it counts as one.
std::uint64_t clientOf(const std::string& applicationId) {
    return std::hash<std::string>()(applicationId) | 1U;
}

} // namespace

ToplevelModel::Change ToplevelModel::update(WindowId window, const ForeignToplevels::State& state) {
    Change change;
    const auto position = std::ranges::lower_bound(windows_, window, {}, &Window::id);
    const bool isNew = position == windows_.end() || position->id != window;
    auto& entry = isNew ? *windows_.emplace(position) : *position;
    entry.id = entry.birth = window;
    change.isOpened = isNew || entry.hints.applicationId != state.applicationId;
    change.isReturned = !isNew && entry.isHidden && !state.isMinimised;
    if (change.isOpened) {
        entry.hints = hintsOf(state.applicationId);
        entry.client = clientOf(state.applicationId);
    }
    generation_ += change.isOpened || entry.isHidden != state.isMinimised ? 1 : 0;
    entry.isHidden = state.isMinimised;
    if (state.isActivated) {
        change.isActivated = std::exchange(active_, window) != window;
    } else if (active_ == window) {
        active_.reset();
    }
    return change;
}

void ToplevelModel::close(WindowId window) {
    generation_ += std::erase_if(windows_, [&](const Window& known) { return known.id == window; });
    if (active_ == window) {
        active_.reset();
    }
}

void ToplevelModel::clear() {
    windows_.clear();
    active_.reset();
    ++generation_;
}

const Window* ToplevelModel::find(WindowId window) const {
    const auto position = std::ranges::lower_bound(windows_, window, {}, &Window::id);
    return position != windows_.end() && position->id == window ? &*position : nullptr;
}

} // namespace LinuxPlatform
