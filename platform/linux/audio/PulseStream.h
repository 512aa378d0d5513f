#pragma once

#include <pulse/stream.h>

#include <memory>

namespace LinuxPlatform {

/// Ends the stream, which calls nobody any more.
struct PulseStreamEnd {
    void operator()(pa_stream* stream) const {
        // One that the server is still making can only be ended when it is there.
        pa_stream_set_state_callback(
            stream,
            [](pa_stream* late, void*) {
                if (pa_stream_get_state(late) == PA_STREAM_READY) {
                    pa_stream_disconnect(late);
                }
            },
            nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_set_write_callback(stream, nullptr, nullptr);
        pa_stream_set_moved_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
};

using PulseStream = std::unique_ptr<pa_stream, PulseStreamEnd>;

} // namespace LinuxPlatform
