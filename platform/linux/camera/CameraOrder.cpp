#include "platform/linux/camera/CameraOrder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>

namespace LinuxPlatform {
namespace {

bool contains(std::string_view text, std::string_view word) {
    return text.find(word) != std::string_view::npos;
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return text;
}

bool callsItselfBuiltIn(const std::string& description) {
    const auto text = lowerCase(description);
    constexpr std::array words{"built-in", "builtin", "integrated", "internal"};
    return std::ranges::any_of(words, [&](std::string_view word) { return contains(text, word); });
}

/// Whether the machine's maker has fixed the USB device in its case; absent if that is not said. `device` is
/// an interface of it.
std::optional<bool> isFixed(const std::filesystem::path& device) {
    std::ifstream file(device.parent_path() / "removable");
    std::string word;
    if (!(file >> word) || word == "unknown") {
        return std::nullopt;
    }
    return word == "fixed";
}

CameraKind kindOfVideoNode(const FoundCamera& camera, const std::string& node,
                           const std::filesystem::path& systemFolder) {
    std::error_code error;
    const auto device =
        std::filesystem::canonical(systemFolder / "class/video4linux" / node / "device", error);
    if (error || contains(device.string(), "/virtual/")) {
        // Drivers that a program feeds with the picture of a phone have no device.
        return CameraKind::networkOrPhone;
    }
    if (contains(device.string(), "/usb")) {
        return isFixed(device).value_or(callsItselfBuiltIn(camera.description)) ? CameraKind::builtIn
                                                                                : CameraKind::external;
    }
    return CameraKind::builtIn;
}

} // namespace

CameraKind kindOf(const FoundCamera& camera, const std::filesystem::path& systemFolder) {
    constexpr std::string_view videoNode = "v4l2:/dev/";
    if (camera.objectPath.starts_with(videoNode)) {
        return kindOfVideoNode(camera, camera.objectPath.substr(videoNode.size()), systemFolder);
    }
    if (callsItselfBuiltIn(camera.description)) {
        return CameraKind::builtIn;
    }
    if (camera.objectPath.starts_with("libcamera:")) {
        // These are sensors on the board, unless they hang on USB.
        return contains(lowerCase(camera.objectPath), "usb") ? CameraKind::external : CameraKind::builtIn;
    }
    return CameraKind::networkOrPhone;
}

std::vector<ListedCamera> inDiscoveryOrder(std::vector<FoundCamera> cameras,
                                           const std::filesystem::path& systemFolder) {
    std::ranges::sort(cameras, {}, &FoundCamera::serial);
    struct Entry {
        CameraKind kind;
        ListedCamera camera;
    };
    std::vector<Entry> entries;
    std::map<std::string, int> namesakes;
    for (const auto& camera : cameras) {
        auto id = camera.stableName;
        if (const int number = ++namesakes[id]; number > 1) {
            id += "#" + std::to_string(number);
        }
        const auto& name = camera.description.empty() ? camera.stableName : camera.description;
        entries.push_back({kindOf(camera, systemFolder), {{std::move(id), name}, camera.serial}});
    }
    std::ranges::sort(entries, {}, [](const Entry& entry) {
        const auto& device = entry.camera.device;
        return std::tie(entry.kind, device.localizedName, device.uniqueID);
    });
    std::vector<ListedCamera> listed;
    for (auto& entry : entries) {
        listed.push_back(std::move(entry.camera));
    }
    return listed;
}

} // namespace LinuxPlatform
