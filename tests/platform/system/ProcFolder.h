#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// A process as a /proc folder shows it; what is empty is not there.
struct ProcessSample {
    std::string executable = {};
    std::vector<std::string> arguments = {};
    std::vector<std::string> environment = {};
    std::string controlGroup = {};
    std::uint32_t parent = 1;
    std::uint64_t startTime = 0;
    std::string flatpakInfo = {};
    std::string securityLabel = {};
};

/// Processes of an invented machine.
class ProcFolder {
public:
    explicit ProcFolder(std::filesystem::path root) : root_(std::move(root)) {
        std::filesystem::create_directories(root_);
    }

    /// Of the program that reads this folder. The root group stands for a machine without a process manager.
    void setOwnControlGroup(const std::string& group) const {
        writeFile(root_ / "self/cgroup", "0::" + group + "\n");
    }

    void add(std::uint32_t process, const ProcessSample& sample) const {
        const auto folder = root_ / std::to_string(process);
        std::filesystem::create_directories(folder);
        if (!sample.executable.empty()) {
            std::filesystem::create_symlink(sample.executable, folder / "exe");
        }
        writeFile(folder / "cmdline", ended(sample.arguments));
        writeFile(folder / "environ", ended(sample.environment));
        writeFile(folder / "cgroup",
                  "0::" + (sample.controlGroup.empty() ? std::string("/") : sample.controlGroup) + "\n");
        // The program's name may hold anything.
        writeFile(folder / "stat", std::to_string(process) + " (a) S 7 (b) S " +
                                       std::to_string(sample.parent) +
                                       " 1 1 0 -1 4194304 1 0 0 0 0 0 0 0 20 0 1 0 " +
                                       std::to_string(sample.startTime) + " 0 0\n");
        if (!sample.flatpakInfo.empty()) {
            writeFile(folder / "root/.flatpak-info", sample.flatpakInfo);
        }
        if (!sample.securityLabel.empty()) {
            writeFile(folder / "attr/current", sample.securityLabel + "\n");
        }
    }

    void addFileSeenBy(std::uint32_t process, const std::string& path) const {
        writeFile(root_ / std::to_string(process) / "root" / path.substr(1), "");
    }

    void remove(std::uint32_t process) const { std::filesystem::remove_all(root_ / std::to_string(process)); }

private:
    static std::string ended(const std::vector<std::string>& texts) {
        std::string result;
        for (const auto& text : texts) {
            result += text + '\0';
        }
        return result;
    }

    std::filesystem::path root_;
};

} // namespace TestSupport
