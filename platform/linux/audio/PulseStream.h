#pragma once

#include <pulse/stream.h>

#include <memory>

namespace LinuxPlatform {

/// Ends the stream, which calls nobody any more.
struct PulseStreamEnd {
    void operator()(pa_stream* stream) const {
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_set_write_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
};

using PulseStream = std::unique_ptr<pa_stream, PulseStreamEnd>;

} // namespace LinuxPlatform
