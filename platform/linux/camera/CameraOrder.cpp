#include "platform/linux/camera/CameraOrder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <functional>
#include <numeric>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Cameras whose numbers are kept in mind, those included that are not there any more.
constexpr std::size_t mostRemembered = 64;

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

/// The words are those of whoever made the camera's node. Only a name that the kernel gives leads to a device
/// of the kernel's.
bool isVideoNode(std::string_view name) {
    constexpr std::string_view prefix = "video";
    const auto digits = name.substr(std::min(prefix.size(), name.size()));
    return name.starts_with(prefix) && !digits.empty() &&
           std::ranges::all_of(digits, [](char letter) { return letter >= '0' && letter <= '9'; });
}

/// Without what session managers and drivers add: the interface in brackets, and the product's name once
/// more, cut to fit.
std::string nameForPeople(std::string name) {
    for (const std::string_view suffix : {" (V4L2)", " (libcamera)"}) {
        if (name.ends_with(suffix)) {
            name.resize(name.size() - suffix.size());
        }
    }
    for (const std::string_view separator : {": ", "  "}) {
        const auto at = name.find(separator);
        if (at != std::string::npos && at > 0) {
            const auto rest = name.substr(at + separator.size());
            if (!rest.empty() && name.starts_with(rest)) {
                name.resize(at);
            }
        }
    }
    return name;
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
        const auto node = camera.objectPath.substr(videoNode.size());
        return isVideoNode(node) ? kindOfVideoNode(camera, node, systemFolder) : CameraKind::networkOrPhone;
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

int LastingNumbers::numberOf(const std::string& group, const std::string& member) {
    auto& members = groups_[group];
    auto place = std::ranges::find(members, member);
    if (place == members.end()) {
        place = std::ranges::find_if(members, [](const auto& holder) { return !holder; });
    }
    if (place == members.end()) {
        members.emplace_back();
        place = members.end() - 1;
    }
    *place = member;
    return static_cast<int>(place - members.begin()) + 1;
}

std::size_t LastingNumbers::count() const {
    return std::transform_reduce(groups_.begin(), groups_.end(), std::size_t{0}, std::plus(),
                                 [](const auto& entry) { return entry.second.size(); });
}

void LastingNumbers::keepOnly(const std::set<std::string>& members) {
    for (auto& [group, places] : groups_) {
        for (auto& member : places) {
            if (member && !members.contains(*member)) {
                member.reset();
            }
        }
    }
    std::erase_if(groups_, [](const auto& entry) {
        return std::ranges::none_of(entry.second, [](const auto& member) { return member.has_value(); });
    });
}

CameraDirectory::CameraDirectory(std::filesystem::path systemFolder)
    : systemFolder_(std::move(systemFolder)) {}

std::vector<ListedCamera> CameraDirectory::list(std::vector<FoundCamera> cameras) {
    std::set<std::string> serials;
    for (const auto& camera : cameras) {
        serials.insert(std::to_string(camera.serial));
    }
    // One that is plugged in again has another serial.
    identifiers_.keepOnly(serials);
    std::ranges::sort(cameras, {}, &FoundCamera::serial);
    std::vector<Entry> entries;
    for (const auto& camera : cameras) {
        auto id = uniqueID(camera);
        auto name = nameForPeople(camera.description.empty() ? camera.stableName : camera.description);
        entries.push_back(
            {kindOf(camera, systemFolder_),
             {.device = {std::move(id), std::move(name)}, .serial = camera.serial, .isGray = camera.isGray}});
    }
    sort(entries);
    number(entries);
    sort(entries);
    std::vector<ListedCamera> listed;
    for (auto& entry : entries) {
        listed.push_back(std::move(entry.camera));
    }
    return listed;
}

void CameraDirectory::sort(std::vector<Entry>& entries) {
    std::ranges::sort(entries, {}, [](const Entry& entry) {
        const auto& device = entry.camera.device;
        return std::tie(entry.camera.isGray, entry.kind, device.localizedName, device.uniqueID);
    });
}

std::string CameraDirectory::uniqueID(const FoundCamera& camera) {
    const int number = identifiers_.numberOf(camera.stableName, std::to_string(camera.serial));
    return number == 1 ? camera.stableName : camera.stableName + "#" + std::to_string(number);
}

void CameraDirectory::number(std::vector<Entry>& entries) {
    // One that is unplugged may come back and wants its number then; of the names that nobody bears any more,
    // not many are worth remembering.
    if (names_.count() > mostRemembered) {
        std::set<std::string> present;
        for (const auto& entry : entries) {
            present.insert(entry.camera.device.uniqueID);
        }
        names_.keepOnly(present);
    }
    for (auto& entry : entries) {
        auto& device = entry.camera.device;
        const int number = names_.numberOf(device.localizedName, device.uniqueID);
        if (number > 1) {
            device.localizedName += " (" + std::to_string(number) + ")";
        }
    }
}

} // namespace LinuxPlatform
