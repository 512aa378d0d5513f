#pragma once

#include "platform/WorkQueue.h"

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// Work queues whose tasks run inside `runAll` only, in the order in which they were handed in, on the
/// caller's thread. `async` may be called from any thread.
class HandDrivenWorkQueues : public Platform::WorkQueues {
public:
    /// The labels of all serial queues that were made.
    std::vector<std::string> labels;

    std::unique_ptr<Platform::WorkQueue> makeSerial(const std::string& label) override {
        labels.push_back(label);
        return std::make_unique<Queue>(tasks_);
    }

    Platform::WorkQueue& userInitiated() override { return userInitiated_; }

    std::size_t waiting() const {
        const std::scoped_lock lock(tasks_->mutex);
        return tasks_->waiting.size();
    }

    /// Runs everything that waits, and what that hands in.
    void runAll() {
        while (auto task = tasks_->takeFirst()) {
            task();
        }
    }

private:
    struct Tasks {
        mutable std::mutex mutex;
        std::deque<std::pair<const void*, Platform::WorkQueue::Task>> waiting;

        Platform::WorkQueue::Task takeFirst() {
            const std::scoped_lock lock(mutex);
            if (waiting.empty()) {
                return nullptr;
            }
            auto task = std::move(waiting.front().second);
            waiting.pop_front();
            return task;
        }
    };

    class Queue : public Platform::WorkQueue {
    public:
        explicit Queue(std::shared_ptr<Tasks> tasks) : tasks_(std::move(tasks)) {}
        Queue(const Queue&) = delete;
        Queue& operator=(const Queue&) = delete;
        ~Queue() override {
            const std::scoped_lock lock(tasks_->mutex);
            std::erase_if(tasks_->waiting, [this](const auto& entry) { return entry.first == this; });
        }

        void async(Task task) override {
            const std::scoped_lock lock(tasks_->mutex);
            tasks_->waiting.emplace_back(this, std::move(task));
        }

    private:
        std::shared_ptr<Tasks> tasks_;
    };

    std::shared_ptr<Tasks> tasks_ = std::make_shared<Tasks>();
    Queue userInitiated_{tasks_};
};

} // namespace TestSupport
