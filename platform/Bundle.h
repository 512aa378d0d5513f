#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// The key of an app's name in its information dictionary.
inline constexpr const char* bundleNameKey = "CFBundleName";

/// What is known of an app that can be started: its identifier and those entries of its information
/// dictionary that are texts.
struct Bundle {
    std::optional<std::string> bundleIdentifier;
    std::map<std::string, std::string> infoDictionary;
    /// Whether it is a page of the desktop's settings rather than a program to work with.
    bool isControlPanel = false;
};

/// Opens the bundles of installed apps.
class Bundles {
public:
    virtual ~Bundles() = default;

    /// Absent when there is no usable app at the path.
    virtual std::optional<Bundle> open(const std::string& path) = 0;
    /// Whether an app that was installed under this identifier and name is so no longer. False where that is
    /// not certain, as of a program that was never installed and only runs.
    virtual bool isGone(const std::string& bundleIdentifier, const std::string& name) = 0;
    /// Another number whenever apps have come or gone or what `open` says may have changed.
    virtual std::uint64_t generation() = 0;
};

/// Where installed apps are found on this system.
struct ApplicationFolders {
    /// In the order of their precedence.
    std::vector<std::string> paths;
    /// The file-name extension of an app, without the dot.
    std::string extension;
};

/// The files that this program brings along.
class Resources {
public:
    virtual ~Resources() = default;

    /// The path of a resource; the file behind it may be of another format than `extension` says.
    virtual std::optional<std::string> pathForResource(const std::string& name,
                                                       const std::string& extension) = 0;
    /// The program's version, as people write it.
    virtual std::optional<std::string> shortVersion() = 0;
    /// The path of the drawing for a symbol's name.
    virtual std::optional<std::string> pathForSystemSymbol(const std::string& name) = 0;
};

} // namespace Platform
