#include "platform/linux/donotdisturb/DesktopDoNotDisturb.h"

#include <QDBusPendingCallWatcher>

#include <utility>

namespace LinuxPlatform {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

/// A server that does not answer is asked again after this.
constexpr Platform::MainQueue::Seconds restAfterSilence{10};

} // namespace

DesktopDoNotDisturb::DesktopDoNotDisturb(const QDBusConnection& bus, Platform::MainQueue& mainQueue,
                                         CurtainCore::UserDefaults& state, std::string session,
                                         MakeRoad makeRoad)
    : bus_(bus),
      mainQueue_(mainQueue),
      state_(state),
      session_(std::move(session)),
      makeRoad_(std::move(makeRoad)),
      owner_(bus, service, [this] { ownerChanged(); }) {}

DesktopDoNotDisturb::~DesktopDoNotDisturb() {
    if (wish_ == Wish::giveBack && isHeld()) {
        road_->beginWaiting();
        isTurning_ = false;
        look();
    }
}

std::optional<bool> DesktopDoNotDisturb::isOn() {
    if (road_ && !road_->tellsChanges()) {
        look();
    }
    return isOn_;
}

Platform::Subscription DesktopDoNotDisturb::addObserver(std::function<void()> onChange) {
    return observers_.add(std::move(onChange));
}

Platform::DoNotDisturb::Habits DesktopDoNotDisturb::habits() const {
    return road_ ? road_->habits() : Habits{};
}

void DesktopDoNotDisturb::hold() {
    isRefused_ = false;
    wish_ = Wish::hold;
    look();
}

void DesktopDoNotDisturb::giveBack() {
    wish_ = Wish::giveBack;
    look();
}

bool DesktopDoNotDisturb::isHeld() const {
    return taken().has_value();
}

void DesktopDoNotDisturb::ownerChanged() {
    road_.reset();
    record_.reset();
    isOurs_ = false;
    isTurning_ = false;
    wasQuiet_.reset();
    tellIfChanged(std::nullopt);
    question_ = std::make_unique<QObject>();
    if (owner_.owner().isEmpty()) {
        return;
    }
    const auto question =
        QDBusMessage::createMethodCall(owner_.owner(), path, service, QStringLiteral("GetServerInformation"));
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), question_.get());
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer,
                     [this, answer] { serverAnswered(answer->reply()); });
}

void DesktopDoNotDisturb::serverAnswered(const QDBusMessage& reply) {
    const auto arguments = reply.arguments();
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return;
    }
    road_ = makeRoad_({arguments.value(0).toString(), arguments.value(1).toString()});
    record_.emplace(state_, "do-not-disturb." + road_->name(), session_);
    road_->onNews = [this] { look(); };
    look();
}

void DesktopDoNotDisturb::look() {
    if (road_ && !isTurning_) {
        road_->read([this](const auto& state) { stateRead(state); });
    }
}

void DesktopDoNotDisturb::stateRead(const std::optional<std::string>& state) {
    if (isTurning_) {
        // It may be that of before.
        return;
    }
    tellIfChanged(state);
    if (state) {
        act(*state);
    }
}

void DesktopDoNotDisturb::tellIfChanged(const std::optional<std::string>& state) {
    const auto isQuiet = state ? std::optional(road_->isQuiet(*state)) : std::nullopt;
    if (isQuiet != wasQuiet_) {
        const bool isSlow = wasQuiet_.has_value() && road_->delay() > Platform::MainQueue::Seconds(0);
        settledAt_ = mainQueue_.now();
        if (isSlow) {
            settledAt_ += road_->delay();
            mainQueue_.asyncAfter(road_->delay(), lifetime_.weak([this] { look(); }));
        }
        wasQuiet_ = isQuiet;
    }
    const auto isOn = isQuiet == true && mainQueue_.now() < settledAt_ ? std::nullopt : isQuiet;
    if (std::exchange(isOn_, isOn) != isOn) {
        // Whoever is told asks again.
        mainQueue_.async(lifetime_.weak([this] { observers_.tell(); }));
    }
}

void DesktopDoNotDisturb::act(const std::string& state) {
    auto earlier = taken();
    if (earlier && !isStillTaken(*earlier, state)) {
        record_->forget();
        earlier.reset();
        isRefused_ = isRefused_ || isOurs_;
    }
    isOurs_ = earlier.has_value();
    if (wish_ == Wish::hold && !earlier && !isRefused_) {
        isRefused_ = road_->isQuiet(state);
        if (!isRefused_) {
            take(state);
        }
    } else if (wish_ == Wish::giveBack && earlier) {
        turnBack(earlier->before);
    }
}

void DesktopDoNotDisturb::take(const std::string& state) {
    const auto ours = road_->quietened(state);
    record_->keep(owner_.owner().toStdString() + "\n" + state + "\n" + ours);
    turn(ours, [this](std::optional<bool> isDone) {
        isOurs_ = isDone == true;
        if (isDone == false) {
            isRefused_ = true;
            record_->forget();
        }
    });
}

void DesktopDoNotDisturb::turnBack(const std::string& state) {
    turn(state, [this](std::optional<bool> isDone) {
        isOurs_ = false;
        if (isDone == true) {
            record_->forget();
        } else if (isDone == false) {
            wish_ = Wish::none;
        }
    });
}

void DesktopDoNotDisturb::turn(const std::string& state,
                               std::function<void(std::optional<bool> isDone)> onDone) {
    isTurning_ = true;
    road_->write(state, [this, onDone = std::move(onDone)](std::optional<bool> isDone) {
        isTurning_ = false;
        onDone(isDone);
        if (isDone) {
            look();
        } else {
            mainQueue_.asyncAfter(restAfterSilence, lifetime_.weak([this] { look(); }));
        }
    });
}

std::optional<DesktopDoNotDisturb::Taken> DesktopDoNotDisturb::taken() const {
    const auto text = record_ ? record_->get() : std::nullopt;
    const auto first = text ? text->find('\n') : std::string::npos;
    const auto second = first == std::string::npos ? first : text->find('\n', first + 1);
    if (second == std::string::npos) {
        return std::nullopt;
    }
    return Taken{text->substr(0, first), text->substr(first + 1, second - first - 1),
                 text->substr(second + 1)};
}

bool DesktopDoNotDisturb::isStillTaken(const Taken& earlier, const std::string& state) const {
    const bool isSameServer = road_->isRemembered() ||
                              (record_->isOfThisSession() && earlier.server == owner_.owner().toStdString());
    return isSameServer && state == earlier.ours;
}

} // namespace LinuxPlatform
