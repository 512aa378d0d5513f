#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Platform {

class FileManager {
public:
    virtual ~FileManager() = default;

    /// The paths of everything directly inside a folder, hidden files included, in the file system's order;
    /// absent when the folder cannot be read.
    virtual std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) = 0;
};

} // namespace Platform
