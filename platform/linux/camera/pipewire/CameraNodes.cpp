#include "platform/linux/camera/pipewire/CameraNodes.h"

#include <pipewire/extensions/metadata.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>
#include <utility>

// The library's headers are C: casts of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace LinuxPlatform {
namespace {

std::string nameIn(const char* json) {
    return QJsonDocument::fromJson(json).object()[QStringLiteral("name")].toString().toStdString();
}

std::uint64_t numberIn(const std::string& digits) {
    std::uint64_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

bool isCamera(const spa_dict* properties) {
    return propertyOf(properties, PW_KEY_MEDIA_CLASS) == "Video/Source" &&
           propertyOf(properties, PW_KEY_MEDIA_ROLE) == "Camera";
}

} // namespace

CameraNodes::Node::~Node() {
    forgetProxy();
}

void CameraNodes::Node::ask() {
    formats = ReadableFormats::none;
    pw_node_enum_params(reinterpret_cast<pw_node*>(proxy.get()), 0, SPA_PARAM_EnumFormat, 0, UINT32_MAX,
                        nullptr);
    pendingSync = nodes->sync();
    nodes->hasAsked_ = true;
}

void CameraNodes::Node::forgetProxy() {
    if (proxy) {
        spa_hook_remove(&hook);
        proxy.reset();
    }
}

void CameraNodes::Node::onInfo(std::uint64_t changes, const spa_param_info* params, std::uint32_t count) {
    if ((changes & PW_NODE_CHANGE_MASK_PARAMS) == 0) {
        return;
    }
    for (const auto& param : std::span(params, count)) {
        if (param.id == SPA_PARAM_EnumFormat) {
            // The first mark is that of what has been asked for already.
            const auto before = std::exchange(formatsMark, param.flags);
            if (before && before != formatsMark) {
                ask();
            }
        }
    }
}

void CameraNodes::Node::onFormat(const spa_pod* format) {
    if (formats != ReadableFormats::color) {
        const bool isColor = nodes->colorFormats_.matches(format);
        const bool isAny = isColor || nodes->allFormats_.matches(format);
        formats = isColor ? ReadableFormats::color : isAny ? ReadableFormats::gray : formats;
    }
}

CameraNodes::CameraNodes(pw_core* core, std::function<void()> onChanged)
    : core_(core),
      onChanged_(std::move(onChanged)) {
    static constexpr pw_registry_events events = [] {
        pw_registry_events table{};
        table.version = PW_VERSION_REGISTRY_EVENTS;
        table.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                          const spa_dict* properties) {
            static_cast<CameraNodes*>(self)->onGlobal(id, type, properties);
        };
        table.global_remove = [](void* self, std::uint32_t id) {
            static_cast<CameraNodes*>(self)->onGlobalRemove(id);
        };
        return table;
    }();
    auto* const registry = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    registry_.reset(reinterpret_cast<pw_proxy*>(registry));
    if (registry_) {
        pw_registry_add_listener(registry, &registryHook_, &events, this);
    }
    pendingSync_ = sync();
}

CameraNodes::~CameraNodes() {
    forgetMetadata();
    nodes_.clear();
    if (registry_) {
        spa_hook_remove(&registryHook_);
    }
}

std::vector<FoundCamera> CameraNodes::cameras() const {
    std::vector<FoundCamera> cameras;
    for (const auto& [id, node] : nodes_) {
        if (!node->pendingSync && node->formats != ReadableFormats::none) {
            cameras.push_back(node->camera);
            cameras.back().isGray = node->formats == ReadableFormats::gray;
        }
    }
    return cameras;
}

