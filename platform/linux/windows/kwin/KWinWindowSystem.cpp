#include "platform/linux/windows/kwin/KWinWindowSystem.h"

#include "platform/linux/windows/kwin/KWinScripts.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace LinuxPlatform {
namespace {

const QString busName = QStringLiteral("org.kde.KWin");
const QString watcherName = QStringLiteral("curtain-windows");
const QString requestsName = QStringLiteral("curtain-requests");
const QString farewellName = QStringLiteral("curtain-farewell");

/// However busy KWin is, it has answered by then, or it will not.
constexpr Platform::MainQueue::Seconds answerDeadline{5};
constexpr Platform::MainQueue::Seconds pauseBetweenTries{0.5};
/// What has been asked takes a few milliseconds.
constexpr Platform::MainQueue::Seconds patience{1};
/// Somebody may have unloaded the script, of which nothing tells.
constexpr Platform::MainQueue::Seconds lookInterval{2};

} // namespace

KWinWindowSystem::KWinWindowSystem(const QDBusConnection& bus, Platform::MainQueue& queue,
                                   std::filesystem::path folder)
    : queue_(queue),
      scripting_(bus, queue, std::move(folder)),
      listener_(bus, queue, [this](const QString& sender, const QByteArray& text) { receive(sender, text); }),
      stateSince_(queue.now()),
      lookedAt_(queue.now()),
      leaving_(queue),
      activation_(
          queue, [this] { return lookAtScene(); },
          [this](WindowId window) { request(KWinRequests::Act::activate, std::array{window}); }),
      events_(queue, leaving_,
              [this](WindowId window) {
                  const auto* const found = model_.find(window);
                  return found != nullptr ? std::optional(*found) : std::nullopt;
              }),
      kwin_(bus, busName, [this] { beginAnew(); }) {}

KWinWindowSystem::~KWinWindowSystem() {
    if (kwin_.owner().isEmpty()) {
        return;
    }
    // Without a farewell the watcher goes on returning to the switchers what its user brings back.
    if (!hasHidden_ ||
        scripting_.runAndWait(kwin_.owner(), farewellName, KWinScripts::farewell(listener_.address()))) {
        scripting_.unload(kwin_.owner(), watcherName);
    }
    scripting_.unload(kwin_.owner(), requestsName);
}

// Whether KWin works for us

std::optional<Platform::HidingObstacle> KWinWindowSystem::hidingObstacle() {
    look();
    if (state_ == State::ready && !isBusy()) {
        return std::nullopt;
    }
    return state_ == State::failed ? Platform::HidingObstacle::waylandSession
                                   : Platform::HidingObstacle::notKnownYet;
}

bool KWinWindowSystem::knowsEveryWindow() {
    return state_ == State::ready;
}

bool KWinWindowSystem::isBusy() const {
    return requestedAt_ && queue_.now() - *requestedAt_ > patience;
}

void KWinWindowSystem::setState(State state) {
    state_ = state;
    stateSince_ = queue_.now();
}

void KWinWindowSystem::beginAnew() {
    setState(State::starting);
    loadWatcher();
    // The watcher that had it is gone.
    answerIsLost();
}

void KWinWindowSystem::loadWatcher() {
    isListed_ = false;
    ++load_;
    isLoading_ = !kwin_.owner().isEmpty();
    if (!isLoading_) {
        return;
    }
    scripting_.run(
        kwin_.owner(), watcherName, KWinScripts::watcher(listener_.address(), load_, isNewRun_),
        [this] { return isListed_; },
        [this, load = load_](bool isRunning) {
            if (load != load_) {
                return;
            }
            isLoading_ = false;
            if (!isRunning) {
                watcherFailed();
            }
        });
}

void KWinWindowSystem::loadWatcherAfter(Seconds pause) {
    queue_.asyncAfter(pause, lifetime_.weak([this, load = load_] {
        if (load == load_) {
            loadWatcher();
        }
    }));
}

void KWinWindowSystem::watcherFailed() {
    if (state_ == State::starting && queue_.now() - stateSince_ < answerDeadline) {
        loadWatcherAfter(pauseBetweenTries);
        return;
    }
    setState(State::failed);
    keepTrying();
}

void KWinWindowSystem::keepTrying() {
    // Nobody may look for a long time, and windows wait to be shown.
    if (state_ == State::failed && !isLoading_ && !requests_.isEmpty()) {
        loadWatcherAfter(answerDeadline);
    }
}

void KWinWindowSystem::look() {
    const auto now = queue_.now();
    if (now - lookedAt_ < lookInterval) {
        return;
    }
    lookedAt_ = now;
    if (state_ == State::ready) {
        scripting_.askWhetherLoaded(kwin_.owner(), watcherName, [this, load = load_](bool isLoaded) {
            if (!isLoaded && load == load_) {
                beginAnew();
            }
        });
    } else if (now - stateSince_ > answerDeadline) {
        setState(State::failed);
        loadWatcher();
    }
}

// What there is

std::uint64_t KWinWindowSystem::generation() {
    return model_.generation();
}

const std::vector<Window>& KWinWindowSystem::windows() {
    return model_.windows();
}

bool KWinWindowSystem::exists(WindowId window) const {
    return model_.find(window) != nullptr;
}

