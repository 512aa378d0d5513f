#include "tests/support/X11TestClient.h"

#include <cstdlib>
#include <span>

#include <unistd.h>

/// WindowProgram CLASS COUNT: a program of its own with that many windows; runs until it is ended.
int main(int argumentCount, char** argumentList) {
    const std::span arguments(argumentList, static_cast<std::size_t>(argumentCount));
    if (arguments.size() != 3) {
        return EXIT_FAILURE;
    }
    TestSupport::X11TestClient client;
    for (long left = std::strtol(arguments[2], nullptr, 10); left > 0; --left) {
        client.open(arguments[1], arguments[1]);
    }
    // Ends with the display, if nobody ends it before.
    while (xcb_generic_event_t* const event = xcb_wait_for_event(client.get())) {
        std::free(event);
    }
    return EXIT_SUCCESS;
}
