#pragma once

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <vector>

namespace Bench {

inline double milliseconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// Of at least one value.
inline double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

/// Runs the event loop for a while.
inline void idleFor(double seconds) {
    QEventLoop loop;
    QTimer::singleShot(std::chrono::milliseconds(static_cast<int>(1000 * seconds)), &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace Bench
