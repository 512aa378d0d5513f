#include "platform/linux/screenwatch/PipeWireCaptureWatch.h"

#include "platform/linux/screenwatch/ScreenCastGraph.h"

#include <QSocketNotifier>

#include <pipewire/pipewire.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// The library's headers are C: casts of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace LinuxPlatform {
namespace {

using Id = ScreenCastGraph::Id;

/// A daemon takes a few milliseconds; a frozen one is to hold up nothing that anyone would notice.
constexpr auto firstAnswerDeadline = std::chrono::milliseconds(200);

struct Destroy {
    void operator()(pw_loop* loop) const { pw_loop_destroy(loop); }
    void operator()(pw_context* context) const { pw_context_destroy(context); }
    void operator()(pw_core* core) const { pw_core_disconnect(core); }
    void operator()(pw_proxy* proxy) const { pw_proxy_destroy(proxy); }
};

template <class Object>
using Owned = std::unique_ptr<Object, Destroy>;

std::string text(const spa_dict* properties, const char* key) {
    const char* const value = properties != nullptr ? spa_dict_lookup(properties, key) : nullptr;
    return value != nullptr ? value : "";
}

Id number(const spa_dict* properties, const char* key) {
    const auto digits = text(properties, key);
    Id value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

bool isDevice(const spa_dict* properties) {
    return !text(properties, PW_KEY_DEVICE_ID).empty() || !text(properties, PW_KEY_DEVICE_API).empty();
}

} // namespace

class PipeWireCaptureWatch::Registry {
public:
    Registry(Platform::Log& log, Reopening::Now now, WithoutDaemon withoutDaemon,
             std::function<void()> onNews)
        : withoutDaemon_(withoutDaemon),
          log_(log),
          now_(std::move(now)),
          onNews_(std::move(onNews)) {
        pw_init(nullptr, nullptr);
        loop_.reset(pw_loop_new(nullptr));
        if (!loop_) {
            return;
        }
        // A listener needs no threads of high priority.
        context_.reset(pw_context_new(
            loop_.get(), pw_properties_new(PW_KEY_CONFIG_NAME, "client.conf", "module.rt", "false", nullptr),
            0));
        notifier_ = std::make_unique<QSocketNotifier>(pw_loop_get_fd(loop_.get()), QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
            const bool wasCast = isCast_;
            iterate();
            if (isCast_ != wasCast) {
                onNews_();
            }
        });
    }

    ~Registry() {
        notifier_.reset();
        disconnect();
        context_.reset();
        loop_.reset();
        pw_deinit();
    }
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    bool isUsable() const { return context_ != nullptr; }
    bool isConnected() const { return core_ != nullptr; }

    std::optional<bool> isScreenCast() {
        if (!core_ && reopening_.isDue(now_())) {
            connect();
            takeIn();
        }
        iterate();
        if (graph_.isScreenCast()) {
            lastCast_ = now_();
        }
        if (isRemembered()) {
            return true;
        }
        return isKnown_ ? std::optional(false) : std::nullopt;
    }

private:
    /// A bound object of the server, whose properties are told by its own events.
    struct Bound {
        Registry* registry = nullptr;
        Id id = 0;
        Owned<pw_proxy> proxy;
        spa_hook hook{};

        ~Bound() {
            if (proxy) {
                spa_hook_remove(&hook);
            }
        }
    };

