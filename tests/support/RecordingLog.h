#pragma once

#include "platform/Log.h"

#include <string>
#include <vector>

namespace TestSupport {

class RecordingLog : public Platform::Log {
public:
    std::vector<std::string> lines;

    void writeLine(const std::string& line) override { lines.push_back(line); }
};

} // namespace TestSupport
