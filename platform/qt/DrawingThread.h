#pragma once

#include <functional>
#include <memory>

namespace QtPlatform {

/// One thread for pictures of others, which may take for ever to be read or drawn. It begins with its first
/// task.
class DrawingThread {
public:
    using Task = std::function<void()>;

    DrawingThread();
    /// Drops the tasks that have not begun and waits for the one that has, but not for long; it then goes on
    /// alone, so it holds whatever it needs.
    ~DrawingThread();
    DrawingThread(const DrawingThread&) = delete;
    DrawingThread& operator=(const DrawingThread&) = delete;

    /// One task after another. Callable from any thread.
    void async(Task task);

private:
    class Shared;

    std::shared_ptr<Shared> shared_;
};

} // namespace QtPlatform
