#pragma once

#include "platform/linux/screenwatch/CaptureWatch.h"

#include <memory>

namespace LinuxPlatform {

/// Finds screen casts among the streams of PipeWire (version 0.3 of its protocol), whose registry it follows.
/// A daemon that is not there is looked for at each question; one that ends takes its casts along. The first
/// question waits for what the daemon says, but not for long.
class PipeWireCaptureWatch : public CaptureWatch {
public:
    /// Null when the library cannot be used at all.
    static std::unique_ptr<PipeWireCaptureWatch> open();

    ~PipeWireCaptureWatch() override;
    PipeWireCaptureWatch(const PipeWireCaptureWatch&) = delete;
    PipeWireCaptureWatch& operator=(const PipeWireCaptureWatch&) = delete;

    bool isScreenCaptured() override;

    bool isConnected() const;

private:
    class Registry;

    explicit PipeWireCaptureWatch(std::unique_ptr<Registry> registry);

    std::unique_ptr<Registry> registry_;
};

} // namespace LinuxPlatform
