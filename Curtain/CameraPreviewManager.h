#pragma once

#include "platform/CaptureServices.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/MediaAuthorization.h"
#include "platform/WorkQueue.h"

#include <QObject>
#include <QVariant>

#include <cstddef>
#include <cstdint>
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
    // What the items of the picture and of the photo take, whose types QML does not know.
    Q_PROPERTY(QVariant session READ sessionForViews CONSTANT)
    Q_PROPERTY(QVariant capturedPhoto READ capturedPhotoForViews NOTIFY changed)

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
    /// Whether `noPermission` is the system's own word, in whose settings nothing can be done about it.
    bool isForbidden() const;
    /// Why a camera that is available shows nothing; absent while it does, or may be about to.
    std::optional<Platform::CaptureInterruption> interruption() const;
    bool mirrored() const;
    void setMirrored(bool mirrored);
    /// The last test photo, decoded; null for none.
    std::shared_ptr<const Platform::Picture> capturedPhoto() const;
    /// The last test photo as the camera encoded it.
    const std::optional<std::vector<std::byte>>& capturedData() const;
    /// Forgets the photo, its data and one that is still on its way.
    void clearCapturedPhoto();
    /// The camera that is configured now.
    const std::optional<std::string>& activeDeviceID() const;
    /// For the preview; the same one for the manager's whole life.
    const std::shared_ptr<Platform::CaptureSession>& session() const;
    QVariant sessionForViews() const { return QVariant::fromValue(session()); }
    QVariant capturedPhotoForViews() const { return QVariant::fromValue(capturedPhoto()); }

    /// Absent for the default camera.
    void start(const std::optional<std::string>& deviceID);
    void stop();
    /// Takes a test photo and publishes it; without a running session none is taken.
    void capture();

    /// The camera with that identifier, else the default one, else the first.
    static std::optional<Platform::CaptureDevice> device(Platform::CaptureServices& capture,
                                                         const std::optional<std::string>& id);
    static std::vector<CameraChoice> availableCameras(Platform::CaptureServices& capture);
    /// `completion` runs on the main thread, whatever the answer.
    static void requestPermission(const Services& services, std::function<void()> completion);

Q_SIGNALS:
    /// Any of the published values has changed.
    void changed();
    /// What the check finds has changed by itself: a camera came or went, began or stopped.
    void findingChanged();
    /// A test photo was asked for, and there is none.
    void photoFailed();

private:
    /// What the background tasks share with the manager, and may outlive it with.
    struct Running;

    void configureAndRun(const std::optional<std::string>& deviceID);
    void configure(const Platform::CaptureDevice& device);
    void runOrStop(bool shouldRun);
    void devicesChanged();
    struct Photo;
    void capturePhoto(std::function<void(std::optional<Photo>)> completion);
    void setStatus(CameraStatus status, bool isForbidden = false);

    Services services_;
    std::shared_ptr<Platform::CaptureSession> session_;
    std::shared_ptr<Platform::PhotoOutput> photoOutput_;
    std::shared_ptr<Running> running_;
    bool isStarted_ = false;
    CameraStatus status_ = CameraStatus::unavailable;
    bool isForbidden_ = false;
    bool mirrored_ = false;
    std::shared_ptr<const Platform::Picture> capturedPhoto_;
    std::optional<std::vector<std::byte>> capturedData_;
    /// Counts the photos put away, so that one taken before is not published after.
    std::uint64_t photosCleared_ = 0;
    std::optional<std::string> activeDeviceID_;
    std::optional<std::string> configuredDeviceID_;
    /// As the last start asked for it.
    std::optional<std::string> wantedDeviceID_;
    Platform::Subscription interruptions_;
    Platform::Subscription devices_;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
