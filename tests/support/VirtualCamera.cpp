/// A camera of PipeWire that behaves like one on USB: several formats, JPEG of its own.
///
/// usage: VirtualCamera NAME DESCRIPTION jpeg|yuyv|both|planar|gray|depth|bayer|h264 [OPTION...]
///
/// It shows four upright bars, red, green, blue and gray, and a white square that moves. Each JPEG carries a
/// comment "VirtualCamera NAME frame N". It lives until it is told to end.
///
/// Options: log=FILE   gets a line for each format and state, "streaming" and "paused" among them
///          path=PATH  object.path, such as v4l2:/dev/video7
///          size=WxH   what it announces and delivers instead of 1280x720 and 640x480
///          rate=N     frames a second, instead of 30
///          photo      a picture full of detail instead of flat bars
///          full709    colours in full range by BT.709, and says so; for raw formats
///          transform=N  calls its pictures mirrored and turned as N of spa_meta_videotransform_value, though
///                     they are not
///          picture=FILE  a JPEG file that it shows instead, as it is; for the format jpeg
///          ready=FIFO is ready for a format only when it has read a byte there, one for each
///          silent     never delivers a frame
///          truncated  ends each frame half way
///          smaller, larger  delivers another size than announced
///          broken     delivers noise
///          busy=FILE  while there is such a file, refuses to begin
///          stops, breaks, damages  a while after each start delivers nothing any more, noise, or frames that
///                     it calls damaged itself
///          stuck      a while after it was given a format delivers nothing any more until it is given one
///                     again, which is after it has been put to rest
///          shrinking  delivers in memory of its own, and a while after the first start cuts it off
///          flapping   offers another size thrice a second
///          thousand   announces a thousand sizes that it does not have before those that it has
///          negative   says that its rows go backwards
///          changing   once it gets SIGUSR1 delivers nothing any more but another format, of 640x480 pixels

#include <pipewire/pipewire.h>
#include <spa/param/buffers.h>
#include <spa/param/video/format-utils.h>

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int frames = 8;
/// A single frame of this size fills enough memory.
constexpr int enormous = 4096;
constexpr int manySizes = 1000;
constexpr std::size_t framesBeforeFault = 20;
/// Whoever is to let it go on has gone by then.
constexpr std::chrono::milliseconds longestWait{30'000};
constexpr std::size_t sharedSize = 4U << 20U;
constexpr int squareSide = 100;

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size&) const = default;
};

struct Options {
    std::string name;
    std::string description;
    std::string formats;
    std::string log;
    std::string path;
    std::string picture;
    std::vector<Size> sizes{{1280, 720}, {640, 480}};
    int rate = 30;
    bool isPhoto = false;
    bool isFull709 = false;
    std::uint32_t transform = 0;
    std::string busyFile;
    std::string readyFifo;
    std::string fault;
};

struct Color {
    int red = 0;
    int green = 0;
    int blue = 0;
};

/// A cheap hash: detail that does not compress away, the same every time.
int grain(int x, int y) {
    auto value = static_cast<std::uint32_t>(x) * 374761393U + static_cast<std::uint32_t>(y) * 668265263U;
    value = (value ^ (value >> 13U)) * 1274126177U;
    return static_cast<int>((value >> 24U) & 0x1FU) - 16;
}

Color colorAt(int x, int y, int frame, Size size, bool isPhoto) {
    const int left = frame * 64 % std::max(size.width - squareSide, 1);
    const int top = size.height / 2 - squareSide / 2;
    if (x >= left && x < left + squareSide && y >= top && y < top + squareSide) {
        return {255, 255, 255};
    }
    if (isPhoto) {
        const auto wave = [&](double scale) { return 100 + 80 * std::sin((x + y * 0.6) / scale); };
        const int noise = grain(x, y);
        return {static_cast<int>(wave(40)) + noise, static_cast<int>(wave(90)) + noise,
                static_cast<int>(wave(23)) + noise};
    }
    constexpr std::array<Color, 4> bars{{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {128, 128, 128}}};
    return bars[static_cast<std::size_t>(x * 4 / size.width)];
}

