#include "platform/linux/windows/i3/I3Commands.h"

#include <algorithm>

namespace LinuxPlatform {
namespace {

/// One that has ended is made anew on the output that has the focus.
std::string toWorkspace(const I3Tree& tree, const I3Node& output, const std::string& name) {
    const auto toOutput = "focus output " + quoted(tree, output.name) + ";";
    return (tree.outputs().size() > 1 ? toOutput : "") + "workspace --no-auto-back-and-forth " +
           quoted(tree, name) + ";";
}

/// The window that gets the focus when those that are `gone` are not there.
const I3Node* nextFocused(const I3Node& node, const std::set<WindowId>& gone) {
    if (node.isWindow) {
        return gone.contains(node.window) ? nullptr : &node;
    }
    for (const auto id : node.focusOrder) {
        for (const auto* const children : {&node.nodes, &node.floatingNodes}) {
            const auto child = std::ranges::find(*children, id, &I3Node::id);
            const auto* const found = child != children->end() ? nextFocused(*child, gone) : nullptr;
            if (found != nullptr) {
                return found;
            }
        }
    }
    return nullptr;
}

std::string toWorkspaceOf(const I3Tree& tree, const I3Place& place, std::int64_t id) {
    return withId(id) + "move --no-auto-back-and-forth container to workspace " +
           quoted(tree, place.workspace) + ";";
}

} // namespace

std::string withId(std::int64_t id) {
    return "[con_id=" + std::to_string(id) + "] ";
}

/// i3 takes away a backslash before a quote or a backslash. sway leaves them, and knows two kinds of quotes;
/// what it cannot be told is left out.
std::string quoted(const I3Tree& tree, const std::string& name) {
    if (tree.isOfSway() && name.find_first_of("'\\") == std::string::npos) {
        return "'" + name + "'";
    }
    std::string text = "\"";
    for (const char character : name) {
        const bool isSpecial = character == '"' || character == '\\';
        if (!isSpecial || !tree.isOfSway()) {
            text += isSpecial ? std::string{'\\', character} : std::string{character};
        }
    }
    return text + '"';
}

bool isAlongTheWidth(const std::string& layout) {
    return layout != "splitv" && layout != "stacked";
}

bool isSplit(const std::string& layout) {
    return layout == "splith" || layout == "splitv";
}

std::string keepView(const I3Tree& tree, const std::set<WindowId>& gone) {
    const auto* const focusedWorkspace = tree.focusedWorkspace();
    std::string commands;
    std::string toFocused;
    for (const auto* const output : tree.outputs()) {
        const auto* const workspace = tree.visibleWorkspace(*output);
        if (workspace != nullptr) {
            (workspace == focusedWorkspace ? toFocused : commands) +=
                toWorkspace(tree, *output, workspace->name);
        }
    }
    if (focusedWorkspace == nullptr) {
        return commands;
    }
    const auto* const focused = tree.focused();
    const auto* const next = focused != nullptr && !gone.contains(focused->node->window)
                                 ? focused->node
                                 : nextFocused(*focusedWorkspace, gone);
    return commands + (next != nullptr ? withId(next->id) + "focus;" : toFocused);
}

std::string keepFullscreen(const I3Tree& tree, const std::set<std::string>& workspaces,
                           const std::string& commands) {
    std::string before;
    std::string after;
    for (const auto& [workspace, node] : tree.fullscreen()) {
        const bool isInTheWay = workspaces.contains(workspace->name) || node->isFullscreenEverywhere;
        if (isInTheWay || (tree.isOfSway() && workspace == tree.focusedWorkspace())) {
            before += withId(node->id) + "fullscreen disable;";
            after +=
                withId(node->id) + "fullscreen enable" + (node->isFullscreenEverywhere ? " global;" : ";");
        }
    }
    return before + commands + after;
}

/// sway 1.7 dies where what comes back is fullscreen by then, as programs may
/// ask for at any time.
std::string outOfScratchpad(const I3Tree& tree, const I3Place& place, std::int64_t id) {
    return withId(id) + "fullscreen disable;" + toWorkspaceOf(tree, place, id);
}

std::string toRect(const I3Tree& tree, std::int64_t id, const I3Place& place, const I3Rect& rect) {
    const auto one = withId(id);
    auto commands = one + "resize set " + std::to_string(rect.width) + " px " + std::to_string(rect.height) +
                    " px;" + one + "move absolute position " + std::to_string(rect.x) + " px " +
                    std::to_string(rect.y) + " px;";
    const auto* const workspace = tree.workspaceNamed(place.workspace);
    if (tree.isOfSway() && (workspace == nullptr || !tree.isVisible(*workspace))) {
        // sway moves it to the workspace in view.
        commands += toWorkspaceOf(tree, place, id);
    }
    return commands + (place.isSticky ? one + "sticky enable;" : "");
}

std::string floatAnew(const I3Node& group, const std::string& meanwhile) {
    return withId(group.id) + "floating disable;" + meanwhile + withId(group.id) + "floating enable;";
}

std::string outOfGroup(const I3Tree& tree, const I3Node& group, std::span<const std::int64_t> windows) {
    std::string commands;
    for (const auto window : windows) {
        // In i3 a window that is to float leaves its group. In sway the group goes along while it floats.
        commands += tree.isOfSway() ? "" : withId(window) + "floating enable;";
        commands += withId(window) + "move scratchpad;";
    }
    return tree.isOfSway() ? floatAnew(group, commands) : commands;
}

} // namespace LinuxPlatform
