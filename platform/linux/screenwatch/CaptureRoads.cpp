#include "platform/linux/screenwatch/CaptureRoads.h"

#include "platform/linux/screenwatch/PipeWireCaptureWatch.h"
#include "platform/linux/screenwatch/WaylandRecorderWatch.h"
#include "platform/linux/screenwatch/X11CaptureWatch.h"

#include <utility>

namespace LinuxPlatform {

bool isScreenReadFromXServer(const SessionEnvironment& environment) {
    return environment.kind == SessionKind::x11;
}

std::vector<std::unique_ptr<CaptureWatch>> captureRoads(const SessionEnvironment& environment,
                                                        Platform::Log& log) {
    using WithoutDaemon = PipeWireCaptureWatch::WithoutDaemon;
    std::vector<std::unique_ptr<CaptureWatch>> roads;
    auto withoutDaemon = WithoutDaemon::nothingIsKnown;
    if (isScreenReadFromXServer(environment)) {
        roads.push_back(X11CaptureWatch::open(log));
        withoutDaemon = WithoutDaemon::nobodyCasts;
    }
    if (auto road = PipeWireCaptureWatch::open(log, &Reopening::Clock::now, withoutDaemon)) {
        roads.push_back(std::move(road));
        // By itself it never knows that nobody looks.
        if (environment.isWayland()) {
            roads.push_back(std::make_unique<WaylandRecorderWatch>(environment.waylandSocket));
        }
    }
    return roads;
}

} // namespace LinuxPlatform
