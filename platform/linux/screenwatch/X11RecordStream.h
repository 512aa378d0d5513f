#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <xcb/record.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Names one connection to the X server: the part that the identifiers of all its resources share.
using X11ClientId = std::uint32_t;

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
        /// `bytes` begins with the request's header, in this machine's byte order.
        virtual void requestSent(X11ClientId client, Time time, std::span<const std::uint8_t> bytes) = 0;
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

    /// Hands over what has arrived without waiting for more. Returns its size in bytes.
    std::size_t drain(Receiver& receiver);

    /// Becomes readable when there is something to drain.
    int fileDescriptor() const { return xcb_get_file_descriptor(data_.get()); }
    bool isAlive() const { return xcb_connection_has_error(data_.get()) == 0; }

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
    std::uint32_t serverTimeAtStart_ = 0;
    std::chrono::steady_clock::time_point start_;
};

} // namespace LinuxPlatform
