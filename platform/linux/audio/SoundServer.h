#pragma once

#include "platform/Subscribers.h"
#include "platform/Subscription.h"
#include "platform/linux/audio/PulseLoop.h"

#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/subscribe.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// A microphone and what it delivers.
struct InputDevice {
    std::uint32_t index = 0;
    std::string name;
    pa_sample_spec spec{};
    pa_channel_map channels{};

    /// The type of its samples, which cards change when they begin to run, is nobody's business: they are
    /// asked for as floating-point numbers.
    bool operator==(const InputDevice& other) const {
        return index == other.index && name == other.name && spec.rate == other.spec.rate &&
               spec.channels == other.spec.channels && pa_channel_map_equal(&channels, &other.channels) != 0;
    }
};

/// The connection to this session's sound server, PulseAudio or PipeWire, and what it says about microphones.
/// Connects in the background. While somebody observes the input, connects again whenever the server comes
/// back; otherwise at the next question.
class SoundServer {
public:
    /// How long a server may take to answer.
    static constexpr std::chrono::milliseconds patience{2000};

    SoundServer();
    /// Not on the loop's thread.
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    PulseLoop& loop() { return loop_; }

    // The loop's thread only:

    /// Null while there is no connection.
    pa_context* context() const;
    /// Why there is no connection.
    std::string problem() const;
    /// The default source, unless that is a monitor, which hears the speakers.
    const std::optional<InputDevice>& defaultInput() const { return known_.defaultInput; }
    bool hasMicrophone() const { return known_.hasMicrophone; }
    /// Runs the task as soon as the answers above are good, at the latest when the patience is over.
    void whenKnown(PulseLoop::Task task);
    /// Tells when the default input, or its format, is not any more what it was known to be.
    Platform::Subscription addInputObserver(std::function<void()> observer);
    /// Leaves the server while the computer sleeps, and comes back when it wakes.
    void setSuspended(bool isSuspended);

private:
    using Context = std::unique_ptr<pa_context, void (*)(pa_context*)>;

    struct Knowledge {
        std::string defaultName;
        std::optional<InputDevice> defaultInput;
        bool hasMicrophone = false;
    };

    Context makeContext();
    void connect();
    void contextChanged();
    void lost();
    void connectIfGivenUp();
    void eventHappened(pa_subscription_event_type_t type, std::uint32_t index);
    void refresh();
    /// Asks by a new connection whether the old one is told the truth.
    void lookAfresh();
    /// Only while somebody observes the input.
    void lookAgainLater();
    void stopLooking();
    void lookedAfresh(const std::string& defaultName);
    void sourceListed(const pa_source_info& source);
    void refreshed(bool isComplete);
    void learn(const Knowledge& knowledge);

    PulseLoop loop_;
    Context context_;
    Context fresh_;
    bool isReady_ = false;
    bool isSuspended_ = false;
    /// The connection is lost, and nobody has needed another one so far.
    bool isGivenUp_ = false;
    std::string problem_;
    Knowledge known_;
    bool isKnown_ = false;
    std::vector<PulseLoop::Task> waiting_;
    Platform::Subscribers<> inputObservers_;
    /// What the answers of the server add up to.
    Knowledge growing_;
    bool isRefreshing_ = false;
    bool isOutdated_ = false;
    bool wasInputRemoved_ = false;
    Platform::Subscription deadline_;
    Platform::Subscription retry_;
    Platform::Subscription nextLook_;
};

} // namespace LinuxPlatform