Bytes jpegFrame(int frame, Size size, const Options& options) {
    if (!options.picture.empty()) {
        std::ifstream file(options.picture, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    Bytes pixels;
    pixels.reserve(static_cast<std::size_t>(size.width * size.height) * 3);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const auto color = colorAt(x, y, frame, size, options.isPhoto);
            for (const int part : {color.red, color.green, color.blue}) {
                pixels.push_back(static_cast<std::uint8_t>(part));
            }
        }
    }
    auto* compressor = tjInitCompress();
    unsigned char* data = nullptr;
    unsigned long length = 0;
    tjCompress2(compressor, pixels.data(), size.width, 0, size.height, TJPF_RGB, &data, &length, TJSAMP_422,
                85, 0);
    const auto comment = "VirtualCamera " + options.name + " frame " + std::to_string(frame);
    // The comment goes right behind the two bytes that begin every JPEG.
    Bytes jpeg(data, data + 2);
    jpeg.insert(jpeg.end(), {0xFF, 0xFE, 0, static_cast<std::uint8_t>(comment.size() + 2)});
    jpeg.insert(jpeg.end(), comment.begin(), comment.end());
    jpeg.insert(jpeg.end(), data + 2, data + length);
    tjFree(data);
    tjDestroy(compressor);
    return jpeg;
}

Bytes yuyvFrame(int frame, Size size, const Options& options) {
    Bytes data;
    data.reserve(static_cast<std::size_t>(size.width * size.height) * 2);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            // Both pixels of a pair have the colour of the first.
            const auto c = colorAt(x & ~1, y, frame, size, options.isPhoto);
            if (options.isFull709) {
                const double y709 = 0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue;
                const auto chroma = x % 2 == 0 ? (c.blue - y709) / 1.8556 : (c.red - y709) / 1.5748;
                data.push_back(static_cast<std::uint8_t>(std::lround(y709)));
                data.push_back(static_cast<std::uint8_t>(std::clamp(std::lround(chroma) + 128L, 0L, 255L)));
                continue;
            }
            const auto luma = 16 + (66 * c.red + 129 * c.green + 25 * c.blue + 128) / 256;
            const auto blue = 128 + (-38 * c.red - 74 * c.green + 112 * c.blue + 128) / 256;
            const auto red = 128 + (112 * c.red - 94 * c.green - 18 * c.blue + 128) / 256;
            data.push_back(static_cast<std::uint8_t>(luma));
            data.push_back(static_cast<std::uint8_t>(x % 2 == 0 ? blue : red));
        }
    }
    return data;
}

/// The same in planes of luma and, a quarter as large, of both chromas.
Bytes planarFrame(const Bytes& yuyv, Size size) {
    Bytes data(yuyv.size() * 3 / 4);
    const auto pixels = static_cast<std::size_t>(size.width * size.height);
    const auto width = static_cast<std::size_t>(size.width);
    for (std::size_t at = 0; at < pixels; ++at) {
        data[at] = yuyv[2 * at];
        const auto x = at % width;
        const auto y = at / width;
        if (x % 2 == 0 && y % 2 == 0) {
            const auto chroma = y / 2 * (width / 2) + x / 2;
            data[pixels + chroma] = yuyv[2 * at + 1];
            data[pixels + pixels / 4 + chroma] = yuyv[2 * at + 3];
        }
    }
    return data;
}

class Camera {
public:
    explicit Camera(Options options) : options_(std::move(options)) {}

