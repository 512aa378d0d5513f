#include "platform/linux/notifications/DBusNotificationCenter.h"

#include <QDBusPendingCallWatcher>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace LinuxPlatform {
namespace {

using Platform::NotificationRequest;
using Platform::NotificationResponse;
namespace Option = Platform::NotificationOption;

constexpr QLatin1String service("org.freedesktop.Notifications");
constexpr QLatin1String path("/org/freedesktop/Notifications");
constexpr QLatin1String interface("org.freedesktop.Notifications");
constexpr QLatin1String actionInvokedName("ActionInvoked");

/// The protocol's key of the click on the notification itself.
constexpr auto defaultActionKey = "default";
/// What is older than this would only confuse.
constexpr Platform::MainQueue::Seconds patience{60};
/// A server that ends at the sight of a notification is not brought back for it again and again.
constexpr int serversAtMost = 3;
constexpr uchar normalUrgency = 1;
constexpr int untilTheServerDecides = -1;
/// More would be nonsense.
constexpr std::size_t earlySignalsAtMost = 100;

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

QString withoutMarkup(const std::string& utf8) {
    // Quotation marks mean nothing outside of tags, and not every server knows their names.
    return text(utf8)
        .replace(QLatin1Char('&'), QLatin1String("&amp;"))
        .replace(QLatin1Char('<'), QLatin1String("&lt;"))
        .replace(QLatin1Char('>'), QLatin1String("&gt;"));
}

/// Whether this is what a bus says for a server that is gone.
bool isFromBus(const QDBusMessage& error) {
    const auto type = QDBusError(error).type();
    return type == QDBusError::NoReply || type == QDBusError::ServiceUnknown ||
           type == QDBusError::Disconnected;
}

} // namespace

DBusNotificationCenter::DBusNotificationCenter(const QDBusConnection& bus, Platform::MainQueue& mainQueue,
                                               std::string applicationName, std::string desktopEntry)
    : bus_(bus),
      mainQueue_(mainQueue),
      applicationName_(std::move(applicationName)),
      desktopEntry_(std::move(desktopEntry)),
      owner_(bus, service, [this] { ownerChanged(); }),
      actionInvoked_(bus, service, path, interface, actionInvokedName,
                     [this](const QDBusMessage& message) { actionInvoked(message); }),
      closed_(bus, service, path, interface, QStringLiteral("NotificationClosed"),
              [this](const QDBusMessage& message) { closed(message); }) {}

void DBusNotificationCenter::setDelegate(Platform::UserNotificationCenterDelegate* delegate) {
    delegate_ = delegate;
}

void DBusNotificationCenter::setNotificationCategories(
    std::vector<Platform::NotificationCategory> categories) {
    categories_ = std::move(categories);
}

void DBusNotificationCenter::add(const NotificationRequest& request) {
    // A program in a panel is as much in front as behind, so its delegate decides each time.
    if (delegate_ == nullptr) {
        present(request, Option::banner | Option::sound);
        return;
    }
    delegate_->willPresent(
        request, lifetime_.weak([this, request](std::uint64_t options) { present(request, options); }));
}

void DBusNotificationCenter::removeDeliveredNotifications(const std::vector<std::string>& identifiers) {
    for (const auto& identifier : identifiers) {
        std::erase_if(waiting_, [&](const Post& post) { return post.request.identifier == identifier; });
        if (const auto underWay = inFlight_.find(identifier); underWay != inFlight_.end()) {
            underWay->second.isWithdrawn = true;
        }
        if (const auto shown = shown_.find(identifier); shown != shown_.end()) {
            close(shown->second.serverId);
            shown_.erase(shown);
        }
    }
}

void DBusNotificationCenter::whenDelivered(std::function<void()> task) {
    awaitingDelivery_.push_back(std::move(task));
    tellIfDelivered();
}

void DBusNotificationCenter::tellIfDelivered() {
    if (waiting_.empty() && inFlight_.empty()) {
        for (const auto& task : std::exchange(awaitingDelivery_, {})) {
            task();
        }
    }
}

void DBusNotificationCenter::requestAuthorization(std::uint64_t /*options*/,
                                                  std::function<void(bool isGranted)> completion) {
    completion(true);
}

