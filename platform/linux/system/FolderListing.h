#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Lists folders without waiting for one that does not answer, such as one on a drive in a network that is
/// gone: its listing goes on beside, and until it comes to an end nobody waits for that folder again. One
/// that always takes too long is answered from its last listing, while the next one goes on. May be used from
/// any thread.
class FolderListing {
public:
    using Contents = std::optional<std::vector<std::string>>;
    using List = std::function<Contents(const std::string& path)>;

    /// `list` is called on threads of its own, and may outlive this object.
    explicit FolderListing(List list, std::chrono::milliseconds deadline = std::chrono::seconds(2));

    /// Absent when the folder cannot be read, or not in time and never before.
    Contents contents(const std::string& path);

private:
    struct Listing {
        Contents contents;
        std::chrono::steady_clock::duration time{};
    };
    struct Work {
        std::shared_future<Listing> result;
        bool isLate = false;
        /// What an earlier listing that took too long has found.
        Contents before;
    };

    std::shared_ptr<Work> workFor(const std::string& path);
    std::shared_ptr<Work> start(const std::string& path) const;
    static bool isReady(const Work& work);

    List list_;
    std::chrono::milliseconds deadline_;
    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<Work>> underWay_;
};

} // namespace LinuxPlatform
