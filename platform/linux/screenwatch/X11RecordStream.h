#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <xcb/record.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Names one connection to the X server: the part that the identifiers of all its resources share.
using X11ClientId = std::uint32_t;

/// A request as its client sent it, whose byte order may be another one than this machine's.
class X11Request {
public:
    X11Request(std::span<const std::uint8_t> bytes, bool isSwapped) : bytes_(bytes), isSwapped_(isSwapped) {}

    /// The numbers that tell requests apart; the second one's meaning is that of the extension.
    std::uint8_t major() const { return bytes_[0]; }
    std::uint8_t minor() const { return bytes_[1]; }

    /// The number at that place of the request; 0 beyond its end.
    template <class Number>
    Number number(std::size_t offset) const {
        std::array<std::uint8_t, sizeof(Number)> bytes{};
        if (offset + bytes.size() > bytes_.size()) {
            return 0;
        }
        std::ranges::copy(bytes_.subspan(offset, bytes.size()), bytes.begin());
        if (isSwapped_) {
            std::ranges::reverse(bytes);
        }
        return std::bit_cast<Number>(bytes);
    }

private:
    /// At least a header of four.
    std::span<const std::uint8_t> bytes_;
    bool isSwapped_;
};

/// Requests that other programs send to the X server, as its RECORD extension (version 1.13) copies them.
class X11RecordStream {
public:
    using Time = std::chrono::milliseconds;

    /// Requests with consecutive numbers; of an extension if it has a major number.
    struct Requests {
        std::uint8_t first = 0;
        std::uint8_t last = 0;
        std::uint8_t extension = 0;
    };

    /// Told what has arrived, in its order.
    class Receiver {
    public:
        virtual ~Receiver() = default;
        virtual void clientStarted(X11ClientId client) = 0;
        virtual void clientDied(X11ClientId client) = 0;
        virtual void requestSent(X11ClientId client, Time time, const X11Request& request) = 0;
    };

    /// Null when the server does not have the extension. `control` outlives the stream. At first these
    /// requests of all clients are recorded, those of later ones too.
    static std::unique_ptr<X11RecordStream> open(X11Connection& control,
                                                 const std::vector<Requests>& requests);

    ~X11RecordStream();
    X11RecordStream(const X11RecordStream&) = delete;
    X11RecordStream& operator=(const X11RecordStream&) = delete;

    /// From now on other requests of that client are recorded. One that is gone is no harm.
    void setRequests(X11ClientId client, const std::vector<Requests>& requests);

    /// Hands over what has arrived, without waiting for more, until it is that much. Returns its size in
    /// bytes.
    std::size_t drain(Receiver& receiver, std::size_t mostBytes);

    /// Becomes readable when there is something to drain.
    int fileDescriptor() const { return xcb_get_file_descriptor(data_.get()); }
    /// False once nothing more can arrive.
    bool isAlive() const { return !hasEnded_ && xcb_connection_has_error(data_.get()) == 0; }

    /// The time of the server, by which requests are dated.
    Time now() const;

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;
    using Reply = XcbPointer<xcb_record_enable_context_reply_t>;

    X11RecordStream(X11Connection& control, Connection data, xcb_record_context_t context);

    Reply poll();
    bool start();
    void handOver(const xcb_record_enable_context_reply_t& reply, Receiver& receiver);
    /// The server's clock is a number that runs over every seven weeks.
    Time fullTime(std::uint32_t serverTime) const;

    X11Connection& control_;
    Connection data_;
    xcb_record_context_t context_;
    unsigned sequence_ = 0;
    bool hasEnded_ = false;
    std::uint32_t serverTimeAtStart_ = 0;
    std::chrono::steady_clock::time_point start_;
};

} // namespace LinuxPlatform