    int run() {
        loop_ = pw_main_loop_new(nullptr);
        auto* loop = pw_main_loop_get_loop(loop_);
        for (const int signal : {SIGTERM, SIGINT}) {
            pw_loop_add_signal(
                loop, signal, [](void* self, int) { pw_main_loop_quit(static_cast<Camera*>(self)->loop_); },
                this);
        }
        if (options_.fault == "changing") {
            pw_loop_add_signal(
                loop, SIGUSR1, [](void* self, int) { static_cast<Camera*>(self)->change(); }, this);
        }
        timer_ = pw_loop_add_timer(
            loop,
            [](void* self, std::uint64_t) { pw_stream_trigger_process(static_cast<Camera*>(self)->stream_); },
            this);
        if (!options_.busyFile.empty()) {
            busyTimer_ = pw_loop_add_timer(
                loop, [](void* self, std::uint64_t) { static_cast<Camera*>(self)->lookWhetherFree(); }, this);
            timespec interval{0, 50'000'000};
            pw_loop_update_timer(loop, busyTimer_, &interval, &interval, false);
        }
        if (options_.fault == "flapping") {
            auto* const flaps = pw_loop_add_timer(
                loop, [](void* self, std::uint64_t) { static_cast<Camera*>(self)->change(); }, this);
            timespec third{0, 333'000'000};
            pw_loop_update_timer(loop, flaps, &third, &third, false);
        }
        auto* properties = pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_MEDIA_ROLE, "Camera",
                                             PW_KEY_NODE_NAME, options_.name.c_str(), PW_KEY_NODE_DESCRIPTION,
                                             options_.description.c_str(), nullptr);
        if (!options_.path.empty()) {
            pw_properties_set(properties, PW_KEY_OBJECT_PATH, options_.path.c_str());
        }
        if (options_.sizes.size() == 1) {
            // Those who wait for the first picture need not wait for this.
            makeFrames(options_.formats == "jpeg", options_.sizes.front());
        }
        stream_ = pw_stream_new_simple(loop, options_.name.c_str(), properties, &events(), this);
        connect();
        pw_main_loop_run(loop_);
        pw_stream_destroy(stream_);
        pw_main_loop_destroy(loop_);
        return hasFailed_ ? EXIT_FAILURE : EXIT_SUCCESS;
    }

