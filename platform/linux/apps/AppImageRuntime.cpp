#include "platform/linux/apps/AppImageRuntime.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

/// An image has one entry in its top folder; of several the first by name counts.
std::string entryIn(const fs::path& folder) {
    std::string first;
    std::error_code error;
    for (fs::directory_iterator file(folder, error); !error && file != fs::directory_iterator();
         file.increment(error)) {
        const auto& path = file->path();
        if (path.extension() == ".desktop" && (first.empty() || path.stem().string() < first)) {
            first = path.stem().string();
        }
    }
    return first;
}

} // namespace

std::optional<AppImage> AppImageRuntime::image(std::uint32_t process) const {
    const auto executable = processes_.executable(process);
    auto file = executable ? processes_.environmentVariable(process, "APPIMAGE") : std::nullopt;
    const auto folder = file ? processes_.environmentVariable(process, "APPDIR") : std::nullopt;
    const bool isInside = folder && folder->starts_with('/') && executable->starts_with(*folder + "/");
    // The program that unpacks the image is the image itself.
    if (!file || file->empty() || (!isInside && executable != file)) {
        return std::nullopt;
    }
    return AppImage{std::move(*file),
                    isInside ? entryIn(processes_.pathSeenBy(process, *folder)) : std::string()};
}

} // namespace LinuxPlatform
