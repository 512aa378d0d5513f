#pragma once

#include "tests/platform/dbus/BusObject.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QString>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// KWin as far as it loads Curtain's scripts and runs them: it reports the windows that the test names, and
/// notes what it is asked to do with them.
class KWinStandIn : public BusObject {
public:
    explicit KWinStandIn(QDBusConnection bus)
        : BusObject(std::move(bus), QStringLiteral("org.kde.KWin"), QStringLiteral("/"),
                    QDBusConnection::SubPath) {}

    static QString watcher() { return QStringLiteral("curtain-windows"); }
    static QString requests() { return QStringLiteral("curtain-requests"); }

    QJsonArray windows;
    /// One that does not is taken for one that has no time.
    bool answers = true;
    /// One that does not loads no script.
    bool runsScripts = true;
    /// How many of the next requests it does not load.
    int refusals = 0;
    /// Requests are run when `runHeld` is called.
    bool holdsRequests = false;
    /// Gives a script for its number how many there are. One that is unloaded counts until it has been
    /// answered.
    bool countsScripts = false;
    /// The script that was the last to list the windows.
    QString lister;
    /// Whether its watcher asks what is to be done, once, after it has reported the windows.
    bool asks = false;
    /// What the watcher was told to do is not done, as when it is unloaded at that moment.
    bool losesAnswers = false;
    /// Its watcher's questions, and how many of them have been answered, be it with nothing.
    int questions = 0;
    int answered = 0;
    /// Of scripts that carry out requests, however they ended.
    int requestScripts = 0;
    /// Each as "hide {...} {...}".
    std::vector<std::string> carriedOut;

    /// As somebody does who unloads a script.
    void forget(const QString& script) { scripts_.erase(script); }
    /// Of somebody else's, which does nothing.
    void add(const QString& script, int number) { scripts_[script] = {number, {}, true}; }
    bool has(const QString& script) const { return scripts_.contains(script); }
    bool holdsSome() const { return !held_.empty(); }
    void runHeld() {
        holdsRequests = false;
        for (const auto& [script, message] : std::exchange(held_, {})) {
            run(script, message);
        }
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        const auto name = message.arguments().value(0).toString();
        if (!answers) {
            bus().send(message.createErrorReply(QDBusError::NoReply, QStringLiteral("no time")));
        } else if (message.member() == QStringLiteral("loadScript")) {
            load(message.arguments().value(1).toString(), name, message);
        } else if (message.member() == QStringLiteral("unloadScript")) {
            unload(name, message);
        } else if (message.member() == QStringLiteral("isScriptLoaded")) {
            bus().send(message.createReply(scripts_.contains(name)));
        } else if (message.member() == QStringLiteral("run")) {
            runAt(message);
        } else {
            return false;
        }
        return true;
    }

private:
    struct Script {
        int number = 0;
        QString text;
        /// Where the bus has an object of that number already, another gets none.
        bool hasObject = false;
    };

    void load(const QString& name, const QString& path, const QDBusMessage& message) {
        QFile file(path);
        requestScripts += name == requests() ? 1 : 0;
        const bool isRefused = name == requests() && refusals > 0;
        if (!runsScripts || isRefused || scripts_.contains(name) || !file.open(QIODevice::ReadOnly)) {
            refusals -= isRefused ? 1 : 0;
            bus().send(message.createReply(-1));
            return;
        }
        const auto count = static_cast<int>(scripts_.size() + leaving_.size());
        const auto number = countsScripts ? count : lastNumber_++;
        const auto hasIt = [number](const auto& script) {
            return script.second.number == number && script.second.hasObject;
        };
        const bool isTaken = std::ranges::any_of(scripts_, hasIt) || std::ranges::any_of(leaving_, hasIt);
        scripts_[name] = {number, QString::fromUtf8(file.readAll()), !isTaken};
        bus().send(message.createReply(number));
    }

