#pragma once

#include "platform/AppShield.h"

namespace LinuxPlatform {

/// For sessions whose windows nobody but their own programs may draw in.
class NoAppShield : public Platform::AppShield {
public:
    void cover(const std::vector<std::string>& /*bundleIDs*/) override {}
};

} // namespace LinuxPlatform