void KWinWindowSystem::receive(const QString& sender, const QByteArray& text) {
    const auto report = QJsonDocument::fromJson(text).object();
    if (sender != kwin_.owner()) {
        return;
    }
    const auto event = report.value(QLatin1String("event")).toString();
    if (event == QStringLiteral("done")) {
        // Whatever watcher there is by now.
        noteDone(report.value(QLatin1String("request")).toInteger());
        return;
    }
    if (report.value(QLatin1String("load")).toInteger() != static_cast<qint64>(load_)) {
        return;
    }
    takeNoteOf(model_.take(report));
    if (event == QStringLiteral("list")) {
        isListed_ = true;
        isNewRun_ = false;
        setState(State::ready);
        sendRequests();
    }
}

void KWinWindowSystem::noteDone(qint64 request) {
    if (request == static_cast<qint64>(lastRequest_) && requestedAt_) {
        isRequestDone_ = true;
        if (std::exchange(isAnswered_, false)) {
            requestsEnded(true);
        }
    }
}

void KWinWindowSystem::takeNoteOf(const KWinWindowModel::Changes& changes) {
    for (const auto window : changes.opened) {
        events_.announce(WindowEvent::opened, window);
    }
    for (const auto window : changes.returned) {
        events_.announce(WindowEvent::activated, window);
    }
    if (changes.activated && !leaving_.contains(*changes.activated)) {
        events_.announce(WindowEvent::activated, *changes.activated);
    }
}

Platform::Subscription KWinWindowSystem::addEventHandler(EventHandler handler) {
    return events_.addHandler(std::move(handler));
}

// What is asked

void KWinWindowSystem::hide(std::span<const WindowId> windows) {
    activation_.forget([this](WindowId window) { return !exists(window); });
    activation_.noteHiding(windows, model_.active());
    leaving_.add(windows);
    hasHidden_ = true;
    request(KWinRequests::Act::hide, windows);
}

void KWinWindowSystem::show(std::span<const WindowId> windows) {
    leaving_.remove([&](WindowId window) { return std::ranges::find(windows, window) != windows.end(); });
    request(KWinRequests::Act::show, windows);
}

bool KWinWindowSystem::isShowAwaited(WindowId window) const {
    const auto name = model_.nameOf(window);
    return requests_.shows(name) || KWinRequests::shows(sent_, name);
}

void KWinWindowSystem::activate(std::span<const WindowId> windows) {
    activation_.request(windows);
}

WindowActivation::Scene KWinWindowSystem::lookAtScene() const {
    return {model_.stackingOrder(), [this](WindowId window) { return model_.isHere(window); }};
}

void KWinWindowSystem::request(KWinRequests::Act act, std::span<const WindowId> windows) {
    QStringList names;
    for (const auto window : windows) {
        if (const auto name = model_.nameOf(window); !name.isEmpty()) {
            names.append(name);
        }
    }
    requests_.add(act, names);
    keepTrying();
    // What is asked in one turn goes together.
    if (!std::exchange(isSendingScheduled_, true)) {
        queue_.async(lifetime_.weak([this] {
            isSendingScheduled_ = false;
            sendRequests();
        }));
    }
}

void KWinWindowSystem::sendRequests() {
    if (state_ != State::ready || requestedAt_ || requests_.isEmpty()) {
        return;
    }
    requestedAt_ = queue_.now();
    isRequestDone_ = false;
    ++lastRequest_;
    sent_ = requests_.takePortion();
    const auto work = KWinRequests::forScript(sent_);
    // A watcher that has not done it does not get it again.
    isAnswered_ =
        !isSecondTry_ && listener_.answer(kwin_.owner(), load_, KWinScripts::answer(lastRequest_, work));
    if (isAnswered_) {
        queue_.asyncAfter(answerDeadline, lifetime_.weak([this, number = lastRequest_] {
            if (number == lastRequest_) {
                answerIsLost();
            }
        }));
        return;
    }
    scripting_.run(
        kwin_.owner(), requestsName, KWinScripts::requests(listener_.address(), load_, lastRequest_, work),
        [this] { return isRequestDone_; },
        [this](bool isRunning) {
            scripting_.unload(kwin_.owner(), requestsName);
            requestsEnded(isRunning);
        });
}

void KWinWindowSystem::answerIsLost() {
    if (std::exchange(isAnswered_, false)) {
        requestsEnded(false);
    }
}

void KWinWindowSystem::requestsEnded(bool wereCarriedOut) {
    requestedAt_.reset();
    if (requests_.isEmpty()) {
        leaving_.remove([](WindowId) { return true; });
    }
    const auto sent = std::exchange(sent_, {});
    if (wereCarriedOut) {
        isSecondTry_ = false;
        sendRequests();
    } else {
        tryAgain(sent);
    }
}

void KWinWindowSystem::tryAgain(const KWinRequests::Portion& sent) {
    // KWin has ended or somebody has unloaded the script. Once more is enough to find out; but a window that
    // is never shown is lost to its user.
    isSecondTry_ = !isSecondTry_;
    if (isSecondTry_ || KWinRequests::hasShow(sent)) {
        requests_.putBack(sent);
    }
    if (state_ != State::ready) {
        keepTrying();
        return;
    }
    setState(State::starting);
    if (isSecondTry_) {
        loadWatcher();
    } else {
        loadWatcherAfter(answerDeadline);
    }
}

} // namespace LinuxPlatform