    void unload(const QString& name, const QDBusMessage& message) {
        const auto script = scripts_.extract(name);
        const auto reply = message.createReply(!script.empty());
        if (!countsScripts) {
            bus().send(reply);
            return;
        }
        if (!script.empty()) {
            leaving_.insert_or_assign(name, script.mapped());
        }
        // What is sent without waiting for the answer comes before.
        QTimer::singleShot(std::chrono::milliseconds(20), this, [this, name, reply] {
            leaving_.erase(name);
            bus().send(reply);
        });
    }

    void runAt(const QDBusMessage& message) {
        const auto found = std::ranges::find_if(scripts_, [&](const auto& script) {
            return script.second.hasObject &&
                   message.path() == QStringLiteral("/Scripting/Script%1").arg(script.second.number);
        });
        if (found == scripts_.end()) {
            bus().send(message.createErrorReply(QDBusError::UnknownObject, message.path()));
        } else if (found->second.text.isEmpty()) {
            bus().send(message.createReply());
        } else if (holdsRequests && found->first == requests()) {
            held_.emplace_back(found->second, message);
        } else {
            lister = found->first == requests() ? lister : found->first;
            run(found->second, message);
        }
    }

    void run(const Script& script, const QDBusMessage& message) {
        QJsonObject report{{QStringLiteral("load"), value(script, "load")}};
        if (const auto asked = value(script, "requests").toArray(); !asked.isEmpty()) {
            note(asked);
            report[QStringLiteral("event")] = QStringLiteral("done");
            report[QStringLiteral("request")] = value(script, "number");
        } else {
            report[QStringLiteral("event")] = QStringLiteral("list");
            report[QStringLiteral("windows")] = windows;
        }
        const auto address = value(script, "address").toArray();
        // Before, so that whoever hears the report has heard the question too.
        if (asks && report.contains(QStringLiteral("windows"))) {
            ask(address, report[QStringLiteral("load")]);
        }
        tell(address, report);
        bus().send(message.createReply());
    }

    void ask(const QJsonArray& address, const QJsonValue& load) {
        ++questions;
        auto question = call(address, "Next");
        question.setArguments({QString::number(load.toInteger())});
        auto* const watcher = new QDBusPendingCallWatcher(bus().asyncCall(question), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, address, load, watcher] {
            watcher->deleteLater();
            ++answered;
            const auto text = watcher->reply().arguments().value(0).toString();
            const auto work = QJsonDocument::fromJson(text.toUtf8()).object();
            if (text.isEmpty() || losesAnswers) {
                return;
            }
            note(work[QStringLiteral("requests")].toArray());
            tell(address, {{QStringLiteral("load"), load},
                           {QStringLiteral("event"), QStringLiteral("done")},
                           {QStringLiteral("request"), work[QStringLiteral("number")]}});
        });
    }

    void note(const QJsonArray& asked) {
        for (const auto& request : asked) {
            auto text = request[QStringLiteral("act")].toString();
            for (const auto& id : request[QStringLiteral("ids")].toArray()) {
                text += QLatin1Char(' ') + id.toString();
            }
            carriedOut.push_back(text.toStdString());
        }
    }

    void tell(const QJsonArray& address, const QJsonObject& report) {
        auto message = call(address, "Report");
        message.setArguments({QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Compact))});
        bus().send(message);
    }

    static QDBusMessage call(const QJsonArray& address, const char* method) {
        return QDBusMessage::createMethodCall(address[0].toString(), address[1].toString(),
                                              address[2].toString(), QLatin1String(method));
    }

    /// What a script's text gives a variable.
    static QJsonValue value(const Script& script, const char* variable) {
        const QRegularExpression definition(QStringLiteral("^var %1 = (.*);$").arg(QLatin1String(variable)),
                                            QRegularExpression::MultilineOption);
        const auto text = definition.match(script.text).captured(1);
        return QJsonDocument::fromJson('[' + text.toUtf8() + ']').array().at(0);
    }

    int lastNumber_ = 0;
    std::map<QString, Script> scripts_;
    std::map<QString, Script> leaving_;
    std::vector<std::pair<Script, QDBusMessage>> held_;
};

} // namespace TestSupport
