#include "platform/linux/screenwatch/X11ScreenReaders.h"

#include "platform/linux/x11/X11ClientProcess.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

using Requests = X11RecordStream::Requests;

namespace SharedMemory {
constexpr std::uint8_t attach = 1;
constexpr std::uint8_t getImage = 4;
constexpr std::uint8_t createSegment = 7;
} // namespace SharedMemory
namespace Damage {
constexpr std::uint8_t create = 1;
} // namespace Damage
namespace Fixes {
constexpr std::uint8_t selectCursorInput = 3;
} // namespace Fixes

/// Longer than the time between two questions of somebody who asks regularly. For the time of a capture.
constexpr std::chrono::milliseconds longPause{5000};
constexpr std::chrono::milliseconds shortPause{100};
/// How long copies are counted.
constexpr std::chrono::milliseconds copiesPeriod{3000};
/// A client that copies so much, but not from the screen, is worth a look at what it holds.
constexpr unsigned manyCopies = 64;
/// So many are not worth their recording, whatever it holds.
constexpr unsigned tooManyCopies = 20'000;
/// The part of the screen, as one in so many, whose picture a screenshot takes from somewhere else.
constexpr int smallPart = 10;

ScreenArea areaAt(const X11Request& request, std::size_t place, std::size_t size) {
    return {request.number<std::int16_t>(place), request.number<std::int16_t>(place + 2),
            request.number<std::uint16_t>(size), request.number<std::uint16_t>(size + 2)};
}

} // namespace

std::unique_ptr<X11ScreenReaders> X11ScreenReaders::open(std::unique_ptr<X11Connection> control,
                                                         std::size_t mostBytesATurn,
                                                         std::function<void()> onCapture) {
    if (!control) {
        return nullptr;
    }
    std::unique_ptr<X11ScreenReaders> watch(
        new X11ScreenReaders(std::move(control), mostBytesATurn, std::move(onCapture)));
    return watch->startRecording() ? std::move(watch) : nullptr;
}

X11ScreenReaders::X11ScreenReaders(std::unique_ptr<X11Connection> control, std::size_t mostBytesATurn,
                                   std::function<void()> onCapture)
    : control_(std::move(control)),
      mostBytesATurn_(mostBytesATurn),
      onCapture_(std::move(onCapture)),
      screenWidth_(control_->screen().width_in_pixels),
      screenHeight_(control_->screen().height_in_pixels) {
    sharedMemory_ = extension("MIT-SHM");
    damage_ = extension("DAMAGE");
    fixes_ = extension("XFIXES");
    const auto* const resources = xcb_get_extension_data(control_->get(), &xcb_res_id);
    if (resources != nullptr && resources->present != 0) {
        constexpr std::uint8_t major = 1;
        constexpr std::uint8_t minor = 2;
        const auto version = control_->reply<xcb_res_query_version_reply>(
            xcb_res_query_version(control_->get(), major, minor));
        canTellClients_ = version && std::pair(version->server_major, version->server_minor) >=
                                         std::pair<std::uint16_t, std::uint16_t>(major, minor);
    }
    const std::array<std::string_view, 4> names{"DamageExt", "ShmSeg", "XFixesCursorClient", "_NET_WM_CM_S0"};
    const auto atoms = control_->atoms(names);
    types_ = {atoms[0], atoms[1], atoms[2]};
    compositorSelection_ = atoms[3];
}

std::uint8_t X11ScreenReaders::extension(std::string_view name) {
    const auto reply = control_->reply<xcb_query_extension_reply>(
        xcb_query_extension(control_->get(), static_cast<std::uint16_t>(name.size()), name.data()));
    return reply && reply->present != 0 ? reply->major_opcode : std::uint8_t{0};
}

bool X11ScreenReaders::startRecording() {
    stream_ = X11RecordStream::open(*control_, wideRequests());
    if (!stream_) {
        return false;
    }
    notifier_ = std::make_unique<QSocketNotifier>(stream_->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { drainUnasked(); });
    pause_.setSingleShot(true);
    QObject::connect(&pause_, &QTimer::timeout, &pause_, [this] { goOn(); });
    return true;
}

std::vector<Requests> X11ScreenReaders::narrowRequests() const {
    std::vector<Requests> requests{{XCB_GET_IMAGE, XCB_GET_IMAGE}};
    if (sharedMemory_ != 0) {
        requests.push_back({SharedMemory::attach, SharedMemory::attach, sharedMemory_});
        requests.push_back({SharedMemory::getImage, SharedMemory::createSegment, sharedMemory_});
    }
    if (damage_ != 0) {
        requests.push_back({Damage::create, Damage::create, damage_});
    }
    if (fixes_ != 0) {
        requests.push_back({Fixes::selectCursorInput, Fixes::selectCursorInput, fixes_});
    }
    return requests;
}

