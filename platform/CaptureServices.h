#pragma once

#include <cstddef>
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

/// One camera at work.
class CaptureSession {
public:
    virtual ~CaptureSession() = default;
};

/// Finds cameras and makes the pieces of the camera check.
class CaptureServices {
public:
    virtual ~CaptureServices() = default;

    /// Built-in ones first, then external ones, then those of the network and of phones. The first call may
    /// wait a moment for the system's list, later ones do not.
    virtual std::vector<CaptureDevice> devices() = 0;
    virtual std::optional<CaptureDevice> defaultDevice() = 0;
    virtual std::shared_ptr<CaptureSession> makeSession() = 0;
};

} // namespace Platform
