#pragma once

#include <sys/types.h>

namespace Bench {

/// What all threads of a process have worked so far.
double processorSeconds(pid_t process);

/// In MiB.
struct Memory {
    double resident = 0;
    /// Shared pages divided among those who share them.
    double proportional = 0;
};

Memory memoryOf(pid_t process);

} // namespace Bench
