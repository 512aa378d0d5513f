#include "platform/linux/apps/DesktopEntryBundles.h"

namespace LinuxPlatform {

DesktopEntryBundles::DesktopEntryBundles(DesktopEntries& entries) : entries_(entries) {}

std::optional<Platform::Bundle> DesktopEntryBundles::open(const std::string& path) {
    const auto* const entry = entries_.withPath(path);
    if (entry == nullptr || !entry->shouldShow) {
        return std::nullopt;
    }
    Platform::Bundle bundle{entry->bundleIdentifier, {}};
    if (!entry->name.empty()) {
        bundle.infoDictionary.emplace(Platform::bundleNameKey, entry->name);
    }
    return bundle;
}

} // namespace LinuxPlatform
