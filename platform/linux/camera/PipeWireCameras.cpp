#include "platform/linux/camera/PipeWireCameras.h"

#include "platform/linux/camera/CameraOrder.h"
#include "platform/linux/camera/PipeWireFormats.h"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>
#include <spa/param/buffers.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <map>
#include <mutex>
#include <set>
#include <utility>

// The library's headers are C: casts and designators of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace LinuxPlatform {
namespace {

/// How long the first look waits for a daemon that is slow.
constexpr std::chrono::milliseconds discoveryPatience{500};
/// How often a daemon that is gone is tried again while a feed wants it.
constexpr std::chrono::milliseconds retryInterval{500};
/// A camera that refuses is tried again after this, then ever later, up to the interval above. Right after it
/// was let go, a busy session manager may still be about to take it away from the one before.
constexpr std::chrono::milliseconds firstRetry{20};
constexpr std::uint32_t fewestBuffers = 2;
/// One with the camera, one on its way, one that is being looked at. They count as memory of this process.
constexpr std::uint32_t usualBuffers = 3;
constexpr std::uint32_t mostBuffers = 16;

std::string lookUp(const spa_dict* properties, const char* key) {
    const char* value = properties ? spa_dict_lookup(properties, key) : nullptr;
    return value ? value : "";
}

std::string nameIn(const char* json) {
    return QJsonDocument::fromJson(json).object()[QStringLiteral("name")].toString().toStdString();
}

} // namespace

