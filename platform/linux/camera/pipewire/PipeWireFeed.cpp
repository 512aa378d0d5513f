#include "platform/linux/camera/pipewire/PipeWireFeed.h"

#include <spa/buffer/meta.h>
#include <spa/param/buffers.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string_view>
#include <utility>

// The library's headers are C: casts and designators of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace LinuxPlatform {
namespace {

using Platform::CaptureInterruption;

/// A camera that refuses is tried again after this, then ever later. Right after it was let go, a busy
/// session manager may still be about to take it away from the one before.
constexpr std::chrono::milliseconds firstRetry{20};
constexpr std::chrono::milliseconds latestRetry{500};
/// Refusals count once they are tried again so late.
constexpr std::chrono::milliseconds seriousRetry{160};
constexpr std::uint32_t fewestBuffers = 2;
/// One with the camera, one on its way, one that is being looked at. They count as memory of this process.
constexpr std::uint32_t usualBuffers = 3;
constexpr std::uint32_t mostBuffers = 16;

CaptureInterruption reasonOf(const char* error) {
    // The daemon passes on what the driver said in words only, in its own language or in ours.
    const std::string_view words = error ? error : "";
    for (const char* const busy :
         {"Device or resource busy", static_cast<const char*>(std::strerror(EBUSY))}) {
        if (words.find(busy) != std::string_view::npos) {
            return CaptureInterruption::deviceInUse;
        }
    }
    return CaptureInterruption::deviceFailed;
}

/// How the sensor is mounted, for instance.
Orientation orientationOf(const spa_buffer& buffer) {
    const auto* const meta = static_cast<const volatile spa_meta_videotransform*>(
        spa_buffer_find_meta_data(&buffer, SPA_META_VideoTransform, sizeof(spa_meta_videotransform)));
    const std::uint32_t transform = meta ? meta->transform : 0;
    if (transform > SPA_META_TRANSFORMATION_Flipped270) {
        return {};
    }
    return {transform >= SPA_META_TRANSFORMATION_Flipped, static_cast<int>(transform % 4)};
}

} // namespace

PipeWireFeed::PipeWireFeed(PipeWireConnection& connection, std::string uniqueID, FrameSink& sink)
    : connection_(connection),
      uniqueID_(std::move(uniqueID)),
      sink_(sink),
      refusalPause_(firstRetry, latestRetry) {
    connection_.add(*this);
}

PipeWireFeed::~PipeWireFeed() {
    connection_.remove(*this);
}

void PipeWireFeed::begin() {
    timer_.emplace(connection_.thread(), [this] { onTimer(); });
    reconcile();
}

void PipeWireFeed::end() {
    closeStream();
    timer_.reset();
}

void PipeWireFeed::reconcile() {
    const auto serial = connection_.core() ? connection_.serialOf(uniqueID_) : std::nullopt;
    if (serial != serial_) {
        lose();
        failure_.reset();
        refusalPause_.reset();
        watch_ = {};
        timer_->stop();
        serial_ = serial;
    }
    if (!serial_) {
        if (!connection_.isLooking()) {
            sink_.onDark(CaptureInterruption::deviceNotAvailable);
        }
    } else if (failure_ && stream_) {
        dealWithFailure();
    } else if (!failure_ && !stream_) {
        open();
    }
}

void PipeWireFeed::lose() {
    closeStream();
    if (std::exchange(hasDelivered_, false)) {
        sink_.onDark(CaptureInterruption::deviceNotAvailable);
    }
}

void PipeWireFeed::open() {
    hasStreamed_ = false;
    hasTakenLong_ = false;
    if (connect()) {
        const auto now = PictureWatch::Clock::now();
        watch_.onOpened(now);
        timer_->start(watch_.left(now));
    } else {
        failure_ = CaptureInterruption::deviceFailed;
        dealWithFailure();
    }
}

bool PipeWireFeed::connect() {
    static constexpr pw_stream_events events = [] {
        pw_stream_events table{};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.state_changed = [](void* self, pw_stream_state old, pw_stream_state state, const char* error) {
            static_cast<PipeWireFeed*>(self)->onStateChanged(old, state, error);
        };
        table.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
            static_cast<PipeWireFeed*>(self)->onParamChanged(id, param);
        };
        table.process = [](void* self) { static_cast<PipeWireFeed*>(self)->onProcess(); };
        return table;
    }();
    stream_.reset(pw_stream_new(connection_.core(), "Curtain camera check",
                                pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                                  "Capture", PW_KEY_MEDIA_ROLE, "Camera",
                                                  PW_KEY_TARGET_OBJECT, std::to_string(*serial_).c_str(),
                                                  PW_KEY_NODE_DONT_RECONNECT, "true", nullptr)));
    if (!stream_) {
        return false;
    }
    pw_stream_add_listener(stream_.get(), &hook_, &events, this);
    PipeWireFormats formats;
    auto& offers = formats.offers();
    return pw_stream_connect(
               stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY,
               static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS),
               offers.data(), static_cast<std::uint32_t>(offers.size())) >= 0;
}

