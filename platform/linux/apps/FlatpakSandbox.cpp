#include "platform/linux/apps/FlatpakSandbox.h"

#include "platform/linux/system/BoundedFile.h"

#include <glib.h>

#include <memory>

namespace LinuxPlatform {
namespace {

constexpr std::size_t longestFile = std::size_t{64} * 1024;

} // namespace

std::optional<std::string> FlatpakSandbox::app(std::uint32_t process) const {
    const auto text = readStartOfFile(processes_.pathSeenBy(process, "/.flatpak-info"), longestFile);
    if (text.empty()) {
        return std::nullopt;
    }
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> info(g_key_file_new(), &g_key_file_free);
    if (g_key_file_load_from_data(info.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) == FALSE) {
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&g_free)> name(
        g_key_file_get_string(info.get(), "Application", "name", nullptr), &g_free);
    return name && *name != '\0' ? std::optional(std::string(name.get())) : std::nullopt;
}

} // namespace LinuxPlatform