/// The connection and what is known through it. Everything but the snapshot belongs to the loop's thread, or
/// to whoever holds the loop's lock.
class PipeWireCameras::Client {
public:
    explicit Client(Connector connector) : connector_(std::move(connector)) { pw_init(nullptr, nullptr); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    ~Client() {
        if (loop_) {
            pw_thread_loop_stop(loop_);
            disconnect();
            if (context_) {
                pw_context_destroy(context_);
            }
            pw_thread_loop_destroy(loop_);
        }
        pw_deinit();
    }

    /// Holds the loop's lock.
    class Lock {
    public:
        explicit Lock(const Client& client) : loop_(client.loop_) {
            if (loop_) {
                pw_thread_loop_lock(loop_);
            }
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock() {
            if (loop_) {
                pw_thread_loop_unlock(loop_);
            }
        }

    private:
        pw_thread_loop* loop_;
    };

    /// Connects if there is no connection, and gives a new one some time to say what there is.
    bool reach() {
        {
            const std::scoped_lock lock(snapshotMutex_);
            if (snapshot_.isConnected) {
                return true;
            }
        }
        begin();
        const Lock lock(*this);
        return connect();
    }

    struct Snapshot {
        bool isConnected = false;
        bool isComplete = false;
        bool hasBeenWaitedFor = false;
        std::vector<ListedCamera> cameras;
        std::string defaultName;
    };

    Snapshot snapshot() {
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

    void add(Feed& feed);
    void remove(Feed& feed);
    void tryAgain(std::chrono::milliseconds later);
    /// To be looked at again once the present callback has returned.
    void reconcileSoon();

    pw_core* core() { return core_; }
    /// Whether a camera that is not listed may be so soon.
    bool isLooking() {
        const std::scoped_lock lock(snapshotMutex_);
        return snapshot_.isConnected && !snapshot_.isComplete;
    }

    std::optional<std::uint64_t> serialOf(const std::string& uniqueID) {
        const std::scoped_lock lock(snapshotMutex_);
        const auto found = std::ranges::find(snapshot_.cameras, uniqueID,
                                             [](const auto& camera) { return camera.device.uniqueID; });
        return found == snapshot_.cameras.end() ? std::nullopt : std::optional(found->serial);
    }

private:
    /// Starts the thread, once.
    void begin() {
        std::call_once(hasBegun_, [this] { startThread(); });
    }

    void startThread() {
        loop_ = pw_thread_loop_new("camera", nullptr);
        if (!loop_) {
            return;
        }
        auto* loop = pw_thread_loop_get_loop(loop_);
        context_ = pw_context_new(loop, nullptr, 0);
        reconciliation_ = pw_loop_add_event(
            loop, [](void* self, std::uint64_t) { static_cast<Client*>(self)->reconcile(); }, this);
        retry_ = pw_loop_add_timer(
            loop, [](void* self, std::uint64_t) { static_cast<Client*>(self)->retry(); }, this);
        pw_thread_loop_start(loop_);
    }

    bool connect() {
        if (core_) {
            return true;
        }
        if (!context_) {
            return false;
        }
        auto* properties = pw_properties_new(PW_KEY_APP_NAME, "Curtain", PW_KEY_APP_ID, "com.curtain.Curtain",
                                             PW_KEY_MEDIA_ROLE, "Camera", nullptr);
        if (connector_) {
            const int socket = connector_();
            if (socket < 0) {
                pw_properties_free(properties);
                return false;
            }
            core_ = pw_context_connect_fd(context_, socket, properties, 0);
        } else {
            core_ = pw_context_connect(context_, properties, 0);
        }
        if (!core_) {
            return false;
        }
        pw_core_add_listener(core_, &coreHook_, &coreEvents(), this);
        registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
        pw_registry_add_listener(registry_, &registryHook_, &registryEvents(), this);
        pendingSync_ = pw_core_sync(core_, PW_ID_CORE, 0);
        const std::scoped_lock lock(snapshotMutex_);
        snapshot_ = {};
        snapshot_.isConnected = true;
        return true;
    }

    void disconnect();
    void reconcile();
    void retry();

    void publish() {
        std::vector<FoundCamera> found;
        for (const auto& [id, camera] : nodes_) {
            found.push_back(camera);
        }
        auto listed = inDiscoveryOrder(std::move(found), "/sys");
        const std::scoped_lock lock(snapshotMutex_);
        snapshot_.cameras = std::move(listed);
        snapshot_.defaultName = defaultName_;
    }

    void complete() {
        publish();
        {
            const std::scoped_lock lock(snapshotMutex_);
            snapshot_.isComplete = true;
        }
        snapshotCompleted_.notify_all();
    }

    void onDone(std::uint32_t id, int sequence) {
        if (id != PW_ID_CORE || sequence != pendingSync_) {
            return;
        }
        if (metadata_ && !std::exchange(hasAskedForMetadata_, true)) {
            // Its properties follow the first round.
            pendingSync_ = pw_core_sync(core_, PW_ID_CORE, 0);
            return;
        }
        complete();
        reconcileSoon();
    }

    void onError(std::uint32_t id, int result) {
        if (id == PW_ID_CORE && result == -EPIPE) {
            hasLostConnection_ = true;
            reconcileSoon();
        }
    }

    void onGlobal(std::uint32_t id, const char* type, const spa_dict* properties) {
        const std::string_view interface(type);
        if (interface == PW_TYPE_INTERFACE_Node) {
            if (lookUp(properties, PW_KEY_MEDIA_CLASS) == "Video/Source" &&
                lookUp(properties, PW_KEY_MEDIA_ROLE) == "Camera") {
                const auto serial = lookUp(properties, PW_KEY_OBJECT_SERIAL);
                nodes_[id] = {
                    lookUp(properties, PW_KEY_NODE_NAME), lookUp(properties, PW_KEY_NODE_DESCRIPTION),
                    lookUp(properties, PW_KEY_OBJECT_PATH), std::strtoull(serial.c_str(), nullptr, 10)};
                onCamerasChanged();
            }
        } else if (interface == PW_TYPE_INTERFACE_Metadata && !metadata_ &&
                   lookUp(properties, PW_KEY_METADATA_NAME) == "default") {
            metadataID_ = id;
            metadata_ =
                static_cast<pw_metadata*>(pw_registry_bind(registry_, id, type, PW_VERSION_METADATA, 0));
            pw_metadata_add_listener(metadata_, &metadataHook_, &metadataEvents(), this);
        }
    }

    void onGlobalRemove(std::uint32_t id) {
        if (nodes_.erase(id) > 0) {
            onCamerasChanged();
        } else if (metadata_ && id == metadataID_) {
            forgetMetadata();
            onCamerasChanged();
        }
    }

    void onMetadata(const char* key, const char* value) {
        // Without a key, everything is forgotten.
        if (!key || std::string_view(key) == "default.video.source") {
            defaultName_ = key && value ? nameIn(value) : "";
            onCamerasChanged();
        }
    }

    void onCamerasChanged() {
        publish();
        reconcileSoon();
    }

    void forgetMetadata() {
        if (metadata_) {
            spa_hook_remove(&metadataHook_);
            pw_proxy_destroy(reinterpret_cast<pw_proxy*>(metadata_));
            metadata_ = nullptr;
            hasAskedForMetadata_ = false;
            defaultName_.clear();
        }
    }

    static const pw_core_events& coreEvents() {
        static constexpr pw_core_events table = [] {
            pw_core_events events{};
            events.version = PW_VERSION_CORE_EVENTS;
            events.done = [](void* self, std::uint32_t id, int sequence) {
                static_cast<Client*>(self)->onDone(id, sequence);
            };
            events.error = [](void* self, std::uint32_t id, int, int result, const char*) {
                static_cast<Client*>(self)->onError(id, result);
            };
            return events;
        }();
        return table;
    }
    static const pw_registry_events& registryEvents() {
        static constexpr pw_registry_events table = [] {
            pw_registry_events events{};
            events.version = PW_VERSION_REGISTRY_EVENTS;
            events.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                               const spa_dict* properties) {
                static_cast<Client*>(self)->onGlobal(id, type, properties);
            };
            events.global_remove = [](void* self, std::uint32_t id) {
                static_cast<Client*>(self)->onGlobalRemove(id);
            };
            return events;
        }();
        return table;
    }
    static const pw_metadata_events& metadataEvents() {
        static constexpr pw_metadata_events table = [] {
            pw_metadata_events events{};
            events.version = PW_VERSION_METADATA_EVENTS;
            events.property = [](void* self, std::uint32_t, const char* key, const char*, const char* value) {
                static_cast<Client*>(self)->onMetadata(key, value);
                return 0;
            };
            return events;
        }();
        return table;
    }

    Connector connector_;
    std::once_flag hasBegun_;
    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    spa_source* reconciliation_ = nullptr;
    spa_source* retry_ = nullptr;
    pw_core* core_ = nullptr;
    spa_hook coreHook_{};
    pw_registry* registry_ = nullptr;
    spa_hook registryHook_{};
    pw_metadata* metadata_ = nullptr;
    std::uint32_t metadataID_ = 0;
    spa_hook metadataHook_{};
    bool hasAskedForMetadata_ = false;
    bool hasLostConnection_ = false;
    int pendingSync_ = 0;
    std::map<std::uint32_t, FoundCamera> nodes_;
    std::string defaultName_;
    std::set<Feed*> feeds_;

    std::mutex snapshotMutex_;
    std::condition_variable snapshotCompleted_;
    Snapshot snapshot_;
};

/// A stream of one camera, made whenever the camera is there. Belongs to the loop's thread, or to whoever
/// holds the loop's lock.
class PipeWireCameras::Feed : public CameraFeed {
public:
    Feed(Client& client, std::string uniqueID, FrameSink& sink)
        : client_(client),
          uniqueID_(std::move(uniqueID)),
          sink_(sink) {
        client_.add(*this);
    }
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;
    ~Feed() override { client_.remove(*this); }

    /// Follows the camera. Never called from a callback of the stream.
    void reconcile() {
        const auto serial = client_.core() ? client_.serialOf(uniqueID_) : std::nullopt;
        const bool isAnother = serial != serial_;
        if (hasFailed_ || isAnother) {
            lose();
        }
        if (isAnother) {
            hasFailed_ = false;
            nextRetry_ = firstRetry;
            serial_ = serial;
        }
        if (!serial && !client_.isLooking()) {
            sink_.onDark();
        }
        if (hasFailed_) {
            client_.tryAgain(nextRetry_);
            nextRetry_ = std::min(nextRetry_ * 2, retryInterval);
        } else if (!stream_ && serial_) {
            begin();
        }
    }

    void forgive() { hasFailed_ = false; }

    void lose() {
        end();
        if (std::exchange(hasDelivered_, false)) {
            sink_.onDark();
        }
    }

    void end() {
        if (stream_) {
            spa_hook_remove(&hook_);
            pw_stream_destroy(std::exchange(stream_, nullptr));
            format_.reset();
        }
    }

private:
    void begin() {
        stream_ = pw_stream_new(client_.core(), "Curtain camera check",
                                pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                                  "Capture", PW_KEY_MEDIA_ROLE, "Camera",
                                                  PW_KEY_TARGET_OBJECT, std::to_string(*serial_).c_str(),
                                                  PW_KEY_NODE_DONT_RECONNECT, "true", nullptr));
        if (!stream_) {
            fail();
            return;
        }
        pw_stream_add_listener(stream_, &hook_, &events(), this);
        PipeWireFormats formats;
        auto& offers = formats.offers();
        if (pw_stream_connect(
                stream_, PW_DIRECTION_INPUT, PW_ID_ANY,
                static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS),
                offers.data(), static_cast<std::uint32_t>(offers.size())) < 0) {
            fail();
        }
    }

