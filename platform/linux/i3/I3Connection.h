#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/i3/I3Message.h"

#include <QSocketNotifier>

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// A lasting connection to i3 or sway. It is made again when it gets lost, as it does when i3 is restarted.
/// Nothing waits, but for `finish`. Main thread only.
class I3Connection {
public:
    /// Receives the payload; not called when the connection gets lost before.
    using Reply = std::function<void(const QByteArray& payload)>;

    struct Handlers {
        /// The connection is there, perhaps again; what is asked now is asked after the subscriptions.
        std::function<void()> onConnected;
        std::function<void()> onLost;
        std::function<void(I3Event event, const QByteArray& payload)> onEvent;
    };

    /// `queue` outlives this object. `events` are the names under which they are subscribed to. The handlers
    /// do not end this object.
    I3Connection(std::filesystem::path socket, Platform::MainQueue& queue, std::vector<std::string> events,
                 Handlers handlers);
    ~I3Connection();
    I3Connection(const I3Connection&) = delete;
    I3Connection& operator=(const I3Connection&) = delete;

    /// To be called once. Goes on trying where nobody listens.
    void open();
    bool isConnected() const { return descriptor_ >= 0; }
    /// Replies come in the order of the requests. Does nothing without a connection. Whoever does not answer
    /// within seconds is not waited for: the connection counts as lost then.
    void ask(I3Request type, const QByteArray& payload, Reply reply);
    /// Waits until everything has been answered, at most for `patience`: for the beginning and the end of the
    /// program, when no event loop runs.
    void finish(std::chrono::milliseconds patience);

private:
    void subscribe();
    void reopenLater();
    void send(const QByteArray& bytes);
    void write();
    void read();
    void deliver(const I3Message& message);
    void watchAnswers();
    void lose();
    void close();

    struct Question {
        std::uint32_t type = 0;
        Reply reply;
    };

    std::filesystem::path socket_;
    Platform::MainQueue& queue_;
    std::vector<std::string> events_;
    Handlers handlers_;
    int descriptor_ = -1;
    /// Tells the connections apart that were made one after another.
    std::uint64_t generation_ = 0;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    QByteArray unwritten_;
    I3MessageReader reader_;
    std::deque<Question> questions_;
    std::uint64_t answered_ = 0;
    bool isWatchingAnswers_ = false;
    Platform::MainQueue::Seconds pause_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
