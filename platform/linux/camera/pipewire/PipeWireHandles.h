#pragma once

#include <pipewire/pipewire.h>

#include <memory>
#include <string>

namespace LinuxPlatform {

struct PipeWireDestroy {
    void operator()(pw_context* context) const { pw_context_destroy(context); }
    void operator()(pw_core* core) const { pw_core_disconnect(core); }
    void operator()(pw_proxy* proxy) const { pw_proxy_destroy(proxy); }
    void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
    void operator()(pw_thread_loop* loop) const { pw_thread_loop_destroy(loop); }
};

template <class Object>
using PipeWireOwned = std::unique_ptr<Object, PipeWireDestroy>;

/// Empty for a property that is not there.
inline std::string propertyOf(const spa_dict* properties, const char* key) {
    const char* const value = properties ? spa_dict_lookup(properties, key) : nullptr;
    return value ? value : "";
}

} // namespace LinuxPlatform
