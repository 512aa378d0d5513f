#include "platform/linux/system/ThreadWorkQueues.h"

#include <pthread.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace LinuxPlatform {
namespace {

/// The kernel keeps no more of a thread's name.
constexpr std::size_t longestThreadName = 15;

class ThreadWorkQueue : public Platform::WorkQueue {
public:
    ThreadWorkQueue(const std::string& label, std::size_t threadLimit)
        : name_(label.size() > longestThreadName ? label.substr(label.size() - longestThreadName) : label),
          threadLimit_(threadLimit) {}
    ThreadWorkQueue(const ThreadWorkQueue&) = delete;
    ThreadWorkQueue& operator=(const ThreadWorkQueue&) = delete;

    ~ThreadWorkQueue() override {
        std::deque<Task> dropped;
        {
            const std::scoped_lock lock(mutex_);
            isEnding_ = true;
            dropped.swap(waiting_);
        }
        dropped.clear();
        somethingChanged_.notify_all();
        for (auto& thread : threads_) {
            thread.join();
        }
    }

    void async(Task task) override {
        const std::scoped_lock lock(mutex_);
        if (isEnding_) {
            return;
        }
        waiting_.push_back(std::move(task));
        if (idle_ < waiting_.size() && threads_.size() < threadLimit_) {
            threads_.emplace_back([this] { run(); });
            pthread_setname_np(threads_.back().native_handle(), name_.c_str());
        }
        somethingChanged_.notify_one();
    }

private:
    void run() {
        std::unique_lock lock(mutex_);
        while (true) {
            ++idle_;
            somethingChanged_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
            --idle_;
            if (isEnding_) {
                return;
            }
            auto task = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            task();
            // What the task holds may hand in work when it goes.
            task = nullptr;
            lock.lock();
        }
    }

    std::string name_;
    std::size_t threadLimit_;
    std::mutex mutex_;
    std::condition_variable somethingChanged_;
    std::deque<Task> waiting_;
    std::size_t idle_ = 0;
    bool isEnding_ = false;
    std::vector<std::thread> threads_;
};

} // namespace

ThreadWorkQueues::ThreadWorkQueues() : userInitiated_(std::make_unique<ThreadWorkQueue>("curtain-work", 2)) {}

ThreadWorkQueues::~ThreadWorkQueues() = default;

std::unique_ptr<Platform::WorkQueue> ThreadWorkQueues::makeSerial(const std::string& label) {
    return std::make_unique<ThreadWorkQueue>(label, 1);
}

Platform::WorkQueue& ThreadWorkQueues::userInitiated() {
    return *userInitiated_;
}

} // namespace LinuxPlatform
