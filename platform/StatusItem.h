#pragma once

#include "platform/Image.h"

#include <memory>

namespace Platform {

/// The program's place in the panel. Its destruction removes it.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    virtual void setImage(const Image& image) = 0;
};

class StatusBar {
public:
    virtual ~StatusBar() = default;

    /// A status item that is as wide as its image. It shows as soon as there is a panel to show it.
    virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

} // namespace Platform
