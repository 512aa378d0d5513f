#pragma once

#include "platform/MenuBar.h"

namespace LinuxPlatform {

/// For sessions that do not tell what belongs to a panel.
class NoMenuBar : public Platform::MenuBar {
public:
    std::optional<std::string> owningApplication() override { return std::nullopt; }
    std::optional<std::string> frontmostApplication() override { return std::nullopt; }
};

} // namespace LinuxPlatform
