#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/i3/I3Connection.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace LinuxPlatform {

/// Has the layout told when something in it changes, and carries commands. Main thread only.
class I3TreeWatch {
public:
    using Seconds = Platform::MainQueue::Seconds;
    using TreeHandler = std::function<void(std::unique_ptr<const I3Tree> tree)>;

    /// `queue` outlives this object. `onTree` does not end it.
    I3TreeWatch(const std::filesystem::path& socket, Platform::MainQueue& queue, TreeHandler onTree);

    /// To be called once. Waits for the first answers, at most for `patience`.
    void open(std::chrono::milliseconds patience);
    /// Waits for the answers that are due, as `I3Connection` does.
    void finish(std::chrono::milliseconds patience) { connection_.finish(patience); }

    /// Whether somebody is there who answers.
    bool isKnown() const { return connection_.isConnected() && hasAnswered_; }
    /// For how long that has not been so, where it is not so.
    Seconds silence() const { return queue_.now() - silentSince_; }

    /// Asks for the layout as it is from now on.
    void look();
    /// Asks for it where that is not asked already.
    void lookAgain();
    /// Whether something has happened since the layout was asked for, which then comes once more.
    bool isStale() const { return isStale_; }

    /// Asks for the layout afterwards.
    void command(const std::string& commands, I3Connection::Reply reply);

private:
    void handleEvent(I3Event event, const QByteArray& payload);
    void noteLoss();
    void noteSilence();
    void takeIn(const QByteArray& reply);

    Platform::MainQueue& queue_;
    TreeHandler onTree_;
    Seconds silentSince_;
    /// On this connection.
    bool hasAnswered_ = false;
    bool isAwaited_ = false;
    bool isStale_ = false;
    /// Something was asked for since, and the layout that is on its way does not know of it.
    bool isLookDue_ = false;
    I3Connection connection_;
};

} // namespace LinuxPlatform
