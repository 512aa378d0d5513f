#pragma once

#include "platform/CaptureServices.h"
#include "platform/MainQueue.h"
#include "platform/MediaAuthorization.h"
#include "platform/WorkQueue.h"

#include <QObject>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Curtain {

enum class CameraStatus { available, noPermission, noCameraFound, unavailable };

/// A camera in a list.
struct CameraChoice {
    std::string id;
    std::string name;

    bool operator==(const CameraChoice&) const = default;
};

/// The camera check: one capture session, its live preview and the test photo. Everything public belongs to
/// the main thread.
class CameraPreviewManager : public QObject {
    Q_OBJECT

public:
    struct Services {
        Platform::CaptureServices& capture;
        Platform::MediaAuthorization& authorization;
        Platform::MainQueue& mainQueue;
        Platform::WorkQueues& workQueues;
    };

    /// The services outlive the manager.
    explicit CameraPreviewManager(const Services& services);
    ~CameraPreviewManager() override;

    CameraStatus status() const;
    bool mirrored() const;
    void setMirrored(bool mirrored);
    /// The last test photo, decoded; null for none.
    std::shared_ptr<const Platform::Picture> capturedPhoto() const;
    /// The last test photo as the camera encoded it.
    const std::optional<std::vector<std::byte>>& capturedData() const;
    void clearCapturedPhoto();
    /// The camera that is configured now.
    const std::optional<std::string>& activeDeviceID() const;
    /// For the preview; the same one for the manager's whole life.
    const std::shared_ptr<Platform::CaptureSession>& session() const;

    /// Absent for the default camera.
    void start(const std::optional<std::string>& deviceID);
    void stop();
    /// Takes a test photo and publishes it; without a running session nothing happens.
    void capture();

    static std::vector<CameraChoice> availableCameras(Platform::CaptureServices& capture);
    /// `completion` runs on the main thread, whatever the answer.
    static void requestPermission(const Services& services, std::function<void()> completion);

Q_SIGNALS:
    /// Any of the published values has changed.
    void changed();
};

} // namespace Curtain
