#pragma once

#include "platform/linux/screenwatch/ScreenReads.h"
#include "platform/linux/screenwatch/X11RecordStream.h"
#include "platform/linux/x11/X11Connection.h"

#include <QSocketNotifier>
#include <QTimer>

#include <xcb/res.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace LinuxPlatform {

/// Finds X clients that capture the screen: those that read the root window again and again. RECORD tells who
/// reads what, X-Resource (version 1.2) who that is and what it holds.
///
/// Reads are copied by the server and dated by it, so nobody has to be awake when they happen. While nobody
/// reads the screen or does what may come before, this object does not wake up; then it does up to ten times
/// a second, until it is known that somebody captures the screen, and from there on every few seconds.
class X11ScreenReaders : private X11RecordStream::Receiver {
public:
    /// Much more than comes together between two questions when nothing is amiss.
    static constexpr std::size_t usualBytesATurn = std::size_t{4} << 20U;

    /// Null when the X server does not tell what is read, or when there is none. No turn of the event loop
    /// takes in much more than so many bytes. `onCapture` is called from the event loop when a capture shows
    /// before anybody asks.
    static std::unique_ptr<X11ScreenReaders> open(std::unique_ptr<X11Connection> control,
                                                  std::size_t mostBytesATurn = usualBytesATurn,
                                                  std::function<void()> onCapture = {});

    ~X11ScreenReaders() override = default;
    X11ScreenReaders(const X11ScreenReaders&) = delete;
    X11ScreenReaders& operator=(const X11ScreenReaders&) = delete;

    /// Whether one of them captures the screen; absent while more is told of them than can be looked through
    /// at once.
    std::optional<bool> isCapture();
    /// False once the server tells no more.
    bool isAlive() const { return control_->isAlive() && stream_->isAlive(); }

    /// How often an answer had to wait for the X server so far.
    std::uint64_t roundTrips() const { return control_->roundTrips(); }
    /// How often it woke up by itself.
    std::uint64_t wakeUps() const { return wakeUps_; }
    /// Whether it is about to wake up, be there news or not.
    bool isAboutToWakeUp() const { return pause_.isActive(); }

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

    X11ScreenReaders(std::unique_ptr<X11Connection> control, std::size_t mostBytesATurn,
                     std::function<void()> onCapture);

    bool startRecording();
    std::vector<X11RecordStream::Requests> narrowRequests() const;
    std::vector<X11RecordStream::Requests> wideRequests() const;
    std::uint8_t extension(std::string_view name);

    void clientStarted(X11ClientId client) override;
    void clientDied(X11ClientId client) override;
    void requestSent(X11ClientId client, X11RecordStream::Time time, const X11Request& request) override;
    void imageRead(X11ClientId client, X11RecordStream::Time time, const X11Request& request);
    void areaCopied(X11ClientId client, X11RecordStream::Time time, const X11Request& request);
    void screenRead(X11ClientId client, X11RecordStream::Time time, const ScreenArea& area);
    ScreenReads& readsOf(X11ClientId client);
    void widen(X11ClientId client);
    void narrow(X11ClientId client);

    /// Returns how many bytes there were.
    std::size_t drain();
    void drainUnasked();
    void rest();
    void goOn();
    bool isAnyConspicuous() const;
    bool judgeReaders();
    void lookIntoOtherCopies();
    std::vector<X11ClientId> readers();
    bool judge(const std::vector<X11ClientId>& readers);
    /// The size of the screen as it is now, not as it was when the connection began.
    void receiveScreenSize(xcb_get_geometry_cookie_t question);
    std::optional<Holdings> holdings(xcb_res_query_client_resources_cookie_t cookie);

    std::unique_ptr<X11Connection> control_;
    std::unique_ptr<X11RecordStream> stream_;
    std::size_t mostBytesATurn_;
    std::function<void()> onCapture_;
    /// As it was last judged.
    bool isCaptured_ = false;
    X11RecordStream::Time lookedIntoCopies_{0};
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
    /// Whether something is left that was not looked at.
    bool isBehind_ = false;
    std::uint64_t wakeUps_ = 0;
};

} // namespace LinuxPlatform
