#pragma once

#include "platform/DoNotDisturb.h"
#include "platform/MainQueue.h"

#include <functional>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// The switch "Do Not Disturb" of one kind of notification server. A state is a line in the road's own words
/// that says all there is to give back. Answers come at once or later, and none after this object's end.
class QuietRoad {
public:
    virtual ~QuietRoad() = default;

    /// The road's name on disk.
    virtual std::string name() const = 0;
    virtual Platform::DoNotDisturb::Habits habits() const = 0;
    /// Whether the state outlives the server.
    virtual bool isRemembered() const = 0;
    /// Whether `onNews` is called when the state changes; otherwise whoever wants to know reads again.
    virtual bool tellsChanges() const = 0;
    /// How long the server takes to notice.
    virtual Platform::MainQueue::Seconds delay() const { return Platform::MainQueue::Seconds(0); }

    /// Absent when the state cannot be told.
    virtual void read(std::function<void(std::optional<std::string> state)> onState) = 0;
    virtual bool isQuiet(const std::string& state) const = 0;
    /// What `state`, which is not quiet, becomes when it is made so.
    virtual std::string quietened(const std::string& state) const = 0;
    /// `onDone` receives whether it was done; absent when nobody has said so.
    virtual void write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) = 0;

    /// From now on answers come at once, or not at all when they take long.
    virtual void beginWaiting() {}

    std::function<void()> onNews;
};

} // namespace LinuxPlatform
