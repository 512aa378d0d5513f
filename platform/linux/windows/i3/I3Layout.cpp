#include "platform/linux/windows/i3/I3Layout.h"

#include "platform/linux/windows/i3/I3Commands.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

namespace LinuxPlatform {
namespace {

/// Windows from one group that floats.
std::string commandsToTakeFromGroup(const I3Tree& tree, std::span<const I3Leaf* const> leaves,
                                    const std::set<WindowId>& leaving) {
    const auto& group = *leaves.front()->floatingGroup;
    if (std::ranges::all_of(windowsIn(group), [&](WindowId id) { return leaving.contains(id); })) {
        return withId(group.id) + "move scratchpad;";
    }
    std::vector<std::int64_t> ids;
    std::ranges::transform(leaves, std::back_inserter(ids), [](const auto* leaf) { return leaf->node->id; });
    const auto place = I3Place::of(*leaves.front());
    return outOfGroup(tree, group, ids) + (tree.isOfSway() ? toRect(tree, group.id, place, place.rect) : "");
}

/// Whether another one of its group was focused later.
bool isBehind(const I3Leaf& leaf) {
    const auto& order =
        leaf.ancestors.empty() ? std::vector<std::int64_t>() : leaf.ancestors.back()->focusOrder;
    return !order.empty() && order.front() != leaf.node->id;
}

std::set<std::string> workspacesOf(std::span<const I3Return> returns) {
    std::set<std::string> workspaces;
    for (const auto& returned : returns) {
        workspaces.insert(returned.place.workspace);
    }
    return workspaces;
}

} // namespace

std::string commandsToTake(const I3Tree& tree, std::span<const WindowId> windows,
                           const std::set<WindowId>& leaving) {
    std::string commands;
    std::map<const I3Node*, std::vector<const I3Leaf*>> ofGroups;
    for (const auto window : windows) {
        const auto* const leaf = tree.find(window);
        if (leaf == nullptr || leaf->isInScratchpad()) {
            continue;
        }
        if (leaf->node->isFullscreen) {
            commands += withId(leaf->node->id) + "fullscreen disable;";
        }
        if (leaf->floatingGroup != nullptr) {
            ofGroups[leaf->floatingGroup].push_back(leaf);
        } else {
            commands += withId(leaf->node->id) + "move scratchpad;";
        }
    }
    for (const auto& [group, leaves] : ofGroups) {
        commands += commandsToTakeFromGroup(tree, leaves, leaving);
    }
    return commands.empty() ? commands : commands + keepView(tree, leaving);
}

std::string commandsToReturn(const I3Tree& tree, std::span<const I3Return> returns,
                             std::optional<WindowId> toFocus) {
    I3Returning returning(tree);
    std::map<std::string, std::vector<const I3Return*>> tiled;
    std::map<const I3Node*, std::vector<const I3Return*>> groups;
    std::vector<const I3Return*> floating;
    for (const auto& returned : returns) {
        const auto* const leaf = tree.find(returned.window);
        if (leaf == nullptr || !leaf->isInScratchpad()) {
            continue;
        }
        if (!returned.place.isFloating && !returned.place.levels.empty()) {
            tiled[returned.place.workspace].push_back(&returned);
        } else if (leaf->floatingGroup != nullptr) {
            groups[leaf->floatingGroup].push_back(&returned);
        } else {
            floating.push_back(&returned);
        }
    }
    for (const auto& [group, windows] : groups) {
        returning.putGroup(*group, windows);
    }
    std::map<const I3Node*, std::vector<const I3Return*>> joining;
    for (const auto* const returned : floating) {
        if (const auto* const group = returning.groupToJoin(*returned)) {
            joining[group].push_back(returned);
        } else {
            returning.putFloating(*returned);
        }
    }
    for (const auto& [group, windows] : joining) {
        returning.putInto(group, windows);
    }
    for (const auto& [workspace, windows] : tiled) {
        returning.putInto(nullptr, windows);
    }
    auto commands = std::move(returning).commands();
    if (commands.empty()) {
        return commands;
    }
    commands = keepFullscreen(tree, workspacesOf(returns), commands) + keepView(tree, {});
    const auto* const focused = toFocus ? tree.find(*toFocus) : nullptr;
    // The focus would bring up a window that is away.
    const bool isThere =
        focused != nullptr &&
        (!focused->isInScratchpad() ||
         std::ranges::any_of(returns, [&](const I3Return& returned) { return returned.window == toFocus; }));
    return isThere ? commands + withId(focused->node->id) + "focus;" : commands;
}

std::string commandsToFinish(const I3Tree& tree, std::span<const I3Return> returns) {
    std::string borders;
    std::string commands;
    std::string inView;
    for (const auto& [window, place] : returns) {
        const auto* const leaf = tree.find(window);
        if (leaf == nullptr || leaf->isInScratchpad()) {
            continue;
        }
        const auto& node = *leaf->node;
        if (node.border != place.border || node.borderWidth != place.borderWidth) {
            const bool hasWidth = place.border == "normal" || place.border == "pixel";
            borders += withId(node.id) + "border " + place.border +
                       (hasWidth && place.borderWidth >= 0 ? " " + std::to_string(place.borderWidth) : "") +
                       ";";
        }
        if (place.isOnTop && tree.isVisible(*leaf->workspace) && isBehind(*leaf)) {
            commands += withId(node.id) + "focus;";
        }
        if (place.isFullscreen) {
            // With the focus on another window of its workspace it would not stay so.
            auto& text = leaf->workspace == tree.focusedWorkspace() ? inView : commands;
            text += withId(node.id) + "focus;" + withId(node.id) + "fullscreen enable;";
        }
    }
    // Its user may have hidden the focused window since, and sway shows what it is asked to focus.
    return borders + (commands.empty() && inView.empty() ? "" : commands + keepView(tree, {}) + inView);
}

std::string commandsToReturnAnywhere(const I3Tree& tree, std::span<const I3Return> returns) {
    std::string commands;
    for (const auto& [window, place] : returns) {
        const auto* const leaf = tree.find(window);
        if (leaf == nullptr) {
            continue;
        }
        const auto one = withId(leaf->node->id);
        commands += outOfScratchpad(tree, place, leaf->node->id);
        if (!place.isOfScratchpad) {
            commands += one + "floating disable;";
        }
        if (place.isFloating) {
            commands += one + "floating enable;" + toRect(tree, leaf->node->id, place, place.rect);
        }
    }
    return commands.empty() ? commands
                            : keepFullscreen(tree, workspacesOf(returns), commands) + keepView(tree, {});
}

std::string commandsToBringUp(const I3Tree& tree, WindowId window) {
    const auto* const leaf = tree.find(window);
    if (leaf == nullptr || !leaf->isInScratchpad()) {
        return {};
    }
    const auto one = withId(leaf->node->id);
    return one + "fullscreen disable;" + one + "scratchpad show;";
}

std::string commandToFocus(const I3Tree& tree, WindowId window) {
    const auto* const leaf = tree.find(window);
    return leaf != nullptr && !leaf->isInScratchpad() ? withId(leaf->node->id) + "focus;" : "";
}

} // namespace LinuxPlatform
