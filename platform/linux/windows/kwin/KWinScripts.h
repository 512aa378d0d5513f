#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <cstdint>
#include <string>

namespace LinuxPlatform::KWinScripts {

/// Where the scripts report: the method Report of an object, which takes one text, a JSON object. Its "load"
/// is the number that the script was made with, and its "event" one of
/// - "list": "windows", all that there are, and "active", the one that has the focus or nothing,
/// - "opened" and "changed": "window",
/// - "closed": "id",
/// - "activated": "id", or nothing where no window has the focus now,
/// - "here": "ids", the windows that are on the present desktop and activity,
/// - "done": "request", the number of requests that have been carried out.
/// The watcher asks by the method Next, which takes its "load" as a text, after what it reports: its answer,
/// which may come some seconds later, is one of `answer` or nothing.
/// A window has its "id" as KWin writes it, "name" and "class", "desktopFile", "pid" (not positive where it
/// is not known), "client" (of an X11 window, a number for its connection), "stacking" (from the bottom up),
/// and whether it "isMinimized", "isInTaskList" and "isHere".
struct Address {
    /// A unique name on the bus.
    QString service;
    QString path;
    QString interfaceName;
};

/// Reports all windows once and then whatever happens to them, for as long as it is loaded. A hidden window
/// is left out of KWin's switchers, which would show its picture; the watcher sees to it that one that
/// somebody brings back is in there again, even when nobody listens any more. A new run's also sees to those
/// that an earlier run, which was killed, has left hidden.
std::string watcher(const Address& address, std::uint64_t load, bool isNewRun);

/// Carries out what is asked, once, and reports that with `number`. Each request has "act", one of "hide",
/// "show" and "activate", and the "ids" of windows; it is data for the script and cannot become code.
std::string requests(const Address& address, std::uint64_t load, std::uint64_t number,
                     const QJsonArray& requests);

/// The same for a watcher that has asked, as text.
QByteArray answer(std::uint64_t number, const QJsonArray& requests);

/// Leaves hidden what is hidden, but as its user could have put it away.
std::string farewell(const Address& address);

} // namespace LinuxPlatform::KWinScripts
