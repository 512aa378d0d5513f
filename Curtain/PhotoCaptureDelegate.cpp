#include "Curtain/PhotoCaptureDelegate.h"

#include <utility>

namespace Curtain {

std::shared_ptr<PhotoCaptureDelegate> PhotoCaptureDelegate::make(Completion completion) {
    // The constructor is private.
    std::shared_ptr<PhotoCaptureDelegate> delegate(new PhotoCaptureDelegate(std::move(completion)));
    delegate->retain_ = delegate;
    return delegate;
}

PhotoCaptureDelegate::PhotoCaptureDelegate(Completion completion) : completion_(std::move(completion)) {}

void PhotoCaptureDelegate::didFinishProcessingPhoto(const Platform::CapturedPhoto& photo) {
    completion_(photo.fileDataRepresentation);
    // May be the last reference: nothing of the object is used after this.
    const auto lastReference = std::exchange(retain_, nullptr);
}

} // namespace Curtain
