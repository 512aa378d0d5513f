#include "platform/linux/camera/pipewire/PipeWireThread.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <utility>

// The library's headers are C: casts of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace LinuxPlatform {

PipeWireThread::PipeWireThread() {
    pw_init(nullptr, nullptr);
}

PipeWireThread::~PipeWireThread() {
    stop();
    context_.reset();
    loop_.reset();
    pw_deinit();
}

void PipeWireThread::begin() {
    std::call_once(hasBegun_, [this] {
        loop_.reset(pw_thread_loop_new("camera", nullptr));
        if (!loop_) {
            return;
        }
        // No thread of high priority is needed, and asking for one talks to the bus without a deadline.
        context_.reset(pw_context_new(
            loop(), pw_properties_new(PW_KEY_CONFIG_NAME, "client.conf", "module.rt", "false", nullptr), 0));
        pw_thread_loop_start(loop_.get());
    });
}

void PipeWireThread::stop() {
    if (loop_) {
        pw_thread_loop_stop(loop_.get());
    }
}

PipeWireTimer::PipeWireTimer(const PipeWireThread& thread, std::function<void()> task)
    : loop_(thread.loop()),
      task_(std::move(task)) {
    if (loop_) {
        source_ = pw_loop_add_timer(
            loop_, [](void* self, std::uint64_t) { static_cast<PipeWireTimer*>(self)->task_(); }, this);
    }
}

PipeWireTimer::~PipeWireTimer() {
    if (source_) {
        pw_loop_destroy_source(loop_, source_);
    }
}

void PipeWireTimer::start(std::chrono::milliseconds later) {
    // Nothing at all would stop it.
    set(std::max<std::chrono::nanoseconds>(later, std::chrono::nanoseconds(1)));
}

void PipeWireTimer::stop() {
    set(std::chrono::nanoseconds(0));
}

void PipeWireTimer::set(std::chrono::nanoseconds later) {
    if (source_) {
        constexpr std::int64_t second = 1'000'000'000;
        timespec once{later.count() / second, static_cast<long>(later.count() % second)};
        pw_loop_update_timer(loop_, source_, &once, nullptr, false);
    }
}

} // namespace LinuxPlatform
