#pragma once

#include "platform/MainQueue.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace TestSupport {

/// A main queue whose time stands still until the test moves it. Tasks run inside `advance` and `runReady`
/// only, those that tasks hand in included as soon as they are due. `async` may be called from any thread.
class HandDrivenQueue : public Platform::MainQueue {
public:
    void async(Task task) override { add(Seconds(0), std::move(task)); }
    void asyncAfter(Seconds delay, Task task) override { add(delay, std::move(task)); }

    Platform::Subscription repeating(Seconds interval, Task task) override {
        const auto repetition = std::make_shared<Repetition>(Repetition{interval, std::move(task)});
        addNext(repetition);
        return Platform::Subscription([repetition] { repetition->hasEnded = true; });
    }

    std::unique_ptr<Platform::DispatchSource> makeSource(Task task) override {
        return std::make_unique<Source>(*this, std::move(task));
    }

    Seconds now() const override {
        const std::scoped_lock lock(mutex_);
        return now_;
    }

    /// Moves the time forward from one due task to the next and runs them.
    void advance(Seconds duration) {
        const auto end = now() + duration;
        while (auto task = takeDue(end)) {
            task();
        }
        const std::scoped_lock lock(mutex_);
        now_ = end;
    }
    void advance(double seconds) { advance(Seconds(seconds)); }

    /// How many tasks wait for their time.
    std::size_t waiting() const {
        const std::scoped_lock lock(mutex_);
        return waiting_.size();
    }

    /// Runs what is due now.
    void runReady() { advance(Seconds(0)); }

private:
    class Source : public Platform::DispatchSource {
    public:
        Source(HandDrivenQueue& queue, Task task) : queue_(queue), state_(std::make_shared<State>()) {
            state_->task = std::move(task);
        }
        ~Source() override { state_->hasEnded = true; }
        Source(const Source&) = delete;
        Source& operator=(const Source&) = delete;

        void signal() override {
            if (state_->isSignalled.exchange(true)) {
                return;
            }
            queue_.async([state = state_] {
                state->isSignalled = false;
                if (!state->hasEnded) {
                    state->task();
                }
            });
        }

    private:
        struct State {
            Task task;
            std::atomic<bool> isSignalled = false;
            bool hasEnded = false;
        };

        HandDrivenQueue& queue_;
        std::shared_ptr<State> state_;
    };

    struct Repetition {
        Seconds interval;
        Task task;
        bool hasEnded = false;
    };

    void add(Seconds delay, Task task) {
        const std::scoped_lock lock(mutex_);
        // Equal keys keep the order in which they came.
        waiting_.emplace(now_ + std::max(delay, Seconds(0)), std::move(task));
    }

    void addNext(const std::shared_ptr<Repetition>& repetition) {
        add(repetition->interval, [this, repetition] {
            if (!repetition->hasEnded) {
                addNext(repetition);
                repetition->task();
            }
        });
    }

    /// Empty when nothing is due until then.
    Task takeDue(Seconds end) {
        const std::scoped_lock lock(mutex_);
        const auto first = waiting_.begin();
        if (first == waiting_.end() || first->first > end) {
            return nullptr;
        }
        now_ = std::max(now_, first->first);
        auto task = std::move(first->second);
        waiting_.erase(first);
        return task;
    }

    mutable std::mutex mutex_;
    Seconds now_{0};
    std::multimap<Seconds, Task> waiting_;
};

} // namespace TestSupport
