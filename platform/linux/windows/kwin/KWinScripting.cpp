#include "platform/linux/windows/kwin/KWinScripting.h"

#include <QDBusPendingCallWatcher>
#include <QTemporaryFile>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace LinuxPlatform {
namespace {

const QString scriptingPath = QStringLiteral("/Scripting");
const QString scriptingInterface = QStringLiteral("org.kde.kwin.Scripting");
const QString scriptInterface = QStringLiteral("org.kde.kwin.Script");
const QString runMethod = QStringLiteral("run");

constexpr std::chrono::milliseconds answerDeadline{5000};
/// At our end.
constexpr std::chrono::milliseconds lastAnswerDeadline{1000};
/// A script that runs says so at about the time at which KWin answers.
constexpr Platform::MainQueue::Seconds patienceAfterAnswer{0.25};
/// More scripts than anybody has.
constexpr int lastPlace = 16;

bool isReply(const QDBusMessage& message) {
    return message.type() == QDBusMessage::ReplyMessage;
}

QDBusMessage scriptingCall(const QString& owner, const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(owner, scriptingPath, scriptingInterface, method);
    message.setArguments(arguments);
    return message;
}

bool write(QTemporaryFile& file, const std::filesystem::path& folder, const std::string& text) {
    const auto size = static_cast<qint64>(text.size());
    file.setFileTemplate(QString::fromStdString((folder / "curtain-XXXXXX.js").string()));
    return file.open() && file.write(text.data(), size) == size && file.flush();
}

/// Of the object of a script, as in version 6 and as in version 5.
std::array<QString, 2> placesOf(int number) {
    return {QStringLiteral("/Scripting/Script%1").arg(number), QStringLiteral("/%1").arg(number)};
}

/// Takes up a place among KWin's scripts and is never run.
QString placeholder(const QString& name, int place) {
    return QStringLiteral("%1-placeholder-%2").arg(name).arg(place);
}

} // namespace

struct KWinScripting::Start {
    QString owner;
    QString name;
    HasBegun hasBegun;
    Done done;
    /// KWin reads it late.
    QTemporaryFile file;
    int placeholders = 0;
};

KWinScripting::KWinScripting(QDBusConnection bus, Platform::MainQueue& queue, std::filesystem::path folder)
    : bus_(std::move(bus)),
      queue_(queue),
      folder_(std::move(folder)) {}

void KWinScripting::run(const QString& owner, const QString& name, const std::string& text, HasBegun hasBegun,
                        Done done) {
    auto start = std::make_shared<Start>();
    start->owner = owner;
    start->name = name;
    start->hasBegun = std::move(hasBegun);
    start->done = std::move(done);
    if (write(start->file, folder_, text)) {
        load(start);
    } else {
        queue_.async(lifetime_.weak([this, start] { finish(start, false); }));
    }
}

void KWinScripting::load(const std::shared_ptr<Start>& start) {
    // A script that is unloaded keeps its place and its object until KWin has answered. Loaded before, a
    // placeholder would get the place beyond, and be run instead of the script.
    call(start->owner, QStringLiteral("unloadScript"), {start->name},
         [this, start](const QDBusMessage& reply) {
             if (!isReply(reply)) {
                 finish(start, false);
                 return;
             }
             if (start->placeholders > 0) {
                 call(start->owner, QStringLiteral("loadScript"),
                      {start->file.fileName(), placeholder(start->name, start->placeholders)},
                      [](const QDBusMessage&) {});
             }
             loadFile(start);
         });
}

void KWinScripting::loadFile(const std::shared_ptr<Start>& start) {
    call(start->owner, QStringLiteral("loadScript"), {start->file.fileName(), start->name},
         [this, start](const QDBusMessage& reply) {
             const auto number = reply.arguments().value(0).toInt();
             if (!isReply(reply) || number < 0) {
                 finish(start, false);
                 return;
             }
             const auto places = placesOf(number);
             runAt(start, places[0], places[1]);
         });
}

void KWinScripting::runAt(const std::shared_ptr<Start>& start, const QString& path,
                          const QString& otherPath) {
    send(QDBusMessage::createMethodCall(start->owner, path, scriptInterface, runMethod),
         [this, start, otherPath](const QDBusMessage& reply) {
             if (isReply(reply)) {
                 lookWhetherItRuns(start);
             } else if (!otherPath.isEmpty() &&
                        reply.errorName() == QStringLiteral("org.freedesktop.DBus.Error.UnknownObject")) {
                 runAt(start, otherPath, {});
             } else {
                 finish(start, false);
             }
         });
}

void KWinScripting::lookWhetherItRuns(const std::shared_ptr<Start>& start) {
    if (start->hasBegun()) {
        finish(start, true);
        return;
    }
    queue_.asyncAfter(patienceAfterAnswer, lifetime_.weak([this, start] {
        if (start->hasBegun()) {
            finish(start, true);
        } else {
            tryNextPlace(start);
        }
    }));
}

void KWinScripting::tryNextPlace(const std::shared_ptr<Start>& start) {
    // KWin 5 numbers a script by how many there are, and so gives it the object of an earlier one when one of
    // those before has been unloaded.
    if (start->placeholders == lastPlace) {
        finish(start, false);
        return;
    }
    ++start->placeholders;
    load(start);
}

void KWinScripting::finish(const std::shared_ptr<Start>& start, bool isRunning) const {
    for (int place = 1; place <= start->placeholders; ++place) {
        unload(start->owner, placeholder(start->name, place));
    }
    start->done(isRunning);
}

bool KWinScripting::runAndWait(const QString& owner, const QString& name, const std::string& text) const {
    QTemporaryFile file;
    if (!write(file, folder_, text)) {
        return false;
    }
    const auto wait = [this](const QDBusMessage& message) {
        return bus_.call(message, QDBus::Block, static_cast<int>(lastAnswerDeadline.count()));
    };
    // One that was not answered in time may still be there.
    if (!isReply(wait(scriptingCall(owner, QStringLiteral("unloadScript"), {name})))) {
        return false;
    }
    const auto loaded = wait(scriptingCall(owner, QStringLiteral("loadScript"), {file.fileName(), name}));
    if (!isReply(loaded)) {
        return false;
    }
    const bool hasRun =
        std::ranges::any_of(placesOf(loaded.arguments().value(0).toInt()), [&](const QString& path) {
            return isReply(wait(QDBusMessage::createMethodCall(owner, path, scriptInterface, runMethod)));
        });
    unload(owner, name);
    return hasRun;
}

void KWinScripting::unload(const QString& owner, const QString& name) const {
    bus_.send(scriptingCall(owner, QStringLiteral("unloadScript"), {name}));
}

void KWinScripting::askWhetherLoaded(const QString& owner, const QString& name,
                                     std::function<void(bool)> answer) const {
    call(owner, QStringLiteral("isScriptLoaded"), {name},
         [answer = std::move(answer)](const QDBusMessage& reply) {
             if (isReply(reply)) {
                 answer(reply.arguments().value(0).toBool());
             }
         });
}

void KWinScripting::call(const QString& owner, const QString& method, const QVariantList& arguments,
                         Answer answer) const {
    send(scriptingCall(owner, method, arguments), std::move(answer));
}

void KWinScripting::send(const QDBusMessage& message, Answer answer) const {
    auto* const watcher = new QDBusPendingCallWatcher(
        bus_.asyncCall(message, static_cast<int>(answerDeadline.count())), context_.get());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context_.get(),
                     [watcher, answer = std::move(answer)] {
                         watcher->deleteLater();
                         answer(watcher->reply());
                     });
}

} // namespace LinuxPlatform
