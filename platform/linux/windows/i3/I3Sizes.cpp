#include "platform/linux/windows/i3/I3Sizes.h"

#include "platform/linux/windows/i3/I3Commands.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <vector>

namespace LinuxPlatform {
namespace {

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

} // namespace

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

} // namespace LinuxPlatform
