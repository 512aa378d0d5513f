#pragma once

#include "platform/linux/camera/CameraOrder.h"
#include "platform/linux/camera/pipewire/PipeWireFormats.h"
#include "platform/linux/camera/pipewire/PipeWireHandles.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pw_metadata;

namespace LinuxPlatform {

/// What a daemon says of its cameras: those with a format that Curtain reads, and which one is the default.
/// Belongs to the thread of its connection.
class CameraNodes {
public:
    /// The core outlives this object. `onChanged` is called when an answer may be another one than before;
    /// the object may not be destroyed from within.
    CameraNodes(pw_core* core, std::function<void()> onChanged);
    CameraNodes(const CameraNodes&) = delete;
    CameraNodes& operator=(const CameraNodes&) = delete;
    ~CameraNodes();

    /// Whether everything is known that was there at the beginning.
    bool isComplete() const { return isComplete_; }
    std::vector<FoundCamera> cameras() const;
    /// The stable name of the session manager's choice; empty for none.
    const std::string& defaultName() const { return defaultName_; }
    /// Whether somebody looks for devices on the daemon's behalf.
    bool hasSessionManager() const { return metadata_ != nullptr; }

    /// To be told by whoever listens to the core.
    void onDone(int sequence);

private:
    /// A node that calls itself a camera. It is bound until it is known to have a format that can be read.
    struct Node {
        CameraNodes* nodes = nullptr;
        FoundCamera camera;
        ReadableFormats formats = ReadableFormats::none;
        PipeWireOwned<pw_proxy> proxy;
        spa_hook hook{};
        /// The daemon's answer to this follows those to the last question about formats.
        std::optional<int> pendingSync;
        /// How the node marks the present state of its list of formats.
        std::optional<std::uint32_t> formatsMark;

        ~Node();
        void ask();
        void forgetProxy();
        void onInfo(std::uint64_t changes, const spa_param_info* params, std::uint32_t count);
        void onFormat(const spa_pod* format);
    };

    int sync();
    void onGlobal(std::uint32_t id, const char* type, const spa_dict* properties);
    void onGlobalRemove(std::uint32_t id);
    void addNode(std::uint32_t id, const spa_dict* properties);
    void bindMetadata(std::uint32_t id);
    void forgetMetadata();
    void onMetadata(const char* key, const char* value);

    pw_core* core_;
    std::function<void()> onChanged_;
    PipeWireFormats allFormats_;
    PipeWireFormats colorFormats_{PipeWireFormats::Layouts::color};
    PipeWireOwned<pw_proxy> registry_;
    spa_hook registryHook_{};
    std::map<std::uint32_t, std::unique_ptr<Node>> nodes_;
    PipeWireOwned<pw_proxy> metadata_;
    std::uint32_t metadataID_ = 0;
    spa_hook metadataHook_{};
    std::string defaultName_;
    bool isComplete_ = false;
    /// Whether there are answers to come that were asked for after `pendingSync_`.
    bool hasAsked_ = false;
    int pendingSync_ = 0;
};

} // namespace LinuxPlatform
