#pragma once

#include "platform/linux/donotdisturb/QuietRoad.h"

#include <filesystem>

namespace LinuxPlatform {

/// The switch of lxqt-notificationd, which is a line of the file of its settings and nothing else.
class LxqtQuietRoad : public QuietRoad {
public:
    explicit LxqtQuietRoad(std::filesystem::path file) : file_(std::move(file)) {}

    std::string name() const override { return "lxqt"; }
    Platform::DoNotDisturb::Habits habits() const override { return {}; }
    bool isRemembered() const override { return true; }
    bool tellsChanges() const override { return false; }
    Platform::MainQueue::Seconds delay() const override { return Platform::MainQueue::Seconds(1.3); }
    void read(std::function<void(std::optional<std::string> state)> onState) override;
    bool isQuiet(const std::string& state) const override;
    std::string quietened(const std::string& state) const override;
    void write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) override;

private:
    std::filesystem::path file_;
};

} // namespace LinuxPlatform
