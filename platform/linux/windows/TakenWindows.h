#pragma once

#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/windows/WindowId.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace LinuxPlatform {

struct TakenWindow {
    WindowId id = 0;
    /// Where it stood, in its window system's own words, on one line; empty where the session remembers that
    /// itself.
    std::string place;

    bool operator==(const TakenWindow&) const = default;
};

/// Windows that were taken off the screen on request, and neither given back nor brought back by their user.
///
/// With a record on disk, what a run leaves behind that could not end in good order is there for the next
/// one in the same session. Main thread only.
class TakenWindows {
public:
    /// Without a record nothing outlives this object; with one, it starts with what is in there.
    explicit TakenWindows(std::optional<EarlierValue> record = std::nullopt);

    /// To be called before the windows are taken. One that is taken already keeps its first place.
    void take(std::span<const TakenWindow> windows);
    /// To be called once windows are back, or gone.
    void forget(std::span<const WindowId> windows);
    void forget(const WindowPredicate& isBackOrGone);

    bool contains(WindowId window) const { return places_.contains(window); }
    bool isEmpty() const { return places_.empty(); }
    /// Absent for a window that was not taken.
    std::optional<std::string> placeOf(WindowId window) const;
    /// In the order of their identifiers.
    std::vector<TakenWindow> all() const;

private:
    void read();
    void write();

    std::optional<EarlierValue> record_;
    std::map<WindowId, std::string> places_;
};

} // namespace LinuxPlatform
