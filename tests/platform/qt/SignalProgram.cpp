// Ends by itself, with what it says, when it gets one of the signals that end a program.
//
// usage: SignalProgram main|threads|ended|nohup|errno|late
//
// main: any thread may get the signal; threads: only other threads than the main one may; ended: the program
// has stopped listening by the time it says that it is ready; nohup: it was started with SIGHUP ignored, and
// says whether it is; errno: it gets
// a signal while its writing would fail, and says whether its own error number survives; late: nobody hears
// of the signal any more, and it says whether that is known.

#include "platform/qt/TerminationSignals.h"

#include <QCoreApplication>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <thread>

#include <unistd.h>

namespace {

void say(const char* text) {
    std::puts(text);
    std::fflush(stdout);
}

void waitToStop(const std::stop_token& stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any().wait(lock, stop, [] { return false; });
}

bool isHangUpIgnored() {
    struct sigaction action {};
    return sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// All but the standard ones, the one behind the signals among them.
void closeDescriptors() {
    close_range(3, ~0U, 0);
}

void blockSignalsInThisThread() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::string_view mode = argumentCount > 1 ? arguments[1] : "";
    if (mode == "nohup") {
        std::signal(SIGHUP, SIG_IGN);
    }
    QCoreApplication application(argumentCount, arguments);
    const std::array<std::jthread, 3> threads{std::jthread(waitToStop), std::jthread(waitToStop),
                                              std::jthread(waitToStop)};
    auto subscription = QtPlatform::onTerminationSignal([] {
        say("asked to end");
        QCoreApplication::quit();
    });
    if (mode == "threads") {
        blockSignalsInThisThread();
    } else if (mode == "ended") {
        subscription = {};
    } else if (mode == "nohup") {
        const bool isIgnored = isHangUpIgnored();
        subscription = {};
        say(isIgnored && isHangUpIgnored() ? "ignored" : "taken");
        return 0;
    } else if (mode == "errno") {
        closeDescriptors();
        errno = ENOTTY;
        std::raise(SIGTERM);
        say(errno == ENOTTY ? "kept" : "lost");
        return 0;
    } else if (mode == "late") {
        const bool wasPending = QtPlatform::isTerminationPending();
        std::raise(SIGTERM);
        subscription = {};
        say(!wasPending && QtPlatform::isTerminationPending() ? "pending" : "lost");
        return 0;
    }
    QMetaObject::invokeMethod(
        &application, [] { say("ready"); }, Qt::QueuedConnection);
    const int status = QCoreApplication::exec();
    say(QtPlatform::isTerminationPending() ? "pending" : "ended");
    return status;
}
