#pragma once

#include "platform/FileManager.h"
#include "platform/MainQueue.h"
#include "platform/WorkQueue.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Curtain {

/// Writes photos to files, one after another, beside the main thread. Destruction waits until all of them are
/// written, however long the drive takes. Main thread only.
class PhotoWriter {
public:
    /// Called on the main thread.
    using Completion = std::function<void(Platform::WriteOutcome)>;

    /// All of them outlive the writer.
    PhotoWriter(Platform::FileManager& files, Platform::WorkQueues& workQueues,
                Platform::MainQueue& mainQueue);
    ~PhotoWriter();
    PhotoWriter(const PhotoWriter&) = delete;
    PhotoWriter& operator=(const PhotoWriter&) = delete;

    void write(std::vector<std::byte> data, std::string path, Completion completion);

private:
    struct Waiting;

    Platform::WorkQueues& workQueues_;
    std::shared_ptr<Waiting> waiting_;
    /// From the first photo on.
    std::unique_ptr<Platform::WorkQueue> queue_;
};

} // namespace Curtain
