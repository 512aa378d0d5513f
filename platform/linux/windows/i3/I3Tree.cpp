#include "platform/linux/windows/i3/I3Tree.h"

#include "platform/linux/i3/I3Message.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

using Kind = I3Node::Kind;

constexpr std::string_view scratchpad = "__i3_scratch";
/// Of the output that holds the scratchpad, and of other workspaces that nobody looks at.
constexpr std::string_view internalPrefix = "__";

QJsonValue valueOf(const QJsonObject& object, const char* name) {
    return object.value(QLatin1String(name));
}

std::string textOf(const QJsonObject& object, const char* name) {
    return valueOf(object, name).toString().toStdString();
}

std::optional<std::uint32_t> numberOf(const QJsonObject& object, const char* name) {
    const auto number = valueOf(object, name).toInteger();
    return number > 0 ? std::optional(static_cast<std::uint32_t>(number)) : std::nullopt;
}

I3Rect rectOf(const QJsonObject& object, const char* name) {
    const auto rect = valueOf(object, name).toObject();
    return {valueOf(rect, "x").toInt(), valueOf(rect, "y").toInt(), valueOf(rect, "width").toInt(),
            valueOf(rect, "height").toInt()};
}

Kind kindOf(const std::string& type) {
    static constexpr std::array<std::pair<std::string_view, Kind>, 4> kinds{
        {{"output", Kind::output},
         {"workspace", Kind::workspace},
         {"con", Kind::container},
         {"floating_con", Kind::floating}}};
    const auto* const found = std::ranges::find(kinds, type, [](const auto& entry) { return entry.first; });
    return found != kinds.end() ? found->second : Kind::other;
}

/// sway tells the process of every window, and i3 of none.
bool isOfSway(const QJsonObject& object) {
    return object.contains(QLatin1String("pid"));
}

void readWindow(const QJsonObject& object, I3Node& node) {
    const bool isContainer = node.kind == Kind::container || node.kind == Kind::floating;
    node.x11Window = numberOf(object, "window");
    node.isWindow = isContainer && (node.x11Window || isOfSway(object));
    if (!node.isWindow) {
        return;
    }
    node.window = isOfSway(object) ? static_cast<WindowId>(node.id) : WindowId{*node.x11Window};
    node.process = numberOf(object, "pid");
    node.applicationId = textOf(object, "app_id");
    const auto properties = valueOf(object, "window_properties").toObject();
    node.className = textOf(properties, "class");
    node.instanceName = textOf(properties, "instance");
    if (node.kind == Kind::floating) {
        // It leaves the title bar out, but not where it is told a place.
        const auto bar = rectOf(object, "deco_rect").height;
        node.rect.y -= bar;
        node.rect.height += bar;
    }
}

I3Node nodeOf(const QJsonObject& object);

std::vector<I3Node> nodesOf(const QJsonObject& object, const char* name) {
    const auto list = valueOf(object, name).toArray();
    std::vector<I3Node> nodes;
    nodes.reserve(static_cast<std::size_t>(list.size()));
    for (const auto& node : list) {
        nodes.push_back(nodeOf(node.toObject()));
    }
    return nodes;
}

I3Node nodeOf(const QJsonObject& object) {
    I3Node node;
    node.id = valueOf(object, "id").toInteger();
    node.kind = kindOf(textOf(object, "type"));
    node.name = textOf(object, "name");
    node.layout = textOf(object, "layout");
    node.rect = rectOf(object, "rect");
    node.isFocused = valueOf(object, "focused").toBool();
    const auto fullscreenMode = valueOf(object, "fullscreen_mode").toInt();
    node.isFullscreen = fullscreenMode != 0;
    node.isFullscreenEverywhere = fullscreenMode == 2;
    node.isSticky = valueOf(object, "sticky").toBool();
    const auto state = textOf(object, "scratchpad_state");
    node.isOfScratchpad = !state.empty() && state != "none";
    node.border = textOf(object, "border");
    node.borderWidth = valueOf(object, "current_border_width").toInt(-1);
    node.nodes = nodesOf(object, "nodes");
    node.floatingNodes = nodesOf(object, "floating_nodes");
    for (const auto& id : valueOf(object, "focus").toArray()) {
        node.focusOrder.push_back(id.toInteger());
    }
    readWindow(object, node);
    return node;
}

const I3Node* lastFocused(const I3Node& node) {
    const auto found = std::ranges::find_if(node.nodes, [&](const I3Node& child) {
        return !node.focusOrder.empty() && child.id == node.focusOrder.front();
    });
    return found != node.nodes.end() ? &*found : nullptr;
}

void addByFocus(const I3Node& node, std::vector<WindowId>& windows) {
    if (node.isWindow) {
        windows.push_back(node.window);
    }
    for (const auto id : node.focusOrder) {
        for (const auto* const children : {&node.nodes, &node.floatingNodes}) {
            const auto child = std::ranges::find(*children, id, &I3Node::id);
            if (child != children->end()) {
                addByFocus(*child, windows);
            }
        }
    }
}

} // namespace

