#include "platform/linux/camera/pipewire/PipeWireConnection.h"

#include "platform/linux/camera/pipewire/PipeWireFeed.h"

#include <algorithm>
#include <chrono>
#include <utility>

// The library's headers are C: casts of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace LinuxPlatform {
namespace {

/// How long the first look waits for a daemon that is slow.
constexpr std::chrono::milliseconds discoveryPatience{500};
/// How often a daemon that is gone is tried again while a feed wants it.
constexpr std::chrono::milliseconds retryInterval{500};
constexpr std::chrono::milliseconds soon{0};

/// A camera without colours is nobody's choice, though it may be what a session manager names for want of
/// something better.
std::optional<Platform::CaptureDevice> defaultIn(const std::vector<ListedCamera>& cameras,
                                                 const std::string& name) {
    const auto found =
        std::ranges::find(cameras, name, [](const auto& camera) { return camera.device.uniqueID; });
    return found == cameras.end() || found->isGray ? std::nullopt : std::optional(found->device);
}

} // namespace

PipeWireConnection::PipeWireConnection(Connector connector)
    : connector_(std::move(connector)),
      directory_("/sys") {}

PipeWireConnection::~PipeWireConnection() {
    thread_.stop();
    disconnect();
    retry_.reset();
    reconciliation_.reset();
}

bool PipeWireConnection::reach() {
    {
        const std::scoped_lock lock(snapshotMutex_);
        if (snapshot_.isConnected) {
            return true;
        }
    }
    begin();
    bool isConnected = false;
    thread_.run([&] { isConnected = connect(); });
    return isConnected;
}

PipeWireConnection::Snapshot PipeWireConnection::snapshot() {
    if (!reach()) {
        return {};
    }
    std::unique_lock lock(snapshotMutex_);
    if (!snapshot_.isComplete && !std::exchange(snapshot_.hasBeenWaitedFor, true)) {
        snapshotCompleted_.wait_for(lock, discoveryPatience,
                                    [this] { return snapshot_.isComplete || !snapshot_.isConnected; });
    }
    return snapshot_;
}

void PipeWireConnection::add(PipeWireFeed& feed) {
    begin();
    thread_.run([&] {
        feeds_.insert(&feed);
        if (!connect() && retry_) {
            retry_->start(retryInterval);
        }
        feed.begin();
    });
}

void PipeWireConnection::remove(PipeWireFeed& feed) {
    thread_.run([&] {
        feeds_.erase(&feed);
        feed.end();
    });
}

std::optional<std::uint64_t> PipeWireConnection::serialOf(const std::string& uniqueID) {
    const std::scoped_lock lock(snapshotMutex_);
    const auto found = std::ranges::find(snapshot_.cameras, uniqueID,
                                         [](const auto& camera) { return camera.device.uniqueID; });
    return found == snapshot_.cameras.end() ? std::nullopt : std::optional(found->serial);
}

bool PipeWireConnection::isLooking() {
    const std::scoped_lock lock(snapshotMutex_);
    return snapshot_.isConnected && !snapshot_.isComplete;
}

void PipeWireConnection::reconcileSoon() {
    reconciliation_->start(soon);
}

void PipeWireConnection::begin() {
    std::call_once(hasBegun_, [this] {
        thread_.begin();
        thread_.run([this] {
            reconciliation_.emplace(thread_, [this] { reconcile(); });
            retry_.emplace(thread_, [this] { retry(); });
        });
    });
}

bool PipeWireConnection::connect() {
    if (core_) {
        return true;
    }
    if (thread_.context()) {
        core_ = makeCore();
    }
    if (!core_) {
        return false;
    }
    static constexpr pw_core_events events = [] {
        pw_core_events table{};
        table.version = PW_VERSION_CORE_EVENTS;
        table.done = [](void* self, std::uint32_t id, int sequence) {
            static_cast<PipeWireConnection*>(self)->onDone(id, sequence);
        };
        table.error = [](void* self, std::uint32_t id, int, int result, const char*) {
            static_cast<PipeWireConnection*>(self)->onError(id, result);
        };
        return table;
    }();
    pw_core_add_listener(core_.get(), &coreHook_, &events, this);
    {
        const std::scoped_lock lock(snapshotMutex_);
        snapshot_ = {};
        snapshot_.isConnected = true;
    }
    nodes_ = std::make_unique<CameraNodes>(core_.get(), [this] { publish(); });
    return true;
}

PipeWireOwned<pw_core> PipeWireConnection::makeCore() {
    auto* const properties = pw_properties_new(PW_KEY_APP_NAME, "Curtain", PW_KEY_APP_ID,
                                               "com.curtain.Curtain", PW_KEY_MEDIA_ROLE, "Camera", nullptr);
    if (!connector_) {
        return PipeWireOwned<pw_core>(pw_context_connect(thread_.context(), properties, 0));
    }
    const int socket = connector_();
    if (socket < 0) {
        pw_properties_free(properties);
        return nullptr;
    }
    return PipeWireOwned<pw_core>(pw_context_connect_fd(thread_.context(), socket, properties, 0));
}

void PipeWireConnection::disconnect() {
    for (auto* const feed : feeds_) {
        feed->lose();
    }
    nodes_.reset();
    if (core_) {
        spa_hook_remove(&coreHook_);
        core_.reset();
    }
    hasLostConnection_ = false;
    {
        const std::scoped_lock lock(snapshotMutex_);
        snapshot_ = {};
    }
    tellOfChange();
}

void PipeWireConnection::reconcile() {
    if (hasLostConnection_) {
        disconnect();
    }
    for (auto* const feed : feeds_) {
        feed->reconcile();
    }
    if (!core_ && !feeds_.empty()) {
        retry_->start(retryInterval);
    }
}

void PipeWireConnection::retry() {
    if (!feeds_.empty()) {
        connect();
        reconcile();
    }
}

void PipeWireConnection::publish() {
    auto listed = directory_.list(nodes_->cameras());
    {
        const std::scoped_lock lock(snapshotMutex_);
        snapshot_.isComplete = nodes_->isComplete();
        snapshot_.cameras = std::move(listed);
        snapshot_.defaultCamera = defaultIn(snapshot_.cameras, nodes_->defaultName());
        snapshot_.hasSessionManager = nodes_->hasSessionManager();
    }
    tellOfChange();
    reconcileSoon();
}

void PipeWireConnection::tellOfChange() {
    snapshotCompleted_.notify_all();
    if (onChanged_) {
        onChanged_();
    }
}

void PipeWireConnection::onDone(std::uint32_t id, int sequence) {
    if (id == PW_ID_CORE && nodes_) {
        nodes_->onDone(sequence);
    }
}

void PipeWireConnection::onError(std::uint32_t id, int result) {
    // What goes wrong with the core itself goes wrong for good, whatever it is: nothing more may come, or not
    // what was asked for.
    if (id == PW_ID_CORE && result < 0) {
        hasLostConnection_ = true;
        reconcileSoon();
    }
}

} // namespace LinuxPlatform
