#include "platform/qt/TerminationSignals.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace QtPlatform {
namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

/// A signal handler gets no context of ours, so the descriptor that it writes to has to be found here.
std::atomic<int> announcement = -1;
std::atomic<bool> isPending = false;

void announce(int /*signal*/) {
    isPending = true;
    // Whatever was interrupted still wants to read its own.
    const int number = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(announcement, &one, sizeof one);
    errno = number;
}

/// Readable once one of the signals has arrived. Blocking the signals instead would pass the block on to
/// child processes.
class SignalDescriptor {
public:
    SignalDescriptor() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        announcement = descriptor_;
        for (std::size_t index = 0; index < endingSignals.size(); ++index) {
            auto& before = before_.at(index);
            sigaction(endingSignals.at(index), nullptr, &before);
            // Whoever started the program so (nohup) wants the signal to do nothing.
            if (before.sa_handler != SIG_IGN) {
                struct sigaction action {};
                action.sa_handler = announce;
                action.sa_flags = SA_RESTART;
                sigaction(endingSignals.at(index), &action, nullptr);
            }
        }
    }
    ~SignalDescriptor() {
        for (std::size_t index = 0; index < endingSignals.size(); ++index) {
            sigaction(endingSignals.at(index), &before_.at(index), nullptr);
        }
        announcement = -1;
        close(descriptor_);
    }
    SignalDescriptor(const SignalDescriptor&) = delete;
    SignalDescriptor& operator=(const SignalDescriptor&) = delete;

    int get() const { return descriptor_; }

    void consume() const {
        std::uint64_t count = 0;
        isPending = false;
        [[maybe_unused]] const auto taken = read(descriptor_, &count, sizeof count);
    }

private:
    int descriptor_;
    std::array<struct sigaction, endingSignals.size()> before_{};
};

} // namespace

Platform::Subscription onTerminationSignal(std::function<void()> handler) {
    auto descriptor = std::make_shared<SignalDescriptor>();
    auto notifier = std::make_shared<QSocketNotifier>(descriptor->get(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [descriptor, handler = std::move(handler)] {
                         descriptor->consume();
                         handler();
                     });
    return Platform::Subscription([notifier] { notifier->setEnabled(false); });
}

bool isTerminationPending() {
    return isPending;
}

} // namespace QtPlatform
