/// One end of a PipeWire video stream, until it is ended:
///
///     VideoStreamProgram send NAME [KEY=VALUE…]       small gray pictures, as a stream with these properties
///     VideoStreamProgram receive NAME FILE            from the stream of that name; each picture adds a byte
///     to FILE

#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace {

constexpr std::uint32_t width = 64;
constexpr std::uint32_t height = 40;
constexpr int bytesPerPixel = 4;
constexpr spa_fraction rate{20, 1};

class Stream {
public:
    int run(std::vector<std::string> words) {
        isSender_ = words.at(0) == "send";
        const auto name = words.at(1);
        auto* const properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_NODE_NAME,
                                                   isSender_ ? name.c_str() : "receiver", nullptr);
        if (isSender_) {
            for (auto word = words.begin() + 2; word != words.end(); ++word) {
                const auto equals = word->find('=');
                pw_properties_set(properties, word->substr(0, equals).c_str(),
                                  word->substr(equals + 1).c_str());
            }
        } else {
            pw_properties_set(properties, PW_KEY_MEDIA_CATEGORY, "Capture");
            pw_properties_set(properties, PW_KEY_TARGET_OBJECT, name.c_str());
            file_.open(words.at(2), std::ios::app);
        }
        loop_ = pw_main_loop_new(nullptr);
        timer_ = pw_loop_add_timer(
            pw_main_loop_get_loop(loop_),
            [](void* self, std::uint64_t) { pw_stream_trigger_process(static_cast<Stream*>(self)->stream_); },
            this);
        stream_ =
            pw_stream_new_simple(pw_main_loop_get_loop(loop_), name.c_str(), properties, &events(), this);
        connect();
        return pw_main_loop_run(loop_) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }

private:
    void connect() {
        std::array<std::uint8_t, 1024> memory{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), memory.size());
        const spa_rectangle size{width, height};
        const auto* format = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
            SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
            SPA_FORMAT_VIDEO_format, SPA_POD_Id(SPA_VIDEO_FORMAT_BGRx), SPA_FORMAT_VIDEO_size,
            SPA_POD_Rectangle(&size), SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&rate)));
        const auto flags = isSender_ ? PW_STREAM_FLAG_DRIVER : PW_STREAM_FLAG_AUTOCONNECT;
        pw_stream_connect(stream_, isSender_ ? PW_DIRECTION_OUTPUT : PW_DIRECTION_INPUT, PW_ID_ANY,
                          static_cast<pw_stream_flags>(flags | PW_STREAM_FLAG_MAP_BUFFERS), &format, 1);
    }

    void onFormat() {
        std::array<std::uint8_t, 512> memory{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), memory.size());
        constexpr int stride = bytesPerPixel * static_cast<int>(width);
        const auto* buffers = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1),
            SPA_PARAM_BUFFERS_size, SPA_POD_Int(stride * static_cast<int>(height)), SPA_PARAM_BUFFERS_stride,
            SPA_POD_Int(stride)));
        pw_stream_update_params(stream_, &buffers, 1);
    }

    void onState(pw_stream_state state) {
        timespec first{};
        timespec interval{};
        if (isSender_ && state == PW_STREAM_STATE_STREAMING) {
            first.tv_nsec = 1;
            interval.tv_nsec = 1'000'000'000L / rate.num;
        }
        pw_loop_update_timer(pw_main_loop_get_loop(loop_), timer_, &first, &interval, false);
    }

    void onProcess() {
        auto* const buffer = pw_stream_dequeue_buffer(stream_);
        if (buffer == nullptr) {
            return;
        }
        auto& data = buffer->buffer->datas[0];
        if (!isSender_) {
            file_.put('.').flush();
        } else if (data.data != nullptr) {
            std::memset(data.data, 128, data.maxsize);
            data.chunk->offset = 0;
            data.chunk->size = data.maxsize;
            data.chunk->stride = bytesPerPixel * static_cast<int>(width);
        }
        pw_stream_queue_buffer(stream_, buffer);
    }

    static const pw_stream_events& events() {
        static constexpr pw_stream_events table = [] {
            pw_stream_events result{};
            result.version = PW_VERSION_STREAM_EVENTS;
            result.state_changed = [](void* self, pw_stream_state, pw_stream_state state, const char*) {
                static_cast<Stream*>(self)->onState(state);
            };
            result.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
                if (id == SPA_PARAM_Format && param != nullptr) {
                    static_cast<Stream*>(self)->onFormat();
                }
            };
            result.process = [](void* self) { static_cast<Stream*>(self)->onProcess(); };
            return result;
        }();
        return table;
    }

    bool isSender_ = false;
    std::ofstream file_;
    pw_main_loop* loop_ = nullptr;
    spa_source* timer_ = nullptr;
    pw_stream* stream_ = nullptr;
};

} // namespace

int main(int argumentCount, char** arguments) {
    std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    if (words.size() < 2 || (words[0] == "receive" && words.size() < 3)) {
        return 2;
    }
    pw_init(nullptr, nullptr);
    return Stream().run(std::move(words));
}
