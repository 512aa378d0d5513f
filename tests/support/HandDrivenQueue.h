#pragma once

#include "platform/MainQueue.h"

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace TestSupport {

class HandDrivenQueue : public Platform::MainQueue {
public:
    void async(Task task) override { asyncAfter(Seconds(0), std::move(task)); }
    void asyncAfter(Seconds delay, Task task) override {
        tasks_.emplace(std::pair(now_ + delay, ++last_), std::move(task));
    }
    Platform::Subscription repeating(Seconds, Task) override { return {}; }
    Seconds now() const override { return now_; }
    void runReady() { advance(Seconds(0)); }
    void advance(double seconds) { advance(Seconds(seconds)); }
    void advance(Seconds s) {
        const auto end = now_ + s;
        while (!tasks_.empty() && tasks_.begin()->first.first <= end) {
            auto node = tasks_.extract(tasks_.begin());
            now_ = std::max(now_, node.key().first);
            node.mapped()();
        }
        now_ = end;
    }

private:
    Seconds now_{0};
    std::uint64_t last_ = 0;
    std::map<std::pair<Seconds, std::uint64_t>, Task> tasks_;
};

} // namespace TestSupport