private:
    void connect() {
        const bool willChange = options_.fault == "changing" || options_.fault == "flapping";
        withOffers(willChange ? std::vector{options_.sizes.front()} : options_.sizes,
                   [this](std::vector<const spa_pod*>& formats) {
                       const auto memory =
                           isShrinking() ? PW_STREAM_FLAG_ALLOC_BUFFERS : PW_STREAM_FLAG_MAP_BUFFERS;
                       pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                                         static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | memory),
                                         formats.data(), static_cast<std::uint32_t>(formats.size()));
                   });
    }

    void change() {
        std::swap(options_.sizes.front(), options_.sizes.back());
        withOffers({options_.sizes.front()}, [this](std::vector<const spa_pod*>& formats) {
            pw_stream_update_params(stream_, formats.data(), static_cast<std::uint32_t>(formats.size()));
        });
    }

    template <class Use>
    void withOffers(const std::vector<Size>& sizes, const Use& use) {
        Bytes memory(std::size_t{1} << 20U);
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), static_cast<std::uint32_t>(memory.size()));
        const spa_fraction rate{static_cast<std::uint32_t>(options_.rate), 1};
        std::vector<const spa_pod*> formats;
        const auto offer = [&](spa_media_subtype subtype, const std::vector<Size>& offered) {
            spa_pod_frame object;
            spa_pod_frame choice;
            spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
            spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                                SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtype), SPA_FORMAT_VIDEO_framerate,
                                SPA_POD_Fraction(&rate), 0);
            if (subtype == SPA_MEDIA_SUBTYPE_raw) {
                spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(rawFormat()), 0);
                if (options_.isFull709) {
                    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_colorRange,
                                        SPA_POD_Id(SPA_VIDEO_COLOR_RANGE_0_255), SPA_FORMAT_VIDEO_colorMatrix,
                                        SPA_POD_Id(SPA_VIDEO_COLOR_MATRIX_BT709), 0);
                }
            }
            spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_size, 0);
            spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
            const auto add = [&](Size size) {
                spa_pod_builder_rectangle(&builder, static_cast<std::uint32_t>(size.width),
                                          static_cast<std::uint32_t>(size.height));
            };
            add(offered.front());
            for (const auto size : offered) {
                add(size);
            }
            spa_pod_builder_pop(&builder, &choice);
            formats.push_back(static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object)));
        };
        if (options_.formats == "h264") {
            offer(SPA_MEDIA_SUBTYPE_h264, sizes);
        } else if (options_.formats == "bayer") {
            offer(SPA_MEDIA_SUBTYPE_bayer, sizes);
        }
        for (int number = 0; options_.fault == "thousand" && number < manySizes; ++number) {
            offer(SPA_MEDIA_SUBTYPE_bayer, {Size{16 + number, 16}});
        }
        if (options_.formats == "jpeg" || options_.formats == "both") {
            offer(SPA_MEDIA_SUBTYPE_mjpg, sizes);
        }
        const bool isRaw = options_.formats == "yuyv" || options_.formats == "planar" ||
                           options_.formats == "gray" || options_.formats == "depth";
        if (isRaw || options_.formats == "both") {
            offer(SPA_MEDIA_SUBTYPE_raw, sizes);
        }
        use(formats);
    }

    bool isBusy() const { return !options_.busyFile.empty() && std::filesystem::exists(options_.busyFile); }

    /// Memory that nobody takes fails the link, as a driver does that gives no buffers.
    int memoryTypes() const {
        constexpr int ordinary = 1 << SPA_DATA_MemPtr | 1 << SPA_DATA_MemFd;
        return isBusy() ? 1 << SPA_DATA_DmaBuf : isShrinking() ? 1 << SPA_DATA_MemFd : ordinary;
    }

    /// What was said of buffers stays said.
    void lookWhetherFree() {
        const bool isFreeNow = std::exchange(wasBusy_, isBusy()) && !wasBusy_;
        if (isFreeNow && largest_ > 0) {
            describeBuffers();
        }
    }

    bool isShrinking() const { return options_.fault == "shrinking"; }

    spa_video_format rawFormat() const {
        return options_.formats == "gray"    ? SPA_VIDEO_FORMAT_GRAY8
               : options_.formats == "depth" ? SPA_VIDEO_FORMAT_GRAY16_LE
               : isPlanar()                  ? SPA_VIDEO_FORMAT_I420
                                             : SPA_VIDEO_FORMAT_YUY2;
    }

    bool isPlanar() const { return options_.formats == "planar"; }

    void log(const std::string& line) const {
        if (!options_.log.empty()) {
            std::ofstream(options_.log, std::ios::app) << line << '\n';
        }
    }

    void onParamChanged(std::uint32_t id, const spa_pod* param) {
        if (id != SPA_PARAM_Format || !param) {
            return;
        }
        std::uint32_t type = 0;
        std::uint32_t subtype = 0;
        spa_format_parse(param, &type, &subtype);
        const bool isJpeg = subtype == SPA_MEDIA_SUBTYPE_mjpg;
        Size size;
        if (isJpeg) {
            spa_video_info_mjpg info{};
            spa_format_video_mjpg_parse(param, &info);
            size = {static_cast<int>(info.size.width), static_cast<int>(info.size.height)};
        } else {
            spa_video_info_raw info{};
            spa_format_video_raw_parse(param, &info);
            size = {static_cast<int>(info.size.width), static_cast<int>(info.size.height)};
        }
        log(std::string(isJpeg ? "jpeg " : "yuyv ") + std::to_string(size.width) + "x" +
            std::to_string(size.height));
        isStuck_ = false;
        waitUntilReady();
        makeFrames(isJpeg, size);
        largest_ = static_cast<std::size_t>(size.width * size.height) * 2;
        for (const auto& frame : frames_) {
            largest_ = std::max(largest_, frame.size());
        }
        describeBuffers();
    }

    void waitUntilReady() const {
        if (options_.readyFifo.empty()) {
            return;
        }
        const int fifo = open(options_.readyFifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        pollfd wanted{fifo, POLLIN, 0};
        char byte = 0;
        if (poll(&wanted, 1, static_cast<int>(longestWait.count())) != 1 || read(fifo, &byte, 1) != 1) {
            log("nobody let it begin");
        }
        close(fifo);
    }

    void describeBuffers() {
        std::array<std::uint8_t, 512> memory{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), memory.size());
        const auto* buffers = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(isPlanar() ? 3 : 1),
            SPA_PARAM_BUFFERS_size, SPA_POD_Int(static_cast<int>(largest_)), SPA_PARAM_BUFFERS_stride,
            SPA_POD_Int(stride_), SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(memoryTypes())));
        const auto* transform = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
            SPA_POD_Id(SPA_META_VideoTransform), SPA_PARAM_META_size,
            SPA_POD_Int(static_cast<int>(sizeof(spa_meta_videotransform)))));
        std::array params{buffers, transform};
        pw_stream_update_params(stream_, params.data(), options_.transform != 0 ? 2 : 1);
    }

    void makeFrames(bool isJpeg, Size announced) {
        // Drawing takes seconds on a busy computer, in which a camera would have been ready long since.
        const std::optional drawing(std::pair(isJpeg, announced));
        if (std::exchange(drawn_, drawing) == drawing) {
            return;
        }
        auto size = announced;
        if (options_.fault == "smaller") {
            size = {announced.width / 2, announced.height / 2};
        } else if (options_.fault == "larger") {
            size = {announced.width * 2, announced.height * 2};
        }
        stride_ = isJpeg ? 0 : isPlanar() ? size.width : size.width * 2;
        frames_.clear();
        for (int frame = 0; frame < (size.width > enormous ? 1 : frames); ++frame) {
            frames_.push_back(isJpeg ? jpegFrame(frame, size, options_) : yuyvFrame(frame, size, options_));
            auto& data = frames_.back();
            if (isPlanar()) {
                data = planarFrame(data, size);
            }
            if (options_.fault == "truncated") {
                data.resize(data.size() / 2);
            } else if (options_.fault == "broken") {
                for (std::size_t at = 0; at < data.size(); ++at) {
                    data[at] = static_cast<std::uint8_t>(grain(static_cast<int>(at), frame) * 8);
                }
            }
        }
    }

    void onProcess() {
        auto* buffer = pw_stream_dequeue_buffer(stream_);
        if (!buffer) {
            return;
        }
        if (auto* const meta = static_cast<spa_meta_videotransform*>(spa_buffer_find_meta_data(
                buffer->buffer, SPA_META_VideoTransform, sizeof(spa_meta_videotransform)))) {
            meta->transform = options_.transform;
        }
        if (isPlanar()) {
            fillPlanes(*buffer->buffer);
            pw_stream_queue_buffer(stream_, buffer);
            return;
        }
        auto& data = buffer->buffer->datas[0];
        data.chunk->offset = 0;
        data.chunk->size = 0;
        if (data.data && !frames_.empty()) {
            const bool isLate = ++framesSinceStart_ > framesBeforeFault;
            const auto& frame =
                isLate && options_.fault == "breaks" ? noise_ : frames_[count_++ % frames_.size()];
            const auto size = std::min<std::size_t>(frame.size(), data.maxsize);
            std::memcpy(data.data, frame.data(), size);
            data.chunk->size = static_cast<std::uint32_t>(size);
            data.chunk->stride = options_.fault == "negative" ? -stride_ : stride_;
            data.chunk->flags = isLate && options_.fault == "damages" ? SPA_CHUNK_FLAG_CORRUPTED : 0;
            isStuck_ = isLate && options_.fault == "stuck";
            if (isStuck_ || (isLate && options_.fault == "stops")) {
                stopTimer();
            }
            if (isLate && isShrinking()) {
                cutOff();
            }
        }
        pw_stream_queue_buffer(stream_, buffer);
    }

    /// Each in a buffer of its own.
    void fillPlanes(spa_buffer& buffer) {
        const auto& frame = frames_[count_++ % frames_.size()];
        const auto luma = frame.size() * 2 / 3;
        std::size_t from = 0;
        for (std::uint32_t plane = 0; plane < buffer.n_datas && plane < 3; ++plane) {
            auto& data = buffer.datas[plane];
            const auto length = std::min<std::size_t>(plane == 0 ? luma : luma / 4, data.maxsize);
            if (data.data) {
                std::memcpy(data.data, frame.data() + from, length);
            }
            data.chunk->offset = 0;
            data.chunk->size = data.data ? static_cast<std::uint32_t>(length) : 0;
            data.chunk->stride = plane == 0 ? stride_ : stride_ / 2;
            data.chunk->flags = 0;
            from += length;
        }
    }

    void stopTimer() {
        timespec never{};
        pw_loop_update_timer(pw_main_loop_get_loop(loop_), timer_, &never, &never, false);
    }

    /// A buffer in a file that this program may cut off, unlike those that the daemon makes.
    void onAddBuffer(pw_buffer* buffer) {
        auto& data = buffer->buffer->datas[0];
        const int file = memfd_create("camera", MFD_CLOEXEC);
        if (!isShrinking() || file < 0 || ftruncate(file, sharedSize) < 0) {
            return;
        }
        data.type = SPA_DATA_MemFd;
        data.flags = SPA_DATA_FLAG_READWRITE;
        data.fd = file;
        data.mapoffset = 0;
        data.maxsize = sharedSize;
        data.data = mmap(nullptr, sharedSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        files_.push_back(file);
    }

    void resizeFiles(std::size_t size) {
        for (const int file : files_) {
            [[maybe_unused]] const int result = ftruncate(file, static_cast<off_t>(size));
        }
    }

    void cutOff() {
        if (!std::exchange(isCutOff_, true)) {
            resizeFiles(0);
            log("cut off");
        }
        stopTimer();
    }

    void onStateChanged(pw_stream_state state, const char* error) {
        const bool isStreaming = state == PW_STREAM_STATE_STREAMING;
        log(pw_stream_state_as_string(state));
        timespec first{};
        timespec interval{};
        if (isStreaming && options_.fault != "silent" && !isStuck_) {
            first.tv_nsec = 1;
            interval.tv_nsec = 1'000'000'000L / options_.rate;
        }
        framesSinceStart_ = 0;
        if (isStreaming) {
            resizeFiles(sharedSize);
        }
        pw_loop_update_timer(pw_main_loop_get_loop(loop_), timer_, &first, &interval, false);
        if (state == PW_STREAM_STATE_ERROR && options_.busyFile.empty()) {
            std::fprintf(stderr, "VirtualCamera: %s\n", error ? error : "error");
            hasFailed_ = true;
            pw_main_loop_quit(loop_);
        }
    }

    static const pw_stream_events& events() {
        static constexpr pw_stream_events table = [] {
            pw_stream_events events{};
            events.version = PW_VERSION_STREAM_EVENTS;
            events.state_changed = [](void* self, pw_stream_state, pw_stream_state state, const char* error) {
                static_cast<Camera*>(self)->onStateChanged(state, error);
            };
            events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
                static_cast<Camera*>(self)->onParamChanged(id, param);
            };
            events.add_buffer = [](void* self, pw_buffer* buffer) {
                static_cast<Camera*>(self)->onAddBuffer(buffer);
            };
            events.process = [](void* self) { static_cast<Camera*>(self)->onProcess(); };
            return events;
        }();
        return table;
    }

    Options options_;
    pw_main_loop* loop_ = nullptr;
    pw_stream* stream_ = nullptr;
    spa_source* timer_ = nullptr;
    int stride_ = 0;
    std::size_t largest_ = 0;
    bool wasBusy_ = false;
    spa_source* busyTimer_ = nullptr;
    std::vector<Bytes> frames_;
    /// What the frames are: whether JPEG, and of which size.
    std::optional<std::pair<bool, Size>> drawn_;
    Bytes noise_ = Bytes(4096, 0x55);
    std::size_t count_ = 0;
    std::size_t framesSinceStart_ = 0;
    std::vector<int> files_;
    bool isCutOff_ = false;
    bool isStuck_ = false;
    bool hasFailed_ = false;
};

