#pragma once

#include "core/UserDefaults.h"
#include "core/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// User defaults that live in memory; keys in `unreadable` are there, but cannot be read.
class MemoryUserDefaults : public CurtainCore::UserDefaults {
public:
    std::map<std::string, std::string, std::less<>> values;
    std::set<std::string, std::less<>> unreadable;
    std::vector<std::string> copies;
    int writes = 0;
    mutable std::map<std::string, int, std::less<>> reads;

    bool contains(std::string_view key) const override { return values.contains(key); }

    std::optional<std::string> data(std::string_view key) const override {
        ++reads[std::string(key)];
        const auto found = values.find(key);
        return found == values.end() || unreadable.contains(key) ? std::nullopt
                                                                 : std::optional(found->second);
    }

    std::optional<std::string> string(std::string_view key) const override {
        auto bytes = data(key);
        return bytes && CurtainCore::isUtf8(*bytes) ? std::move(bytes) : std::nullopt;
    }

    void setData(std::string_view key, const std::string& bytes) override {
        ++writes;
        values.insert_or_assign(std::string(key), bytes);
        unreadable.erase(std::string(key));
    }

    void setString(std::string_view key, const std::string& text) override { setData(key, text); }
    void setBool(std::string_view key, bool value) override { setData(key, value ? "true" : "false"); }
    void remove(std::string_view key) override {
        values.erase(std::string(key));
        unreadable.erase(std::string(key));
    }

    void keepCopy(std::string_view key) override {
        const auto found = values.find(key);
        if (found == values.end()) {
            return;
        }
        copy(found->second);
        if (unreadable.contains(key)) {
            remove(key);
        }
    }

    std::optional<std::string> copyNow(std::string_view key) override {
        const auto bytes = data(key);
        return bytes ? std::optional(std::string(key) + ".damaged-" + std::to_string(copy(*bytes)))
                     : std::nullopt;
    }

private:
    /// The copy's number.
    std::ptrdiff_t copy(const std::string& bytes) {
        auto found = std::ranges::find(copies, bytes);
        if (found == copies.end()) {
            found = copies.insert(copies.end(), bytes);
        }
        return found - copies.begin() + 1;
    }
};

} // namespace TestSupport
