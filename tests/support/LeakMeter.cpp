/// LeakMeter RRGGBB: takes the picture of the screen sixty times a second into shared memory, as recorders
/// do, and prints a line for each: when it was asked for, in seconds of the monotonic clock, how many of its
/// pixels have that colour, and how many pictures were missed since the one before. Runs until it is ended.
#include "platform/linux/x11/X11Connection.h"

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>

#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace {

using LinuxPlatform::XcbPointer;

constexpr long nanosecondsPerPicture = 1'000'000'000L / 60;
constexpr std::uint32_t colourBits = 0xFFFFFF;

/// The picture of the whole screen, in memory that the server writes to.
class SharedPicture {
public:
    explicit SharedPicture(xcb_connection_t* connection)
        : connection_(connection),
          screen_(*xcb_setup_roots_iterator(xcb_get_setup(connection)).data),
          pixelCount_(std::size_t{screen_.width_in_pixels} * screen_.height_in_pixels),
          segment_(xcb_generate_id(connection)) {
        const int memory =
            shmget(IPC_PRIVATE, pixelCount_ * sizeof(std::uint32_t), IPC_CREAT | S_IRUSR | S_IWUSR);
        auto* const address = shmat(memory, nullptr, 0);
        const XcbPointer<xcb_generic_error_t> error(xcb_request_check(
            connection, xcb_shm_attach_checked(connection, segment_, static_cast<std::uint32_t>(memory), 0)));
        // It goes with whoever uses it.
        shmctl(memory, IPC_RMID, nullptr);
        if (address != reinterpret_cast<void*>(-1) && !error) {
            pixels_ = static_cast<const std::uint32_t*>(address);
        }
    }

    /// False once the server is gone.
    bool take() {
        if (pixels_ == nullptr) {
            return false;
        }
        const XcbPointer<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(
            connection_,
            xcb_shm_get_image(connection_, screen_.root, 0, 0, screen_.width_in_pixels,
                              screen_.height_in_pixels, ~std::uint32_t{0}, XCB_IMAGE_FORMAT_Z_PIXMAP,
                              segment_, 0),
            nullptr));
        return reply != nullptr;
    }

    std::size_t count(std::uint32_t colour) const {
        return static_cast<std::size_t>(
            std::ranges::count_if(std::span(pixels_, pixelCount_),
                                  [colour](std::uint32_t pixel) { return (pixel & colourBits) == colour; }));
    }

private:
    xcb_connection_t* connection_;
    const xcb_screen_t& screen_;
    std::size_t pixelCount_;
    xcb_shm_seg_t segment_;
    const std::uint32_t* pixels_ = nullptr;
};

/// The descriptor of a timer that fires once for each picture.
int startTimer() {
    const int timer = timerfd_create(CLOCK_MONOTONIC, 0);
    const itimerspec pace{{0, nanosecondsPerPicture}, {0, nanosecondsPerPicture}};
    timerfd_settime(timer, 0, &pace, nullptr);
    return timer;
}

} // namespace

int main(int argumentCount, char** argumentList) {
    const std::span arguments(argumentList, static_cast<std::size_t>(argumentCount));
    if (arguments.size() != 2) {
        return EXIT_FAILURE;
    }
    constexpr int hexadecimal = 16;
    const auto colour = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, hexadecimal));
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    SharedPicture picture(connection.get());
    const int timer = startTimer();
    std::uint64_t due = 0;
    while (read(timer, &due, sizeof due) == sizeof due) {
        const std::chrono::duration<double> asked = std::chrono::steady_clock::now().time_since_epoch();
        if (!picture.take()) {
            break;
        }
        std::printf("%.6f %zu %ju\n", asked.count(), picture.count(colour),
                    static_cast<std::uintmax_t>(due - 1));
        std::fflush(stdout);
    }
    return EXIT_FAILURE;
}
