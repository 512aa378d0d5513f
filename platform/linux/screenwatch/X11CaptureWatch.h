#pragma once

#include "platform/linux/screenwatch/CaptureWatch.h"
#include "platform/linux/screenwatch/ScreenReads.h"
#include "platform/linux/screenwatch/X11RecordStream.h"
#include "platform/linux/x11/X11Connection.h"

#include <QSocketNotifier>
#include <QTimer>

#include <xcb/res.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace LinuxPlatform {

/// Finds X clients that capture the screen: those that read the root window again and again. RECORD tells who
/// reads what, X-Resource (version 1.2) who that is and what it holds.
///
/// Reads are copied by the server and dated by it, so nobody has to be awake when they happen. While somebody
/// asks every few seconds this object never wakes up by itself, and while nobody reads the screen it never
/// does at all.
class X11CaptureWatch : public CaptureWatch, private X11RecordStream::Receiver {
public:
    /// Null when the X server does not tell what is read.
    static std::unique_ptr<X11CaptureWatch> open();

    ~X11CaptureWatch() override = default;
    X11CaptureWatch(const X11CaptureWatch&) = delete;
    X11CaptureWatch& operator=(const X11CaptureWatch&) = delete;

    bool isScreenCaptured() override;

    /// How often an answer had to wait for the X server so far.
    std::uint64_t roundTrips() const { return control_->roundTrips(); }
    /// How often it woke up by itself.
    std::uint64_t wakeUps() const { return wakeUps_; }

private:
    struct Client {
        std::optional<ScreenReads> reads;
        /// Copies from other sources than the screen since this was last looked into.
        unsigned otherCopies = 0;
        /// Whether its copies are recorded.
        bool isWide = true;
    };

    struct ResourceTypes {
        xcb_atom_t damage = XCB_ATOM_NONE;
        xcb_atom_t sharedMemory = XCB_ATOM_NONE;
        xcb_atom_t cursorClient = XCB_ATOM_NONE;
    };

    /// What a client holds in the server, as far as it matters here.
    struct Holdings {
        bool followsChanges = false;
        bool hasWhatGrabbersHold = false;
    };

    explicit X11CaptureWatch(std::unique_ptr<X11Connection> control);

    bool startRecording();
    std::vector<X11RecordStream::Requests> narrowRequests() const;
    std::vector<X11RecordStream::Requests> wideRequests() const;
    std::uint8_t extension(std::string_view name);

    void clientStarted(X11ClientId client) override;
    void clientDied(X11ClientId client) override;
    void requestSent(X11ClientId client, X11RecordStream::Time time,
                     std::span<const std::uint8_t> bytes) override;
    void imageRead(X11ClientId client, X11RecordStream::Time time, std::span<const std::uint8_t> bytes);
    void areaCopied(X11ClientId client, X11RecordStream::Time time, std::span<const std::uint8_t> bytes);
    void screenRead(X11ClientId client, X11RecordStream::Time time, const ScreenArea& area);
    void widen(X11ClientId client);
    void narrow(X11ClientId client);

    void drain();
    void drainUnasked();
    void lookIntoOtherCopies();
    std::vector<X11ClientId> readers();
    bool judge(const std::vector<X11ClientId>& readers);
    /// The size of the screen as it is now, not as it was when the connection began.
    void receiveScreenSize(xcb_get_geometry_cookie_t question);
    std::optional<Holdings> holdings(xcb_res_query_client_resources_cookie_t cookie);

    std::unique_ptr<X11Connection> control_;
    std::unique_ptr<X11RecordStream> stream_;
    std::uint8_t sharedMemory_ = 0;
    std::uint8_t damage_ = 0;
    std::uint8_t fixes_ = 0;
    bool canTellClients_ = false;
    ResourceTypes types_;
    xcb_atom_t compositorSelection_ = XCB_ATOM_NONE;
    int screenWidth_;
    int screenHeight_;

    /// Those of which there is something to know.
    std::map<X11ClientId, Client> clients_;
    std::unique_ptr<QSocketNotifier> notifier_;
    QTimer pause_;
    std::uint64_t wakeUps_ = 0;
};

} // namespace LinuxPlatform
