#pragma once

#include "platform/AppShield.h"

#include <functional>
#include <string>
#include <vector>

namespace TestSupport {

class FakeAppShield : public Platform::AppShield {
public:
    std::vector<std::string> covered;
    std::function<void()> onCover;

    void cover(const std::vector<std::string>& bundleIDs) override {
        covered = bundleIDs;
        if (onCover) {
            onCover();
        }
    }
};

} // namespace TestSupport
