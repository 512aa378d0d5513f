#include "platform/linux/donotdisturb/LxqtQuietRoad.h"

#include <glib.h>

#include <memory>
#include <system_error>

namespace LinuxPlatform {
namespace {

constexpr auto group = "General";
constexpr auto key = "doNotDisturb";
constexpr auto unset = "unset";
constexpr int ownerOnly = 0600;

struct KeyFileFree {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileFree>;

/// Null when the file is there and cannot be understood.
KeyFile load(const std::filesystem::path& file) {
    KeyFile settings(g_key_file_new());
    GError* error = nullptr;
    if (g_key_file_load_from_file(settings.get(), file.c_str(), G_KEY_FILE_KEEP_COMMENTS, &error) == FALSE) {
        const bool isMissing = g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_NOENT) != FALSE;
        g_error_free(error);
        if (!isMissing) {
            return nullptr;
        }
    }
    return settings;
}

bool save(const KeyFile& settings, const std::filesystem::path& file) {
    gsize length = 0;
    const std::unique_ptr<char, decltype(&g_free)> text(g_key_file_to_data(settings.get(), &length, nullptr),
                                                        &g_free);
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    // A link stays one.
    const auto target = std::filesystem::weakly_canonical(file, error);
    const auto status = std::filesystem::status(target, error);
    const int mode = std::filesystem::exists(status) ? static_cast<int>(status.permissions()) : ownerOnly;
    constexpr auto flags =
        static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
    return g_file_set_contents_full(target.c_str(), text.get(), static_cast<gssize>(length), flags, mode,
                                    nullptr) != FALSE;
}

} // namespace

void LxqtQuietRoad::read(std::function<void(std::optional<std::string> state)> onState) {
    const auto settings = load(file_);
    if (!settings) {
        onState(std::nullopt);
        return;
    }
    const std::unique_ptr<char, decltype(&g_free)> value(
        g_key_file_get_value(settings.get(), group, key, nullptr), &g_free);
    onState(value ? std::string(value.get()) : std::string(unset));
}

bool LxqtQuietRoad::isQuiet(const std::string& state) const {
    return state == "true" || state == "1";
}

std::string LxqtQuietRoad::quietened(const std::string& /*state*/) const {
    return "true";
}

void LxqtQuietRoad::write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) {
    // The desktop's own dialog may have written other keys since.
    const auto settings = load(file_);
    if (!settings) {
        onDone(false);
        return;
    }
    if (state == unset) {
        g_key_file_remove_key(settings.get(), group, key, nullptr);
    } else {
        g_key_file_set_value(settings.get(), group, key, state.c_str());
    }
    onDone(save(settings, file_));
}

} // namespace LinuxPlatform
