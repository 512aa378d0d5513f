#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CurtainCore {

/// A per-user store of single values under text keys. Nothing reports failure: what cannot be read for a
/// while is what it was the last time, and absent only if it never could be read; what cannot be written is
/// kept for as long as the process lives.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Whether there is a value under the key, readable or not; true also where that cannot be told. A value
    /// that is absent as data and contained is there, and unknown.
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
    /// read is moved there instead. One that equals an earlier copy needs none.
    virtual void keepCopy(std::string_view key) = 0;

    /// Makes such a copy at once and returns its name; absent when that is not possible. The value stays
    /// where it is.
    virtual std::optional<std::string> copyNow(std::string_view key) = 0;
};

} // namespace CurtainCore
