#pragma once

#include "platform/Subscribers.h"
#include "platform/Subscription.h"

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace LinuxPlatform {

/// One road on which programs get at the picture of the screen. Main thread only.
class CaptureWatch {
public:
    virtual ~CaptureWatch() = default;

    /// Whether some program takes the picture of the screen on this road at present; absent while that cannot
    /// be seen. Cheap, and waits for nobody but the X server.
    virtual std::optional<bool> isScreenCaptured() = 0;

    /// `handler` is called from the event loop when the answer has become another one and nobody has asked,
    /// where that shows.
    Platform::Subscription addNewsObserver(std::function<void()> handler) {
        return newsObservers_.add(std::move(handler));
    }

    /// How long a capture may pause.
    static constexpr std::chrono::seconds memory{10};

protected:
    void tellNews() { newsObservers_.tell(); }

private:
    Platform::Subscribers<> newsObservers_;
};

} // namespace LinuxPlatform
