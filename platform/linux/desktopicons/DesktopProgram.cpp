#include "platform/linux/desktopicons/DesktopProgram.h"

#include <glib.h>

#include <fstream>
#include <string_view>

#include <unistd.h>

namespace LinuxPlatform {

bool startDesktopProgram(const std::vector<std::string>& command) {
    auto words = command;
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (auto& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                    G_SPAWN_STDERR_TO_DEV_NULL);
    // A session of its own: what ends our terminal is not to end the desktop.
    const auto leaveOurSession = [](void*) { ::setsid(); };
    return g_spawn_async(g_get_home_dir(), pointers.data(), nullptr, flags, leaveOurSession, nullptr, nullptr,
                         nullptr) != FALSE;
}

bool isRunning(std::uint32_t process, const std::filesystem::path& root) {
    std::ifstream file(root / std::to_string(process) / "stat");
    std::string line;
    std::getline(file, line);
    // The state follows the name, which may hold anything.
    const auto state = line.rfind(')') + 2;
    constexpr auto ended = "ZX";
    return line.find(')') != std::string::npos && state < line.size() &&
           std::string_view(ended).find(line[state]) == std::string_view::npos;
}

std::vector<std::string> profileArguments(std::uint32_t process, const std::filesystem::path& root) {
    std::ifstream commandLine(root / std::to_string(process) / "cmdline", std::ios::binary);
    std::string word;
    while (std::getline(commandLine, word, '\0')) {
        if (word.starts_with("--profile=")) {
            return {word};
        }
        if (word == "--profile" || word == "-p") {
            std::string profile;
            return std::getline(commandLine, profile, '\0') ? std::vector<std::string>{"--profile=" + profile}
                                                            : std::vector<std::string>{};
        }
    }
    return {};
}

} // namespace LinuxPlatform
