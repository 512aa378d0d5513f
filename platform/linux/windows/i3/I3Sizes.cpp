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

/// Where the first of two neighbours ends, as the second one tells it if `isBySecond`; absent where that is
/// not known.
std::optional<int> edgeBetween(const I3Rect& first, const I3Rect& second, bool isBySecond, bool isWide) {
    if ((isBySecond ? second : first).isEmpty()) {
        return std::nullopt;
    }
    return isBySecond ? nearEdge(second, isWide) : farEdge(first, isWide);
}

I3Rect knownRectOf(const I3Node& node) {
    return node.isFullscreen ? I3Rect() : node.rect;
}

/// Moves the edges between the children to where they were. Where more is unknown than what was fullscreen,
/// something came behind it, and the others were not laid out anew for that.
std::string commandsForEdges(const I3Node& group, const I3Place::Level& level) {
    if (std::ranges::count_if(level.items, &I3Rect::isEmpty, &I3Place::Item::rect) > 1) {
        return {};
    }
    const bool isWide = isAlongTheWidth(level.layout);
    std::string commands;
    for (std::size_t index = 0; index + 1 < level.items.size(); ++index) {
        const auto& before = level.items[index].rect;
        const auto now = knownRectOf(group.nodes[index]);
        const bool isBySecond = before.isEmpty() || now.isEmpty();
        const auto edgeBefore = edgeBetween(before, level.items[index + 1].rect, isBySecond, isWide);
        const auto edgeNow = edgeBetween(now, knownRectOf(group.nodes[index + 1]), isBySecond, isWide);
        if (edgeBefore && edgeNow) {
            commands +=
                commandToResize(group.nodes[index].id, isWide ? "right" : "down", *edgeBefore - *edgeNow);
        }
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
    const auto covering = tree.fullscreen().find(leaf.workspace);
    const bool isCovered = covering != tree.fullscreen().end() && covering->second != leaf.node;
    return !isCovered && (tree.isOfSway() || tree.isVisible(*leaf.workspace));
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
                commands += commandsForEdges(group, level);
            }
        }
    }
    return commands;
}

} // namespace LinuxPlatform
