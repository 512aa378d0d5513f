#include "platform/linux/system/SettingsWriter.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace LinuxPlatform {

struct SettingsWriter::Beside {
    std::mutex mutex;
    std::condition_variable isDone;
    bool isBusy = false;
    std::optional<SettingsChanges> next;
    std::optional<SettingsOutcome> outcome;

    void work(const Write& write, const std::filesystem::path& folder);
    void add(SettingsOutcome latest);
    void dropCopied();
};

void SettingsWriter::Beside::work(const Write& write, const std::filesystem::path& folder) {
    std::unique_lock lock(mutex);
    while (next) {
        const auto changes = *std::exchange(next, std::nullopt);
        lock.unlock();
        auto latest = write(folder, changes);
        lock.lock();
        add(std::move(latest));
    }
    isBusy = false;
    isDone.notify_all();
}

void SettingsWriter::Beside::add(SettingsOutcome latest) {
    if (outcome) {
        latest.copied.merge(outcome->copied);
        latest.copyNames.merge(outcome->copyNames);
    }
    outcome = std::move(latest);
    dropCopied();
}

/// Whoever asked for the next changes does not know of the outcome yet: what stands there now is the value
/// that was written.
void SettingsWriter::Beside::dropCopied() {
    if (next && outcome) {
        for (const auto& key : outcome->copied) {
            next->copiesDue.erase(key);
        }
    }
}

SettingsWriter::SettingsWriter(Write write, LocalDrives drives, std::chrono::milliseconds patience)
    : write_(std::move(write)),
      drives_(std::move(drives)),
      patience_(patience),
      beside_(std::make_shared<Beside>()) {}

std::optional<SettingsOutcome> SettingsWriter::write(const std::filesystem::path& folder,
                                                     const SettingsChanges& changes) {
    const bool isLocal = drives_.isLocal(folder);
    std::unique_lock lock(beside_->mutex);
    if (isLocal && !beside_->isBusy) {
        return write_(folder, changes);
    }
    beside_->next = changes;
    beside_->dropCopied();
    if (beside_->isBusy) {
        return std::nullopt;
    }
    beside_->isBusy = true;
    std::thread([beside = beside_, write = write_, folder] { beside->work(write, folder); }).detach();
    beside_->isDone.wait_for(lock, patience_, [this] { return !beside_->isBusy; });
    lock.unlock();
    return lateOutcome();
}

std::optional<SettingsOutcome> SettingsWriter::lateOutcome() {
    const std::lock_guard lock(beside_->mutex);
    if (beside_->isBusy) {
        return std::nullopt;
    }
    return std::exchange(beside_->outcome, std::nullopt);
}

} // namespace LinuxPlatform
