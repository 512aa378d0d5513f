#include "Curtain/PhotoWriter.h"

#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace Curtain {
namespace {

struct Photo {
    std::vector<std::byte> data;
    std::string path;
    PhotoWriter::Completion completion;
};

} // namespace

struct PhotoWriter::Waiting {
    Platform::FileManager& files;
    Platform::MainQueue& mainQueue;
    std::mutex mutex;
    std::deque<Photo> photos;

    std::optional<Photo> takeFirst() {
        const std::scoped_lock lock(mutex);
        if (photos.empty()) {
            return std::nullopt;
        }
        auto photo = std::move(photos.front());
        photos.pop_front();
        return photo;
    }

    void writeAll() {
        while (auto photo = takeFirst()) {
            const auto outcome = files.write(photo->data, photo->path);
            mainQueue.async([completion = std::move(photo->completion), outcome] { completion(outcome); });
        }
    }
};

PhotoWriter::PhotoWriter(Platform::FileManager& files, Platform::WorkQueues& workQueues,
                         Platform::MainQueue& mainQueue)
    : workQueues_(workQueues),
      waiting_(new Waiting{files, mainQueue, {}, {}}) {}

PhotoWriter::~PhotoWriter() {
    queue_.reset();
    // The queue drops what has not begun.
    waiting_->writeAll();
}

void PhotoWriter::write(std::vector<std::byte> data, std::string path, Completion completion) {
    {
        const std::scoped_lock lock(waiting_->mutex);
        waiting_->photos.push_back({std::move(data), std::move(path), std::move(completion)});
    }
    if (!queue_) {
        queue_ = workQueues_.makeSerial("com.curtain.photos");
    }
    queue_->async([waiting = waiting_] { waiting->writeAll(); });
}

} // namespace Curtain
