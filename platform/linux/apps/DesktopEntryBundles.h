#pragma once

#include "platform/Bundle.h"
#include "platform/linux/apps/DesktopEntries.h"

namespace LinuxPlatform {

/// Desktop entries as bundles. One that is hidden, masked by another or not meant for this desktop cannot be
/// opened.
class DesktopEntryBundles : public Platform::Bundles {
public:
    /// `entries` outlives this object.
    explicit DesktopEntryBundles(DesktopEntries& entries);

    std::optional<Platform::Bundle> open(const std::string& path) override;
    std::uint64_t generation() override { return entries_.generation(); }

private:
    DesktopEntries& entries_;
};

} // namespace LinuxPlatform