    void fail() {
        hasFailed_ = true;
        client_.reconcileSoon();
    }

    void onStateChanged(pw_stream_state old, pw_stream_state state) {
        // Unconnected after having been more: the link to the camera was taken away.
        if (state == PW_STREAM_STATE_ERROR ||
            (state == PW_STREAM_STATE_UNCONNECTED && old != PW_STREAM_STATE_UNCONNECTED)) {
            fail();
        }
    }

    void onParamChanged(std::uint32_t id, const spa_pod* param) {
        if (id != SPA_PARAM_Format) {
            return;
        }
        format_ = PipeWireFormats::parse(param);
        if (!format_) {
            return;
        }
        std::array<std::uint8_t, 512> memory{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), static_cast<std::uint32_t>(memory.size()));
        const auto* buffers = static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(usualBuffers, fewestBuffers, mostBuffers), SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemPtr)));
        pw_stream_update_params(stream_, &buffers, 1);
    }

    void onProcess() {
        pw_buffer* newest = nullptr;
        while (auto* buffer = pw_stream_dequeue_buffer(stream_)) {
            if (newest) {
                pw_stream_queue_buffer(stream_, newest);
            }
            newest = buffer;
        }
        if (!newest) {
            return;
        }
        if (format_) {
            deliver(*newest->buffer);
        }
        pw_stream_queue_buffer(stream_, newest);
    }

    void deliver(const spa_buffer& buffer) {
        VideoFrame frame{*format_, {}};
        const auto count = std::min<std::size_t>(buffer.n_datas, frame.planes.size());
        for (std::size_t index = 0; index < count; ++index) {
            const auto& data = buffer.datas[index];
            const auto* chunk = data.chunk;
            if (!data.data || !chunk ||
                (static_cast<std::uint32_t>(chunk->flags) & SPA_CHUNK_FLAG_CORRUPTED) != 0 ||
                chunk->offset >= data.maxsize || chunk->size == 0) {
                return;
            }
            // What the other side says of its memory need not be true.
            const auto size = std::min(chunk->size, data.maxsize - chunk->offset);
            frame.planes[index] = {{static_cast<const std::byte*>(data.data) + chunk->offset, size},
                                   chunk->stride};
        }
        nextRetry_ = firstRetry;
        hasDelivered_ = true;
        sink_.onFrame(frame);
    }

    static const pw_stream_events& events() {
        static constexpr pw_stream_events table = [] {
            pw_stream_events events{};
            events.version = PW_VERSION_STREAM_EVENTS;
            events.state_changed = [](void* self, pw_stream_state old, pw_stream_state state, const char*) {
                static_cast<Feed*>(self)->onStateChanged(old, state);
            };
            events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
                static_cast<Feed*>(self)->onParamChanged(id, param);
            };
            events.process = [](void* self) { static_cast<Feed*>(self)->onProcess(); };
            return events;
        }();
        return table;
    }

    Client& client_;
    std::string uniqueID_;
    FrameSink& sink_;
    pw_stream* stream_ = nullptr;
    spa_hook hook_{};
    std::optional<std::uint64_t> serial_;
    std::optional<VideoFormat> format_;
    bool hasFailed_ = false;
    bool hasDelivered_ = false;
    std::chrono::milliseconds nextRetry_ = firstRetry;
};

