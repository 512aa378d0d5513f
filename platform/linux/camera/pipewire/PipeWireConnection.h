#pragma once

#include "platform/linux/camera/CameraOrder.h"
#include "platform/linux/camera/pipewire/CameraNodes.h"
#include "platform/linux/camera/pipewire/PipeWireThread.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace LinuxPlatform {

class PipeWireFeed;

/// The way to a daemon that may come and go, the list of its cameras, and the feeds that live on it.
class PipeWireConnection {
public:
    /// A connected socket of the daemon, which the caller owns; negative for none.
    using Connector = std::function<int()>;

    /// Without a connector, the daemon of the session.
    explicit PipeWireConnection(Connector connector);
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;
    /// The feeds have ended before.
    ~PipeWireConnection();

    struct Snapshot {
        bool isConnected = false;
        bool isComplete = false;
        bool hasBeenWaitedFor = false;
        std::vector<ListedCamera> cameras;
        std::optional<Platform::CaptureDevice> defaultCamera;
        bool hasSessionManager = false;
    };

    /// Connects if there is no connection. Any thread, without the lock.
    bool reach();
    /// What is known; the first one of a connection is given some time to become complete. Any thread,
    /// without the lock.
    Snapshot snapshot();

    /// Called on the thread when there may be another snapshot than before, which may be looked at later
    /// only; in place of an earlier one. Before the first connection.
    void onChanged(std::function<void()> callback) { onChanged_ = std::move(callback); }

    /// A feed begins to be told, and is not told any more. Any thread, without the lock.
    void add(PipeWireFeed& feed);
    void remove(PipeWireFeed& feed);

    // On the thread.

    const PipeWireThread& thread() const { return thread_; }
    /// Null while there is no daemon.
    pw_core* core() const { return core_.get(); }
    std::optional<std::uint64_t> serialOf(const std::string& uniqueID);
    /// Whether a camera that is not listed may be so soon.
    bool isLooking();
    /// Looks after all feeds once the present callback has returned.
    void reconcileSoon();

private:
    void begin();
    bool connect();
    PipeWireOwned<pw_core> makeCore();
    void disconnect();
    void reconcile();
    void retry();
    void publish();
    void tellOfChange();
    void onDone(std::uint32_t id, int sequence);
    void onError(std::uint32_t id, int result);

    Connector connector_;
    std::function<void()> onChanged_;
    PipeWireThread thread_;
    std::once_flag hasBegun_;
    std::optional<PipeWireTimer> reconciliation_;
    std::optional<PipeWireTimer> retry_;
    PipeWireOwned<pw_core> core_;
    spa_hook coreHook_{};
    std::unique_ptr<CameraNodes> nodes_;
    CameraDirectory directory_;
    bool hasLostConnection_ = false;
    std::set<PipeWireFeed*> feeds_;

    std::mutex snapshotMutex_;
    std::condition_variable snapshotCompleted_;
    Snapshot snapshot_;
};

} // namespace LinuxPlatform
