#pragma once

#include "core/UserDefaults.h"
#include "platform/DoNotDisturb.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/donotdisturb/QuietServers.h"
#include "platform/linux/session/EarlierValue.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// The switch of whatever server has org.freedesktop.Notifications, which it is asked for its name. What the
/// switch was is on disk before it is turned. One that comes after another's end is held in its place.
class DesktopDoNotDisturb : public Platform::DoNotDisturb {
public:
    using MakeRoad = std::function<std::unique_ptr<QuietRoad>(const NotificationServer& server)>;

    /// `state` and `mainQueue` outlive this object; `session` is the mark of the user's session.
    DesktopDoNotDisturb(const QDBusConnection& bus, Platform::MainQueue& mainQueue,
                        CurtainCore::UserDefaults& state, std::string session, MakeRoad makeRoad);
    ~DesktopDoNotDisturb() override;
    DesktopDoNotDisturb(const DesktopDoNotDisturb&) = delete;
    DesktopDoNotDisturb& operator=(const DesktopDoNotDisturb&) = delete;

    std::optional<bool> isOn() override;
    Platform::Subscription addObserver(std::function<void()> onChange) override;
    Habits habits() const override;
    void hold() override;
    void giveBack() override;
    bool isHeld() const override;

private:
    enum class Wish { none, hold, giveBack };

    /// What is on disk: who was the server, how the switch was, and how it was made.
    struct Taken {
        std::string server;
        std::string before;
        std::string ours;
    };

    void ownerChanged();
    void serverAnswered(const QDBusMessage& reply);
    void look();
    void stateRead(const std::optional<std::string>& state);
    void tellIfChanged(const std::optional<std::string>& state);
    void act(const std::string& state);
    void take(const std::string& state);
    void turnBack(const std::string& state);
    void turn(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone);
    std::optional<Taken> taken() const;
    bool isStillTaken(const Taken& earlier, const std::string& state) const;

    QDBusConnection bus_;
    Platform::MainQueue& mainQueue_;
    CurtainCore::UserDefaults& state_;
    std::string session_;
    MakeRoad makeRoad_;
    Platform::Subscribers<> observers_;
    std::optional<bool> isOn_;
    std::optional<bool> wasQuiet_;
    /// When the server has noticed the latest change.
    Platform::MainQueue::Seconds settledAt_{0};
    Wish wish_ = Wish::none;
    /// The switch is as it was made, as far as is known.
    bool isOurs_ = false;
    /// It is not to be turned, since its user turned it or the server would not have it.
    bool isRefused_ = false;
    /// Whoever is asked while it is being turned may answer either way.
    bool isTurning_ = false;
    std::unique_ptr<QuietRoad> road_;
    std::optional<EarlierValue> record_;
    /// Ends what was asked of an earlier server.
    std::unique_ptr<QObject> question_;
    Platform::Lifetime lifetime_;
    BusNameOwner owner_;
};

} // namespace LinuxPlatform
