#pragma once

#include "platform/CaptureServices.h"

#include <cstdint>
#include <filesystem>
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
};

/// `systemFolder` is where the kernel describes devices, such as "/sys".
CameraKind kindOf(const FoundCamera& camera, const std::filesystem::path& systemFolder);

struct ListedCamera {
    Platform::CaptureDevice device;
    std::uint64_t serial = 0;
};

/// By kind, then by description, then by stable name. Cameras that share a stable name are told apart by a
/// number in the order of their serials.
std::vector<ListedCamera> inDiscoveryOrder(std::vector<FoundCamera> cameras,
                                           const std::filesystem::path& systemFolder);

} // namespace LinuxPlatform