void PipeWireCameras::Client::add(Feed& feed) {
    begin();
    const Lock lock(*this);
    feeds_.insert(&feed);
    if (!connect()) {
        tryAgain(retryInterval);
    }
    feed.reconcile();
}

void PipeWireCameras::Client::remove(Feed& feed) {
    const Lock lock(*this);
    feeds_.erase(&feed);
    feed.end();
}

void PipeWireCameras::Client::tryAgain(std::chrono::milliseconds later) {
    if (loop_) {
        timespec once{later.count() / 1000, static_cast<long>(later.count() % 1000) * 1'000'000};
        pw_loop_update_timer(pw_thread_loop_get_loop(loop_), retry_, &once, nullptr, false);
    }
}

void PipeWireCameras::Client::reconcileSoon() {
    pw_loop_signal_event(pw_thread_loop_get_loop(loop_), reconciliation_);
}

void PipeWireCameras::Client::disconnect() {
    for (auto* feed : feeds_) {
        feed->lose();
    }
    forgetMetadata();
    if (registry_) {
        spa_hook_remove(&registryHook_);
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(std::exchange(registry_, nullptr)));
    }
    if (core_) {
        spa_hook_remove(&coreHook_);
        pw_core_disconnect(std::exchange(core_, nullptr));
    }
    nodes_.clear();
    hasLostConnection_ = false;
    {
        const std::scoped_lock lock(snapshotMutex_);
        snapshot_ = {};
    }
    snapshotCompleted_.notify_all();
}

