#pragma once

#include "tests/support/X11TestClient.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace TestSupport {

/// What is on the screen.
class DesktopPicture {
public:
    static DesktopPicture take(const X11TestClient& client) {
        const auto* const screen = xcb_setup_roots_iterator(xcb_get_setup(client.get())).data;
        const LinuxPlatform::XcbPointer<xcb_get_image_reply_t> reply(
            xcb_get_image_reply(client.get(),
                                xcb_get_image(client.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                              screen->width_in_pixels, screen->height_in_pixels, 0xFFFFFFFF),
                                nullptr));
        DesktopPicture picture;
        picture.width_ = screen->width_in_pixels;
        picture.pixels_.resize(std::size_t{screen->width_in_pixels} * screen->height_in_pixels);
        if (reply) {
            std::memcpy(picture.pixels_.data(), xcb_get_image_data(reply.get()),
                        picture.pixels_.size() * sizeof(std::uint32_t));
        }
        return picture;
    }

    /// Whether nothing is on it but a background of one colour or a gradient from top to bottom.
    bool isBare() const {
        for (std::size_t pixel = 1; pixel < pixels_.size(); ++pixel) {
            if (pixel % width_ != 0 && colour(pixel) != colour(pixel - 1)) {
                return false;
            }
        }
        return true;
    }

    bool operator==(const DesktopPicture&) const = default;

private:
    std::uint32_t colour(std::size_t pixel) const { return pixels_[pixel] & 0xFFFFFFU; }

    std::size_t width_ = 0;
    std::vector<std::uint32_t> pixels_;
};

} // namespace TestSupport
