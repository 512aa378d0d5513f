#include "platform/linux/audio/PulseAudioEngine.h"

#include "platform/linux/audio/PulseStream.h"
#include "platform/linux/audio/SoundServer.h"
#include "platform/linux/audio/TapBuffers.h"

#include <pulse/error.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace LinuxPlatform {
namespace {

/// How much the server hands over at a time; the tap's buffers are cut from that.
constexpr std::uint32_t fragmentFrames = 1024;

/// PipeWire now and then refuses a stream for no reason, an input/output error, and takes the next one.
constexpr int attempts = 5;
constexpr std::chrono::milliseconds attemptInterval{50};

/// So long nothing may come while it should; then there is nothing to hear.
constexpr std::chrono::milliseconds longestPause{500};

/// A stream that the server ends again and again is opened ever more seldom, until one has lived for long.
constexpr std::chrono::milliseconds longestWait{1600};
constexpr std::chrono::seconds longLife{5};

Platform::AudioFormat formatOf(const std::optional<InputDevice>& device) {
    return device ? Platform::AudioFormat{device->spec.channels, static_cast<double>(device->spec.rate)}
                  : Platform::AudioFormat{};
}

/// The channels that a stream of `device` has where so many are asked for; the first one stays the first.
pa_channel_map channelsFor(const InputDevice& device, std::uint8_t count) {
    auto channels = device.channels;
    if (count <= channels.channels) {
        channels.channels = count;
    } else {
        pa_channel_map_init_extend(&channels, count, PA_CHANNEL_MAP_DEFAULT);
    }
    return channels;
}

/// What a question on the loop's thread was answered, or nothing when that took too long.
template <class Answer>
std::optional<Answer> answerOf(const SoundServer& server, std::future<Answer> answer) {
    // Its own patience ends first, where that is what is waited for.
    if (answer.wait_for(2 * server.patience()) != std::future_status::ready) {
        return std::nullopt;
    }
    return answer.get();
}

} // namespace

/// Those who want to know of changes, told on the loop's thread.
class PulseAudioEngine::Observers {
public:
    Platform::Subscription add(std::function<void()> handler, std::shared_ptr<Observers> self) {
        const std::scoped_lock lock(mutex_);
        const auto token = ++lastToken_;
        handlers_.emplace(token, std::move(handler));
        return Platform::Subscription([self = std::move(self), token] {
            const std::scoped_lock ending(self->mutex_);
            self->handlers_.erase(token);
        });
    }

    void tell() {
        const std::scoped_lock lock(mutex_);
        for (const auto& [token, handler] : handlers_) {
            handler();
        }
    }

private:
    /// Held while a handler runs, so that the end of a subscription waits for it.
    std::mutex mutex_;
    int lastToken_ = 0;
    std::map<int, std::function<void()>> handlers_;
};

/// The stream from the server to the tap. The loop's thread only, but for what says otherwise.
class PulseAudioEngine::Recording : public std::enable_shared_from_this<Recording> {
public:
    using Started = std::function<void(std::optional<Platform::AudioError>)>;
    using FormatAnswer = std::function<void(Platform::AudioFormat)>;

    Recording(SoundServer& server, std::shared_ptr<Observers> observers)
        : server_(server),
          observers_(std::move(observers)),
          pause_(server.loop(), [this] { fallSilent(); }) {}

    void observeInput() {
        inputChanges_ = server_.addInputObserver([this] {
            if (started_) {
                // Whoever is starting the engine need not know; the tap follows in any case.
                connect();
            } else if (isFollowing_ && server_.isFollowed() && hearsMicrophone()) {
                isOffCourse_ = false;
            } else {
                failed("the microphone has changed");
            }
            nextTelling_ = {};
            observers_->tell();
        });
    }

