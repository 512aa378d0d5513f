#pragma once

#include "core/UserDefaults.h"

#include <optional>
#include <string>

namespace LinuxPlatform {

/// Something of the user's desktop as it was before it was changed, kept on disk until it is given back.
class EarlierValue {
public:
    /// `state` outlives this object; `name` is the value's own in there. `session` is the mark of the user's
    /// session, one line.
    EarlierValue(CurtainCore::UserDefaults& state, std::string name, std::string session);

    std::optional<std::string> get() const;
    /// Whether there is a value that was kept since the user logged in to this session.
    bool isOfThisSession() const;
    void keep(const std::string& value);
    void forget();
    /// Keeps `value`, or nothing when it is absent.
    void replace(const std::optional<std::string>& value);

private:
    CurtainCore::UserDefaults& state_;
    std::string name_;
    std::string session_;
};

} // namespace LinuxPlatform
