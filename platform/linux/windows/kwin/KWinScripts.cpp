#include "platform/linux/windows/kwin/KWinScripts.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace LinuxPlatform::KWinScripts {
namespace {

/// Versions 5 and 6 name some things differently. `address` and `load` stand before it, `isNewRun` before the
/// watcher, `requests` and `number` before the requests.
constexpr auto common = R"js(
function tell(report) {
    report.load = load;
    callDBus(address[0], address[1], address[2], "Report", JSON.stringify(report));
}
function allWindows() {
    return workspace.windowList ? workspace.windowList() : workspace.clientList();
}
// What was done to a window outlives the script and whoever it reports to, so it is noted at the window.
var mark = "out of the switcher by Curtain";
function takeOutOfSwitcher(window) {
    if (window.minimized && !window.skipSwitcher) {
        window.skipSwitcher = true;
        window.objectName = mark;
    }
}
function returnToSwitcher(window) {
    if (window.objectName === mark) {
        window.objectName = "";
        window.skipSwitcher = false;
    }
}
)js";

constexpr auto actsText = R"js(
function setMinimized(window, isMinimized) {
    if (window.minimized !== isMinimized) {
        window.minimized = isMinimized;
    }
}
var acts = {
    hide: function (window) {
        setMinimized(window, true);
        takeOutOfSwitcher(window);
    },
    show: function (window) {
        setMinimized(window, false);
        returnToSwitcher(window);
    },
    activate: function (window) {
        if ("activeWindow" in workspace) {
            workspace.activeWindow = window;
        } else {
            workspace.activeClient = window;
        }
    }
};
function carryOut(requests, number) {
    var windows = {};
    allWindows().forEach(function (window) { windows[String(window.internalId)] = window; });
    requests.forEach(function (request) {
        var present = request.ids.map(function (id) { return windows[id]; }).filter(Boolean);
        present.forEach(acts[request.act]);
        // Some windows may be minimized only after those that they belong to.
        if (request.act === "hide") {
            present.forEach(acts.hide);
        }
    });
    tell({event: "done", request: number});
}
)js";

constexpr auto watcherText = R"js(
// What is to be done because of a report comes as the answer to a question, which is asked again as long as
// there is something to report.
var isAsking = false;
var hasToldSince = false;
function ask() {
    isAsking = true;
    hasToldSince = false;
    callDBus(address[0], address[1], address[2], "Next", String(load), function (answer) {
        isAsking = false;
        if (answer || hasToldSince) {
            ask();
        }
        // More may wait for this to be done.
        if (answer) {
            var work = JSON.parse(answer);
            carryOut(work.requests, work.number);
        }
    });
}
function tellAndAsk(report) {
    tell(report);
    hasToldSince = true;
    if (!isAsking) {
        ask();
    }
}
function isOnDesktop(window) {
    if (window.onAllDesktops) {
        return true;
    }
    if (typeof workspace.currentDesktop === "number") {
        return window.desktop === workspace.currentDesktop;
    }
    return window.desktops.some(function (desktop) { return desktop.id === workspace.currentDesktop.id; });
}
function isHere(window) {
    return isOnDesktop(window) &&
        (window.activities.length === 0 || window.activities.indexOf(workspace.currentActivity) >= 0);
}
function belongsToAnApp(window) {
    return window.managed !== false && !window.desktopWindow && !window.dock && !window.popupWindow &&
        !window.tooltip && !window.dropdownMenu && !window.popupMenu && !window.comboBox && !window.dndIcon &&
        !window.notification && !window.criticalNotification && !window.onScreenDisplay &&
        !window.appletPopup && !window.outline && !window.deleted;
}
function idOf(window) {
    return String(window.internalId);
}
function described(window) {
    return {
        id: idOf(window),
        name: String(window.resourceName),
        "class": String(window.resourceClass),
        desktopFile: String(window.desktopFileName),
        pid: window.pid,
        client: window.windowId ? Math.floor(window.windowId / 0x200000) : 0,
        stacking: window.stackingOrder,
        isMinimized: window.minimized,
        isInTaskList: !window.skipTaskbar,
        isHere: isHere(window)
    };
}
function follow(window) {
    window.minimizedChanged.connect(function () {
        if (!window.minimized) {
            returnToSwitcher(window);
        }
    });
    ["minimizedChanged", "windowClassChanged", "desktopFileNameChanged", "skipTaskbarChanged", "desktopChanged",
     "desktopsChanged", "activitiesChanged"].forEach(function (name) {
        if (window[name]) {
            window[name].connect(function () { tellAndAsk({event: "changed", window: described(window)}); });
        }
    });
}
function tellWhatIsHere() {
    tell({event: "here", ids: allWindows().filter(belongsToAnApp).filter(isHere).map(idOf)});
}
(workspace.windowAdded || workspace.clientAdded).connect(function (window) {
    if (belongsToAnApp(window)) {
        follow(window);
        tellAndAsk({event: "opened", window: described(window)});
    }
});
(workspace.windowRemoved || workspace.clientRemoved).connect(function (window) {
    tell({event: "closed", id: idOf(window)});
});
(workspace.windowActivated || workspace.clientActivated).connect(function (window) {
    tellAndAsk({event: "activated", id: window ? idOf(window) : ""});
});
workspace.currentDesktopChanged.connect(tellWhatIsHere);
workspace.currentActivityChanged.connect(tellWhatIsHere);
var present = allWindows().filter(belongsToAnApp);
present.forEach(follow);
present.filter(function (window) { return isNewRun || !window.minimized; }).forEach(returnToSwitcher);
var active = "activeWindow" in workspace ? workspace.activeWindow : workspace.activeClient;
tellAndAsk({event: "list", windows: present.map(described), active: active ? idOf(active) : ""});
)js";

constexpr auto requestsText = R"js(
carryOut(requests, number);
)js";

constexpr auto farewellText = R"js(
allWindows().forEach(returnToSwitcher);
)js";

std::string literal(const QJsonArray& value) {
    return QJsonDocument(value).toJson(QJsonDocument::Compact).toStdString();
}

/// A function keeps the names of several scripts apart in engines that they share.
std::string script(const Address& address, std::uint64_t load, const std::string& text) {
    return "(function () {\n\"use strict\";\nvar address = " +
           literal({address.service, address.path, address.interfaceName}) +
           ";\nvar load = " + std::to_string(load) + ";\n" + common + text + "})();\n";
}

} // namespace

std::string watcher(const Address& address, std::uint64_t load, bool isNewRun) {
    return script(address, load,
                  std::string("var isNewRun = ") + (isNewRun ? "true" : "false") + ";\n" + actsText +
                      watcherText);
}

std::string requests(const Address& address, std::uint64_t load, std::uint64_t number,
                     const QJsonArray& requests) {
    return script(address, load,
                  "var requests = " + literal(requests) + ";\nvar number = " + std::to_string(number) +
                      ";\n" + actsText + requestsText);
}

QByteArray answer(std::uint64_t number, const QJsonArray& requests) {
    return QJsonDocument(QJsonObject{{QStringLiteral("number"), static_cast<qint64>(number)},
                                     {QStringLiteral("requests"), requests}})
        .toJson(QJsonDocument::Compact);
}

std::string farewell(const Address& address) {
    return script(address, 0, farewellText);
}

} // namespace LinuxPlatform::KWinScripts
