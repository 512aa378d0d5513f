#pragma once

#include "platform/linux/windows/WindowSystem.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace LinuxPlatform {

/// Pixels of the whole desktop.
struct I3Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const I3Rect&) const = default;
    bool isEmpty() const { return width <= 0 || height <= 0; }
};

/// One container of the layout: an output, a workspace, a group of containers or a window.
struct I3Node {
    enum class Kind { output, workspace, container, floating, other };

    /// As commands name it. i3 gives new numbers when it is restarted.
    std::int64_t id = 0;
    Kind kind = Kind::other;
    std::string name;
    /// "splith", "splitv", "tabbed" or "stacked".
    std::string layout;
    /// Of a floating one with its title bar.
    I3Rect rect;
    bool isFocused = false;
    bool isFullscreen = false;
    /// Fullscreen over all outputs.
    bool isFullscreenEverywhere = false;
    bool isSticky = false;
    /// Stands in the user's scratchpad or came from there. Not every release says so.
    bool isOfScratchpad = false;
    std::string border;
    int borderWidth = 0;
    std::vector<I3Node> nodes;
    std::vector<I3Node> floatingNodes;
    /// Of its children, the last focused first.
    std::vector<std::int64_t> focusOrder;

    /// The rest is that of windows.
    bool isWindow = false;
    /// That of X11 in a session of X11, otherwise as `id`.
    WindowId window = 0;
    /// Absent for windows of Wayland.
    std::optional<std::uint32_t> x11Window;
    std::optional<std::uint32_t> process;
    /// Of Wayland.
    std::string applicationId;
    std::string className;
    std::string instanceName;
};

/// Where a window stands in a layout.
struct I3Leaf {
    const I3Node* node = nullptr;
    const I3Node* output = nullptr;
    const I3Node* workspace = nullptr;
    /// From the workspace, or from what floats there, down to what holds the window.
    std::vector<const I3Node*> ancestors;
    /// What floats: the window, what is around it or the group that it is in. Null for a tiled one.
    const I3Node* floating = nullptr;
    /// The group that it is in, and that floats as a whole. Null for a tiled window and one that floats
    /// itself.
    const I3Node* floatingGroup = nullptr;

    bool isInScratchpad() const;
};

/// The layout at one moment, as i3 and sway tell it. Pointers into it are valid as long as it lives.
/// Source: i3's documentation, "IPC interface", GET_TREE, and sway-ipc(7).
class I3Tree {
public:
    /// Absent where the text is no layout.
    static std::unique_ptr<const I3Tree> parse(const QByteArray& json);

    const I3Node& root() const { return root_; }
    bool isOfSway() const { return isOfSway_; }
    /// Every window, in the layout's order.
    const std::vector<I3Leaf>& leaves() const { return leaves_; }
    /// Every window, the last focused first.
    std::vector<WindowId> windowsByFocus() const;
    const I3Leaf* find(WindowId window) const;
    const I3Leaf* focused() const;
    /// Null while nothing has the focus.
    const I3Node* focusedWorkspace() const;
    bool isVisible(const I3Node& workspace) const;
    /// What fills a workspace, which need not be in view, by the workspace; a window or a group.
    const std::map<const I3Node*, const I3Node*>& fullscreen() const { return fullscreen_; }
    /// The outputs that a person can look at.
    const std::vector<const I3Node*>& outputs() const { return outputs_; }
    /// Null for an output without workspaces.
    const I3Node* visibleWorkspace(const I3Node& output) const;
    const I3Node* workspaceNamed(const std::string& name) const;
    /// A group of containers.
    const I3Node* group(std::int64_t id) const;

private:
    I3Tree() = default;
    void visit(const I3Node& node, I3Leaf place);

    I3Node root_;
    bool isOfSway_ = false;
    std::vector<I3Leaf> leaves_;
    std::unordered_map<WindowId, std::size_t> positions_;
    std::vector<const I3Node*> outputs_;
    std::vector<const I3Node*> workspaces_;
    std::vector<const I3Node*> groups_;
    std::map<const I3Node*, const I3Node*> fullscreen_;
    const I3Node* focusedWorkspace_ = nullptr;
};

/// In the layout's order.
std::vector<WindowId> windowsIn(const I3Node& node);

} // namespace LinuxPlatform