    /// `answer` is called once.
    void askFormat(FormatAnswer answer) {
        if (isCancelled_) {
            answer({});
            return;
        }
        formatAnswer_ = std::move(answer);
        server_.whenKnown([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                const auto& device = self->server_.defaultInput();
                self->setDeviceName(device ? device->description : "");
                self->answerFormat(formatOf(device));
            }
        });
    }

    /// `started` is called once.
    void open(Started started) {
        close();
        started_ = std::move(started);
        if (isCancelled_) {
            close();
            return;
        }
        attemptsLeft_ = attempts - 1;
        server_.whenKnown([weak = weak_from_this()] {
            const auto self = weak.lock();
            if (self && self->started_) {
                self->connect();
            }
        });
    }

    /// Opens the stream again if it is not in the tap's format.
    void adapt() {
        if (stream_ && formatOfTap() != streamFormat_) {
            open([](const auto& /*error*/) {});
        }
    }

    void close() {
        pause_.stop();
        nextTelling_ = {};
        failed("it was stopped");
    }

    void cancel() {
        isCancelled_ = true;
        answerFormat({});
        close();
    }

    void end() {
        inputChanges_ = {};
        close();
    }

    /// Any thread.
    bool isRunning() const { return isRunning_; }

    /// Any thread but the loop's.
    void setTap(std::size_t bufferSize, const Platform::AudioFormat& format, TapBlock block) {
        const std::scoped_lock lock(tapMutex_);
        tap_.emplace(Tap{format, TapBuffers(bufferSize, format.channelCount), std::move(block)});
    }

    /// Any thread.
    std::string deviceName() {
        const std::scoped_lock lock(nameMutex_);
        return deviceName_;
    }

    void removeTap() {
        std::optional<Tap> removed;
        const std::scoped_lock lock(tapMutex_);
        removed.swap(tap_);
    }

