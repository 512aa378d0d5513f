#pragma once

#include "platform/EventMonitors.h"
#include "platform/Subscribers.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace LinuxPlatform {

/// Mouse clicks all over the X screen, by the raw events of the XInput extension 2.2, and the keys of this
/// program.
class X11EventMonitors : public Platform::EventMonitors {
public:
    /// `connection` outlives the monitors. `toolkit` watches the keys, and the rest where the server has no
    /// such extension.
    X11EventMonitors(X11Connection& connection, std::unique_ptr<Platform::EventMonitors> toolkit);

    Platform::Subscription addGlobalMonitor(std::uint64_t eventMask,
                                            std::function<void(const Platform::Event&)> callback) override;
    Platform::Subscription addLocalMonitor(std::uint64_t eventMask,
                                           std::function<bool(const Platform::Event&)> callback) override;

private:
    bool isPointerOverOwnWindow();
    void handle(const xcb_generic_event_t& event);

    X11Connection& connection_;
    /// 0 where the server has no such extension.
    std::uint8_t inputExtension_ = 0;
    std::unique_ptr<Platform::EventMonitors> toolkit_;
    Platform::Subscribers<Platform::Event> globalMonitors_;
    Platform::Subscription events_;
};

} // namespace LinuxPlatform
