#pragma once

#include "platform/linux/system/LocalDrives.h"
#include "platform/linux/system/SettingsFolder.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace LinuxPlatform {

/// Changes a folder of settings without waiting for a drive that does not answer: the work goes on beside,
/// and until it comes to an end nobody waits for that drive again. Changes that come meanwhile are carried
/// out after it, the latest only. Drives of this computer are waited for. Single thread.
class SettingsWriter {
public:
    using Write =
        std::function<SettingsOutcome(const std::filesystem::path& folder, const SettingsChanges& changes)>;

    /// `write` is called on a thread of its own too, and may outlive this object.
    explicit SettingsWriter(Write write = changeSettings, LocalDrives drives = LocalDrives(),
                            std::chrono::milliseconds patience = std::chrono::seconds(1));

    /// `changes` hold all that has not been carried out yet. Absent when there is no answer in time.
    std::optional<SettingsOutcome> write(const std::filesystem::path& folder, const SettingsChanges& changes);

    /// What has come of changes that nobody waited for, once.
    std::optional<SettingsOutcome> lateOutcome();

private:
    struct Beside;

    Write write_;
    LocalDrives drives_;
    std::chrono::milliseconds patience_;
    std::shared_ptr<Beside> beside_;
};

} // namespace LinuxPlatform
