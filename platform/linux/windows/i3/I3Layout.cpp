#include "platform/linux/windows/i3/I3Layout.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto anchorMark = "_curtain_anchor";

std::string withId(std::int64_t id) {
    return "[con_id=" + std::to_string(id) + "] ";
}

/// A name within a command. i3 takes away a backslash before a quote or a backslash. sway leaves them, and
/// knows two kinds of quotes; what it cannot be told is left out.
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

std::string toWorkspace(const I3Tree& tree, const std::string& name) {
    return "workspace --no-auto-back-and-forth " + quoted(tree, name) + ";";
}

bool isAlongTheWidth(const std::string& layout) {
    return layout != "splitv" && layout != "stacked";
}

/// Whether what is in there stands side by side.
bool isSplit(const std::string& layout) {
    return layout == "splith" || layout == "splitv";
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

/// Makes everybody see the workspaces that they see now, with the focus where it is or on what is next.
std::string keepView(const I3Tree& tree, const std::set<WindowId>& gone) {
    const auto* const focusedWorkspace = tree.focusedWorkspace();
    std::string commands;
    for (const auto* const output : tree.outputs()) {
        const auto* const workspace = tree.visibleWorkspace(*output);
        if (workspace != nullptr && workspace != focusedWorkspace) {
            commands += toWorkspace(tree, workspace->name);
        }
    }
    if (focusedWorkspace == nullptr) {
        return commands;
    }
    const auto* const focused = tree.focused();
    const auto* const next = focused != nullptr && !gone.contains(focused->node->window)
                                 ? focused->node
                                 : nextFocused(*focusedWorkspace, gone);
    return commands +
           (next != nullptr ? withId(next->id) + "focus;" : toWorkspace(tree, focusedWorkspace->name));
}

std::string toWorkspaceOf(const I3Tree& tree, const I3Place& place, std::int64_t id) {
    return withId(id) + "move --no-auto-back-and-forth container to workspace " +
           quoted(tree, place.workspace) + ";";
}

/// Brings something back from the scratchpad. sway 1.7 dies where that is fullscreen by then, as programs may
/// ask for at any time.
std::string outOfScratchpad(const I3Tree& tree, const I3Place& place, std::int64_t id) {
    return withId(id) + "fullscreen disable;" + toWorkspaceOf(tree, place, id);
}

/// Gives something that floats the place of a window in it.
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

/// Makes a group tiles and lets it float anew; what has been in the scratchpad is none of its windows then.
std::string floatAnew(const I3Node& group, const std::string& meanwhile) {
    return withId(group.id) + "floating disable;" + meanwhile + withId(group.id) + "floating enable;";
}

/// Puts windows from a group that floats into the scratchpad.
std::string outOfGroup(const I3Tree& tree, const I3Node& group, std::span<const std::int64_t> windows) {
    std::string commands;
    for (const auto window : windows) {
        // In i3 a window that is to float leaves its group. In sway the group goes along while it floats.
        commands += tree.isOfSway() ? "" : withId(window) + "floating enable;";
        commands += withId(window) + "move scratchpad;";
    }
    return tree.isOfSway() ? floatAnew(group, commands) : commands;
}

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

/// Puts windows back one after another; what is back already is something to go by for the next.
class Returning {
public:
    explicit Returning(const I3Tree& tree) : tree_(tree) {}

    void putFloating(const I3Return& returned) {
        const auto& place = returned.place;
        goToWorkspace(returned);
        if (!place.isOfScratchpad) {
            // What has been in the scratchpad stays one of its windows, unless it ceases to float.
            command("floating disable");
            command("floating enable");
        }
        // As it was below the fullscreen, the window kept it.
        const auto& rect = place.isFullscreen ? tree_.find(returned.window)->floating->rect : place.rect;
        commands_ += toRect(tree_, id_, place, rect);
    }

    /// Those that are in one group which floats, and is in the scratchpad with them. The others in there
    /// stay.
    void putGroup(const I3Node& group, const std::vector<const I3Return*>& returns) {
        const auto& place = returns.front()->place;
        goToWorkspace(group.id, place);
        std::vector<std::int64_t> others;
        for (const auto window : windowsIn(group)) {
            if (std::ranges::find(returns, window, [](const auto* one) { return one->window; }) ==
                returns.end()) {
                others.push_back(tree_.find(window)->node->id);
            }
        }
        if (!others.empty()) {
            commands_ += outOfGroup(tree_, group, others);
        }
        if (!place.isOfScratchpad) {
            commands_ += floatAnew(group, {});
        }
        commands_ += toRect(tree_, group.id, place, place.rect);
        for (const auto* const returned : returns) {
            spots_[returned->window] = {&place.workspace, &group};
        }
    }

    /// The floating group in which others stand that the window stood with; null where there is none.
    const I3Node* groupToJoin(const I3Return& returned) {
        if (!returned.place.isFloating || returned.place.levels.empty()) {
            return nullptr;
        }
        for (const auto& item : returned.place.levels.front().items) {
            for (const auto window : item.windows) {
                const auto* const group = spotOf(window).group;
                if (group != nullptr && *spotOf(window).workspace == returned.place.workspace) {
                    return group;
                }
            }
        }
        return nullptr;
    }

    /// All of them from one group that floats, or from the tiles of one workspace where that is null.
    void putInto(const I3Node* floatingGroup, const std::vector<const I3Return*>& returns) {
        floatingGroup_ = floatingGroup;
        putTiled(returns, 0);
    }

    std::string commands() && { return std::move(commands_); }

private:
    using Items = std::vector<std::vector<const I3Return*>>;

    struct Spot {
        const std::string* workspace = nullptr;
        /// That floats; null for a tiled window.
        const I3Node* group = nullptr;
    };

    /// All of them from one group, which is `depth` levels below the workspace.
    void putTiled(const std::vector<const I3Return*>& returns, std::size_t depth) {
        const auto items = byItem(returns, depth);
        std::vector<const I3Return*> first;
        for (const auto& item : items) {
            // The first one of a group keeps its place for the others.
            if (!isThere(*item.front(), depth)) {
                tile(*item.front(), depth);
                first.push_back(item.front());
            }
        }
        // A container around one that is alone would not be made.
        for (const auto* const returned : first) {
            wrap(*returned, depth + 1);
        }
        for (const auto& item : items) {
            if (item.front()->place.levels.size() > depth + 1) {
                putTiled(item, depth + 1);
            }
        }
    }

    void command(const std::string& text) { command(id_, text); }
    void command(std::int64_t id, const std::string& text) { commands_ += withId(id) + text + ";"; }

    static const I3Place::Item& itemOf(const I3Return& returned, std::size_t depth) {
        const auto& level = returned.place.levels[depth];
        return level.items[level.index];
    }

    /// In their order, those together that stood in the same part of the group.
    static Items byItem(const std::vector<const I3Return*>& returns, std::size_t depth) {
        Items items;
        for (const auto* const returned : returns) {
            const auto& item = itemOf(*returned, depth);
            const auto same = std::ranges::find_if(items, [&](const auto& others) {
                return item.group != 0 && itemOf(*others.front(), depth).group == item.group;
            });
            (same != items.end() ? *same : items.emplace_back()).push_back(returned);
        }
        std::ranges::stable_sort(items, {},
                                 [&](const auto& item) { return item.front()->place.levels[depth].index; });
        return items;
    }

    void goToWorkspace(const I3Return& returned) {
        goToWorkspace(tree_.find(returned.window)->node->id, returned.place);
    }

    void goToWorkspace(std::int64_t id, const I3Place& place) {
        id_ = id;
        commands_ += outOfScratchpad(tree_, place, id);
        const bool isNew =
            tree_.workspaceNamed(place.workspace) == nullptr && newWorkspaces_.insert(place.workspace).second;
        const bool hasOutput = std::ranges::find(tree_.outputs(), place.output, [](const auto* output) {
                                   return output->name;
                               }) != tree_.outputs().end();
        if (isNew && hasOutput && tree_.outputs().size() > 1) {
            command("move workspace to output " + quoted(tree_, place.output));
        }
    }

    void tile(const I3Return& returned, std::size_t depth) {
        const auto& level = returned.place.levels[depth];
        goToWorkspace(returned);
        command("floating disable");
        if (!stand(returned, level) && depth == 0 && !hasTiled(returned.place.workspace)) {
            // What would split a window that is alone turns the workspace.
            command(splitAlong(level.layout));
            if (!isSplit(level.layout)) {
                command("layout " + nameInCommands(level.layout));
            }
        }
        spots_[returned.window] = {&returned.place.workspace, floatingGroup_};
    }

    /// What was around it has gone with it.
    void wrap(const I3Return& returned, std::size_t depth) {
        if (depth < returned.place.levels.size()) {
            const auto& layout = returned.place.levels[depth].layout;
            id_ = tree_.find(returned.window)->node->id;
            command(splitAlong(layout));
            command("layout " + nameInCommands(layout));
        }
    }

    static std::string splitAlong(const std::string& layout) {
        return isAlongTheWidth(layout) ? "split h" : "split v";
    }

    static std::string nameInCommands(const std::string& layout) {
        return layout == "stacked" ? "stacking" : layout;
    }

    bool hasTiled(const std::string& workspace) const {
        const auto* const node = tree_.workspaceNamed(workspace);
        return (node != nullptr && !node->nodes.empty()) ||
               std::ranges::any_of(spots_, [&](const auto& spot) {
                   return spot.second.group == nullptr && *spot.second.workspace == workspace;
               });
    }

    /// Goes to its place among those that it stood with, as far as there still are any.
    bool stand(const I3Return& returned, const I3Place::Level& level) {
        const auto& workspace = returned.place.workspace;
        for (auto before = level.index; before > 0; --before) {
            if (goBehind(level.items[before - 1], workspace, level.layout)) {
                return true;
            }
        }
        for (auto behind = level.index + 1; behind < level.items.size(); ++behind) {
            if (const auto other = goBehind(level.items[behind], workspace, level.layout)) {
                command("swap container with con_id " + std::to_string(*other));
                return true;
            }
        }
        return false;
    }

    /// What stands there; absent where nothing of the item does any more.
    std::optional<std::int64_t> goBehind(const I3Place::Item& item, const std::string& workspace,
                                         const std::string& layout) {
        const auto last = std::find_if(item.windows.rbegin(), item.windows.rend(),
                                       [&](WindowId window) { return stands(window, workspace); });
        if (last == item.windows.rend()) {
            return std::nullopt;
        }
        const auto* const group = groupOf(item, *last);
        const auto& anchor = group != nullptr ? *group : *tree_.find(*last)->node;
        goBehind(anchor, layout);
        return anchor.id;
    }

    /// `layout` is that of the group which the anchor stands in.
    void goBehind(const I3Node& anchor, const std::string& layout) {
        if (!anchor.isWindow && !anchor.nodes.empty()) {
            // Out of there at its end.
            goBehind(anchor.nodes.back(), anchor.layout);
            command(isAlongTheWidth(layout) ? "move right" : "move down");
            return;
        }
        command(anchor.id, std::string("mark --add ") + anchorMark);
        command(std::string("move container to mark ") + anchorMark);
        command(anchor.id, std::string("unmark ") + anchorMark);
    }

    bool isThere(const I3Return& returned, std::size_t depth) const {
        return std::ranges::any_of(itemOf(returned, depth).windows,
                                   [&](WindowId window) { return stands(window, returned.place.workspace); });
    }

    /// Where a window is that is in no scratchpad and does not float by itself; null where it does.
    Spot spotOf(WindowId window) const {
        if (const auto spot = spots_.find(window); spot != spots_.end()) {
            return spot->second;
        }
        const auto* const leaf = tree_.find(window);
        const bool isAway = leaf == nullptr || leaf->isInScratchpad() ||
                            (leaf->floating != nullptr && leaf->floatingGroup == nullptr);
        return isAway ? Spot{} : Spot{&leaf->workspace->name, leaf->floatingGroup};
    }

    /// Whether it is among those on the workspace that windows are put to.
    bool stands(WindowId window, const std::string& workspace) const {
        const auto spot = spotOf(window);
        return spot.workspace != nullptr && *spot.workspace == workspace && spot.group == floatingGroup_;
    }

    /// Null where the window stands alone, and where what was around it is not there.
    const I3Node* groupOf(const I3Place::Item& item, WindowId window) const {
        const auto* const group = item.group != 0 ? tree_.group(item.group) : nullptr;
        const auto windows = group != nullptr ? windowsIn(*group) : std::vector<WindowId>();
        return std::ranges::find(windows, window) != windows.end() ? group : nullptr;
    }

    const I3Tree& tree_;
    /// What the next command is for.
    std::int64_t id_ = 0;
    std::string commands_;
    std::set<std::string> newWorkspaces_;
    /// Into which windows are put; null for the tiles of a workspace.
    const I3Node* floatingGroup_ = nullptr;
    /// Of those that are back.
    std::map<WindowId, Spot> spots_;
};

/// Whether the group has the same children in the same order.
bool isWhole(const I3Node& group, const I3Place::Level& level) {
    return std::ranges::equal(group.nodes, level.items, [](const I3Node& child, const I3Place::Item& item) {
        return windowsIn(child) == item.windows;
    });
}

int farEdge(const I3Rect& rect, bool isAlongTheWidth) {
    return isAlongTheWidth ? rect.x + rect.width : rect.y + rect.height;
}

int nearEdge(const I3Rect& rect, bool isAlongTheWidth) {
    return isAlongTheWidth ? rect.x : rect.y;
}

std::string commandToResize(std::int64_t id, const char* edge, int distance) {
    return distance == 0 ? ""
                         : withId(id) + "resize " + (distance > 0 ? "grow " : "shrink ") + edge + " " +
                               std::to_string(std::abs(distance)) + " px;";
}

/// Moves the edges between the children to where they were.
std::string commandsForEdges(const I3Node& group, const I3Place::Level& level,
                             std::optional<std::size_t> unknownItem) {
    const bool isWide = isAlongTheWidth(level.layout);
    std::string commands;
    for (std::size_t index = 0; index + 1 < level.items.size(); ++index) {
        const bool isUnknown = unknownItem == index;
        const auto edge = [&](const I3Rect& rect, const I3Rect& next) {
            return isUnknown ? nearEdge(next, isWide) : farEdge(rect, isWide);
        };
        const auto distance = edge(level.items[index].rect, level.items[index + 1].rect) -
                              edge(group.nodes[index].rect, group.nodes[index + 1].rect);
        commands += commandToResize(group.nodes[index].id, isWide ? "right" : "down", distance);
    }
    return commands;
}

/// i3 sets no sizes of groups that float, but changes them.
std::string commandsForSize(const I3Leaf& leaf, const I3Rect& rect) {
    const auto id = leaf.floatingGroup->id;
    return commandToResize(id, "right", rect.width - leaf.floating->rect.width) +
           commandToResize(id, "down", rect.height - leaf.floating->rect.height);
}

/// Whether another one of its group was focused later.
bool isBehind(const I3Leaf& leaf) {
    const auto& order =
        leaf.ancestors.empty() ? std::vector<std::int64_t>() : leaf.ancestors.back()->focusOrder;
    return !order.empty() && order.front() != leaf.node->id;
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
    Returning returning(tree);
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
    commands += keepView(tree, {});
    const auto* const focused = toFocus ? tree.find(*toFocus) : nullptr;
    // The focus would bring up a window that is away.
    const bool isThere =
        focused != nullptr &&
        (!focused->isInScratchpad() ||
         std::ranges::any_of(returns, [&](const I3Return& returned) { return returned.window == toFocus; }));
    return isThere ? commands + withId(focused->node->id) + "focus;" : commands;
}

bool areSizesKnown(const I3Tree& tree, const I3Leaf& leaf) {
    return tree.isOfSway() || tree.isVisible(*leaf.workspace);
}

std::string commandsToAdjust(const I3Tree& tree, std::span<const I3Return> returns) {
    std::string commands;
    std::set<const I3Node*> adjusted;
    for (const auto& [window, place] : returns) {
        const auto* const leaf = tree.find(window);
        if (leaf == nullptr || (leaf->floating != nullptr) != place.isFloating ||
            leaf->ancestors.size() != place.levels.size() || !areSizesKnown(tree, *leaf)) {
            continue;
        }
        if (place.isFloating && !tree.isOfSway()) {
            // What is within it cannot be told a size.
            if (leaf->floatingGroup != nullptr && adjusted.insert(leaf->floatingGroup).second) {
                commands += commandsForSize(*leaf, place.rect);
            }
            continue;
        }
        for (std::size_t depth = 0; depth < place.levels.size(); ++depth) {
            const auto& level = place.levels[depth];
            const auto& group = *leaf->ancestors[depth];
            if (isSplit(level.layout) && group.layout == level.layout && isWhole(group, level) &&
                adjusted.insert(&group).second) {
                const bool isUnknown = place.isFullscreen && depth + 1 == place.levels.size();
                commands +=
                    commandsForEdges(group, level, isUnknown ? std::optional(level.index) : std::nullopt);
            }
        }
    }
    return commands;
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
    return commands.empty() ? commands : commands + keepView(tree, {});
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
