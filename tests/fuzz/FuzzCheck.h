#pragma once

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

/// Ends the run where what has to hold for every input does not.
inline void check(bool holds, const char* rule) {
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", rule);
        std::abort();
    }
}

} // namespace Fuzz
