#pragma once

#include "platform/MainQueue.h"

#include <QObject>

#include <memory>

namespace QtPlatform {

/// The event loop of the thread that makes this object. Tasks that are still waiting when it is destroyed
/// never run.
class QtMainQueue : public Platform::MainQueue {
public:
    void async(Task task) override;
    void asyncAfter(Seconds delay, Task task) override;
    Platform::Subscription repeating(Seconds interval, Task task) override;
    std::unique_ptr<Platform::DispatchSource> makeSource(Task task) override;
    Seconds now() const override;

private:
    QObject context_;
};

} // namespace QtPlatform
