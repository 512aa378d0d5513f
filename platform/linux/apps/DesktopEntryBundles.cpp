#include "platform/linux/apps/DesktopEntryBundles.h"

#include "platform/linux/apps/BundleIdentifiers.h"
#include "platform/linux/system/AsciiCase.h"

#include <algorithm>
#include <array>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Whether an app without an entry may be called so: its identifier is made of its name then, which is a
/// window class or what a sandbox or an image says.
bool isNamedByIdentifier(const std::string& bundleIdentifier, const std::string& name) {
    const std::array origins{name, asciiLowerCase(name), name + "_" + name};
    return asciiLowerCase(bundleIdentifier).starts_with(asciiLowerCase(name)) ||
           std::ranges::find(origins, bundleIdentifier, bundleIdentifierFor) != origins.end();
}

} // namespace

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

bool DesktopEntryBundles::isGone(const std::string& bundleIdentifier, const std::string& name) {
    return !entries_.mayHold(bundleIdentifier) && !isNamedByIdentifier(bundleIdentifier, name);
}

} // namespace LinuxPlatform
