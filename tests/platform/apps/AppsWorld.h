#pragma once

#include "platform/linux/apps/DesktopEntries.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace TestSupport {

/// A user's and a system's folder of desktop entries, programs for them to start, and processes, all in a
/// temporary folder. The language is German, and the desktop calls itself Alpha and Beta.
class AppsWorld {
public:
    AppsWorld() {
        // GLib asks for these once a process, so they are the same for every test.
        setenv("LANGUAGE", "de", 1);
        setenv("XDG_CURRENT_DESKTOP", "Alpha:Beta", 1);
        setenv("XDG_DATA_HOME", "/nonexistent/data", 1);
        setenv("PATH", (bin.string() + ":/usr/bin:/bin").c_str(), 1);
    }

    TemporaryFolder root;
    std::filesystem::path user = root.path() / "user/applications";
    std::filesystem::path system = root.path() / "system/applications";
    std::filesystem::path bin = root.path() / "bin";
    std::filesystem::path proc = root.path() / "proc";
    LinuxPlatform::DesktopEntries entries{{user, system}};

    /// Writes an entry for an application with these lines.
    void install(const std::filesystem::path& file, const std::string& lines) {
        installFile(file, "[Desktop Entry]\nType=Application\n" + lines);
    }
    void installFile(const std::filesystem::path& file, const std::string& text) {
        writeFile(file, text);
        touch(file.parent_path());
    }
    /// An entry that only starts a program of its own name.
    void installPlain(const std::filesystem::path& file) {
        const auto name = file.stem().string();
        addProgram(name);
        install(file, "Name=" + name + "\nExec=" + name + " %U\n");
    }

    void addProgram(const std::string& name) const {
        writeFile(bin / name, "#!/bin/sh\n");
        std::filesystem::permissions(bin / name, std::filesystem::perms(0755));
    }
    void addProcess(int process, const std::string& executable) const {
        std::filesystem::create_directories(proc / std::to_string(process));
        std::filesystem::create_symlink(executable, proc / std::to_string(process) / "exe");
    }

    /// Two changes may come in the same tick of the file system's clock. Tests are not about that.
    void touch(const std::filesystem::path& folder) {
        changeTime_ += std::chrono::seconds(1);
        std::filesystem::last_write_time(folder, changeTime_);
    }

private:
    std::filesystem::file_time_type changeTime_ =
        std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
};

} // namespace TestSupport
