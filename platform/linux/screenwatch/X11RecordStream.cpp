#include "platform/linux/screenwatch/X11RecordStream.h"

#include <xcb/xcbext.h>

#include <array>
#include <utility>

namespace LinuxPlatform {
namespace {

using RecordRanges = std::vector<xcb_record_range_t>;

/// What a reply of the stream may hold.
enum Category : std::uint8_t {
    fromClient = 1,
    clientStarted = 2,
    clientDied = 3,
    startOfData = 4,
    endOfData = 5
};

constexpr std::size_t unit = 4;
constexpr std::size_t headerSize = 4;

RecordRanges rangesOf(const std::vector<X11RecordStream::Requests>& requests) {
    RecordRanges ranges;
    for (const auto& [first, last, extension] : requests) {
        xcb_record_range_t range{};
        if (extension == 0) {
            range.core_requests = {first, last};
        } else {
            range.ext_requests.major = {extension, extension};
            range.ext_requests.minor = {first, last};
        }
        ranges.push_back(range);
    }
    xcb_record_range_t lives{};
    lives.client_started = 1;
    lives.client_died = 1;
    ranges.push_back(lives);
    return ranges;
}

/// The size of the request that the bytes begin with, 0 when they do not hold one.
std::size_t requestSize(std::span<const std::uint8_t> bytes, bool isSwapped) {
    if (bytes.size() < headerSize) {
        return 0;
    }
    const X11Request request(bytes, isSwapped);
    auto size = unit * request.number<std::uint16_t>(2);
    if (size == 0) {
        size = unit * request.number<std::uint32_t>(headerSize);
    }
    return size < headerSize || size > bytes.size() ? 0 : size;
}

} // namespace

std::unique_ptr<X11RecordStream> X11RecordStream::open(X11Connection& control,
                                                       const std::vector<Requests>& requests) {
    const auto* const extension = xcb_get_extension_data(control.get(), &xcb_record_id);
    if (extension == nullptr || extension->present == 0) {
        return nullptr;
    }
    Connection data(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(data.get()) != 0) {
        return nullptr;
    }
    const auto context = xcb_generate_id(control.get());
    const auto ranges = rangesOf(requests);
    const xcb_record_client_spec_t everybody = XCB_RECORD_CS_ALL_CLIENTS;
    // Each connection says which version it speaks.
    const std::array versions{
        control.reply<xcb_record_query_version_reply>(
            xcb_record_query_version(control.get(), XCB_RECORD_MAJOR_VERSION, XCB_RECORD_MINOR_VERSION)),
        XcbPointer<xcb_record_query_version_reply_t>(xcb_record_query_version_reply(
            data.get(),
            xcb_record_query_version(data.get(), XCB_RECORD_MAJOR_VERSION, XCB_RECORD_MINOR_VERSION),
            nullptr))};
    const XcbPointer<xcb_generic_error_t> error(xcb_request_check(
        control.get(), xcb_record_create_context_checked(control.get(), context, 0, 1,
                                                         static_cast<std::uint32_t>(ranges.size()),
                                                         &everybody, ranges.data())));
    if (!versions[0] || !versions[1] || error) {
        return nullptr;
    }
    std::unique_ptr<X11RecordStream> stream(new X11RecordStream(control, std::move(data), context));
    return stream->start() ? std::move(stream) : nullptr;
}

X11RecordStream::X11RecordStream(X11Connection& control, Connection data, xcb_record_context_t context)
    : control_(control),
      data_(std::move(data)),
      context_(context) {}

X11RecordStream::~X11RecordStream() {
    xcb_record_free_context(control_.get(), context_);
    control_.flush();
}

bool X11RecordStream::start() {
    sequence_ = xcb_record_enable_context(data_.get(), context_).sequence;
    // The first reply says that the stream begins, and when that is.
    const Reply reply(xcb_record_enable_context_reply(data_.get(), {sequence_}, nullptr));
    if (!reply || reply->category != startOfData) {
        return false;
    }
    start_ = std::chrono::steady_clock::now();
    serverTimeAtStart_ = reply->server_time;
    return true;
}

void X11RecordStream::setRequests(X11ClientId client, const std::vector<Requests>& requests) {
    const auto ranges = rangesOf(requests);
    // One by one, since one that has gone in the meantime fails the whole request.
    xcb_record_register_clients(control_.get(), context_, 0, 1, static_cast<std::uint32_t>(ranges.size()),
                                &client, ranges.data());
    control_.flush();
}

std::size_t X11RecordStream::drain(Receiver& receiver, std::size_t mostBytes) {
    std::size_t size = 0;
    while (size < mostBytes) {
        const auto reply = poll();
        if (!reply) {
            break;
        }
        size += sizeof *reply + static_cast<std::size_t>(xcb_record_enable_context_data_length(reply.get()));
        handOver(*reply, receiver);
    }
    return size;
}

X11RecordStream::Reply X11RecordStream::poll() {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    xcb_poll_for_reply(data_.get(), sequence_, &reply, &error);
    const XcbPointer<xcb_generic_error_t> ownedError(error);
    return Reply(static_cast<xcb_record_enable_context_reply_t*>(reply));
}

void X11RecordStream::handOver(const xcb_record_enable_context_reply_t& reply, Receiver& receiver) {
    if (reply.category == clientStarted) {
        receiver.clientStarted(reply.xid_base);
    } else if (reply.category == clientDied) {
        receiver.clientDied(reply.xid_base);
    } else if (reply.category == endOfData) {
        hasEnded_ = true;
    } else if (reply.category == fromClient) {
        const bool isSwapped = reply.client_swapped != 0;
        std::span<const std::uint8_t> bytes(
            xcb_record_enable_context_data(&reply),
            static_cast<std::size_t>(xcb_record_enable_context_data_length(&reply)));
        const auto time = fullTime(reply.server_time);
        while (const auto size = requestSize(bytes, isSwapped)) {
            receiver.requestSent(reply.xid_base, time, {bytes.first(size), isSwapped});
            bytes = bytes.subspan(size);
        }
    }
}

X11RecordStream::Time X11RecordStream::now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - start_);
}

X11RecordStream::Time X11RecordStream::fullTime(std::uint32_t serverTime) const {
    const auto estimate = now();
    const auto expected = serverTimeAtStart_ + static_cast<std::uint32_t>(estimate.count());
    return estimate + Time(static_cast<std::int32_t>(serverTime - expected));
}

} // namespace LinuxPlatform