void CameraNodes::onDone(int sequence) {
    bool hasNews = false;
    for (const auto& [id, node] : nodes_) {
        if (node->pendingSync == sequence) {
            node->pendingSync.reset();
            hasNews = true;
            // One that cannot be read yet may offer other formats later.
            if (node->formats != ReadableFormats::none) {
                node->forgetProxy();
            }
        }
    }
    if (!isComplete_ && sequence == pendingSync_) {
        if (std::exchange(hasAsked_, false)) {
            pendingSync_ = sync();
        } else {
            isComplete_ = true;
            hasNews = true;
        }
    }
    if (hasNews) {
        onChanged_();
    }
}

int CameraNodes::sync() {
    return pw_core_sync(core_, PW_ID_CORE, 0);
}

void CameraNodes::onGlobal(std::uint32_t id, const char* type, const spa_dict* properties) {
    const std::string_view interface(type);
    if (interface == PW_TYPE_INTERFACE_Node && isCamera(properties)) {
        addNode(id, properties);
    } else if (interface == PW_TYPE_INTERFACE_Metadata && !metadata_ &&
               propertyOf(properties, PW_KEY_METADATA_NAME) == "default") {
        bindMetadata(id);
    }
}

void CameraNodes::onGlobalRemove(std::uint32_t id) {
    if (nodes_.erase(id) > 0) {
        onChanged_();
    } else if (metadata_ && id == metadataID_) {
        forgetMetadata();
        onChanged_();
    }
}

void CameraNodes::addNode(std::uint32_t id, const spa_dict* properties) {
    static constexpr pw_node_events events = [] {
        pw_node_events table{};
        table.version = PW_VERSION_NODE_EVENTS;
        table.info = [](void* node, const pw_node_info* info) {
            static_cast<Node*>(node)->onInfo(info->change_mask, info->params, info->n_params);
        };
        table.param = [](void* node, int, std::uint32_t param, std::uint32_t, std::uint32_t,
                         const spa_pod* format) {
            if (param == SPA_PARAM_EnumFormat) {
                static_cast<Node*>(node)->onFormat(format);
            }
        };
        return table;
    }();
    auto node = std::make_unique<Node>();
    node->nodes = this;
    node->camera = {.stableName = propertyOf(properties, PW_KEY_NODE_NAME),
                    .description = propertyOf(properties, PW_KEY_NODE_DESCRIPTION),
                    .objectPath = propertyOf(properties, PW_KEY_OBJECT_PATH),
                    .serial = numberIn(propertyOf(properties, PW_KEY_OBJECT_SERIAL))};
    node->proxy.reset(static_cast<pw_proxy*>(pw_registry_bind(
        reinterpret_cast<pw_registry*>(registry_.get()), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
    if (!node->proxy) {
        return;
    }
    pw_proxy_add_object_listener(node->proxy.get(), &node->hook, &events, node.get());
    node->ask();
    nodes_[id] = std::move(node);
}

void CameraNodes::bindMetadata(std::uint32_t id) {
    static constexpr pw_metadata_events events = [] {
        pw_metadata_events table{};
        table.version = PW_VERSION_METADATA_EVENTS;
        table.property = [](void* self, std::uint32_t, const char* key, const char*, const char* value) {
            static_cast<CameraNodes*>(self)->onMetadata(key, value);
            return 0;
        };
        return table;
    }();
    metadataID_ = id;
    metadata_.reset(
        static_cast<pw_proxy*>(pw_registry_bind(reinterpret_cast<pw_registry*>(registry_.get()), id,
                                                PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0)));
    if (metadata_) {
        pw_proxy_add_object_listener(metadata_.get(), &metadataHook_, &events, this);
        hasAsked_ = true;
    }
}

void CameraNodes::forgetMetadata() {
    if (metadata_) {
        spa_hook_remove(&metadataHook_);
        metadata_.reset();
        defaultName_.clear();
    }
}

void CameraNodes::onMetadata(const char* key, const char* value) {
    // Without a key, everything is forgotten.
    if (!key || std::string_view(key) == "default.video.source") {
        defaultName_ = key && value ? nameIn(value) : "";
        onChanged_();
    }
}

} // namespace LinuxPlatform
