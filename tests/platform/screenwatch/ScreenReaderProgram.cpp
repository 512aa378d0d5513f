/// Reads pixels as screenshot tools, magnifiers, recorders and others do, until it is ended:
///
///     ScreenReaderProgram NAME KIND X Y WIDTH HEIGHT MILLISECONDS [OPTION…]
///
/// The area is read over and over, MILLISECONDS apart. How often it was is told by the root window's property
/// NAME. KIND is
///     image       a picture of the root window
///     copy        a copy of the root window into a pixmap of its own
///     copied      such a copy, and a picture of that
///     own         a picture of a pixmap that has nothing to do with the screen
///     scroll      a copy within the root window
/// and OPTION
///     damage      is told what changes on the screen
///     moves       the area wanders over the screen
///     reconnects  each time by a new connection
///     noisy       copies within a pixmap of its own hundreds of times, and waits before it reads until the
///     root
///                 window has the property GO
///     compositor  claims to be the compositor
///     swapped     takes its pictures by a connection of the other byte order
#include "platform/linux/x11/X11Connection.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using LinuxPlatform::XcbPointer;

struct Area {
    std::int16_t x;
    std::int16_t y;
    std::uint16_t width;
    std::uint16_t height;
};

/// A connection whose numbers begin with their highest byte, made by hand since no library makes one on a
/// machine where they begin with the lowest.
class SwappedConnection {
public:
    SwappedConnection() : socket_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string display = std::getenv("DISPLAY");
        const auto path = "/tmp/.X11-unix/X" + display.substr(1, display.find('.') - 1);
        std::ranges::copy(path, std::begin(address.sun_path));
        const auto* const place = reinterpret_cast<const sockaddr*>(&address);
        isOpen_ = ::connect(socket_, place, sizeof address) == 0 &&
                  send({'B', 0}, {protocolVersion, 0, 0, 0, 0}) && isAccepted();
    }

    ~SwappedConnection() { ::close(socket_); }
    SwappedConnection(const SwappedConnection&) = delete;
    SwappedConnection& operator=(const SwappedConnection&) = delete;

    /// Asks for a picture and waits for it.
    bool receive(xcb_drawable_t drawable, const Area& area) {
        constexpr std::uint16_t words = 5;
        constexpr std::uint16_t allPlanes = 0xFFFF;
        return isOpen_ &&
               send({XCB_GET_IMAGE, XCB_IMAGE_FORMAT_Z_PIXMAP},
                    {words, static_cast<std::uint16_t>(drawable >> 16U), static_cast<std::uint16_t>(drawable),
                     static_cast<std::uint16_t>(area.x), static_cast<std::uint16_t>(area.y), area.width,
                     area.height, allPlanes, allPlanes}) &&
               skipReply();
    }

private:
    static constexpr std::uint16_t protocolVersion = 11;
    static constexpr std::size_t unit = 4;
    static constexpr std::size_t replyHeader = 32;

    /// The two bytes, then the numbers, of which one of four bytes is two here, the higher half first.
    bool send(std::array<std::uint8_t, 2> start, std::initializer_list<std::uint16_t> numbers) {
        std::vector<std::uint8_t> bytes(start.begin(), start.end());
        for (const auto number : numbers) {
            bytes.push_back(static_cast<std::uint8_t>(number >> 8U));
            bytes.push_back(static_cast<std::uint8_t>(number));
        }
        return ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

    bool read(std::size_t size) {
        bytes_.resize(size);
        return ::recv(socket_, bytes_.data(), size, MSG_WAITALL) == static_cast<ssize_t>(size);
    }

    std::uint32_t numberAt(std::size_t offset, std::size_t size) const {
        std::uint32_t number = 0;
        for (std::size_t index = 0; index < size; ++index) {
            number = (number << 8U) | bytes_[offset + index];
        }
        return number;
    }

    bool isAccepted() {
        constexpr std::size_t header = 8;
        return read(header) && bytes_[0] == 1 && read(unit * numberAt(6, 2));
    }

    bool skipReply() { return read(replyHeader) && bytes_[0] == 1 && read(unit * numberAt(4, 4)); }

    int socket_;
    bool isOpen_ = false;
    std::vector<std::uint8_t> bytes_;
};

class Reader {
public:
    Reader(std::string name, std::string kind, Area area, std::set<std::string> options)
        : name_(std::move(name)),
          kind_(std::move(kind)),
          area_(area),
          options_(std::move(options)) {
        connect();
    }

    bool isConnected() const { return xcb_connection_has_error(connection_.get()) == 0; }

