#pragma once

#include "platform/CaptureServices.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Curtain {

/// Receives a single photo and keeps itself alive until then.
class PhotoCaptureDelegate : public Platform::PhotoReceiver {
public:
    using PhotoData = std::optional<std::vector<std::byte>>;
    /// Called once, on the thread of the photo output; without data for a capture that failed.
    using Completion = std::function<void(PhotoData)>;

    static std::shared_ptr<PhotoCaptureDelegate> make(Completion completion);

    void didFinishProcessingPhoto(const Platform::CapturedPhoto& photo) override;

private:
    explicit PhotoCaptureDelegate(Completion completion);

    Completion completion_;
    std::shared_ptr<PhotoCaptureDelegate> retain_;
};

} // namespace Curtain
