#pragma once

#include "platform/Pasteboard.h"

namespace QtPlatform {

/// The clipboard. An image is offered as the file that was given and in the formats that other programs ask
/// for, PNG among them.
class QtPasteboard : public Platform::Pasteboard {
public:
    void clearContents() override;
    bool writeImage(const std::vector<std::byte>& encoded) override;
};

} // namespace QtPlatform
