#include "bench/GStreamer.h"

#include "bench/Times.h"
#include "tests/support/EventLoop.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>

namespace Bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(30);

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "GStreamer: %s\n", what.c_str());
    std::exit(EXIT_FAILURE);
}

} // namespace

GStreamerPipeline::GStreamerPipeline(const std::string& source, const std::string& rest)
    : process_({"sh", "-c",
                "exec gst-launch-1.0 -q " + source +
                    " ! progressreport update-freq=1 do-query=false format=buffers ! " + rest + " >" +
                    (folder_.path() / "counts").string()}) {
    nextCount();
}

GStreamerPipeline::Work GStreamerPipeline::workFor(double seconds) const {
    const auto before = nextCount();
    const auto workedBefore = processorSeconds(process_.id());
    const auto start = Clock::now();
    idleFor(seconds);
    const auto after = nextCount();
    return {processorSeconds(process_.id()) - workedBefore, milliseconds(Clock::now() - start) / 1000,
            after - before};
}

double GStreamerPipeline::nextCount() const {
    const auto before = lastCount();
    if (!TestSupport::spinUntil([&] { return lastCount() > before; }, patience)) {
        fail("nothing comes through the pipeline");
    }
    return lastCount();
}

double GStreamerPipeline::lastCount() const {
    // Each line ends with "): 123 buffers".
    std::ifstream file(folder_.path() / "counts");
    double count = 0;
    for (std::string line; std::getline(file, line);) {
        if (const auto place = line.rfind("): "); place != std::string::npos && !file.eof()) {
            count = std::atof(line.c_str() + place + 3);
        }
    }
    return count;
}

Memory memoryOfIdlePipeline() {
    const GStreamerPipeline idle("fakesrc is-live=true do-timestamp=true datarate=10000 sizetype=fixed "
                                 "sizemax=1000",
                                 "fakesink sync=true");
    return idle.memory();
}

Clock::duration timeToFirstBuffer(const std::string& source, const std::string& format) {
    const std::unique_ptr<FILE, decltype(&pclose)> output(
        popen(("gst-launch-1.0 -v " + source + " num-buffers=1 ! " + format + " ! fakesink silent=false 2>&1")
                  .c_str(),
              "r"),
        &pclose);
    Clock::time_point begin;
    std::optional<Clock::duration> time;
    std::array<char, 4096> line{};
    // To its end: a program that is cut off keeps buffers of the camera's, which soon has none left.
    while (output && std::fgets(line.data(), line.size(), output.get()) != nullptr) {
        const std::string_view text(line.data());
        if (text.starts_with("Setting pipeline to PAUSED")) {
            begin = Clock::now();
        } else if (!time && text.find("last-message = chain") != std::string_view::npos) {
            time = Clock::now() - begin;
        }
    }
    if (time) {
        return *time;
    }
    fail("there is no buffer of " + source);
}

} // namespace Bench
