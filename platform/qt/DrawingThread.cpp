#include "platform/qt/DrawingThread.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace QtPlatform {
namespace {

constexpr std::chrono::milliseconds longestEnd{500};

} // namespace

class DrawingThread::Shared {
public:
    /// Returns whether somebody has to `run` it from now on.
    bool add(Task task) {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        changed_.notify_all();
        return !std::exchange(isRunning_, true);
    }

    void run() {
        std::unique_lock lock(mutex_);
        while (waitForTask(lock)) {
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
        isRunning_ = false;
        changed_.notify_all();
    }

    void end() {
        std::unique_lock lock(mutex_);
        isOver_ = true;
        changed_.notify_all();
        changed_.wait_for(lock, longestEnd, [this] { return !isRunning_; });
    }

private:
    bool waitForTask(std::unique_lock<std::mutex>& lock) {
        changed_.wait(lock, [this] { return isOver_ || !tasks_.empty(); });
        return !isOver_;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool isOver_ = false;
    bool isRunning_ = false;
};

DrawingThread::DrawingThread() : shared_(std::make_shared<Shared>()) {}

DrawingThread::~DrawingThread() {
    shared_->end();
}

void DrawingThread::async(Task task) {
    if (shared_->add(std::move(task))) {
        std::thread([shared = shared_] { shared->run(); }).detach();
    }
}

} // namespace QtPlatform
