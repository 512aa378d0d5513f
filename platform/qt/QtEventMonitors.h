#pragma once

#include "platform/EventMonitors.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"

#include <memory>
#include <optional>

namespace QtPlatform {

/// Keys, touches and the pointer over this program's windows; and in place of clicks on other programs, which
/// not every desktop tells, the loss of the keyboard to another program. Needs a QGuiApplication.
class QtEventMonitors : public Platform::EventMonitors {
public:
    /// `queue` outlives this object.
    explicit QtEventMonitors(Platform::MainQueue& queue);
    ~QtEventMonitors() override;
    QtEventMonitors(const QtEventMonitors&) = delete;
    QtEventMonitors& operator=(const QtEventMonitors&) = delete;

    Platform::Subscription addGlobalMonitor(std::uint64_t eventMask,
                                            std::function<void(const Platform::Event&)> callback) override;
    Platform::Subscription addLocalMonitor(std::uint64_t eventMask,
                                           std::function<bool(const Platform::Event&)> callback) override;
    /// For whoever knows of a click that takes the keyboard from no window.
    void noteClickElsewhere() { globalMonitors_.tell({Platform::EventType::leftMouseDown, 0, std::nullopt}); }

private:
    class KeyboardHolder;

    Platform::Subscribers<Platform::Event> globalMonitors_;
    std::unique_ptr<KeyboardHolder> keyboardHolder_;
};

} // namespace QtPlatform