void DBusNotificationCenter::present(const NotificationRequest& request, std::uint64_t options) {
    if ((options & Option::banner) == 0) {
        return;
    }
    Post post{++lastNumber_, request, {}, (options & Option::sound) != 0, mainQueue_.now()};
    const auto category = std::ranges::find(categories_, request.content.categoryIdentifier,
                                            &Platform::NotificationCategory::identifier);
    if (category != categories_.end()) {
        post.actions = category->actions;
    }
    std::erase_if(waiting_,
                  [&](const Post& other) { return other.request.identifier == request.identifier; });
    waiting_.push_back(std::move(post));
    sendWaiting();
}

void DBusNotificationCenter::ownerChanged() {
    const bool hasEnded = !std::exchange(server_, owner_.owner()).isEmpty();
    ++generation_;
    capabilities_.reset();
    isAskingCapabilities_ = false;
    shown_.clear();
    earlySignals_.clear();
    for (auto& [identifier, post] : std::exchange(inFlight_, {})) {
        putBack(post);
    }
    if (hasEnded) {
        for (auto& post : waiting_) {
            ++post.servers;
        }
    }
    sendWaiting();
}

void DBusNotificationCenter::putBack(const Post& post) {
    const bool isSuperseded = std::ranges::any_of(
        waiting_, [&](const Post& other) { return other.request.identifier == post.request.identifier; });
    if (!isSuperseded && !post.isWithdrawn) {
        const auto place = std::ranges::upper_bound(waiting_, post.number, {}, &Post::number);
        waiting_.insert(place, post);
    }
}

void DBusNotificationCenter::sendWaiting() {
    std::erase_if(waiting_, [&](const Post& post) {
        return post.servers >= serversAtMost || mainQueue_.now() - post.postedAt > patience;
    });
    tellIfDelivered();
    if (waiting_.empty() || !owner_.isKnown()) {
        return;
    }
    if (!capabilities_) {
        askCapabilities();
        return;
    }
    std::vector<Post> later;
    for (auto& post : std::exchange(waiting_, {})) {
        // One that takes another's place needs to know its number.
        if (inFlight_.contains(post.request.identifier)) {
            later.push_back(std::move(post));
        } else {
            send(post);
        }
    }
    waiting_ = std::move(later);
}

void DBusNotificationCenter::askCapabilities() {
    if (std::exchange(isAskingCapabilities_, true)) {
        return;
    }
    call(QStringLiteral("GetCapabilities"), {}, [this](const QDBusMessage& reply) {
        isAskingCapabilities_ = false;
        capabilitiesAnswered(reply);
    });
}

void DBusNotificationCenter::capabilitiesAnswered(const QDBusMessage& reply) {
    if (server_.isEmpty()) {
        // Whoever becomes the server is handed what waits.
        return;
    }
    const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage;
    const auto arguments = reply.arguments();
    const auto names = isAnswer && !arguments.isEmpty() ? arguments.first().toStringList() : QStringList();
    capabilities_ =
        Capabilities{names.contains(QLatin1String("actions")), names.contains(QLatin1String("body-markup")),
                     names.contains(QLatin1String("sound"))};
    sendWaiting();
    if (!isAnswer) {
        // Perhaps it tells the next time.
        capabilities_.reset();
    }
}

void DBusNotificationCenter::send(const Post& post) {
    const auto& [identifier, content] = post.request;
    const auto earlier = shown_.find(identifier);
    const std::uint32_t replaced = earlier != shown_.end() ? earlier->second.serverId : 0;
    const auto body = capabilities_->hasMarkup ? withoutMarkup(content.body) : text(content.body);
    inFlight_.emplace(identifier, post);
    call(QStringLiteral("Notify"),
         {text(applicationName_), replaced, text(desktopEntry_), text(content.title), body, actions(post),
          hints(post), untilTheServerDecides},
         [this, identifier = identifier](const QDBusMessage& reply) { sent(identifier, reply); });
}

void DBusNotificationCenter::sent(const std::string& identifier, const QDBusMessage& reply) {
    const auto post = std::move(inFlight_.extract(identifier).mapped());
    const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage;
    if (!isAnswer && isFromBus(reply)) {
        putBack(post);
        return;
    }
    const auto arguments = reply.arguments();
    if (isAnswer && !arguments.isEmpty() && arguments.first().metaType() == QMetaType::fromType<uint>()) {
        const auto serverId = arguments.first().toUInt();
        std::erase_if(shown_, [&](const auto& other) { return other.second.serverId == serverId; });
        if (post.isWithdrawn) {
            close(serverId);
            sendWaiting();
            return;
        }
        Shown shown{serverId, post.request, {defaultActionKey}};
        for (const auto& action : post.actions) {
            shown.actions.insert(action.identifier);
        }
        shown_.insert_or_assign(identifier, std::move(shown));
    }
    lookAtEarlySignals();
    sendWaiting();
}