void PipeWireCameras::Client::reconcile() {
    if (hasLostConnection_) {
        disconnect();
    }
    for (auto* feed : feeds_) {
        feed->reconcile();
    }
    if (!core_ && !feeds_.empty()) {
        tryAgain(retryInterval);
    }
}

void PipeWireCameras::Client::retry() {
    if (feeds_.empty()) {
        return;
    }
    connect();
    for (auto* feed : feeds_) {
        feed->forgive();
    }
    reconcile();
}

PipeWireCameras::PipeWireCameras(Connector connector)
    : client_(std::make_unique<Client>(std::move(connector))) {}

PipeWireCameras::~PipeWireCameras() = default;

void PipeWireCameras::prepare() {
    client_->reach();
}

std::vector<Platform::CaptureDevice> PipeWireCameras::devices() {
    std::vector<Platform::CaptureDevice> devices;
    for (auto& camera : client_->snapshot().cameras) {
        devices.push_back(std::move(camera.device));
    }
    return devices;
}

std::optional<Platform::CaptureDevice> PipeWireCameras::defaultDevice() {
    const auto snapshot = client_->snapshot();
    const auto found = std::ranges::find(snapshot.cameras, snapshot.defaultName,
                                         [](const auto& camera) { return camera.device.uniqueID; });
    return found == snapshot.cameras.end() ? std::nullopt : std::optional(found->device);
}

std::unique_ptr<CameraFeed> PipeWireCameras::open(const std::string& uniqueID, FrameSink& sink) {
    return std::make_unique<Feed>(*client_, uniqueID, sink);
}

bool PipeWireCameras::isReachable() const {
    return client_->snapshot().isComplete;
}

} // namespace LinuxPlatform
