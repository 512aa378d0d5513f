#pragma once

#include "platform/CaptureServices.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// In the order of discovery.
enum class CameraKind : std::uint8_t { builtIn, external, networkOrPhone };

/// What a system says about one of its cameras.
struct FoundCamera {
    /// Stays the same when the camera is plugged in again; two cameras may share it.
    std::string stableName;
    /// For people.
    std::string description;
    /// The road to the device, such as "v4l2:/dev/video0"; empty for a camera made by a program.
    std::string objectPath;
    /// Tells cameras apart and grows from one to the next; not the same after plugging in again.
    std::uint64_t serial = 0;
    /// Whether it delivers no colours, as cameras that see in infra-red.
    bool isGray = false;
};

/// `systemFolder` is where the kernel describes devices, such as "/sys".
CameraKind kindOf(const FoundCamera& camera, const std::filesystem::path& systemFolder);

struct ListedCamera {
    Platform::CaptureDevice device;
    std::uint64_t serial = 0;
    bool isGray = false;
};

/// Numbers for the members of groups, 1 for the first. A member keeps its number, so that what a number stood
/// for does not become another thing when members go.
class LastingNumbers {
public:
    int numberOf(const std::string& group, const std::string& member);
    /// How many numbers are given out.
    std::size_t count() const;
    /// Gives up the numbers of all other members of the groups.
    void keepOnly(const std::set<std::string>& members);

private:
    /// In the order of their numbers; empty for one that is free.
    std::map<std::string, std::vector<std::optional<std::string>>> groups_;
};

/// Lists cameras as people know them. Main thread or any other, one at a time.
class CameraDirectory {
public:
    /// `systemFolder` is where the kernel describes devices, such as "/sys".
    explicit CameraDirectory(std::filesystem::path systemFolder);

    /// Those with colours first, then by kind, by name and by identifier. Cameras that share a stable name,
    /// or the name that is shown, are told apart by numbers, which they keep while others come and go.
    std::vector<ListedCamera> list(std::vector<FoundCamera> cameras);

private:
    struct Entry {
        CameraKind kind;
        ListedCamera camera;
    };

    std::string uniqueID(const FoundCamera& camera);
    static void sort(std::vector<Entry>& entries);
    void number(std::vector<Entry>& entries);

    std::filesystem::path systemFolder_;
    LastingNumbers identifiers_;
    LastingNumbers names_;
};

} // namespace LinuxPlatform