std::vector<Requests> X11ScreenReaders::wideRequests() const {
    auto requests = narrowRequests();
    requests.push_back({XCB_COPY_AREA, XCB_COPY_AREA});
    return requests;
}

std::optional<bool> X11ScreenReaders::isCapture() {
    const bool wasCaptured = isCaptured_;
    const bool hasNews = drain() > 0;
    lookIntoOtherCopies();
    const bool isCaptured = judgeReaders();
    // The end of a rest would wake this process up once for each question.
    if (hasNews || isCaptured || wasCaptured) {
        rest();
    }
    if (isCaptured) {
        return true;
    }
    return isBehind_ ? std::nullopt : std::optional(false);
}

void X11ScreenReaders::drainUnasked() {
    ++wakeUps_;
    drain();
    if (stream_->now() - lookedIntoCopies_ >= copiesPeriod) {
        lookIntoOtherCopies();
    }
    const bool isNews = !isCaptured_ && isAnyConspicuous() && judgeReaders();
    rest();
    if (isNews && onCapture_) {
        onCapture_();
    }
}

std::size_t X11ScreenReaders::drain() {
    const auto size = stream_->drain(*this, mostBytesATurn_);
    isBehind_ = size >= mostBytesATurn_;
    return size;
}

void X11ScreenReaders::rest() {
    notifier_->setEnabled(false);
    // What is left may be in this process already, where it makes nothing readable.
    pause_.start(isBehind_ ? std::chrono::milliseconds(0) : isCaptured_ ? longPause : shortPause);
}

bool X11ScreenReaders::isAnyConspicuous() const {
    return std::ranges::any_of(clients_, [](const auto& entry) {
        return entry.second.reads && entry.second.reads->isConspicuous();
    });
}

bool X11ScreenReaders::judgeReaders() {
    const auto suspects = readers();
    isCaptured_ = !suspects.empty() && judge(suspects);
    return isCaptured_;
}

void X11ScreenReaders::goOn() {
    if (isBehind_) {
        drainUnasked();
    } else {
        notifier_->setEnabled(isAlive());
    }
}

void X11ScreenReaders::clientStarted(X11ClientId client) {
    const auto earlier = clients_.extract(client);
    // What was asked for the client before may have met this one.
    if (!earlier.empty() && !earlier.mapped().isWide) {
        stream_->setRequests(client, wideRequests());
    }
}

void X11ScreenReaders::clientDied(X11ClientId client) {
    const auto found = clients_.find(client);
    if (found == clients_.end()) {
        return;
    }
    if (found->second.isWide) {
        clients_.erase(found);
    } else {
        found->second = {.reads = {}, .otherCopies = 0, .isWide = false};
    }
}

void X11ScreenReaders::requestSent(X11ClientId client, X11RecordStream::Time time,
                                   const X11Request& request) {
    const auto major = request.major();
    const auto minor = request.minor();
    if (major == XCB_GET_IMAGE || (major == sharedMemory_ && minor == SharedMemory::getImage)) {
        imageRead(client, time, request);
    } else if (major == XCB_COPY_AREA) {
        areaCopied(client, time, request);
    } else {
        // It prepares for what grabbers do, and may copy next.
        widen(client);
        if (major == damage_ && request.number<xcb_drawable_t>(8) == control_->root()) {
            readsOf(client).followScreen(time);
        }
    }
}

void X11ScreenReaders::imageRead(X11ClientId client, X11RecordStream::Time time, const X11Request& request) {
    const auto drawable = request.number<xcb_drawable_t>(4);
    const auto area = areaAt(request, 8, 12);
    if (drawable == control_->root()) {
        screenRead(client, time, area);
    } else if (area.width * area.height >= screenWidth_ * screenHeight_ / smallPart) {
        // Perhaps a copy of the screen.
        widen(client);
    }
}

void X11ScreenReaders::areaCopied(X11ClientId client, X11RecordStream::Time time, const X11Request& request) {
    const auto source = request.number<xcb_drawable_t>(4);
    const auto target = request.number<xcb_drawable_t>(8);
    if (source == control_->root() && target != control_->root()) {
        screenRead(client, time, areaAt(request, 16, 24));
    } else {
        ++clients_[client].otherCopies;
    }
}

void X11ScreenReaders::screenRead(X11ClientId client, X11RecordStream::Time time, const ScreenArea& area) {
    readsOf(client).add(time, area);
}

ScreenReads& X11ScreenReaders::readsOf(X11ClientId client) {
    auto& reads = clients_[client].reads;
    if (!reads) {
        receiveScreenSize(xcb_get_geometry(control_->get(), control_->root()));
        reads.emplace(screenWidth_, screenHeight_);
    }
    return *reads;
}

