#pragma once

#include <QJsonArray>
#include <QStringList>

namespace LinuxPlatform {

/// What KWin is asked to do with windows, in the order in which it is to be done. Windows are named as KWin
/// does.
class KWinRequests {
public:
    enum class Act { hide, show, activate };

    bool isEmpty() const { return waiting_.isEmpty(); }
    void add(Act act, const QStringList& windows);
    /// As much as KWin may do at once, as `KWinScripts::requests` takes it; not empty where something is
    /// there.
    QJsonArray takePortion();
    /// Puts a portion in front of what is waiting.
    void putBack(QJsonArray portion);
    static bool hasShow(const QJsonArray& portion);

private:
    QJsonArray waiting_;
};

} // namespace LinuxPlatform
