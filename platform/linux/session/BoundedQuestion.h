#pragma once

#include "platform/linux/system/Patience.h"

#include <functional>
#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace LinuxPlatform {

/// Asks through a library that waits for its answer without a deadline; absent when there was none in time.
/// The question then goes on alone on its thread, so it holds whatever it needs.
template <class Answer>
std::optional<Answer> answerWithin(Patience patience, std::function<Answer()> question) {
    std::packaged_task<Answer()> task(std::move(question));
    auto answer = task.get_future();
    std::thread(std::move(task)).detach();
    while (const auto look = patience.nextLook()) {
        if (answer.wait_for(*look) == std::future_status::ready) {
            return answer.get();
        }
    }
    return std::nullopt;
}

} // namespace LinuxPlatform