void X11ScreenReaders::receiveScreenSize(xcb_get_geometry_cookie_t question) {
    if (const auto size = control_->reply<xcb_get_geometry_reply>(question)) {
        screenWidth_ = size->width;
        screenHeight_ = size->height;
    }
}

void X11ScreenReaders::widen(X11ClientId client) {
    const auto found = clients_.find(client);
    if (found != clients_.end() && !std::exchange(found->second.isWide, true)) {
        stream_->setRequests(client, wideRequests());
    }
}

void X11ScreenReaders::narrow(X11ClientId client) {
    if (std::exchange(clients_[client].isWide, false)) {
        stream_->setRequests(client, narrowRequests());
    }
}

void X11ScreenReaders::lookIntoOtherCopies() {
    lookedIntoCopies_ = stream_->now();
    std::vector<std::pair<X11ClientId, xcb_res_query_client_resources_cookie_t>> questions;
    for (auto& [id, client] : clients_) {
        const auto copies = std::exchange(client.otherCopies, 0);
        if (!client.isWide || client.reads || copies < manyCopies) {
            continue;
        }
        if (copies >= tooManyCopies || !canTellClients_) {
            narrow(id);
        } else {
            questions.emplace_back(id, xcb_res_query_client_resources(control_->get(), id));
        }
    }
    for (const auto& [id, question] : questions) {
        const auto answer = holdings(question);
        if (answer && !answer->hasWhatGrabbersHold) {
            narrow(id);
        }
    }
}

std::vector<X11ClientId> X11ScreenReaders::readers() {
    std::vector<X11ClientId> found;
    const auto now = stream_->now();
    for (auto& [id, client] : clients_) {
        if (client.reads && client.reads->isOver(now)) {
            client.reads.reset();
        }
        if (client.reads) {
            found.push_back(id);
        }
    }
    std::erase_if(clients_, [](const auto& entry) { return entry.second.isWide && !entry.second.reads; });
    return found;
}

bool X11ScreenReaders::judge(const std::vector<X11ClientId>& readers) {
    const auto now = stream_->now();
    if (!canTellClients_) {
        return std::ranges::any_of(readers,
                                   [&](auto id) { return clients_[id].reads->isCapture(now, false); });
    }
    // All questions in one go.
    const auto size = xcb_get_geometry(control_->get(), control_->root());
    const auto compositor = xcb_get_selection_owner(control_->get(), compositorSelection_);
    std::vector<std::pair<xcb_res_query_client_resources_cookie_t, xcb_res_query_client_ids_cookie_t>>
        questions;
    for (const auto id : readers) {
        questions.emplace_back(xcb_res_query_client_resources(control_->get(), id),
                               askClientProcess(*control_, id));
    }
    receiveScreenSize(size);
    const auto owner = control_->reply<xcb_get_selection_owner_reply>(compositor);
    const auto idMask = xcb_get_setup(control_->get())->resource_id_mask;
    bool isCaptured = false;
    for (std::size_t index = 0; index < readers.size(); ++index) {
        const auto id = readers[index];
        clients_[id].reads->setScreenSize(screenWidth_, screenHeight_);
        const auto held = holdings(questions[index].first);
        const auto reader = receiveClientProcess(*control_, questions[index].second);
        // It is told of changes for its own work.
        const bool isCompositor = owner && owner->owner != XCB_WINDOW_NONE && (owner->owner & ~idMask) == id;
        if (!held) {
            // It is gone.
            clients_[id].reads.reset();
        } else if (reader != static_cast<std::uint32_t>(getpid()) &&
                   clients_[id].reads->isCapture(now, held->followsChanges && !isCompositor)) {
            isCaptured = true;
        }
    }
    return isCaptured;
}

std::optional<X11ScreenReaders::Holdings>
X11ScreenReaders::holdings(xcb_res_query_client_resources_cookie_t cookie) {
    const auto reply = control_->reply<xcb_res_query_client_resources_reply>(cookie);
    if (!reply) {
        return std::nullopt;
    }
    Holdings held;
    const std::span types(xcb_res_query_client_resources_types(reply.get()),
                          static_cast<std::size_t>(xcb_res_query_client_resources_types_length(reply.get())));
    for (const auto& type : types) {
        const auto name = type.resource_type;
        held.followsChanges = held.followsChanges || name == types_.damage;
        held.hasWhatGrabbersHold = held.hasWhatGrabbersHold || name == types_.damage ||
                                   name == types_.sharedMemory || name == types_.cursorClient;
    }
    return held;
}

} // namespace LinuxPlatform
