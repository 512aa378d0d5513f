#pragma once

#include <functional>
#include <memory>
#include <string>

namespace Platform {

/// A queue beside the main thread. `async` may be called from any thread.
class WorkQueue {
public:
    using Task = std::function<void()>;

    virtual ~WorkQueue() = default;

    virtual void async(Task task) = 0;
};

class WorkQueues {
public:
    virtual ~WorkQueues() = default;

    /// A queue that runs one task after another, in their order. Its destruction lets tasks that have begun
    /// finish, waits for them and drops the others. `label` names its thread.
    virtual std::unique_ptr<WorkQueue> makeSerial(const std::string& label) = 0;
    /// The shared queue for what the user is waiting for. Tasks may run side by side and may block.
    virtual WorkQueue& userInitiated() = 0;
};

} // namespace Platform
