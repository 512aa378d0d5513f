#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

/// Replaces this program by itself in a virtual desktop with these options, unless that has happened already.
inline void continueInVirtualDesktop(const std::vector<std::string>& options, int argumentCount,
                                     char** arguments) {
    constexpr const char* mark = "CURTAIN_BENCHMARK_IS_IN_VIRTUAL_DESKTOP";
    if (std::getenv(mark) != nullptr) {
        return;
    }
    std::vector<std::string> command{VIRTUAL_DESKTOP};
    command.insert(command.end(), options.begin(), options.end());
    command.insert(command.end(), {"--", "env", mark + std::string("=1")});
    command.insert(command.end(), arguments, arguments + argumentCount);
    std::vector<char*> pointers;
    for (auto& word : command) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    execv(pointers.front(), pointers.data());
    std::perror(VIRTUAL_DESKTOP);
    std::exit(EXIT_FAILURE);
}