void PipeWireFeed::closeStream() {
    if (stream_) {
        spa_hook_remove(&hook_);
        stream_.reset();
        format_.reset();
    }
}

void PipeWireFeed::fail(CaptureInterruption why) {
    // What follows from the first one is no news.
    if (!failure_) {
        failure_ = why;
        connection_.reconcileSoon();
    }
}

void PipeWireFeed::dealWithFailure() {
    closeStream();
    const bool isSilence = failure_ == CaptureInterruption::noPictures;
    const auto pause = isSilence ? watch_.pause() : refusalPause_.next();
    if (std::exchange(hasDelivered_, false) || hasTakenLong_ || pause >= seriousRetry) {
        sink_.onDark(*failure_);
    }
    timer_->start(pause);
}

void PipeWireFeed::onTimer() {
    if (failure_) {
        failure_.reset();
        reconcile();
        return;
    }
    if (!stream_) {
        return;
    }
    const auto now = PictureWatch::Clock::now();
    if (watch_.left(now).count() <= 0 && isNegotiating() && !std::exchange(hasTakenLong_, true)) {
        // It may only be slow, and would begin its work anew with another link.
        sink_.onDark(CaptureInterruption::deviceFailed);
        watch_.giveMoreTime();
    }
    const auto left = watch_.left(now);
    if (left.count() > 0) {
        timer_->start(left);
    } else {
        // Some daemons do not tell of a link that fails.
        failure_ = hasStreamed_ ? CaptureInterruption::noPictures : CaptureInterruption::deviceFailed;
        hasTakenLong_ = true;
        dealWithFailure();
    }
}

bool PipeWireFeed::isNegotiating() const {
    return format_ && !hasStreamed_;
}

void PipeWireFeed::onStateChanged(pw_stream_state old, pw_stream_state state, const char* error) {
    hasStreamed_ = hasStreamed_ || state == PW_STREAM_STATE_STREAMING;
    // Unconnected after having been more: the link to the camera was taken away.
    if (state == PW_STREAM_STATE_ERROR ||
        (state == PW_STREAM_STATE_UNCONNECTED && old != PW_STREAM_STATE_UNCONNECTED)) {
        fail(reasonOf(error));
    }
}

void PipeWireFeed::onParamChanged(std::uint32_t id, const spa_pod* param) {
    if (id != SPA_PARAM_Format) {
        return;
    }
    format_ = PipeWireFormats::parse(param);
    if (!format_) {
        return;
    }
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), static_cast<std::uint32_t>(memory.size()));
    const auto* buffers = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(usualBuffers, fewestBuffers, mostBuffers), SPA_PARAM_BUFFERS_dataType,
        SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemPtr)));
    const auto* transform = static_cast<const spa_pod*>(
        spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
                                   SPA_POD_Id(SPA_META_VideoTransform), SPA_PARAM_META_size,
                                   SPA_POD_Int(static_cast<int>(sizeof(spa_meta_videotransform)))));
    std::array params{buffers, transform};
    pw_stream_update_params(stream_.get(), params.data(), static_cast<std::uint32_t>(params.size()));
}

void PipeWireFeed::onProcess() {
    pw_buffer* newest = nullptr;
    while (auto* const buffer = pw_stream_dequeue_buffer(stream_.get())) {
        if (newest) {
            pw_stream_queue_buffer(stream_.get(), newest);
        }
        newest = buffer;
    }
    if (!newest) {
        return;
    }
    if (format_ && !failure_) {
        deliver(*newest->buffer);
    }
    pw_stream_queue_buffer(stream_.get(), newest);
}

void PipeWireFeed::deliver(const spa_buffer& buffer) {
    VideoFrame frame{*format_, {}};
    const auto count = std::min<std::size_t>(buffer.n_datas, frame.planes.size());
    for (std::size_t index = 0; index < count; ++index) {
        const auto plane = memory_[index].look(buffer.datas[index]);
        if (!plane) {
            fail(CaptureInterruption::deviceFailed);
            return;
        }
        if (plane->isDamaged || plane->bytes.empty()) {
            return;
        }
        frame.planes[index] = {plane->bytes, plane->stride};
    }
    frame.orientation = orientationOf(buffer);
    hasDelivered_ = true;
    if (sink_.onFrame(frame)) {
        refusalPause_.reset();
        watch_.onPicture(PictureWatch::Clock::now());
    }
}

} // namespace LinuxPlatform
