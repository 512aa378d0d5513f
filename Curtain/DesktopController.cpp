#include "Curtain/DesktopController.h"

#include "platform/DesktopIconsCommand.h"

#include <string_view>

namespace Curtain {
namespace {

namespace Command = Platform::DesktopIconsCommand;

bool isWhitespace(char character) {
    return std::string_view(" \t\n\v\f\r").find(character) != std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isWhitespace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isWhitespace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace

DesktopController::DesktopController(Platform::ProcessRunner& runner) : runner_(runner) {}

bool DesktopController::iconsHidden() const {
    return trimmed(runner_.run(Command::defaultsPath, {"read", Command::domain, Command::key})) == "0";
}

void DesktopController::setIconsHidden(bool hidden) const {
    // The setting says whether there is a desktop with icons.
    runner_.run(Command::defaultsPath,
                {"write", Command::domain, Command::key, "-bool", hidden ? "false" : "true"});
    runner_.run(Command::killallPath, {Command::program});
}

} // namespace Curtain
