#include "platform/linux/system/StandardErrorLog.h"

#include <cstdio>

namespace LinuxPlatform {

void StandardErrorLog::writeLine(const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
}

} // namespace LinuxPlatform
