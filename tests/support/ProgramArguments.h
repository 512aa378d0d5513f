#pragma once

#include <array>

namespace TestSupport {

/// Command-line arguments that last as long as an application made of them.
struct ProgramArguments {
    ProgramArguments() = default;
    ProgramArguments(const ProgramArguments&) = delete;
    ProgramArguments& operator=(const ProgramArguments&) = delete;

    std::array<char, 5> name{"test"};
    std::array<char*, 2> values{name.data(), nullptr};
    int count = 1;
};

} // namespace TestSupport
