#pragma once

#include "platform/Bundle.h"
#include "platform/linux/apps/DesktopEntries.h"

#include <string>

namespace LinuxPlatform {

/// Desktop entries as bundles. One that is hidden, masked by another or not meant for this desktop cannot be
/// opened, nor can that of this program.
class DesktopEntryBundles : public Platform::Bundles {
public:
    /// `entries` outlives this object. `thisProgram` is the bundle identifier that is left out.
    explicit DesktopEntryBundles(DesktopEntries& entries, std::string thisProgram = {});

    std::optional<Platform::Bundle> open(const std::string& path) override;
    bool isGone(const std::string& bundleIdentifier, const std::string& name) override;
    std::uint64_t generation() override { return entries_.generation(); }

private:
    DesktopEntries& entries_;
    std::string thisProgram_;
};

} // namespace LinuxPlatform
