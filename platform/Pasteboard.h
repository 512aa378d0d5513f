#pragma once

#include <cstddef>
#include <vector>

namespace Platform {

/// The clipboard. Main thread only.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    virtual void clearContents() = 0;
    /// Offers an image, given as an encoded file such as JPEG, to other programs. Returns false, and offers
    /// nothing, when it cannot be decoded.
    virtual bool writeImage(const std::vector<std::byte>& encoded) = 0;
};

} // namespace Platform