bool I3Leaf::isInScratchpad() const {
    return workspace != nullptr && workspace->name == scratchpad;
}

std::unique_ptr<const I3Tree> I3Tree::parse(const QByteArray& json) {
    const auto root = jsonOf(json).object();
    if (textOf(root, "type") != "root") {
        return nullptr;
    }
    std::unique_ptr<I3Tree> tree(new I3Tree);
    tree->root_ = nodeOf(root);
    // Only i3 tells which windows it waits for.
    tree->isOfSway_ = !root.contains(QLatin1String("swallows"));
    tree->visit(tree->root_, {});
    return tree;
}

void I3Tree::visit(const I3Node& node, I3Leaf place) {
    switch (node.kind) {
    case Kind::output:
        place.output = &node;
        if (!node.name.starts_with(internalPrefix)) {
            outputs_.push_back(&node);
        }
        break;
    case Kind::workspace:
        place.workspace = &node;
        workspaces_.push_back(&node);
        focusedWorkspace_ = node.isFocused ? &node : focusedWorkspace_;
        break;
    case Kind::container:
        break;
    case Kind::floating:
        place.floating = &node;
        // i3 puts another container around whatever floats.
        place.floatingGroup = isOfSway_ || node.nodes.empty() ? &node : &node.nodes.front();
        place.floatingGroup = place.floatingGroup->isWindow ? nullptr : place.floatingGroup;
        place.ancestors.clear();
        break;
    case Kind::other:
        // Panels.
        if (place.output != nullptr) {
            return;
        }
        break;
    }
    const bool canFill = place.workspace != nullptr && place.workspace != &node && !place.isInScratchpad();
    if (node.isFullscreen && canFill) {
        fullscreen_.emplace(place.workspace, &node);
    }
    if (node.isWindow && place.workspace != nullptr) {
        focusedWorkspace_ = node.isFocused ? place.workspace : focusedWorkspace_;
        place.node = &node;
        positions_.emplace(node.window, leaves_.size());
        leaves_.push_back(std::move(place));
        return;
    }
    const bool isAroundWhatFloats = place.floating == &node && place.floatingGroup != &node;
    if (place.workspace != nullptr && !isAroundWhatFloats) {
        place.ancestors.push_back(&node);
        if (node.kind != Kind::workspace) {
            groups_.push_back(&node);
        }
    }
    for (const auto* const children : {&node.nodes, &node.floatingNodes}) {
        for (const auto& child : *children) {
            visit(child, place);
        }
    }
}

std::vector<WindowId> I3Tree::windowsByFocus() const {
    std::vector<WindowId> windows;
    addByFocus(root_, windows);
    // sway leaves hidden ones out.
    for (const auto& leaf : leaves_) {
        if (std::ranges::find(windows, leaf.node->window) == windows.end()) {
            windows.push_back(leaf.node->window);
        }
    }
    return windows;
}

const I3Leaf* I3Tree::find(WindowId window) const {
    const auto found = positions_.find(window);
    return found != positions_.end() ? &leaves_[found->second] : nullptr;
}

const I3Leaf* I3Tree::focused() const {
    const auto found = std::ranges::find_if(leaves_, [](const I3Leaf& leaf) { return leaf.node->isFocused; });
    return found != leaves_.end() ? &*found : nullptr;
}

const I3Node* I3Tree::focusedWorkspace() const {
    return focusedWorkspace_;
}

bool I3Tree::isVisible(const I3Node& workspace) const {
    return std::ranges::any_of(outputs_,
                               [&](const auto* output) { return visibleWorkspace(*output) == &workspace; });
}

const I3Node* I3Tree::visibleWorkspace(const I3Node& output) const {
    // i3 puts its workspaces into a container beside the panels.
    for (const auto& child : output.nodes) {
        if (child.kind == Kind::container) {
            return lastFocused(child);
        }
    }
    return lastFocused(output);
}

const I3Node* I3Tree::workspaceNamed(const std::string& name) const {
    const auto found = std::ranges::find(workspaces_, name, [](const auto* node) { return node->name; });
    return found != workspaces_.end() ? *found : nullptr;
}

const I3Node* I3Tree::group(std::int64_t id) const {
    const auto found = std::ranges::find(groups_, id, [](const auto* node) { return node->id; });
    return found != groups_.end() ? *found : nullptr;
}

std::vector<WindowId> windowsIn(const I3Node& node) {
    std::vector<WindowId> windows;
    if (node.isWindow) {
        windows.push_back(node.window);
    }
    for (const auto* const children : {&node.nodes, &node.floatingNodes}) {
        for (const auto& child : *children) {
            const auto more = windowsIn(child);
            windows.insert(windows.end(), more.begin(), more.end());
        }
    }
    return windows;
}

} // namespace LinuxPlatform
