#include "tests/support/X11TestClient.h"

#include <cstdlib>
#include <span>

#include <unistd.h>

/// WindowProgram CLASS COUNT [POPUPS]: a program of its own with that many windows, and pop-ups past the
/// window manager; runs until it is ended.
int main(int argumentCount, char** argumentList) {
    const std::span arguments(argumentList, static_cast<std::size_t>(argumentCount));
    if (arguments.size() < 3) {
        return EXIT_FAILURE;
    }
    TestSupport::X11TestClient client;
    for (long left = std::strtol(arguments[2], nullptr, 10); left > 0; --left) {
        client.open(arguments[1], arguments[1]);
    }
    for (long left = arguments.size() > 3 ? std::strtol(arguments[3], nullptr, 10) : 0; left > 0; --left) {
        const auto popup = client.create(arguments[1], arguments[1]);
        const std::uint32_t isOverride = 1;
        xcb_change_window_attributes(client.get(), popup, XCB_CW_OVERRIDE_REDIRECT, &isOverride);
        client.map(popup);
    }
    // Ends with the display, if nobody ends it before.
    while (xcb_generic_event_t* const event = xcb_wait_for_event(client.get())) {
        std::free(event);
    }
    return EXIT_SUCCESS;
}
