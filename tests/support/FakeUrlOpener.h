#pragma once

#include "platform/UrlOpener.h"

#include <string>
#include <vector>

namespace TestSupport {

class FakeUrlOpener : public Platform::UrlOpener {
public:
    bool canOpen = true;
    std::vector<std::string> opened;

    bool open(const std::string& url) override {
        opened.push_back(url);
        return canOpen;
    }
};

} // namespace TestSupport
