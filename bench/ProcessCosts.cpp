#include "bench/ProcessCosts.h"

#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace Bench {
namespace {

std::ifstream openFile(pid_t process, const char* name) {
    return std::ifstream("/proc/" + std::to_string(process) + "/" + name);
}

} // namespace

double processorSeconds(pid_t process) {
    auto file = openFile(process, "stat");
    std::string line;
    std::getline(file, line);
    // The second field, in parentheses, may hold spaces; the times are the 14th and the 15th.
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string other;
    for (int field = 3; field < 14; ++field) {
        fields >> other;
    }
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

Memory memoryOf(pid_t process) {
    auto file = openFile(process, "smaps_rollup");
    Memory memory;
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        std::string name;
        double kibibytes = 0;
        fields >> name >> kibibytes;
        if (name == "Rss:") {
            memory.resident = kibibytes / 1024;
        } else if (name == "Pss:") {
            memory.proportional = kibibytes / 1024;
        }
    }
    return memory;
}

} // namespace Bench
