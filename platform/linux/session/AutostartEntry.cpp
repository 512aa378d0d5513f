#include "platform/linux/session/AutostartEntry.h"

#include <glib.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/stat.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;

/// Whether the entry is one that a session would not start: how the tools of the desktops switch one off.
bool saysOff(const std::string& text) {
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> entry(g_key_file_new(), &g_key_file_unref);
    if (g_key_file_load_from_data(entry.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) == FALSE) {
        return false;
    }
    const auto isFalse = [&](const char* key) {
        return g_key_file_has_key(entry.get(), group, key, nullptr) != FALSE &&
               g_key_file_get_boolean(entry.get(), group, key, nullptr) == FALSE;
    };
    return g_key_file_get_boolean(entry.get(), group, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr) != FALSE ||
           isFalse("X-GNOME-Autostart-enabled") || isFalse("X-MATE-Autostart-enabled");
}

/// The program as the Exec key wants it: quoted, and then escaped as every value of an entry is.
std::string commandFor(const std::string& program) {
    std::string command = "\"";
    for (const char character : program) {
        if (std::string_view(R"("`$)").find(character) != std::string_view::npos) {
            command += "\\\\";
        } else if (character == '\\') {
            command += "\\\\\\";
        } else if (character == '%') {
            command += '%';
        }
        command += character;
    }
    return command + '"';
}

std::string escaped(std::string_view value) {
    std::string result;
    for (const char character : value) {
        result += character == '\\' ? "\\\\" : std::string(1, character);
    }
    return result;
}

std::string contentsFor(const std::string& program) {
    // Nothing opens at launch, so there is no start-up to notify of.
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Curtain\n"
           "Icon=com.curtain.Curtain\n"
           "Exec=" +
           commandFor(program) + "\nTryExec=" + escaped(program) +
           "\n"
           "Terminal=false\n"
           "StartupNotify=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

std::string errorText(const fs::path& path, const std::error_code& error) {
    return path.string() + ": " + error.message();
}

} // namespace

AutostartEntry::AutostartEntry(const fs::path& configFolder, fs::path program, BoundedReader reader)
    : path_(configFolder / "autostart" / "com.curtain.Curtain.desktop"),
      program_(std::move(program)),
      reader_(std::move(reader)) {}

std::optional<std::string> AutostartEntry::registerItem() {
    const auto isOff = isSwitchedOff();
    if (!isOff) {
        return errorText(path_, std::make_error_code(std::errc::timed_out));
    }
    return *isOff ? path_.string() + ": switched off in the desktop's settings" : registerAnew();
}

std::optional<std::string> AutostartEntry::unregisterItem() {
    std::error_code error;
    fs::remove(path_, error);
    return error ? std::optional(errorText(path_, error)) : std::nullopt;
}

std::optional<std::string> AutostartEntry::registerAnew() {
    // A line break cannot stand in an entry.
    if (program_.string().find_first_of("\n\r") != std::string::npos) {
        return program_.string().substr(0, program_.string().find_first_of("\n\r")) +
               ": the program's path cannot be written into an autostart entry";
    }
    if (g_mkdir_with_parents(path_.parent_path().c_str(), S_IRWXU) != 0) {
        return errorText(path_.parent_path(), {errno, std::generic_category()});
    }
    const auto contents = contentsFor(program_.string());
    GError* error = nullptr;
    if (g_file_set_contents(path_.c_str(), contents.data(), static_cast<gssize>(contents.size()), &error) ==
        FALSE) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owner(error, &g_error_free);
        return std::string(error->message);
    }
    return std::nullopt;
}

std::optional<bool> AutostartEntry::isSwitchedOff() const {
    const auto reading = reader_.read(path_);
    if (reading.outcome == FileReading::Outcome::failed && reading.error == std::errc::timed_out) {
        return std::nullopt;
    }
    return reading.outcome == FileReading::Outcome::read && saysOff(reading.bytes);
}

} // namespace LinuxPlatform
