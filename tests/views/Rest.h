#pragma once

#include "tests/support/TemporaryFolder.h"

#include <QQuickWindow>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <memory>

namespace TestSupport {

/// Waits until a window has drawn nothing anew for a moment; false when it never comes to rest.
inline bool comeToRest(QQuickWindow& window) {
    // Counted on the thread that paints, which may be doing so at the end of this.
    const auto frames = std::make_shared<std::atomic<int>>(0);
    const auto connection = QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window, [frames] { ++*frames; }, Qt::DirectConnection);
    bool rests = false;
    for (int round = 0; round < 200 && !rests; ++round) {
        const int before = *frames;
        bool draws = false;
        // In small steps, each of which does what has come due: on a busy machine the moment may be over at
        // once.
        for (int step = 0; step < 6 && !draws; ++step) {
            draws = QTest::qWaitFor([&] { return *frames != before; }, 5);
        }
        rests = !draws;
    }
    QObject::disconnect(connection);
    return rests;
}

/// How many threads the toolkit has for a share of what another one has to paint.
inline std::ptrdiff_t paintingHelpers() {
    return std::ranges::count_if(
        std::filesystem::directory_iterator("/proc/self/task"),
        [](const auto& task) { return readFile(task.path() / "comm") == "Thread (pooled)\n"; });
}

} // namespace TestSupport
