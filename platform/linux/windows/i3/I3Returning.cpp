#include "platform/linux/windows/i3/I3Returning.h"

#include "platform/linux/windows/i3/I3Commands.h"

#include <algorithm>

namespace LinuxPlatform {
namespace {

constexpr auto anchorMark = "_curtain_anchor";

using Items = std::vector<std::vector<const I3Return*>>;

std::string splitAlong(const std::string& layout) {
    return isAlongTheWidth(layout) ? "split h" : "split v";
}

std::string nameInCommands(const std::string& layout) {
    return layout == "stacked" ? "stacking" : layout;
}

const I3Place::Item& itemOf(const I3Return& returned, std::size_t depth) {
    const auto& level = returned.place.levels[depth];
    return level.items[level.index];
}

/// In their order, those together that stood in the same part of the group.
Items byItem(const std::vector<const I3Return*>& returns, std::size_t depth) {
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

} // namespace

void I3Returning::putFloating(const I3Return& returned) {
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

void I3Returning::putGroup(const I3Node& group, const std::vector<const I3Return*>& returns) {
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

const I3Node* I3Returning::groupToJoin(const I3Return& returned) {
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

void I3Returning::putInto(const I3Node* floatingGroup, const std::vector<const I3Return*>& returns) {
    floatingGroup_ = floatingGroup;
    putTiled(returns, 0);
}

void I3Returning::putTiled(const std::vector<const I3Return*>& returns, std::size_t depth) {
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

void I3Returning::command(const std::string& text) {
    command(id_, text);
}

void I3Returning::command(std::int64_t id, const std::string& text) {
    commands_ += withId(id) + text + ";";
}

void I3Returning::goToWorkspace(const I3Return& returned) {
    goToWorkspace(tree_.find(returned.window)->node->id, returned.place);
}

void I3Returning::goToWorkspace(std::int64_t id, const I3Place& place) {
    id_ = id;
    arrivals_ += outOfScratchpad(tree_, place, id);
    const bool isNew =
        tree_.workspaceNamed(place.workspace) == nullptr && newWorkspaces_.insert(place.workspace).second;
    const bool hasOutput = std::ranges::find(tree_.outputs(), place.output, [](const auto* output) {
                               return output->name;
                           }) != tree_.outputs().end();
    if (isNew && hasOutput && tree_.outputs().size() > 1) {
        arrivals_ += withId(id) + "move workspace to output " + quoted(tree_, place.output) + ";";
    }
}

void I3Returning::tile(const I3Return& returned, std::size_t depth) {
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

void I3Returning::wrap(const I3Return& returned, std::size_t depth) {
    if (depth < returned.place.levels.size()) {
        const auto& layout = returned.place.levels[depth].layout;
        id_ = tree_.find(returned.window)->node->id;
        command(splitAlong(layout));
        command("layout " + nameInCommands(layout));
    }
}

bool I3Returning::hasTiled(const std::string& workspace) const {
    const auto* const node = tree_.workspaceNamed(workspace);
    return (node != nullptr && !node->nodes.empty()) || std::ranges::any_of(spots_, [&](const auto& spot) {
               return spot.second.group == nullptr && *spot.second.workspace == workspace;
           });
}

bool I3Returning::stand(const I3Return& returned, const I3Place::Level& level) {
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

std::optional<std::int64_t> I3Returning::goBehind(const I3Place::Item& item, const std::string& workspace,
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

void I3Returning::goBehind(const I3Node& anchor, const std::string& layout) {
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

bool I3Returning::isThere(const I3Return& returned, std::size_t depth) const {
    return std::ranges::any_of(itemOf(returned, depth).windows,
                               [&](WindowId window) { return stands(window, returned.place.workspace); });
}

I3Returning::Spot I3Returning::spotOf(WindowId window) const {
    if (const auto spot = spots_.find(window); spot != spots_.end()) {
        return spot->second;
    }
    const auto* const leaf = tree_.find(window);
    const bool isAway = leaf == nullptr || leaf->isInScratchpad() ||
                        (leaf->floating != nullptr && leaf->floatingGroup == nullptr);
    return isAway ? Spot{} : Spot{&leaf->workspace->name, leaf->floatingGroup};
}

bool I3Returning::stands(WindowId window, const std::string& workspace) const {
    const auto spot = spotOf(window);
    return spot.workspace != nullptr && *spot.workspace == workspace && spot.group == floatingGroup_;
}

const I3Node* I3Returning::groupOf(const I3Place::Item& item, WindowId window) const {
    const auto* const group = item.group != 0 ? tree_.group(item.group) : nullptr;
    const auto windows = group != nullptr ? windowsIn(*group) : std::vector<WindowId>();
    return std::ranges::find(windows, window) != windows.end() ? group : nullptr;
}

} // namespace LinuxPlatform
