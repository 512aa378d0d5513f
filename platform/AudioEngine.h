#pragma once

#include "platform/AudioFormat.h"
#include "platform/Subscription.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace Platform {

/// The default microphone, as an engine sees it. Not to be called by its own tap.
class AudioInputNode {
public:
    using TapBlock = std::function<void(const AudioPCMBuffer&)>;

    virtual ~AudioInputNode() = default;

    /// What the device delivers now; without channels when there is no microphone. May wait for the sound
    /// server, a few seconds at most.
    virtual AudioFormat inputFormat() = 0;
    /// What the device is called, for the user, when `inputFormat` was last asked; empty where that is not
    /// known or there is none. Does not wait.
    virtual std::string deviceName() = 0;
    /// From now on `block` receives what the running engine hears, in buffers of `bufferSize` frames in
    /// `format`, none lost in between, on the engine's own thread.
    virtual void installTap(std::size_t bufferSize, const AudioFormat& format, TapBlock block) = 0;
    /// The block is not called any more. Waits for a call that is under way.
    virtual void removeTap() = 0;
};

/// Captures sound. Any thread, one at a time; its destruction stops it, and nothing is called any more.
class AudioEngine {
public:
    virtual ~AudioEngine() = default;

    virtual AudioInputNode& inputNode() = 0;
    virtual bool isRunning() const = 0;
    /// Returns why it failed, or nothing. May wait as `inputFormat` does.
    virtual std::optional<AudioError> start() = 0;
    /// Does not wait.
    virtual void stop() = 0;
    /// Ends a wait of another thread, and any later one before it begins, with what stands for a failure. For
    /// those who are about to let the engine go; any thread, at any time.
    virtual void cancel() = 0;
    /// `handler` is called on the engine's own thread each time the input device or its format has changed,
    /// which stops the engine. The end of the subscription waits for a call that is under way.
    virtual Subscription addConfigurationChangeObserver(std::function<void()> handler) = 0;
};

} // namespace Platform
