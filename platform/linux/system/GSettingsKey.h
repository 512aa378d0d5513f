#pragma once

#include <optional>
#include <string>

namespace LinuxPlatform {

/// One key of the desktop's settings, where its schema is installed. Values are texts, as the tool
/// `gsettings` prints them. Reading starts no program and waits for none; writing goes its way without being
/// waited for.
class GSettingsKey {
public:
    GSettingsKey(std::string schema, std::string key);

    /// Absent when there is no such setting here.
    std::optional<std::string> value() const;
    /// What was chosen in place of the default; absent when nothing was.
    std::optional<std::string> chosenValue() const;
    /// Whether the value fits and may be changed.
    bool write(const std::string& value);
    bool reset();

private:
    std::string schema_;
    std::string key_;
};

} // namespace LinuxPlatform
