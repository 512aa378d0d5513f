#include "platform/linux/audio/PulseAudioPlayer.h"

#include "platform/linux/audio/PulseStream.h"
#include "platform/linux/audio/SoundServer.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/stream.h>
#include <pulse/volume.h>

#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include <fcntl.h>

namespace LinuxPlatform {
namespace {

/// So much is with the server ahead of what is heard; a busy computer does not interrupt the sound.
constexpr double secondsAhead = 0.5;
/// What the playback may take beyond the length of the sound.
constexpr std::chrono::milliseconds grace{5000};

/// A question to the server, whose answer does not come any more once this is gone.
using Question = std::unique_ptr<pa_operation, void (*)(pa_operation*)>;

void release(pa_operation* operation) {
    pa_operation_cancel(operation);
    pa_operation_unref(operation);
}

} // namespace

/// The sound file.
class PulseAudioPlayer::Source {
public:
    Source(SNDFILE* file, const SF_INFO& info) : file_(file, &sf_close), info_(info) {}

    pa_sample_spec spec() const {
        return {PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(info_.samplerate),
                static_cast<std::uint8_t>(info_.channels)};
    }

    std::chrono::milliseconds duration() const {
        return std::chrono::milliseconds(static_cast<std::int64_t>(info_.frames) * 1000 / info_.samplerate);
    }

    bool isEmpty() const { return info_.frames == 0; }

    /// The frames that were read; fewer than asked for only at the end.
    std::size_t read(float* samples, std::size_t frames) {
        const auto count = sf_readf_float(file_.get(), samples, static_cast<sf_count_t>(frames));
        return static_cast<std::size_t>(std::max<sf_count_t>(count, 0));
    }

private:
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file_;
    SF_INFO info_;
};

/// The stream from the file to the server. The loop's thread only.
class PulseAudioPlayer::Playback : public std::enable_shared_from_this<Playback> {
public:
    using Finished = std::function<void(bool successfully)>;

    Playback(SoundServer& server, std::unique_ptr<Source> source, float volume, Finished finished)
        : server_(server),
          source_(std::move(source)),
          finished_(std::move(finished)),
          spec_(source_->spec()) {
        pa_cvolume_set(&volume_, source_->spec().channels, pa_sw_volume_from_linear(volume));
    }

    void start() {
        if (source_->isEmpty()) {
            finish(true);
            return;
        }
        deadline_ = server_.loop().after(source_->duration() + grace, [this] { finish(false); });
        server_.whenKnown([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->connect();
            }
        });
    }

    void end() {
        finished_ = nullptr;
        finish(false);
    }

private:
    static Playback& self(void* data) { return *static_cast<Playback*>(data); }

    void connect() {
        auto* const context = server_.context();
        if (context == nullptr || !finished_) {
            finish(false);
            return;
        }
        askingForSink_.reset(pa_context_get_sink_info_by_name(
            context, "@DEFAULT_SINK@",
            [](pa_context*, const pa_sink_info* sink, int isLast, void* data) {
                if (isLast == 0) {
                    self(data).suit(*sink);
                } else {
                    self(data).open();
                }
            },
            this));
    }

    /// Where volumes are flat, a stream's is that of the speakers, each of which goes up with the channel
    /// that it plays. So the stream has their channels, and what is played as it is has their volumes.
    void suit(const pa_sink_info& sink) {
        if ((sink.flags & PA_SINK_FLAT_VOLUME) == 0) {
            return;
        }
        flatSink_ = sink.index;
        const auto requested = pa_cvolume_max(&volume_);
        if (spec_.channels == 1 || spec_.channels == sink.channel_map.channels) {
            channels_ = sink.channel_map;
            spec_.channels = channels_->channels;
            pa_sw_cvolume_multiply_scalar(&volume_, &sink.volume, requested);
        } else {
            pa_cvolume_set(&volume_, spec_.channels,
                           pa_sw_volume_multiply(pa_cvolume_min(&sink.volume), requested));
        }
    }

