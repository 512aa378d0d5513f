#pragma once

#include "bench/ProcessCosts.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <string>

namespace Bench {

/// What a pipeline of GStreamer costs, as a program of its own, for comparison.
class GStreamerPipeline {
public:
    struct Work {
        /// Of the processor, all threads.
        double seconds = 0;
        double wallSeconds = 0;
        /// That came through the pipeline.
        double buffers = 0;
    };

    /// The elements of the pipeline up to those that are measured, and the others; buffers are counted in
    /// between. Blocks until the first ones have come.
    GStreamerPipeline(const std::string& source, const std::string& rest);

    /// What it works for at least so long. Runs the event loop meanwhile.
    Work workFor(double seconds) const;

    Memory memory() const { return memoryOf(process_.id()); }

private:
    /// At the moment in which the pipeline tells of the next ones.
    double nextCount() const;
    double lastCount() const;

    TestSupport::TemporaryFolder folder_;
    TestSupport::ChildProcess process_;
};

/// Of a pipeline that does nothing.
Memory memoryOfIdlePipeline();

/// From the moment in which a pipeline of the source alone begins, in a program that has started already, to
/// its first buffer.
std::chrono::steady_clock::duration timeToFirstBuffer(const std::string& source, const std::string& format);

} // namespace Bench
