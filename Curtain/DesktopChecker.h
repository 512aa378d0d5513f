#pragma once

#include "Curtain/DesktopController.h"
#include "platform/FileManager.h"
#include "platform/MainQueue.h"
#include "platform/UserFolders.h"
#include "platform/WorkQueue.h"

#include <cstdint>
#include <functional>

namespace Curtain {

/// Counts what lies on the user's desktop. Main thread only.
class DesktopChecker {
public:
    struct Report {
        /// 0 when the folder cannot be read.
        std::int64_t fileCount = 0;
        bool iconsHidden = false;

        bool operator==(const Report&) const = default;
    };

    /// The services outlive the checker.
    DesktopChecker(const DesktopController& controller, Platform::FileManager& fileManager,
                   Platform::UserFolders& folders, Platform::WorkQueues& workQueues,
                   Platform::MainQueue& mainQueue);

    /// Blocks for one run of the desktop's tool.
    Report check() const;
    /// The `fileCount` of a report, without asking the desktop about its icons.
    std::int64_t fileCount() const;
    /// Reads the desktop folder once beside the main thread, so that the system can ask the user; then runs
    /// `completion` on the main thread, whatever came of it.
    void requestAccess(std::function<void()> completion) const;

private:
    const DesktopController& controller_;
    Platform::FileManager& fileManager_;
    Platform::UserFolders& folders_;
    Platform::WorkQueues& workQueues_;
    Platform::MainQueue& mainQueue_;
};

} // namespace Curtain
