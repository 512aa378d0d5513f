#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CurtainCore {

/// A per-user store of single values under text keys. Nothing reports failure: what cannot be read is absent,
/// what cannot be written is kept for as long as the process lives.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Whether there is a value under the key, readable or not.
    virtual bool contains(std::string_view key) const = 0;
    /// The bytes under the key.
    virtual std::optional<std::string> data(std::string_view key) const = 0;
    /// The text under the key; absent when the value is not text (UTF-8).
    virtual std::optional<std::string> string(std::string_view key) const = 0;

    virtual void setData(std::string_view key, const std::string& bytes) = 0;
    virtual void setString(std::string_view key, const std::string& text) = 0;
    virtual void setBool(std::string_view key, bool value) = 0;
    virtual void remove(std::string_view key) = 0;

    /// Keeps a copy of the present value beside it, where no later `set` replaces it. A value that cannot be
    /// read is moved there instead.
    virtual void keepCopy(std::string_view key) = 0;
};

} // namespace CurtainCore