private:
    struct Tap {
        Platform::AudioFormat format;
        TapBuffers buffers;
        TapBlock block;
    };

    void answerFormat(const Platform::AudioFormat& format) {
        if (const auto answer = std::exchange(formatAnswer_, nullptr)) {
            answer(format);
        }
    }

    void setDeviceName(const std::string& name) {
        const std::scoped_lock lock(nameMutex_);
        deviceName_ = name;
    }

    static Recording& self(void* data) { return *static_cast<Recording*>(data); }

    std::optional<Platform::AudioFormat> formatOfTap() {
        const std::scoped_lock lock(tapMutex_);
        return tap_ ? std::optional(tap_->format) : std::nullopt;
    }

    /// Whether that is what comes from the stream, which the session may have moved, with nothing mixed into
    /// its first channel.
    bool hearsMicrophone() const {
        const auto& device = server_.defaultInput();
        if (!isRunning_ || server_.context() == nullptr || !device ||
            pa_stream_get_device_index(stream_.get()) != device->index ||
            pa_stream_get_device_name(stream_.get()) != device->name) {
            return false;
        }
        const auto channels = channelsFor(*device, channels_.channels);
        return pa_channel_map_equal(&channels_, &channels) != 0;
    }

    void follow() {
        if (isFollowing_ && pa_stream_get_state(stream_.get()) == PA_STREAM_READY) {
            isOffCourse_ = !hearsMicrophone();
            server_.follow(pa_stream_get_device_name(stream_.get()));
        }
    }

    void connect() {
        nextAttempt_ = {};
        auto* const context = server_.context();
        const auto& device = server_.defaultInput();
        if (context == nullptr || !device) {
            failed(context == nullptr ? server_.problem() : "there is no microphone");
            return;
        }
        // The device's own format, said outright: asked to fill it in, servers have handed over another one.
        // Where the device has just changed, the server converts until the tap follows.
        streamFormat_ = formatOfTap().value_or(formatOf(device));
        const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(streamFormat_.sampleRate),
                                  static_cast<std::uint8_t>(streamFormat_.channelCount)};
        channels_ = channelsFor(*device, spec.channels);
        // A role other than that of a call: PulseAudio and PipeWire switch no headset for it.
        const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                                   &pa_proplist_free);
        pa_proplist_sets(properties.get(), PA_PROP_MEDIA_ROLE, "test");
        stream_.reset(
            pa_stream_new_with_proplist(context, "Microphone check", &spec, &channels_, properties.get()));
        if (!stream_) {
            failed(pa_strerror(pa_context_errno(context)));
            return;
        }
        pa_stream_set_state_callback(
            stream_.get(), [](pa_stream*, void* data) { self(data).streamChanged(); }, this);
        pa_stream_set_moved_callback(
            stream_.get(), [](pa_stream*, void* data) { self(data).follow(); }, this);
        pa_stream_set_read_callback(
            stream_.get(), [](pa_stream*, std::size_t, void* data) { self(data).read(); }, this);
        constexpr auto serversChoice = static_cast<std::uint32_t>(-1);
        const pa_buffer_attr buffering{serversChoice, serversChoice, serversChoice, serversChoice,
                                       fragmentFrames * static_cast<std::uint32_t>(pa_frame_size(&spec))};
        isFollowing_ = server_.isFollowed();
        isOffCourse_ = false;
        const auto* const name = isFollowing_ ? nullptr : device->name.c_str();
        const auto flags = PA_STREAM_ADJUST_LATENCY | PA_STREAM_NO_REMAP_CHANNELS |
                           (isFollowing_ ? PA_STREAM_NOFLAGS : PA_STREAM_DONT_MOVE);
        if (pa_stream_connect_record(stream_.get(), name, &buffering, static_cast<pa_stream_flags_t>(flags)) <
            0) {
            failed(pa_strerror(pa_context_errno(context)));
        }
    }

    void streamChanged() {
        switch (pa_stream_get_state(stream_.get())) {
        case PA_STREAM_READY:
            isRunning_ = true;
            begin_ = std::chrono::steady_clock::now();
            pause_.restart(longestPause);
            if (const auto started = std::exchange(started_, nullptr)) {
                started(std::nullopt);
            }
            follow();
            return;
        case PA_STREAM_FAILED:
        case PA_STREAM_TERMINATED:
            if (started_ && attemptsLeft_ > 0) {
                --attemptsLeft_;
                nextAttempt_ = server_.loop().after(attemptInterval, [this] { connect(); });
            } else {
                const bool wasRunning = isRunning_;
                failed(pa_strerror(pa_context_errno(pa_stream_get_context(stream_.get()))));
                tellSoon(wasRunning);
            }
            return;
        default:
            return;
        }
    }

    /// The device is still there as far as is known, so the stream may be opened again.
    void tellSoon(bool wasRunning) {
        if (wasRunning && std::chrono::steady_clock::now() - begin_ > longLife) {
            wait_ = attemptInterval;
        }
        nextTelling_ = server_.loop().after(wait_, [this] { observers_->tell(); });
        wait_ = std::min(2 * wait_, longestWait);
    }

    void fallSilent() {
        const std::scoped_lock lock(tapMutex_);
        if (tap_) {
            tap_->buffers.pushSilence([this](const float* silence, std::size_t count) {
                tap_->block({tap_->format, silence, count});
            });
        }
    }

    void failed(const std::string& problem) {
        isRunning_ = false;
        nextAttempt_ = {};
        stream_.reset();
        if (const auto started = std::exchange(started_, nullptr)) {
            started(Platform::AudioError{problem});
        }
    }

    void read() {
        const void* data = nullptr;
        std::size_t bytes = 0;
        pause_.restart(longestPause);
        while (stream_ && pa_stream_peek(stream_.get(), &data, &bytes) == 0 && bytes > 0) {
            deliver(static_cast<const float*>(data),
                    bytes / pa_frame_size(pa_stream_get_sample_spec(stream_.get())));
            pa_stream_drop(stream_.get());
        }
    }

    void deliver(const float* samples, std::size_t frames) {
        const std::scoped_lock lock(tapMutex_);
        if (tap_ && tap_->format == streamFormat_ && !isOffCourse_) {
            tap_->buffers.push(samples, frames, [this](const float* full, std::size_t count) {
                tap_->block({tap_->format, full, count});
            });
        }
    }

    SoundServer& server_;
    std::shared_ptr<Observers> observers_;
    Platform::Subscription inputChanges_;
    PulseStream stream_;
    /// Whether the session moves the stream when there is another default source.
    bool isFollowing_ = false;
    /// Whether it has been moved, and is not yet known to deliver what is wanted.
    bool isOffCourse_ = false;
    Platform::AudioFormat streamFormat_;
    /// As they were asked for.
    pa_channel_map channels_{};
    Started started_;
    FormatAnswer formatAnswer_;
    bool isCancelled_ = false;
    int attemptsLeft_ = 0;
    Platform::Subscription nextAttempt_;
    /// Of the stream, when it last began to run.
    std::chrono::steady_clock::time_point begin_;
    std::chrono::milliseconds wait_ = attemptInterval;
    Platform::Subscription nextTelling_;
    PulseLoop::Timer pause_;
    std::atomic<bool> isRunning_ = false;
    std::mutex nameMutex_;
    std::string deviceName_;
    /// Held while the tap is called, so that its removal waits for it.
    std::mutex tapMutex_;
    std::optional<Tap> tap_;
};

