#include "platform/linux/i3/I3Connection.h"

#include "platform/linux/system/LocalSocket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

using Seconds = Platform::MainQueue::Seconds;

/// However busy it is, it has answered by then.
constexpr Seconds answerDeadline{5};
constexpr Seconds shortestPause{0.05};
constexpr Seconds longestPause{5};
/// Of requests that nobody reads.
constexpr qsizetype largestBacklog = qsizetype{4} << 20U;

} // namespace

I3Connection::I3Connection(std::filesystem::path socket, Platform::MainQueue& queue,
                           std::vector<std::string> events, Handlers handlers)
    : socket_(std::move(socket)),
      queue_(queue),
      events_(std::move(events)),
      handlers_(std::move(handlers)),
      pause_(shortestPause) {}

I3Connection::~I3Connection() {
    close();
}

void I3Connection::open() {
    descriptor_ = connectToSocket(socket_);
    if (!isConnected()) {
        reopenLater();
        return;
    }
    ++generation_;
    readable_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(), [this] { read(); });
    writable_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Write);
    writable_->setEnabled(false);
    QObject::connect(writable_.get(), &QSocketNotifier::activated, writable_.get(), [this] { write(); });
    subscribe();
    if (handlers_.onConnected) {
        handlers_.onConnected();
    }
}

void I3Connection::subscribe() {
    if (events_.empty()) {
        return;
    }
    QByteArray names;
    for (const auto& name : events_) {
        names += (names.isEmpty() ? "[\"" : ",\"") + QByteArray::fromStdString(name) + '"';
    }
    ask(I3Request::subscribe, names + ']', nullptr);
}

void I3Connection::reopenLater() {
    queue_.asyncAfter(pause_, lifetime_.weak([this] { open(); }));
    pause_ = std::min(pause_ * 2, longestPause);
}

void I3Connection::ask(I3Request type, const QByteArray& payload, Reply reply) {
    if (!isConnected()) {
        return;
    }
    questions_.push_back({static_cast<std::uint32_t>(type), std::move(reply)});
    send(i3Message(type, payload));
    watchAnswers();
}

void I3Connection::send(const QByteArray& bytes) {
    unwritten_ += bytes;
    write();
}

void I3Connection::write() {
    while (isConnected() && !unwritten_.isEmpty()) {
        const auto count = ::send(descriptor_, unwritten_.constData(),
                                  static_cast<std::size_t>(unwritten_.size()), MSG_NOSIGNAL);
        if (count > 0) {
            unwritten_.remove(0, count);
        } else if (errno != EINTR) {
            break;
        }
    }
    if (!isConnected()) {
        return;
    }
    writable_->setEnabled(!unwritten_.isEmpty());
    // Nobody at the other end is found out by reading; whoever asks is in the midst of something.
    if (unwritten_.size() > largestBacklog) {
        queue_.async(lifetime_.weak([this, generation = generation_] {
            if (generation == generation_) {
                lose();
            }
        }));
    }
}

void I3Connection::read() {
    std::array<char, 65536> block;
    const auto count = ::recv(descriptor_, block.data(), block.size(), 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (count > 0) {
        reader_.add(block.data(), static_cast<std::size_t>(count));
    }
    const auto generation = generation_;
    while (const auto message = reader_.next()) {
        deliver(*message);
        if (generation != generation_) {
            return;
        }
    }
    if (count <= 0 || reader_.isBroken()) {
        lose();
    }
}

void I3Connection::deliver(const I3Message& message) {
    if (message.isEvent()) {
        if (handlers_.onEvent) {
            handlers_.onEvent(static_cast<I3Event>(message.type), message.payload);
        }
        return;
    }
    if (questions_.empty() || questions_.front().type != message.type) {
        lose();
        return;
    }
    const auto question = std::move(questions_.front());
    questions_.pop_front();
    ++answered_;
    pause_ = shortestPause;
    if (question.reply) {
        question.reply(message.payload);
    }
}

void I3Connection::watchAnswers() {
    if (std::exchange(isWatchingAnswers_, true)) {
        return;
    }
    queue_.asyncAfter(answerDeadline, lifetime_.weak([this, generation = generation_, answered = answered_] {
        isWatchingAnswers_ = false;
        if (questions_.empty()) {
            return;
        }
        if (generation == generation_ && answered == answered_) {
            lose();
        } else {
            watchAnswers();
        }
    }));
}

void I3Connection::finish(std::chrono::milliseconds patience) {
    serveSocket({.socket = [this] { return questions_.empty() ? -1 : descriptor_; },
                 .wantsToWrite = [this] { return !unwritten_.isEmpty(); },
                 .write = [this] { write(); },
                 .read = [this] { read(); }},
                Patience(patience));
}

void I3Connection::lose() {
    close();
    reopenLater();
    if (handlers_.onLost) {
        handlers_.onLost();
    }
}

void I3Connection::close() {
    // Closed from within their own signals as well.
    for (auto* const notifier : {&readable_, &writable_}) {
        if (*notifier) {
            (*notifier)->setEnabled(false);
            notifier->release()->deleteLater();
        }
    }
    if (descriptor_ >= 0) {
        ::close(std::exchange(descriptor_, -1));
    }
    ++generation_;
    unwritten_.clear();
    reader_ = {};
    questions_.clear();
}

} // namespace LinuxPlatform