void DBusNotificationCenter::actionInvoked(const QDBusMessage& message) {
    const auto arguments = message.arguments();
    const auto found = shownIn(message);
    if (found == shown_.end() || arguments.size() < 2) {
        keepForLater(message);
        return;
    }
    const auto key = arguments[1].toString().toStdString();
    if (!found->second.actions.contains(key)) {
        return;
    }
    // Answered, it is done with, whatever else the server says about it.
    const auto shown = std::move(found->second);
    shown_.erase(found);
    const auto action = key == defaultActionKey ? NotificationResponse::defaultActionIdentifier : key;
    const auto complete = lifetime_.weak([this, serverId = shown.serverId, generation = generation_] {
        // Not every server takes a notification away once it has been answered.
        if (generation == generation_) {
            close(serverId);
        }
    });
    if (delegate_ != nullptr) {
        delegate_->didReceive({action, shown.request}, complete);
    } else {
        complete();
    }
}

void DBusNotificationCenter::close(std::uint32_t serverId) {
    if (capabilities_) {
        call(QStringLiteral("CloseNotification"), {serverId}, [](const auto&) {});
    }
}

void DBusNotificationCenter::closed(const QDBusMessage& message) {
    if (const auto found = shownIn(message); found != shown_.end()) {
        shown_.erase(found);
    } else {
        keepForLater(message);
    }
}

void DBusNotificationCenter::keepForLater(const QDBusMessage& message) {
    if (!inFlight_.empty() && earlySignals_.size() < earlySignalsAtMost) {
        earlySignals_.push_back(message);
    }
}

void DBusNotificationCenter::lookAtEarlySignals() {
    for (const auto& message : std::exchange(earlySignals_, {})) {
        if (message.member() == actionInvokedName) {
            actionInvoked(message);
        } else {
            closed(message);
        }
    }
}

QVariantMap DBusNotificationCenter::hints(const Post& post) const {
    QVariantMap hints{{QStringLiteral("desktop-entry"), text(desktopEntry_)},
                      {QStringLiteral("urgency"), QVariant::fromValue(normalUrgency)}};
    if (!post.hasSound) {
        hints.insert(QStringLiteral("suppress-sound"), true);
    } else if (capabilities_->hasSound) {
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    }
    return hints;
}

QStringList DBusNotificationCenter::actions(const Post& post) const {
    if (!capabilities_->hasActions) {
        return {};
    }
    // Some servers (Xfce's) draw a button for it where it has a name.
    QStringList actions{QString::fromLatin1(defaultActionKey), QString()};
    for (const auto& action : post.actions) {
        actions << text(action.identifier) << text(action.title);
    }
    return actions;
}

std::map<std::string, DBusNotificationCenter::Shown>::iterator
DBusNotificationCenter::shownIn(const QDBusMessage& message) {
    const auto arguments = message.arguments();
    if (arguments.isEmpty() || arguments.first().metaType() != QMetaType::fromType<uint>()) {
        return shown_.end();
    }
    const auto serverId = arguments.first().toUInt();
    return std::ranges::find_if(shown_, [&](const auto& entry) { return entry.second.serverId == serverId; });
}

void DBusNotificationCenter::call(const QString& method, const QVariantList& arguments,
                                  std::function<void(const QDBusMessage& reply)> onReply) {
    auto message = QDBusMessage::createMethodCall(server_.isEmpty() ? QString(service) : server_, path,
                                                  interface, method);
    message.setArguments(arguments);
    // Nobody waits, so a server that is stopped may answer whenever it goes on.
    auto* const answer =
        new QDBusPendingCallWatcher(bus_.asyncCall(message, std::numeric_limits<int>::max()), &calls_);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer,
                     [this, answer, generation = generation_, onReply = std::move(onReply)] {
                         answer->deleteLater();
                         if (generation == generation_) {
                             onReply(answer->reply());
                         }
                     });
}

} // namespace LinuxPlatform
