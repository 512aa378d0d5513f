#pragma once

#include "platform/linux/donotdisturb/QuietRoad.h"
#include "platform/linux/system/GSettingsKey.h"

namespace LinuxPlatform {

/// A switch of the desktop's settings, which is quiet at one value; turning it waits, but not for long. A
/// state is what its user chose; after it stands nothing, or, where nothing was chosen, the default.
class GSettingsQuietRoad : public QuietRoad {
public:
    GSettingsQuietRoad(std::string name, GSettingsKey key, std::string quietValue);

    std::string name() const override { return name_; }
    Platform::DoNotDisturb::Habits habits() const override { return {}; }
    bool isRemembered() const override { return true; }
    bool tellsChanges() const override { return false; }
    void read(std::function<void(std::optional<std::string> state)> onState) override;
    bool isQuiet(const std::string& state) const override;
    std::string quietened(const std::string& state) const override;
    void write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) override;

private:
    std::string name_;
    GSettingsKey key_;
    std::string quietValue_;
};

} // namespace LinuxPlatform
