#include "platform/linux/system/FolderListing.h"

#include <thread>
#include <utility>

namespace LinuxPlatform {

FolderListing::FolderListing(List list, std::chrono::milliseconds deadline)
    : list_(std::move(list)),
      deadline_(deadline) {}

FolderListing::Contents FolderListing::contents(const std::string& path) {
    std::unique_lock lock(mutex_);
    const auto work = workFor(path);
    if (work->isLate) {
        return work->before;
    }
    lock.unlock();
    const auto status = work->result.wait_for(deadline_);
    lock.lock();
    if (status != std::future_status::ready) {
        work->isLate = true;
        return std::nullopt;
    }
    if (const auto found = underWay_.find(path); found != underWay_.end() && found->second == work) {
        underWay_.erase(found);
    }
    return work->result.get().contents;
}

std::shared_ptr<FolderListing::Work> FolderListing::workFor(const std::string& path) {
    auto& work = underWay_[path];
    if (!work) {
        work = start(path);
    } else if (isReady(*work)) {
        const auto last = work->result.get();
        work = start(path);
        if (last.time > deadline_) {
            work->isLate = true;
            work->before = last.contents;
        }
    }
    return work;
}

std::shared_ptr<FolderListing::Work> FolderListing::start(const std::string& path) const {
    std::promise<Listing> promise;
    auto work = std::make_shared<Work>();
    work->result = promise.get_future().share();
    std::thread([list = list_, path, promise = std::move(promise)]() mutable {
        const auto begin = std::chrono::steady_clock::now();
        auto contents = list(path);
        promise.set_value({std::move(contents), std::chrono::steady_clock::now() - begin});
    }).detach();
    return work;
}

bool FolderListing::isReady(const Work& work) {
    return work.result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace LinuxPlatform
