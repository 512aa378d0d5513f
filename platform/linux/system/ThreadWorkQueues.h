#pragma once

#include "platform/WorkQueue.h"

#include <memory>
#include <string>

namespace LinuxPlatform {

/// Work queues on threads of their own. A thread begins with its queue's first task. Destruction waits for
/// the tasks that have begun and drops the others.
class ThreadWorkQueues : public Platform::WorkQueues {
public:
    ThreadWorkQueues();
    ~ThreadWorkQueues() override;
    ThreadWorkQueues(const ThreadWorkQueues&) = delete;
    ThreadWorkQueues& operator=(const ThreadWorkQueues&) = delete;

    std::unique_ptr<Platform::WorkQueue> makeSerial(const std::string& label) override;
    /// Two threads serve it.
    Platform::WorkQueue& userInitiated() override;

private:
    std::unique_ptr<Platform::WorkQueue> userInitiated_;
};

} // namespace LinuxPlatform