PulseAudioEngine::PulseAudioEngine(std::shared_ptr<SoundServer> server)
    : server_(std::move(server)),
      observers_(std::make_shared<Observers>()),
      recording_(std::make_shared<Recording>(*server_, observers_)) {
    server_->loop().post([recording = recording_] { recording->observeInput(); });
}

PulseAudioEngine::~PulseAudioEngine() {
    recording_->removeTap();
    server_->loop().post([recording = std::move(recording_)] { recording->end(); });
}

bool PulseAudioEngine::isRunning() const {
    return recording_->isRunning();
}

std::optional<Platform::AudioError> PulseAudioEngine::start() {
    if (isRunning()) {
        return std::nullopt;
    }
    using Outcome = std::optional<Platform::AudioError>;
    const auto promise = std::make_shared<std::promise<Outcome>>();
    auto outcome = promise->get_future();
    server_->loop().post([recording = recording_, promise] {
        recording->open([promise](const Outcome& error) { promise->set_value(error); });
    });
    const auto answer = answerOf(*server_, std::move(outcome));
    if (!answer) {
        stop();
        return Platform::AudioError{"the sound server does not answer"};
    }
    return *answer;
}

void PulseAudioEngine::stop() {
    server_->loop().post([recording = recording_] { recording->close(); });
}

void PulseAudioEngine::cancel() {
    server_->loop().post([recording = recording_] { recording->cancel(); });
}

Platform::Subscription PulseAudioEngine::addConfigurationChangeObserver(std::function<void()> handler) {
    return observers_->add(std::move(handler), observers_);
}

Platform::AudioFormat PulseAudioEngine::inputFormat() {
    const auto promise = std::make_shared<std::promise<Platform::AudioFormat>>();
    auto format = promise->get_future();
    server_->loop().post([recording = recording_, promise] {
        recording->askFormat([promise](const Platform::AudioFormat& answer) { promise->set_value(answer); });
    });
    return answerOf(*server_, std::move(format)).value_or(Platform::AudioFormat{});
}

std::string PulseAudioEngine::deviceName() {
    return recording_->deviceName();
}

void PulseAudioEngine::installTap(std::size_t bufferSize, const Platform::AudioFormat& format,
                                  TapBlock block) {
    recording_->setTap(bufferSize, format, std::move(block));
    server_->loop().post([recording = recording_] { recording->adapt(); });
}

void PulseAudioEngine::removeTap() {
    recording_->removeTap();
}

} // namespace LinuxPlatform
