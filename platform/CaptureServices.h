#pragma once

#include "platform/Subscription.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// A decoded picture: rows from top to bottom without gaps, four bytes a pixel in the order blue, green, red,
/// unused.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::byte> pixels;
};

struct CaptureDevice {
    /// Stays the same when the camera is plugged in again.
    std::string uniqueID;
    std::string localizedName;

    bool operator==(const CaptureDevice&) const = default;
};

/// What brings the pictures of one camera into a session.
class CaptureInput {
public:
    virtual ~CaptureInput() = default;

    virtual const CaptureDevice& device() const = 0;
};

enum class PhotoCodec { jpeg };

struct PhotoSettings {
    /// Absent for whatever the camera prefers.
    std::optional<PhotoCodec> codec;

    bool operator==(const PhotoSettings&) const = default;
};

struct CapturedPhoto {
    /// An encoded file; absent when the capture failed.
    std::optional<std::vector<std::byte>> fileDataRepresentation;
};

class PhotoReceiver {
public:
    virtual ~PhotoReceiver() = default;

    /// Called once for every capture, on any thread.
    virtual void didFinishProcessingPhoto(const CapturedPhoto& photo) = 0;
};

/// Takes single photos from the session that it was added to. Main thread only.
class PhotoOutput {
public:
    virtual ~PhotoOutput() = default;

    virtual std::vector<PhotoCodec> availablePhotoCodecTypes() const = 0;
    /// Does not keep the receiver alive. A photo is never mirrored. When the session stops first, the capture
    /// ends without a photo.
    virtual void capturePhoto(const PhotoSettings& settings, std::weak_ptr<PhotoReceiver> receiver) = 0;
};

/// A view's share in a session's pictures. Main thread only; may outlive the session.
class VideoPreview {
public:
    virtual ~VideoPreview() = default;

    /// The pixels to be filled. Pictures may be smaller than the camera's, but not so small that filling
    /// these would show it. 0 by 0, the initial value, while nothing is shown: no picture is made then.
    virtual void setSize(int width, int height) = 0;
    /// The newest one; null, for darkness, while the camera gives none. Pictures that nobody took in time are
    /// dropped.
    virtual std::shared_ptr<const Picture> picture() const = 0;
};

/// Why a running session shows nothing.
enum class CaptureInterruption {
    /// The camera is not there.
    deviceNotAvailable,
    /// Another program has it.
    deviceInUse,
    /// It does not begin.
    deviceFailed,
    /// It has begun, and no picture comes that could be shown.
    noPictures,
};

/// One camera at work. Main thread only, but for `isRunning`, `startRunning` and `stopRunning`, which any
/// thread may call.
class CaptureSession {
public:
    virtual ~CaptureSession() = default;

    /// Changes between these two take effect together at the end.
    virtual void beginConfiguration() = 0;
    virtual void commitConfiguration() = 0;

    virtual std::vector<std::shared_ptr<CaptureInput>> inputs() const = 0;
    virtual void removeInput(const std::shared_ptr<CaptureInput>& input) = 0;
    /// False for what another maker has made, and while the session has an input.
    virtual bool canAddInput(const std::shared_ptr<CaptureInput>& input) const = 0;
    virtual void addInput(const std::shared_ptr<CaptureInput>& input) = 0;

    virtual std::vector<std::shared_ptr<PhotoOutput>> outputs() const = 0;
    virtual bool canAddOutput(const std::shared_ptr<PhotoOutput>& output) const = 0;
    virtual void addOutput(const std::shared_ptr<PhotoOutput>& output) = 0;

    /// From the return of `startRunning` on, pictures or not: a running session picks the camera up whenever
    /// it is there.
    virtual bool isRunning() const = 0;
    /// Both may block.
    virtual void startRunning() = 0;
    /// When it returns, the camera is let go.
    virtual void stopRunning() = 0;

    /// Absent while there are pictures, while the session does not run, and while a camera that has just been
    /// opened may still bring one. The session tries to get its camera back all the time.
    virtual std::optional<CaptureInterruption> interruption() const = 0;
    virtual Subscription observeInterruption(std::function<void()> onChanged) = 0;

    /// `onPictureChanged` is called on the main thread whenever `picture` has changed.
    virtual std::unique_ptr<VideoPreview> makePreview(std::function<void()> onPictureChanged) = 0;
};

/// Finds cameras and makes the pieces of the camera check. Main thread only.
class CaptureServices {
public:
    virtual ~CaptureServices() = default;

    /// Begins to look for cameras, so that the first `devices` need not wait. Does not wait itself.
    virtual void prepare() {}
    /// Built-in ones first, then external ones, then those of the network and of phones. The first call may
    /// wait a moment for the system's list, later ones do not.
    virtual std::vector<CaptureDevice> devices() = 0;
    virtual std::optional<CaptureDevice> defaultDevice() = 0;
    /// `onChanged` is called on the main thread when the two above may have another answer than before.
    virtual Subscription observeDevices(std::function<void()> onChanged) = 0;
    /// Null when that camera cannot be used.
    virtual std::shared_ptr<CaptureInput> makeInput(const CaptureDevice& device) = 0;
    virtual std::shared_ptr<PhotoOutput> makePhotoOutput() = 0;
    virtual std::shared_ptr<CaptureSession> makeSession() = 0;
    /// An encoded image file as a picture; null when it is none. Any thread: a large one takes long.
    virtual std::shared_ptr<const Picture> decodeImage(const std::vector<std::byte>& encoded) = 0;
};

} // namespace Platform