    void connect() {
        core_.reset(pw_context_connect(context_.get(), nullptr, 0));
        if (!core_) {
            missed(errno);
            return;
        }
        absentSince_.reset();
        isKnown_ = false;
        if (hasBroken_) {
            reopening_.tried(now_());
        }
        static constexpr pw_core_events coreEvents = [] {
            pw_core_events events{};
            events.version = PW_VERSION_CORE_EVENTS;
            events.done = [](void* data, std::uint32_t id, int sequence) {
                if (id == PW_ID_CORE) {
                    static_cast<Registry*>(data)->answered(sequence);
                }
            };
            events.error = [](void* data, std::uint32_t id, int, int result, const char*) {
                // An object that went before we asked for it is missed once more when we drop it again.
                if (id == PW_ID_CORE && result != -ENOENT) {
                    static_cast<Registry*>(data)->isLost_ = true;
                }
            };
            return events;
        }();
        static constexpr pw_registry_events registryEvents = [] {
            pw_registry_events events{};
            events.version = PW_VERSION_REGISTRY_EVENTS;
            events.global = [](void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                               const spa_dict* properties) {
                static_cast<Registry*>(data)->appeared(id, type, properties);
            };
            events.global_remove = [](void* data, std::uint32_t id) {
                static_cast<Registry*>(data)->disappeared(id);
            };
            return events;
        }();
        pw_proxy_add_object_listener(reinterpret_cast<pw_proxy*>(core_.get()), &coreHook_, &coreEvents, this);
        registry_ = pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0);
        registryProxy_.reset(reinterpret_cast<pw_proxy*>(registry_));
        if (registry_ == nullptr) {
            isLost_ = true;
            return;
        }
        pw_proxy_add_object_listener(registryProxy_.get(), &registryHook_, &registryEvents, this);
        question_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
    }

    /// No daemon, no casts; but one that was there may be about to come back, for a while. Any other reason
    /// says nothing.
    void missed(int reason) {
        const bool isAbsent = reason == ENOENT || reason == ECONNREFUSED || reason == EHOSTDOWN;
        if (isAbsent) {
            absentSince_ = absentSince_.value_or(now_());
            hasBroken_ = hasBroken_ && now_() - *absentSince_ < Reopening::longestPause;
        } else {
            absentSince_.reset();
            say(reopening_.broke(now_()));
            reopening_.tried(now_());
        }
        isKnown_ = isAbsent && !hasBroken_ && withoutDaemon_ == WithoutDaemon::nobodyCasts;
    }

    /// What is there already comes in two parts: first the objects, then what they say of themselves.
    void answered(int question) {
        if (question != question_) {
            return;
        }
        if (hasObjects_) {
            isKnown_ = true;
            question_.reset();
        } else {
            hasObjects_ = true;
            question_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
        }
    }

    /// Waits for what is there already, so that the first answer counts.
    void takeIn() {
        if (!core_) {
            return;
        }
        const auto deadline = std::chrono::steady_clock::now() + firstAnswerDeadline;
        pw_loop_enter(loop_.get());
        while (!isLost_ && !isKnown_) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0 || pw_loop_iterate(loop_.get(), static_cast<int>(left.count())) < 0) {
                break;
            }
        }
        pw_loop_leave(loop_.get());
    }

    void say(bool isNews) {
        if (isNews) {
            log_.writeLine("Curtain: PipeWire does not tell who casts the screen; it will be asked again");
        }
    }

    bool isRemembered() const { return lastCast_ && now_() - *lastCast_ <= memory; }

    void disconnect() {
        bound_.clear();
        graph_.clear();
        if (registryProxy_) {
            spa_hook_remove(&registryHook_);
            registryProxy_.reset();
            registry_ = nullptr;
        }
        if (core_) {
            spa_hook_remove(&coreHook_);
            core_.reset();
        }
        isLost_ = false;
        hasObjects_ = false;
        isKnown_ = false;
        question_.reset();
    }

    void iterate() {
        // One that ends was there until now.
        if (isRemembered() && graph_.isScreenCast()) {
            lastCast_ = now_();
        }
        pw_loop_enter(loop_.get());
        while (pw_loop_iterate(loop_.get(), 0) > 0) {
        }
        pw_loop_leave(loop_.get());
        // Not from inside its own event.
        if (isLost_) {
            disconnect();
            hasBroken_ = true;
            say(reopening_.broke(now_()));
        }
        isCast_ = graph_.isScreenCast();
    }

    void appeared(Id id, std::string_view type, const spa_dict* properties) {
        if (type == PW_TYPE_INTERFACE_Node) {
            auto& node = graph_.nodes[id];
            node.mediaClass = text(properties, PW_KEY_MEDIA_CLASS);
            node.name = text(properties, PW_KEY_NODE_NAME);
            node.role = text(properties, PW_KEY_MEDIA_ROLE);
            node.client = number(properties, PW_KEY_CLIENT_ID);
            node.isDevice = isDevice(properties);
            if (node.isVideoSource()) {
                followNode(id);
            }
        } else if (type == PW_TYPE_INTERFACE_Client) {
            auto& client = graph_.clients[id];
            client.application = text(properties, PW_KEY_APP_NAME);
            client.access = text(properties, PW_KEY_ACCESS);
            followClient(id);
        } else if (type == PW_TYPE_INTERFACE_Link) {
            graph_.links[id] = {number(properties, PW_KEY_LINK_OUTPUT_NODE),
                                number(properties, PW_KEY_LINK_INPUT_NODE)};
        }
    }

    void disappeared(Id id) {
        bound_.erase(id);
        graph_.remove(id);
    }

    void followNode(Id id) {
        static constexpr pw_node_events events = [] {
            pw_node_events result{};
            result.version = PW_VERSION_NODE_EVENTS;
            result.info = [](void* data, const pw_node_info* info) {
                const auto& bound = *static_cast<Bound*>(data);
                auto& node = bound.registry->graph_.nodes[bound.id];
                node.isRunning = info->state == PW_NODE_STATE_RUNNING;
                // Those that have not changed are left out, which makes the list empty.
                if ((info->change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0) {
                    node.role = text(info->props, PW_KEY_MEDIA_ROLE);
                    node.isDevice = isDevice(info->props);
                }
            };
            return result;
        }();
        auto* const bound = bind(id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE);
        if (bound != nullptr) {
            pw_proxy_add_object_listener(bound->proxy.get(), &bound->hook, &events, bound);
        }
    }

    void followClient(Id id) {
        static constexpr pw_client_events events = [] {
            pw_client_events result{};
            result.version = PW_VERSION_CLIENT_EVENTS;
            result.info = [](void* data, const pw_client_info* info) {
                const auto& bound = *static_cast<Bound*>(data);
                if ((info->change_mask & PW_CLIENT_CHANGE_MASK_PROPS) != 0) {
                    bound.registry->graph_.clients[bound.id] = {
                        text(info->props, PW_KEY_APP_NAME), text(info->props, PW_KEY_APP_PROCESS_BINARY),
                        text(info->props, PW_KEY_ACCESS),
                        text(info->props, "pipewire.access.portal.media_roles")};
                }
            };
            return result;
        }();
        auto* const bound = bind(id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT);
        if (bound != nullptr) {
            pw_proxy_add_object_listener(bound->proxy.get(), &bound->hook, &events, bound);
        }
    }

    Bound* bind(Id id, const char* type, std::uint32_t version) {
        Owned<pw_proxy> proxy(static_cast<pw_proxy*>(pw_registry_bind(registry_, id, type, version, 0)));
        if (!proxy) {
            return nullptr;
        }
        auto bound = std::make_unique<Bound>();
        bound->registry = this;
        bound->id = id;
        bound->proxy = std::move(proxy);
        return (bound_[id] = std::move(bound)).get();
    }

    Owned<pw_loop> loop_;
    Owned<pw_context> context_;
    Owned<pw_core> core_;
    spa_hook coreHook_{};
    pw_registry* registry_ = nullptr;
    Owned<pw_proxy> registryProxy_;
    spa_hook registryHook_{};
    std::map<Id, std::unique_ptr<Bound>> bound_;
    ScreenCastGraph graph_;
    /// As of the last look.
    bool isCast_ = false;
    bool isLost_ = false;
    /// Whether a daemon that was there broke off and may come back.
    bool hasBroken_ = false;
    std::optional<Reopening::Clock::time_point> absentSince_;
    /// The one of ours that the daemon has not come to yet.
    std::optional<int> question_;
    bool hasObjects_ = false;
    bool isKnown_ = false;
    std::optional<Reopening::Clock::time_point> lastCast_;
    Reopening reopening_;
    WithoutDaemon withoutDaemon_;
    Platform::Log& log_;
    Reopening::Now now_;
    std::function<void()> onNews_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

std::unique_ptr<PipeWireCaptureWatch> PipeWireCaptureWatch::open(Platform::Log& log, Reopening::Now now,
                                                                 WithoutDaemon withoutDaemon) {
    std::unique_ptr<PipeWireCaptureWatch> watch(new PipeWireCaptureWatch);
    watch->registry_ = std::make_unique<Registry>(log, std::move(now), withoutDaemon,
                                                  [told = watch.get()] { told->tellNews(); });
    return watch->registry_->isUsable() ? std::move(watch) : nullptr;
}

PipeWireCaptureWatch::~PipeWireCaptureWatch() = default;

std::optional<bool> PipeWireCaptureWatch::isScreenCaptured() {
    return registry_->isScreenCast();
}

bool PipeWireCaptureWatch::isConnected() const {
    return registry_->isConnected();
}

} // namespace LinuxPlatform
