#pragma once

#include "platform/Log.h"

namespace LinuxPlatform {

class StandardErrorLog : public Platform::Log {
public:
    void writeLine(const std::string& line) override;
};

} // namespace LinuxPlatform
