#pragma once

#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/thread-mainloop.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

namespace TestSupport {

/// A mixer that ends other programs' recordings, which pactl cannot.
class SoundMixer {
public:
    SoundMixer()
        : loop_(pa_threaded_mainloop_new(), &pa_threaded_mainloop_free),
          context_(pa_context_new(pa_threaded_mainloop_get_api(loop_.get()), "mixer"), &pa_context_unref) {
        pa_context_set_state_callback(
            context_.get(),
            [](pa_context* context, void* data) {
                if (pa_context_get_state(context) == PA_CONTEXT_READY) {
                    static_cast<SoundMixer*>(data)->happened();
                }
            },
            this);
        pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
        pa_threaded_mainloop_start(loop_.get());
        isReady_ = waitForIt();
    }
    ~SoundMixer() {
        pa_threaded_mainloop_stop(loop_.get());
        pa_context_disconnect(context_.get());
    }
    SoundMixer(const SoundMixer&) = delete;
    SoundMixer& operator=(const SoundMixer&) = delete;

    /// Whether there were some and the server has ended them.
    bool endRecordingsOf(std::string_view program) {
        if (!isReady_) {
            return false;
        }
        program_ = program;
        pa_threaded_mainloop_lock(loop_.get());
        pa_operation_unref(pa_context_get_source_output_info_list(
            context_.get(),
            [](pa_context* context, const pa_source_output_info* output, int isLast, void* data) {
                auto& mixer = *static_cast<SoundMixer*>(data);
                if (isLast == 0 && mixer.isOfTheProgram(*output)) {
                    pa_operation_unref(pa_context_kill_source_output(
                        context, output->index,
                        [](pa_context*, int isDone, void* sameData) {
                            if (isDone != 0) {
                                static_cast<SoundMixer*>(sameData)->happened();
                            }
                        },
                        data));
                }
            },
            this));
        pa_threaded_mainloop_unlock(loop_.get());
        return waitForIt();
    }

private:
    bool isOfTheProgram(const pa_source_output_info& output) const {
        const auto* const name = pa_proplist_gets(output.proplist, PA_PROP_APPLICATION_NAME);
        return name != nullptr && name == program_;
    }

    void happened() {
        const std::scoped_lock lock(mutex_);
        hasHappened_ = true;
        condition_.notify_all();
    }

    bool waitForIt() {
        std::unique_lock lock(mutex_);
        const bool hasHappened =
            condition_.wait_for(lock, std::chrono::seconds(15), [this] { return hasHappened_; });
        hasHappened_ = false;
        return hasHappened;
    }

    std::unique_ptr<pa_threaded_mainloop, decltype(&pa_threaded_mainloop_free)> loop_;
    std::unique_ptr<pa_context, decltype(&pa_context_unref)> context_;
    std::mutex mutex_;
    std::condition_variable condition_;
    bool hasHappened_ = false;
    bool isReady_ = false;
    std::string_view program_;
};

} // namespace TestSupport
