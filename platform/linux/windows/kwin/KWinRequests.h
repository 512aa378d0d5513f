#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace LinuxPlatform {

/// What KWin is asked to do with windows, which it names itself. What is hidden goes first; otherwise the
/// order stays.
class KWinRequests {
public:
    enum class Act { hide, show, activate };

    struct Request {
        Act act = Act::hide;
        QStringList windows;

        bool operator==(const Request&) const = default;
    };

    using Portion = std::vector<Request>;

    bool isEmpty() const { return waiting_.empty(); }
    /// Withdraws what waits and contradicts it.
    void add(Act act, const QStringList& windows);
    /// As much as KWin may do at once; not empty where something is there.
    Portion takePortion();
    /// Puts a portion in front of what is waiting, but for what contradicts that.
    void putBack(const Portion& portion);
    /// Whether the window waits to be shown.
    bool shows(const QString& window) const { return shows(waiting_, window); }

    static bool shows(const Portion& portion, const QString& window);
    static bool hasShow(const Portion& portion);
    /// As `KWinScripts::requests` takes it.
    static QJsonArray forScript(const Portion& portion);

private:
    void withdraw(Act act, const QStringList& windows);

    std::vector<Request> waiting_;
};

} // namespace LinuxPlatform
