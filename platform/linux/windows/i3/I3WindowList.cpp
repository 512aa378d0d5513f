#include "platform/linux/windows/i3/I3WindowList.h"

#include <algorithm>

namespace LinuxPlatform {

void I3WindowList::setTree(const I3Tree& tree) {
    tree_ = &tree;
    ++treeGeneration_;
    for (const auto& leaf : tree.leaves()) {
        if (births_.emplace(leaf.node->window, lastBirth_ + 1).second) {
            ++lastBirth_;
        }
    }
    std::erase_if(births_, [&](const auto& birth) { return tree.find(birth.first) == nullptr; });
}

std::uint64_t I3WindowList::generation() {
    return treeGeneration_ + (x11_ != nullptr ? x11_->generation() : 0);
}

const std::vector<Window>& I3WindowList::windows() {
    if (builtGeneration_ == generation()) {
        return windows_;
    }
    std::unordered_map<WindowId, const Window*> x11Windows;
    if (x11_ != nullptr) {
        for (const auto& window : x11_->windows()) {
            x11Windows.emplace(window.id, &window);
        }
    }
    builtGeneration_ = generation();
    windows_.clear();
    if (tree_ == nullptr) {
        return windows_;
    }
    for (const auto& leaf : tree_->leaves()) {
        const auto known = x11Windows.find(leaf.node->x11Window.value_or(0));
        windows_.push_back(describe(leaf, known != x11Windows.end() ? known->second : nullptr));
    }
    std::ranges::sort(windows_, {}, &Window::birth);
    return windows_;
}

std::optional<Window> I3WindowList::find(WindowId window) {
    const auto& all = windows();
    const auto found = std::ranges::find(all, window, &Window::id);
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

Window I3WindowList::describe(const I3Leaf& leaf, const Window* x11) const {
    const auto& node = *leaf.node;
    Window window;
    if (x11 != nullptr) {
        window = *x11;
    } else if (node.x11Window) {
        window.hints.instanceName = node.instanceName;
        window.hints.className = node.className;
    } else {
        // Programs take the name of their desktop entry or what it names as their class.
        window.hints.applicationId = node.applicationId;
        window.hints.className = node.applicationId;
    }
    if (!window.hints.process) {
        window.hints.process = node.process;
    }
    window.id = node.window;
    window.client = x11 != nullptr ? x11->client : node.process.value_or(node.window);
    window.birth = births_.at(node.window);
    window.isHidden = leaf.isInScratchpad();
    return window;
}

} // namespace LinuxPlatform
