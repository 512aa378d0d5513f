#include "platform/linux/ownwindows/X11EventMonitors.h"

#include "platform/linux/x11/X11ClientProcess.h"

#include <xcb/xinput.h>

#include <optional>
#include <utility>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

/// The first protocol version that reports raw events while another program holds the pointer, as open menus
/// do.
constexpr std::uint16_t inputMajor = 2;
constexpr std::uint16_t inputMinor = 2;

/// The number of the extension; 0 when it is too old or not there.
std::uint8_t negotiateInputExtension(X11Connection& connection) {
    const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (extension == nullptr || extension->present == 0) {
        return 0;
    }
    const auto version = connection.reply<xcb_input_xi_query_version_reply>(
        xcb_input_xi_query_version(connection.get(), inputMajor, inputMinor));
    const bool isNewEnough = version && std::pair(version->major_version, version->minor_version) >=
                                            std::pair(inputMajor, inputMinor);
    return isNewEnough ? extension->major_opcode : std::uint8_t{0};
}

std::optional<std::uint64_t> typeOfButton(std::uint32_t button) {
    switch (button) {
    case 1:
        return Platform::EventType::leftMouseDown;
    case 3:
        return Platform::EventType::rightMouseDown;
    default:
        return std::nullopt;
    }
}

} // namespace

X11EventMonitors::X11EventMonitors(X11Connection& connection,
                                   std::unique_ptr<Platform::EventMonitors> toolkit)
    : connection_(connection),
      inputExtension_(negotiateInputExtension(connection)),
      toolkit_(std::move(toolkit)) {
    if (inputExtension_ == 0) {
        return;
    }
    struct {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    } selection;
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &selection.head);
    connection_.flush();
    events_ = connection_.addEventHandler([this](const auto& event) { handle(event); });
}

Platform::Subscription
X11EventMonitors::addGlobalMonitor(std::uint64_t eventMask,
                                   std::function<void(const Platform::Event&)> callback) {
    if (inputExtension_ == 0) {
        return toolkit_->addGlobalMonitor(eventMask, std::move(callback));
    }
    return globalMonitors_.add([eventMask, callback = std::move(callback)](const Platform::Event& event) {
        if ((eventMask >> event.type & 1U) != 0) {
            callback(event);
        }
    });
}

Platform::Subscription
X11EventMonitors::addLocalMonitor(std::uint64_t eventMask,
                                  std::function<bool(const Platform::Event&)> callback) {
    return toolkit_->addLocalMonitor(eventMask, std::move(callback));
}

bool X11EventMonitors::isPointerOverOwnWindow() {
    // An icon lies within a window of its panel, and a window within its frame.
    auto window = connection_.root();
    while (const auto pointer =
               connection_.reply<xcb_query_pointer_reply>(xcb_query_pointer(connection_.get(), window))) {
        if (pointer->child == XCB_WINDOW_NONE) {
            break;
        }
        window = pointer->child;
    }
    return receiveClientProcess(connection_, askClientProcess(connection_, window)) ==
           static_cast<std::uint32_t>(getpid());
}

void X11EventMonitors::handle(const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentMark = 0x80;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if ((event.response_type & ~sentMark) != XCB_GE_GENERIC || generic.extension != inputExtension_ ||
        generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS) {
        return;
    }
    const auto& press = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event);
    const auto type = typeOfButton(press.detail);
    if (type && !globalMonitors_.isEmpty() && !isPointerOverOwnWindow()) {
        globalMonitors_.tell({*type, 0, std::nullopt});
    }
}

} // namespace LinuxPlatform