    void read() {
        if (options_.contains("reconnects")) {
            connect();
        }
        if (options_.contains("moves")) {
            constexpr int step = 37;
            area_.x = static_cast<std::int16_t>((area_.x + step) % screen_->width_in_pixels);
            area_.y = static_cast<std::int16_t>((area_.y + step) % screen_->height_in_pixels);
            area_.x = std::min<std::int16_t>(
                area_.x, static_cast<std::int16_t>(screen_->width_in_pixels - area_.width));
            area_.y = std::min<std::int16_t>(
                area_.y, static_cast<std::int16_t>(screen_->height_in_pixels - area_.height));
        }
        auto* const connection = connection_.get();
        if (kind_ == "copy" || kind_ == "copied") {
            xcb_copy_area(connection, screen_->root, pixmap_, context_, area_.x, area_.y, 0, 0, area_.width,
                          area_.height);
        } else if (kind_ == "scroll") {
            xcb_copy_area(connection, screen_->root, screen_->root, context_, area_.x, area_.y, area_.x,
                          area_.y, area_.width, area_.height);
        }
        if (kind_ == "image" && swapped_) {
            count_ += swapped_->receive(screen_->root, area_) ? 1U : 0U;
        } else if (kind_ == "image") {
            count_ += receive(screen_->root, area_) ? 1U : 0U;
        } else if (kind_ == "own" || kind_ == "copied") {
            count_ += receive(pixmap_, {0, 0, area_.width, area_.height}) ? 1U : 0U;
        } else {
            ++count_;
        }
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, screen_->root, atom(name_), XCB_ATOM_CARDINAL,
                            32, 1, &count_);
        xcb_flush(connection);
    }

    void makeNoise() {
        constexpr int copies = 500;
        for (int copy = 0; copy < copies; ++copy) {
            xcb_copy_area(connection_.get(), pixmap_, pixmap_, context_, 0, 0, 10, 10, 100, 100);
        }
        count_ = 0;
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, screen_->root, atom(name_),
                            XCB_ATOM_CARDINAL, 32, 1, &count_);
        xcb_flush(connection_.get());
    }

    bool mayGo() {
        const XcbPointer<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(connection_.get(),
                                   xcb_get_property(connection_.get(), 0, screen_->root, atom("GO"),
                                                    XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
                                   nullptr));
        return reply && reply->type != XCB_ATOM_NONE;
    }

private:
    void connect() {
        connection_.reset(xcb_connect(nullptr, nullptr));
        if (!isConnected()) {
            return;
        }
        auto* const connection = connection_.get();
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        pixmap_ = xcb_generate_id(connection);
        xcb_create_pixmap(connection, screen_->root_depth, pixmap_, screen_->root, area_.width, area_.height);
        context_ = xcb_generate_id(connection);
        const std::uint32_t includeInferiors = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
        xcb_create_gc(connection, context_, screen_->root, XCB_GC_SUBWINDOW_MODE, &includeInferiors);
        if (options_.contains("damage")) {
            xcb_damage_query_version(connection, 1, 1);
            xcb_damage_create(connection, xcb_generate_id(connection), screen_->root,
                              XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        }
        if (options_.contains("compositor")) {
            const auto window = xcb_generate_id(connection);
            xcb_create_window(connection, 0, window, screen_->root, 0, 0, 1, 1, 0,
                              XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
            xcb_set_selection_owner(connection, window, atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
        }
        if (options_.contains("swapped")) {
            swapped_.emplace();
        }
        xcb_flush(connection);
    }

    xcb_atom_t atom(const std::string& name) {
        const XcbPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            connection_.get(),
            xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
            nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    bool receive(xcb_drawable_t source, const Area& area) {
        const XcbPointer<xcb_get_image_reply_t> reply(
            xcb_get_image_reply(connection_.get(),
                                xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, source, area.x,
                                              area.y, area.width, area.height, ~0U),
                                nullptr));
        return reply != nullptr;
    }

    std::string name_;
    std::string kind_;
    Area area_;
    std::set<std::string> options_;
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_{nullptr, &xcb_disconnect};
    xcb_screen_t* screen_ = nullptr;
    xcb_pixmap_t pixmap_ = XCB_NONE;
    xcb_gcontext_t context_ = XCB_NONE;
    std::optional<SwappedConnection> swapped_;
    std::uint32_t count_ = 0;
};

} // namespace

int main(int argumentCount, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    constexpr std::size_t fixedWords = 7;
    if (words.size() < fixedWords) {
        return 2;
    }
    const Area area{
        static_cast<std::int16_t>(std::stoi(words[2])), static_cast<std::int16_t>(std::stoi(words[3])),
        static_cast<std::uint16_t>(std::stoi(words[4])), static_cast<std::uint16_t>(std::stoi(words[5]))};
    const std::chrono::milliseconds period(std::stoi(words[6]));
    const std::set<std::string> options(words.begin() + fixedWords, words.end());
    Reader reader(words[0], words[1], area, options);
    if (reader.isConnected() && options.contains("noisy")) {
        reader.makeNoise();
        while (reader.isConnected() && !reader.mayGo()) {
            std::this_thread::sleep_for(period);
        }
    }
    while (reader.isConnected()) {
        reader.read();
        std::this_thread::sleep_for(period);
    }
    return 0;
}
