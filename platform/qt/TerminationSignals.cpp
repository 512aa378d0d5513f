#include "platform/qt/TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <memory>
#include <utility>

#include <sys/signalfd.h>
#include <unistd.h>

namespace QtPlatform {
namespace {

class SignalDescriptor {
public:
    SignalDescriptor() {
        sigemptyset(&signals_);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            sigaddset(&signals_, signal);
        }
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
        descriptor_ = signalfd(-1, &signals_, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    ~SignalDescriptor() {
        close(descriptor_);
        pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
    }
    SignalDescriptor(const SignalDescriptor&) = delete;
    SignalDescriptor& operator=(const SignalDescriptor&) = delete;

    int get() const { return descriptor_; }

    bool consume() const {
        signalfd_siginfo information{};
        return read(descriptor_, &information, sizeof information) == sizeof information;
    }

private:
    sigset_t signals_{};
    int descriptor_ = -1;
};

} // namespace

Platform::Subscription onTerminationSignal(std::function<void()> handler) {
    auto descriptor = std::make_shared<SignalDescriptor>();
    auto notifier = std::make_shared<QSocketNotifier>(descriptor->get(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [descriptor, handler = std::move(handler)] {
                         if (descriptor->consume()) {
                             handler();
                         }
                     });
    return Platform::Subscription([notifier] { notifier->setEnabled(false); });
}

} // namespace QtPlatform
