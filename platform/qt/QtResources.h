#pragma once

#include "platform/Bundle.h"

namespace QtPlatform {

/// The resources built into the program. Images exist as SVG, whatever extension is asked for.
class QtResources : public Platform::Resources {
public:
    std::optional<std::string> pathForResource(const std::string& name,
                                               const std::string& extension) override;
    std::optional<std::string> shortVersion() override;
    std::optional<std::string> pathForSystemSymbol(const std::string& name) override;
};

} // namespace QtPlatform