Options parse(int argumentCount, char** arguments) {
    if (argumentCount < 4) {
        std::fprintf(stderr, "usage: VirtualCamera NAME DESCRIPTION jpeg|yuyv|both [OPTION...]\n");
        std::exit(EXIT_FAILURE);
    }
    Options options;
    options.name = arguments[1];
    options.description = arguments[2];
    options.formats = arguments[3];
    for (int index = 4; index < argumentCount; ++index) {
        const std::string_view option(arguments[index]);
        if (option.starts_with("log=")) {
            options.log = option.substr(4);
        } else if (option.starts_with("path=")) {
            options.path = option.substr(5);
        } else if (option.starts_with("picture=")) {
            options.picture = option.substr(8);
        } else if (option.starts_with("size=")) {
            Size size;
            if (std::sscanf(arguments[index], "size=%dx%d", &size.width, &size.height) == 2) {
                options.sizes = {size};
            }
        } else if (option.starts_with("rate=")) {
            options.rate = std::atoi(arguments[index] + 5);
        } else if (option.starts_with("busy=")) {
            options.busyFile = option.substr(5);
        } else if (option.starts_with("ready=")) {
            options.readyFifo = option.substr(6);
        } else if (option == "full709") {
            options.isFull709 = true;
        } else if (option.starts_with("transform=")) {
            options.transform = static_cast<std::uint32_t>(std::atoi(arguments[index] + 10));
        } else if (option == "photo") {
            options.isPhoto = true;
        } else {
            options.fault = option;
        }
    }
    return options;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const auto options = parse(argumentCount, arguments);
    pw_init(nullptr, nullptr);
    return Camera(options).run();
}
