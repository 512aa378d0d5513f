#include "platform/qt/QtMainQueue.h"

#include "tests/platform/qt/MainQueueContract.h"
#include "tests/support/ProgramArguments.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

namespace {

struct QtWorld {
    using Queue = QtPlatform::QtMainQueue;

    TestSupport::ProgramArguments arguments;
    QCoreApplication application{arguments.count, arguments.values.data()};
    std::unique_ptr<Queue> queue = std::make_unique<Queue>();

    static bool runUntil(const std::function<bool()>& condition) {
        const QDeadlineTimer deadline(20000);
        QTimer wakeUp;
        wakeUp.start(1000);
        while (!condition() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return condition();
    }
};

} // namespace

namespace TestSupport {

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MainQueueContract, QtWorld);

} // namespace TestSupport
