#pragma once

#include "platform/Subscribers.h"
#include "platform/Subscription.h"
#include "platform/linux/audio/PulseLoop.h"
#include "platform/linux/audio/SoundSources.h"
#include "platform/linux/system/GrowingPause.h"

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

/// The connection to this session's sound server, PulseAudio or PipeWire, and what it says about microphones.
/// Connects in the background. While somebody observes the input, connects again whenever the server comes
/// back; otherwise at the next question.
class SoundServer {
public:
    /// `patience` is how long a server may take to answer.
    explicit SoundServer(std::chrono::milliseconds patience);
    /// Not on the loop's thread.
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    PulseLoop& loop() { return loop_; }
    std::chrono::milliseconds patience() const { return patience_; }

    // The loop's thread only:

    /// Null while there is no connection.
    pa_context* context() const;
    /// Why there is no connection.
    std::string problem() const;
    /// The microphone that is heard, the default one as far as that is possible.
    const std::optional<InputDevice>& defaultInput() const { return known_.defaultInput; }
    bool hasMicrophone() const { return known_.hasMicrophone; }
    /// Whether a stream hears that microphone by asking for the default one, with which the session moves it
    /// to another. Elsewhere the name is the surer way.
    bool isFollowed() const { return isPipeWire_ && !known_.isSubstitute; }
    /// What a stream that asked for the default source hears.
    void follow(const std::string& name);
    /// Runs the task as soon as the answers above are good, at the latest when the patience is over.
    void whenKnown(PulseLoop::Task task);
    /// Tells when the default input, its format, or how it is to be asked for is not any more what it was
    /// known to be.
    Platform::Subscription addInputObserver(std::function<void()> observer);
    /// Leaves the server while the computer sleeps, and comes back when it wakes.
    void setSuspended(bool isSuspended);

private:
    using Context = std::unique_ptr<pa_context, void (*)(pa_context*)>;

    struct Knowledge {
        /// As the server has it.
        std::string defaultName;
        std::optional<InputDevice> defaultInput;
        bool hasMicrophone = false;
        bool isSubstitute = false;
    };

    /// PipeWire 0.3.65 loses changes of its metadata for its sound server's connections whenever some program
    /// looks at them at the same moment, and all that come later if that program ends too early. Its session
    /// manager, whose metadata they are, moves streams all the same.
    struct Followed {
        std::string name;
        /// What the server took for the default source; once it tells of another one, that is news.
        std::string serversName;
    };

    Context makeContext();
    void connect();
    void contextChanged();
    void lost();
    void connectIfGivenUp();
    void eventHappened(pa_subscription_event_type_t type, std::uint32_t index);
    void refresh();
    void serverDescribed(const pa_server_info& info);
    void sourceListed(const pa_source_info& source);
    void refreshed(bool isComplete);
    void learn(const Knowledge& knowledge);

    const std::chrono::milliseconds patience_;
    PulseLoop loop_;
    Context context_;
    bool isReady_ = false;
    bool isSuspended_ = false;
    /// The connection is lost, and nobody has needed another one so far.
    bool isGivenUp_ = false;
    /// A server that does not come up is not started again and again.
    bool hasLaunched_ = false;
    std::string problem_;
    Knowledge known_;
    bool isKnown_ = false;
    std::vector<PulseLoop::Task> waiting_;
    Platform::Subscribers<> inputObservers_;
    /// What the answers of the server add up to.
    SoundSources answers_;
    bool isPipeWire_ = false;
    bool isRefreshing_ = false;
    bool isOutdated_ = false;
    bool wasInputRemoved_ = false;
    std::optional<Followed> followed_;
    Platform::Subscription deadline_;
    Platform::Subscription retry_;
    GrowingPause retryPause_{std::chrono::milliseconds(500), std::chrono::milliseconds(4000)};
};

} // namespace LinuxPlatform
