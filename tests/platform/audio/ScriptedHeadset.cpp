#include "tests/platform/audio/ScriptedHeadset.h"

#include <pipewire/impl.h>
#include <pipewire/pipewire.h>
#include <spa/monitor/device.h>
#include <spa/monitor/utils.h>
#include <spa/param/profile.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/parser.h>

#include <array>
#include <cerrno>
#include <cstddef>

namespace TestSupport {
namespace {

struct Profile {
    const char* name;
    const char* description;
    int priority;
};
constexpr std::array profiles{Profile{"off", "Off", 0},
                              Profile{ScriptedHeadset::music, "High Fidelity Playback (A2DP Sink)", 20},
                              Profile{ScriptedHeadset::call, "Headset Head Unit (HSP/HFP)", 10}};

struct Route {
    spa_direction direction;
    const char* name;
    std::array<int, 2> profiles;
    std::uint32_t profileCount;
};
constexpr std::array routes{Route{SPA_DIRECTION_INPUT, "headset-input", {2}, 1},
                            Route{SPA_DIRECTION_OUTPUT, "headset-output", {1, 2}, 2}};

const spa_pod* profilePod(spa_pod_builder& builder, std::uint32_t kind, int index) {
    const auto& profile = profiles.at(static_cast<std::size_t>(index));
    return static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamProfile, kind, SPA_PARAM_PROFILE_index, SPA_POD_Int(index),
        SPA_PARAM_PROFILE_name, SPA_POD_String(profile.name), SPA_PARAM_PROFILE_description,
        SPA_POD_String(profile.description), SPA_PARAM_PROFILE_priority, SPA_POD_Int(profile.priority),
        SPA_PARAM_PROFILE_available, SPA_POD_Id(SPA_PARAM_AVAILABILITY_yes)));
}

const spa_pod* routePod(spa_pod_builder& builder, int index) {
    const auto& route = routes.at(static_cast<std::size_t>(index));
    return static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamRoute, SPA_PARAM_EnumRoute, SPA_PARAM_ROUTE_index, SPA_POD_Int(index),
        SPA_PARAM_ROUTE_direction, SPA_POD_Id(static_cast<std::uint32_t>(route.direction)),
        SPA_PARAM_ROUTE_name, SPA_POD_String(route.name), SPA_PARAM_ROUTE_description,
        SPA_POD_String(route.name), SPA_PARAM_ROUTE_priority, SPA_POD_Int(0), SPA_PARAM_ROUTE_available,
        SPA_POD_Id(SPA_PARAM_AVAILABILITY_yes), SPA_PARAM_ROUTE_profiles,
        SPA_POD_Array(sizeof(int), SPA_TYPE_Int, route.profileCount, route.profiles.data())));
}

} // namespace

class ScriptedHeadset::Device {
public:
    Device() {
        pw_init(nullptr, nullptr);
        loop_ = pw_thread_loop_new("headset", nullptr);
        context_ = pw_context_new(pw_thread_loop_get_loop(loop_), nullptr, 0);
        pw_context_load_module(context_, "libpipewire-module-client-device", nullptr, nullptr);
        spa_hook_list_init(&listeners_);
        device_.iface = SPA_INTERFACE_INIT(SPA_TYPE_INTERFACE_Device, SPA_VERSION_DEVICE, &methods, this);
        pw_thread_loop_start(loop_);
        pw_thread_loop_lock(loop_);
        core_ = pw_context_connect(context_, nullptr, 0);
        if (core_ != nullptr) {
            const spa_dict_item items[] = {{PW_KEY_DEVICE_API, "bluez5"},
                                           {PW_KEY_DEVICE_NAME, "bluez_card.scripted"},
                                           {PW_KEY_DEVICE_DESCRIPTION, "Scripted Headset"},
                                           {PW_KEY_MEDIA_CLASS, "Audio/Device"}};
            const spa_dict properties = SPA_DICT_INIT_ARRAY(items);
            proxy_ = static_cast<pw_proxy*>(
                pw_core_export(core_, SPA_TYPE_INTERFACE_Device, &properties, &device_, 0));
            proxyEvents_.version = PW_VERSION_PROXY_EVENTS;
            proxyEvents_.bound = [](void* data, std::uint32_t id) { self(data).id_ = id; };
            pw_proxy_add_listener(proxy_, &proxyListener_, &proxyEvents_, this);
        }
        pw_thread_loop_unlock(loop_);
    }

