// Ends by itself, with what it says, when it gets one of the signals that end a program.
//
// usage: SignalProgram main|threads|ended
//
// main: any thread may get the signal; threads: only other threads than the main one may; ended: the program
// has stopped listening by the time it says that it is ready.

#include "platform/qt/TerminationSignals.h"

#include <QCoreApplication>

#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <thread>

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

void blockSignalsInThisThread() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::string_view mode = argumentCount > 1 ? arguments[1] : "";
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
    }
    QMetaObject::invokeMethod(
        &application, [] { say("ready"); }, Qt::QueuedConnection);
    const int status = QCoreApplication::exec();
    say("ended");
    return status;
}
