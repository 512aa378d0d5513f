#pragma once

#include "platform/ProcessRunner.h"

#include <functional>
#include <string>
#include <vector>

namespace TestSupport {

/// Runs nothing: writes every run down and answers for the desktop's tools, whose setting it keeps.
class FakeProcessRunner : public Platform::ProcessRunner {
public:
    struct Invocation {
        std::string path;
        std::vector<std::string> arguments;

        bool operator==(const Invocation&) const = default;
    };

    /// The runs of the desktop's tools, as they are to be.
    static Invocation readingIcons() {
        return {"/usr/bin/defaults", {"read", "com.apple.finder", "CreateDesktop"}};
    }
    static Invocation writingIcons(bool shown) {
        return {"/usr/bin/defaults",
                {"write", "com.apple.finder", "CreateDesktop", "-bool", shown ? "true" : "false"}};
    }
    static Invocation restartingDesktop() { return {"/usr/bin/killall", {"Finder"}}; }

    std::vector<Invocation> runs;
    /// What reading the setting prints; empty for one that was never written.
    std::string setting;
    std::function<void()> onRun;

    std::string run(const std::string& path, const std::vector<std::string>& arguments) override {
        runs.push_back({path, arguments});
        if (onRun) {
            onRun();
        }
        if (runs.back() == writingIcons(true)) {
            setting = "1\n";
        } else if (runs.back() == writingIcons(false)) {
            setting = "0\n";
        }
        return runs.back() == readingIcons() ? setting : std::string();
    }
};

} // namespace TestSupport