    void open() {
        auto* const context = server_.context();
        stream_.reset(context != nullptr ? pa_stream_new(context, "Microphone check", &spec_,
                                                         channels_ ? &*channels_ : nullptr)
                                         : nullptr);
        if (!stream_) {
            finish(false);
            return;
        }
        pa_stream_set_state_callback(
            stream_.get(), [](pa_stream*, void* data) { self(data).streamChanged(); }, this);
        pa_stream_set_write_callback(
            stream_.get(), [](pa_stream*, std::size_t bytes, void* data) { self(data).write(bytes); }, this);
        constexpr auto serversChoice = static_cast<std::uint32_t>(-1);
        const auto ahead = static_cast<std::uint32_t>(spec_.rate * secondsAhead) *
                           static_cast<std::uint32_t>(pa_frame_size(&spec_));
        const pa_buffer_attr buffering{serversChoice, ahead, serversChoice, serversChoice, serversChoice};
        pa_cvolume unchanged{};
        pa_cvolume_reset(&unchanged, spec_.channels);
        const auto isFlat = flatSink_.has_value();
        if (pa_stream_connect_playback(
                stream_.get(), nullptr, &buffering,
                static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_CORKED |
                                               (isFlat ? PA_STREAM_RELATIVE_VOLUME : PA_STREAM_NOFLAGS)),
                isFlat ? &unchanged : &volume_, nullptr) < 0) {
            finish(false);
        }
    }

    void streamChanged() {
        switch (pa_stream_get_state(stream_.get())) {
        case PA_STREAM_READY:
            setVolume();
            return;
        case PA_STREAM_FAILED:
        case PA_STREAM_TERMINATED:
            finish(false);
            return;
        default:
            return;
        }
    }

    /// A volume that this program's sound once had is given to the new stream in spite of the one that was
    /// asked for, so it is set again before anything is heard.
    void setVolume() {
        auto* const context = server_.context();
        const auto index = pa_stream_get_index(stream_.get());
        if (flatSink_ && *flatSink_ != pa_stream_get_device_index(stream_.get())) {
            // It plays elsewhere, where these volumes would be out of place.
            unmuting_.reset(pa_context_set_sink_input_mute(context, index, 0, nullptr, nullptr));
            begin();
            return;
        }
        unmuting_.reset(pa_context_set_sink_input_mute(context, index, 0, nullptr, nullptr));
        settingVolume_.reset(pa_context_set_sink_input_volume(
            context, index, &volume_, [](pa_context*, int, void* data) { self(data).begin(); }, this));
    }

    void begin() { starting_.reset(pa_stream_cork(stream_.get(), 0, nullptr, nullptr)); }

    void write(std::size_t bytes) {
        const auto frameSize = pa_frame_size(pa_stream_get_sample_spec(stream_.get()));
        while (!isAtEnd_ && bytes >= frameSize) {
            void* place = nullptr;
            auto size = bytes;
            if (pa_stream_begin_write(stream_.get(), &place, &size) < 0 || size < frameSize) {
                finish(false);
                return;
            }
            const auto frames = read(static_cast<float*>(place), size / frameSize);
            isAtEnd_ = frames < size / frameSize;
            const auto filled = frames * frameSize;
            if (filled > 0) {
                pa_stream_write(stream_.get(), place, filled, nullptr, 0, PA_SEEK_RELATIVE);
            } else {
                pa_stream_cancel_write(stream_.get());
            }
            bytes -= std::min(bytes, size);
            if (isAtEnd_) {
                // The answer comes when the last sample has been heard.
                draining_.reset(pa_stream_drain(
                    stream_.get(),
                    [](pa_stream*, int isDrained, void* data) { self(data).finish(isDrained != 0); }, this));
            }
        }
    }

    std::size_t read(float* samples, std::size_t frames) {
        if (source_->spec().channels == spec_.channels) {
            return source_->read(samples, frames);
        }
        mono_.resize(frames);
        const auto count = source_->read(mono_.data(), frames);
        for (std::size_t frame = 0; frame < count; ++frame) {
            std::fill_n(samples + frame * spec_.channels, spec_.channels, mono_[frame]);
        }
        return count;
    }

    void finish(bool successfully) {
        deadline_ = {};
        for (auto* const question : {&askingForSink_, &unmuting_, &settingVolume_, &starting_, &draining_}) {
            question->reset();
        }
        stream_.reset();
        if (const auto finished = std::exchange(finished_, nullptr)) {
            finished(successfully);
        }
    }

    SoundServer& server_;
    std::unique_ptr<Source> source_;
    Finished finished_;
    pa_cvolume volume_{};
    /// What the stream has; the file, where that is mono, has it once for all.
    pa_sample_spec spec_;
    std::optional<pa_channel_map> channels_;
    std::optional<std::uint32_t> flatSink_;
    std::vector<float> mono_;
    bool isAtEnd_ = false;
    Platform::Subscription deadline_;
    PulseStream stream_;
    Question askingForSink_{nullptr, &release};
    Question unmuting_{nullptr, &release};
    Question settingVolume_{nullptr, &release};
    Question starting_{nullptr, &release};
    Question draining_{nullptr, &release};
};

std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
PulseAudioPlayer::open(const std::string& path, Platform::MainQueue& mainQueue, Connect connect) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        return Platform::AudioError{path + ": " + std::strerror(errno)};
    }
    SF_INFO info{};
    auto* const file = sf_open_fd(descriptor, SFM_READ, &info, SF_TRUE);
    if (file == nullptr) {
        return Platform::AudioError{path + ": " + sf_strerror(nullptr)};
    }
    auto source = std::make_unique<Source>(file, info);
    const auto spec = source->spec();
    if (info.channels > int{PA_CHANNELS_MAX} || pa_sample_spec_valid(&spec) == 0) {
        return Platform::AudioError{path + ": no sound server plays this format"};
    }
    return std::unique_ptr<Platform::AudioPlayer>(
        new PulseAudioPlayer(std::move(source), mainQueue, std::move(connect)));
}

PulseAudioPlayer::PulseAudioPlayer(std::unique_ptr<Source> source, Platform::MainQueue& mainQueue,
                                   Connect connect)
    : mainQueue_(mainQueue),
      connect_(std::move(connect)),
      source_(std::move(source)) {}

PulseAudioPlayer::~PulseAudioPlayer() {
    letGo();
}

void PulseAudioPlayer::prepareToPlay() {
    if (!server_) {
        server_ = connect_();
    }
}

void PulseAudioPlayer::play() {
    if (!source_) {
        return;
    }
    prepareToPlay();
    playback_ = std::make_shared<Playback>(
        *server_, std::move(source_), volume_,
        [&mainQueue = mainQueue_, done = lifetime_.weak([this](bool successfully) {
            finished(successfully);
        })](bool successfully) { mainQueue.async([done, successfully] { done(successfully); }); });
    server_->loop().post([playback = playback_] { playback->start(); });
}

void PulseAudioPlayer::finished(bool successfully) {
    letGo();
    if (delegate_ != nullptr) {
        delegate_->audioPlayerDidFinishPlaying(*this, successfully);
    }
}

/// A player that has played is kept, but not its connection.
void PulseAudioPlayer::letGo() {
    if (playback_) {
        server_->loop().post([playback = std::move(playback_)] { playback->end(); });
    }
    server_.reset();
}

} // namespace LinuxPlatform
