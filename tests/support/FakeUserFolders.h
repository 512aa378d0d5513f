#pragma once

#include "platform/UserFolders.h"

#include <optional>
#include <string>

namespace TestSupport {

class FakeUserFolders : public Platform::UserFolders {
public:
    std::optional<std::string> desktopFolder = "/home/ada/Desktop";
    std::optional<std::string> picturesFolder = "/home/ada/Pictures";
    std::string temporaryFolder = "/run/user/1000";

    std::string home() override { return "/home/ada"; }
    std::optional<std::string> desktop() override { return desktopFolder; }
    std::optional<std::string> pictures() override { return picturesFolder; }
    std::string temporary() override { return temporaryFolder; }
};

} // namespace TestSupport
