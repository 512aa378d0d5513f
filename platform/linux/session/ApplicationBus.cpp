#include "platform/linux/session/ApplicationBus.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace LinuxPlatform {
namespace {

const auto applicationInterface = QStringLiteral("org.freedesktop.Application");
/// Long enough for an instance that is just starting; a frozen one must not keep the user waiting.
constexpr int answerDeadline = 5000;
/// More that is asked for before the start is over is refused.
constexpr std::size_t mostEarlyCalls = 16;

QString pathOf(QString name) {
    return QStringLiteral("/") +
           name.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
}

} // namespace

/// Answers the calls.
class ApplicationBus::Object : public QDBusVirtualObject {
public:
    explicit Object(CallRate rate) : rate_(std::move(rate)) {}

    QString introspect(const QString& /*path*/) const override {
        return QStringLiteral(
            "<interface name=\"org.freedesktop.Application\">"
            "<method name=\"Activate\"><arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/></method>"
            "<method name=\"Open\"><arg type=\"as\" name=\"uris\" direction=\"in\"/>"
            "<arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/></method>"
            "<method name=\"ActivateAction\"><arg type=\"s\" name=\"action_name\" direction=\"in\"/>"
            "<arg type=\"av\" name=\"parameter\" direction=\"in\"/>"
            "<arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/></method>"
            "</interface>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != applicationInterface && !message.interface().isEmpty()) {
            return false;
        }
        const auto arguments = message.arguments();
        std::optional<std::string> action;
        if (message.member() == QStringLiteral("ActivateAction") &&
            message.signature() == QStringLiteral("sava{sv}")) {
            action = arguments.first().toString().toStdString();
        } else if (!isOpening(message)) {
            return false;
        }
        if (!actions_ && early_.size() == mostEarlyCalls) {
            connection.send(message.createErrorReply(
                QDBusError::LimitsExceeded, QStringLiteral("too many calls before the start is over")));
            return true;
        }
        if (!rate_.take()) {
            connection.send(message.createErrorReply(QDBusError::LimitsExceeded,
                                                     QStringLiteral("too many calls in a short time")));
            return true;
        }
        // The caller is not kept waiting by what the call does.
        connection.send(message.createReply());
        if (actions_) {
            perform(action);
        } else {
            early_.push_back(action);
        }
        return true;
    }

    void setActions(Actions actions) {
        actions_ = std::move(actions);
        for (const auto& action : std::exchange(early_, {})) {
            perform(action);
        }
    }

private:
    static bool isOpening(const QDBusMessage& message) {
        return (message.member() == QStringLiteral("Activate") &&
                message.signature() == QStringLiteral("a{sv}")) ||
               (message.member() == QStringLiteral("Open") &&
                message.signature() == QStringLiteral("asa{sv}"));
    }

    /// Opens when there is no name.
    void perform(const std::optional<std::string>& action) const {
        if (!action) {
            actions_->open();
        } else if (const auto named = actions_->named.find(*action); named != actions_->named.end()) {
            named->second();
        }
    }

    CallRate rate_;
    std::optional<Actions> actions_;
    std::vector<std::optional<std::string>> early_;
};

ApplicationBus::ApplicationBus(QDBusConnection bus, QString name, Judge judge, CallRate rate)
    : bus_(std::move(bus)),
      name_(std::move(name)),
      judge_(std::move(judge)),
      object_(std::make_unique<Object>(std::move(rate))) {}

ApplicationBus::~ApplicationBus() {
    if (bus_.isConnected()) {
        bus_.unregisterObject(pathOf(name_));
        bus_.unregisterService(name_);
    }
}

ApplicationBus::Claim ApplicationBus::claim() {
    if (!bus_.isConnected()) {
        return Claim::noBus;
    }
    // The object comes first, so that whoever sees the name can call.
    bus_.registerVirtualObject(pathOf(name_), object_.get(), QDBusConnection::SingleNode);
    if (bus_.registerService(name_)) {
        return Claim::first;
    }
    // Without a number it has ended meanwhile, or is of another computer.
    const QDBusReply<uint> owner = bus_.interface()->servicePid(name_);
    const auto verdict = owner.isValid() ? judge_(owner.value()) : NameOwner::thisSessions;
    if (verdict != NameOwner::thisSessions) {
        return waitForName()                    ? Claim::first
               : verdict == NameOwner::stranger ? Claim::stranger
                                                : Claim::otherSession;
    }
    auto call = QDBusMessage::createMethodCall(name_, pathOf(name_), applicationInterface,
                                               QStringLiteral("Activate"));
    call.setArguments({QVariantMap()});
    call.setAutoStartService(false);
    const auto answer = bus_.call(call, QDBus::Block, answerDeadline);
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return Claim::otherOpened;
    }
    // One that was about to end is gone now.
    return bus_.registerService(name_) ? Claim::first : Claim::otherSilent;
}

/// Returns whether it has become free meanwhile.
bool ApplicationBus::waitForName() {
    using Interface = QDBusConnectionInterface;
    const auto reply = bus_.interface()->registerService(name_, Interface::QueueService);
    return reply.isValid() && reply.value() == Interface::ServiceRegistered;
}

void ApplicationBus::setActions(Actions actions) {
    object_->setActions(std::move(actions));
}

} // namespace LinuxPlatform
