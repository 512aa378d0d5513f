#pragma once

#include "platform/linux/windows/i3/I3Place.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace LinuxPlatform {

/// A window to put back and where it stood.
struct I3Return {
    WindowId window = 0;
    I3Place place;
};

/// Puts windows back one after another; what is back already is something to go by for the next.
class I3Returning {
public:
    explicit I3Returning(const I3Tree& tree) : tree_(tree) {}

    void putFloating(const I3Return& returned);
    /// Those that are in one group which floats, and is in the scratchpad with them. The others in there
    /// stay.
    void putGroup(const I3Node& group, const std::vector<const I3Return*>& returns);
    /// The floating group in which others stand that the window stood with; null where there is none.
    const I3Node* groupToJoin(const I3Return& returned);
    /// All of them from one group that floats, or from the tiles of one workspace where that is null.
    void putInto(const I3Node* floatingGroup, const std::vector<const I3Return*>& returns);

    /// That do it all. sway 1.7 dies later where a window leaves the scratchpad after others have been moved
    /// to marks, while the workspace in view is empty.
    std::string commands() && { return std::move(arrivals_) + commands_; }

private:
    struct Spot {
        const std::string* workspace = nullptr;
        /// That floats; null for a tiled window.
        const I3Node* group = nullptr;
    };

    /// All of them from one group, which is `depth` levels below the workspace.
    void putTiled(const std::vector<const I3Return*>& returns, std::size_t depth);

    void command(const std::string& text);
    void command(std::int64_t id, const std::string& text);

    void goToWorkspace(const I3Return& returned);
    void goToWorkspace(std::int64_t id, const I3Place& place);
    void tile(const I3Return& returned, std::size_t depth);
    /// What was around it has gone with it.
    void wrap(const I3Return& returned, std::size_t depth);

    bool hasTiled(const std::string& workspace) const;
    /// Goes to its place among those that it stood with, as far as there still are any.
    bool stand(const I3Return& returned, const I3Place::Level& level);
    /// What stands there; absent where nothing of the item does any more.
    std::optional<std::int64_t> goBehind(const I3Place::Item& item, const std::string& workspace,
                                         const std::string& layout);
    /// `layout` is that of the group which the anchor stands in.
    void goBehind(const I3Node& anchor, const std::string& layout);

    bool isThere(const I3Return& returned, std::size_t depth) const;
    /// Where a window is that is in no scratchpad and does not float by itself; null where it does.
    Spot spotOf(WindowId window) const;
    /// Whether it is among those on the workspace that windows are put to.
    bool stands(WindowId window, const std::string& workspace) const;
    /// Null where the window stands alone, and where what was around it is not there.
    const I3Node* groupOf(const I3Place::Item& item, WindowId window) const;

    const I3Tree& tree_;
    /// What the next command is for.
    std::int64_t id_ = 0;
    /// That take everything to its workspace.
    std::string arrivals_;
    std::string commands_;
    std::set<std::string> newWorkspaces_;
    /// Into which windows are put; null for the tiles of a workspace.
    const I3Node* floatingGroup_ = nullptr;
    /// Of those that are back.
    std::map<WindowId, Spot> spots_;
};

} // namespace LinuxPlatform
