#pragma once

#include <functional>

namespace Platform {

enum class MediaType { audio, video };

/// The values of the authorization status. Others may come in the future.
enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// Whether the user lets this program use the microphone and the camera.
class MediaAuthorization {
public:
    virtual ~MediaAuthorization() = default;

    /// Main thread only. Answers at once.
    virtual AuthorizationStatus status(MediaType type) = 0;
    /// Asks the user, once; afterwards the known answer. `completion` runs on any thread.
    virtual void requestAccess(MediaType type, std::function<void(bool isGranted)> completion) = 0;
};

} // namespace Platform
