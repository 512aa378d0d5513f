#include "platform/linux/windows/kwin/KWinListener.h"

#include "platform/linux/dbus/Caller.h"

#include <QDBusVirtualObject>

#include <utility>

namespace LinuxPlatform {
namespace {

const QString path = QStringLiteral("/com/curtain/KWinWindows");
const QString interfaceName = QStringLiteral("com.curtain.KWinWindows");

/// What is wanted because of a report is wanted by then. KWin itself waits for 25 seconds.
constexpr Platform::MainQueue::Seconds patience{1};

} // namespace

class KWinListener::Object : public QDBusVirtualObject {
public:
    Object(QDBusConnection bus, OnReport onReport, std::function<void(const QDBusMessage&)> onQuestion)
        : bus_(std::move(bus)),
          onReport_(std::move(onReport)),
          onQuestion_(std::move(onQuestion)) {
        bus_.registerVirtualObject(path, this, QDBusConnection::SingleNode);
    }
    ~Object() override { bus_.unregisterObject(path); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    QString introspect(const QString& /*path*/) const override {
        return QStringLiteral(
                   "<interface name=\"%1\">"
                   "<method name=\"Report\"><arg type=\"s\" name=\"report\" direction=\"in\"/></method>"
                   "<method name=\"Next\"><arg type=\"s\" name=\"load\" direction=\"in\"/>"
                   "<arg type=\"s\" name=\"requests\" direction=\"out\"/></method></interface>")
            .arg(interfaceName);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != interfaceName || message.signature() != QStringLiteral("s")) {
            return false;
        }
        if (message.member() == QStringLiteral("Next")) {
            onQuestion_(message);
            return true;
        }
        if (message.member() != QStringLiteral("Report")) {
            return false;
        }
        if (message.isReplyRequired()) {
            connection.send(message.createReply());
        }
        onReport_(callerOf(message), message.arguments().constFirst().toString().toUtf8());
        return true;
    }

private:
    QDBusConnection bus_;
    OnReport onReport_;
    std::function<void(const QDBusMessage&)> onQuestion_;
};

KWinListener::KWinListener(const QDBusConnection& bus, Platform::MainQueue& queue, OnReport onReport)
    : bus_(bus),
      queue_(queue),
      object_(std::make_unique<Object>(bus, std::move(onReport),
                                       [this](const QDBusMessage& message) { hold(message); })) {}

KWinListener::~KWinListener() {
    reply({});
}

KWinScripts::Address KWinListener::address() const {
    return {bus_.baseService(), path, interfaceName};
}

void KWinListener::hold(const QDBusMessage& message) {
    reply({});
    question_ = {message, callerOf(message), message.arguments().constFirst().toString().toULongLong(),
                 queue_.now()};
    queue_.asyncAfter(patience, lifetime_.weak([this, number = ++lastQuestion_] {
        if (number == lastQuestion_) {
            reply({});
        }
    }));
}

bool KWinListener::answer(const QString& sender, std::uint64_t load, const QByteArray& text) {
    // KWin may have given up waiting while this process had no time.
    const bool isWaiting = question_ && queue_.now() - question_->askedAt < patience;
    if (!isWaiting || question_->sender != sender || question_->load != load) {
        return false;
    }
    reply(QString::fromUtf8(text));
    return true;
}

void KWinListener::reply(const QString& text) {
    if (const auto question = std::exchange(question_, std::nullopt)) {
        bus_.send(question->message.createReply(text));
    }
}

} // namespace LinuxPlatform