    ~Device() {
        pw_thread_loop_stop(loop_);
        if (proxy_ != nullptr) {
            pw_proxy_destroy(proxy_);
        }
        if (core_ != nullptr) {
            pw_core_disconnect(core_);
        }
        pw_context_destroy(context_);
        pw_thread_loop_destroy(loop_);
        pw_deinit();
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    std::uint32_t id() const { return id_; }
    int profile() const { return profile_; }
    int switches() const { return switches_; }

private:
    static Device& self(void* object) { return *static_cast<Device*>(object); }

    static int addListener(void* object, spa_hook* listener, const spa_device_events* events, void* data) {
        auto& device = self(object);
        spa_hook_list save;
        spa_hook_list_isolate(&device.listeners_, &save, listener, events, data);
        device.tell();
        spa_hook_list_join(&device.listeners_, &save);
        return 0;
    }

    static int sync(void* object, int sequence) {
        spa_device_emit_result(&self(object).listeners_, sequence, 0, 0, nullptr);
        return 0;
    }

    static int enumerate(void* object, int sequence, std::uint32_t kind, std::uint32_t start,
                         std::uint32_t count, const spa_pod* /*filter*/) {
        auto& device = self(object);
        const auto all = kind == SPA_PARAM_EnumProfile ? profiles.size()
                         : kind == SPA_PARAM_EnumRoute ? routes.size()
                         : kind == SPA_PARAM_Profile   ? std::size_t{1}
                                                       : std::size_t{0};
        for (std::uint32_t index = start; index < all && index - start < count; ++index) {
            std::array<std::byte, 1024> memory{};
            spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory.data(), memory.size());
            const auto number = static_cast<int>(index);
            auto* const pod = kind == SPA_PARAM_EnumRoute ? routePod(builder, number)
                              : kind == SPA_PARAM_Profile ? profilePod(builder, kind, device.profile_)
                                                          : profilePod(builder, kind, number);
            const spa_result_device_params result{kind, index, index + 1, const_cast<spa_pod*>(pod)};
            spa_device_emit_result(&device.listeners_, sequence, 0, SPA_RESULT_TYPE_DEVICE_PARAMS, &result);
        }
        return 0;
    }

    static int set(void* object, std::uint32_t kind, std::uint32_t /*flags*/, const spa_pod* pod) {
        auto& device = self(object);
        int index = 0;
        if (kind != SPA_PARAM_Profile || pod == nullptr ||
            spa_pod_parse_object(pod, SPA_TYPE_OBJECT_ParamProfile, nullptr, SPA_PARAM_PROFILE_index,
                                 SPA_POD_Int(&index)) < 0 ||
            index < 0 || static_cast<std::size_t>(index) >= profiles.size()) {
            return -EINVAL;
        }
        if (device.profile_.exchange(index) != index) {
            ++device.switches_;
        }
        for (auto& parameter : device.parameters_) {
            if (parameter.id == SPA_PARAM_Profile) {
                parameter.flags ^= SPA_PARAM_INFO_SERIAL;
            }
        }
        device.tell();
        return 0;
    }

    void tell() {
        spa_device_info info = SPA_DEVICE_INFO_INIT();
        info.change_mask = SPA_DEVICE_CHANGE_MASK_PARAMS;
        info.params = parameters_.data();
        info.n_params = static_cast<std::uint32_t>(parameters_.size());
        spa_device_emit_info(&listeners_, &info);
    }

    static constexpr spa_device_methods methods{.version = SPA_VERSION_DEVICE_METHODS,
                                                .add_listener = &addListener,
                                                .sync = &sync,
                                                .enum_params = &enumerate,
                                                .set_param = &set};

    pw_thread_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
    pw_proxy* proxy_ = nullptr;
    pw_proxy_events proxyEvents_{};
    spa_hook proxyListener_{};
    spa_device device_{};
    spa_hook_list listeners_{};
    std::array<spa_param_info, 3> parameters_{SPA_PARAM_INFO(SPA_PARAM_EnumProfile, SPA_PARAM_INFO_READ),
                                              SPA_PARAM_INFO(SPA_PARAM_Profile, SPA_PARAM_INFO_READWRITE),
                                              SPA_PARAM_INFO(SPA_PARAM_EnumRoute, SPA_PARAM_INFO_READ)};
    std::atomic<std::uint32_t> id_ = none;
    std::atomic<int> profile_ = 1;
    std::atomic<int> switches_ = 0;
};

ScriptedHeadset::ScriptedHeadset() : device_(std::make_unique<Device>()) {}

ScriptedHeadset::~ScriptedHeadset() = default;

std::uint32_t ScriptedHeadset::id() const {
    return device_->id();
}

std::string ScriptedHeadset::profile() const {
    return profiles.at(static_cast<std::size_t>(device_->profile())).name;
}

int ScriptedHeadset::switches() const {
    return device_->switches();
}

} // namespace TestSupport
