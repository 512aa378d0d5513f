#include "Curtain/DesktopChecker.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace Curtain {
namespace {

bool isVisible(std::string_view path) {
    return !path.substr(path.rfind('/') + 1).starts_with('.');
}

} // namespace

DesktopChecker::DesktopChecker(const DesktopController& controller, Platform::FileManager& fileManager,
                               Platform::UserFolders& folders, Platform::WorkQueues& workQueues,
                               Platform::MainQueue& mainQueue)
    : controller_(controller),
      fileManager_(fileManager),
      folders_(folders),
      workQueues_(workQueues),
      mainQueue_(mainQueue) {}

DesktopChecker::Report DesktopChecker::check() const {
    // In this order.
    const bool iconsHidden = controller_.iconsHidden();
    return {fileCount(), iconsHidden};
}

std::int64_t DesktopChecker::fileCount() const {
    const auto folder = folders_.desktop();
    const auto contents = folder ? fileManager_.contentsOfDirectory(*folder) : std::nullopt;
    return contents ? std::ranges::count_if(*contents, isVisible) : 0;
}

void DesktopChecker::requestAccess(std::function<void()> completion) const {
    workQueues_.userInitiated().async([&fileManager = fileManager_, &mainQueue = mainQueue_,
                                       folder = folders_.desktop(),
                                       completion = std::move(completion)]() mutable {
        if (folder) {
            fileManager.contentsOfDirectory(*folder);
        }
        mainQueue.async(std::move(completion));
    });
}

} // namespace Curtain
