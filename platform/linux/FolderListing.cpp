#include "platform/linux/FolderListing.h"

#include <thread>
#include <utility>

namespace LinuxPlatform {

FolderListing::FolderListing(List list, std::chrono::milliseconds deadline)
    : list_(std::move(list)),
      deadline_(deadline) {}

FolderListing::Contents FolderListing::contents(const std::string& path) {
    const auto work = workFor(path);
    if (!work) {
        return std::nullopt;
    }
    const auto status = work->result.wait_for(deadline_);
    const std::scoped_lock lock(mutex_);
    if (status != std::future_status::ready) {
        work->isLate = true;
        return std::nullopt;
    }
    if (const auto found = underWay_.find(path); found != underWay_.end() && found->second == work) {
        underWay_.erase(found);
    }
    return work->result.get();
}

std::shared_ptr<FolderListing::Work> FolderListing::workFor(const std::string& path) {
    const std::scoped_lock lock(mutex_);
    if (const auto found = underWay_.find(path); found != underWay_.end()) {
        if (!isReady(*found->second)) {
            return found->second->isLate ? nullptr : found->second;
        }
        underWay_.erase(found);
    }
    std::promise<Contents> promise;
    auto work = std::make_shared<Work>(Work{promise.get_future().share()});
    std::thread([list = list_, path, promise = std::move(promise)]() mutable {
        promise.set_value(list(path));
    }).detach();
    underWay_[path] = work;
    return work;
}

bool FolderListing::isReady(const Work& work) {
    return work.result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace LinuxPlatform
