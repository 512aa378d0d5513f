#include "platform/linux/apps/DesktopEntryBundles.h"

#include <utility>

namespace LinuxPlatform {

DesktopEntryBundles::DesktopEntryBundles(DesktopEntries& entries, std::string thisProgram)
    : entries_(entries),
      thisProgram_(std::move(thisProgram)) {}

std::optional<Platform::Bundle> DesktopEntryBundles::open(const std::string& path) {
    const auto* const entry = entries_.withPath(path);
    if (entry == nullptr || !entry->shouldShow || entry->bundleIdentifier == thisProgram_) {
        return std::nullopt;
    }
    Platform::Bundle bundle{entry->bundleIdentifier, {}, entry->isControlPanel};
    if (!entry->name.empty()) {
        bundle.infoDictionary.emplace(Platform::bundleNameKey, entry->name);
    }
    return bundle;
}

} // namespace LinuxPlatform
