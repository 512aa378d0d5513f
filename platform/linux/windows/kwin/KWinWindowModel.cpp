#include "platform/linux/windows/kwin/KWinWindowModel.h"

#include <QJsonArray>
#include <QUuid>

#include <algorithm>
#include <set>
#include <utility>

namespace LinuxPlatform {
namespace {

QString text(const QJsonObject& object, const char* key) {
    return object.value(QLatin1String(key)).toString();
}

/// Of the 122 random bits of KWin's identifier; absent for what is no such identifier.
std::optional<WindowId> identifierIn(const QString& name) {
    const auto uuid = QUuid::fromString(name);
    if (uuid.isNull()) {
        return std::nullopt;
    }
    const auto bytes = uuid.toRfc4122();
    WindowId identifier = 0;
    for (int index = 0; index < 8; ++index) {
        identifier = identifier << 8U | static_cast<unsigned char>(bytes[index]);
    }
    return identifier;
}

WindowHints hintsIn(const QJsonObject& described) {
    WindowHints hints;
    hints.instanceName = text(described, "name").toStdString();
    hints.className = text(described, "class").toStdString();
    hints.desktopFile = text(described, "desktopFile").toStdString();
    if (const auto process = described.value(QLatin1String("pid")).toInteger(); process > 0) {
        hints.process = static_cast<std::uint32_t>(process);
    }
    return hints;
}

bool flag(const QJsonObject& object, const char* key) {
    return object.value(QLatin1String(key)).toBool();
}

} // namespace

KWinWindowModel::Changes KWinWindowModel::take(const QJsonObject& report) {
    Changes changes;
    const auto event = text(report, "event");
    if (event == QStringLiteral("list")) {
        takeList(report, changes);
    } else if (event == QStringLiteral("opened") || event == QStringLiteral("changed")) {
        takeWindow(report.value(QLatin1String("window")).toObject(), changes);
    } else if (event == QStringLiteral("closed")) {
        if (const auto gone = identifierIn(text(report, "id"))) {
            generation_ += entries_.erase(*gone);
        }
    } else if (event == QStringLiteral("activated")) {
        takeActivated(text(report, "id"), changes);
    } else if (event == QStringLiteral("here")) {
        takeWhatIsHere(report);
    }
    return changes;
}

void KWinWindowModel::takeList(const QJsonObject& report, Changes& changes) {
    std::vector<QJsonObject> present;
    std::set<WindowId> names;
    for (const auto& window : report.value(QLatin1String("windows")).toArray()) {
        present.push_back(window.toObject());
        names.insert(identifierIn(text(present.back(), "id")).value_or(0));
    }
    generation_ += std::erase_if(entries_, [&](const auto& entry) { return !names.contains(entry.first); });
    for (const auto& described : present) {
        takeWindow(described, changes);
    }
    std::ranges::stable_sort(present, {}, [](const QJsonObject& window) {
        return window.value(QLatin1String("stacking")).toInteger();
    });
    for (const auto& described : present) {
        raise(identifierIn(text(described, "id")).value_or(0));
    }
    takeActivated(text(report, "active"), changes);
    if (std::exchange(isFirstList_, false)) {
        // They are not new, but they may have been looked for before.
        changes = {{}, std::exchange(changes.opened, {}), {}};
        std::erase_if(changes.returned, [this](WindowId id) { return entries_.at(id).window.isHidden; });
    }
}

void KWinWindowModel::takeWindow(const QJsonObject& described, Changes& changes) {
    const auto name = text(described, "id");
    const auto id = identifierIn(name);
    if (!id) {
        return;
    }
    const auto [position, isNew] = entries_.try_emplace(*id);
    auto& entry = position->second;
    const auto before = entry.window;
    if (isNew) {
        entry.name = name;
        entry.window.id = *id;
        entry.window.birth = ++lastBirth_;
        raise(*id);
    }
    entry.isHere = flag(described, "isHere");
    entry.window.hints = hintsIn(described);
    entry.window.client = static_cast<std::uint64_t>(described.value(QLatin1String("client")).toInteger());
    entry.window.isHidden = flag(described, "isMinimized");
    entry.window.isInTaskList = flag(described, "isInTaskList");
    ++generation_;
    if (isNew || before.hints != entry.window.hints) {
        changes.opened.push_back(*id);
    } else if (before.isHidden && !entry.window.isHidden) {
        changes.returned.push_back(*id);
    }
}

void KWinWindowModel::takeActivated(const QString& name, Changes& changes) {
    const auto now = identifierIn(name);
    if (std::exchange(active_, now) != now && now) {
        changes.activated = now;
        raise(*now);
    }
}

void KWinWindowModel::takeWhatIsHere(const QJsonObject& report) {
    std::set<WindowId> here;
    for (const auto& name : report.value(QLatin1String("ids")).toArray()) {
        here.insert(identifierIn(name.toString()).value_or(0));
    }
    for (auto& [id, entry] : entries_) {
        entry.isHere = here.contains(id);
    }
}

void KWinWindowModel::raise(WindowId window) {
    if (const auto found = entries_.find(window); found != entries_.end()) {
        found->second.raised = ++lastRaised_;
    }
}

const std::vector<Window>& KWinWindowModel::windows() {
    if (std::exchange(builtGeneration_, generation_) != generation_) {
        windows_.clear();
        for (const auto& [id, entry] : entries_) {
            windows_.push_back(entry.window);
        }
        std::ranges::sort(windows_, {}, &Window::birth);
    }
    return windows_;
}

const Window* KWinWindowModel::find(WindowId window) const {
    const auto found = entries_.find(window);
    return found == entries_.end() ? nullptr : &found->second.window;
}

QString KWinWindowModel::nameOf(WindowId window) const {
    const auto found = entries_.find(window);
    return found == entries_.end() ? QString() : found->second.name;
}

bool KWinWindowModel::isHere(WindowId window) const {
    const auto found = entries_.find(window);
    return found != entries_.end() && found->second.isHere;
}

std::vector<WindowId> KWinWindowModel::stackingOrder() const {
    std::vector<WindowId> order;
    for (const auto& [id, entry] : entries_) {
        order.push_back(id);
    }
    std::ranges::sort(order, {}, [this](WindowId id) { return entries_.at(id).raised; });
    return order;
}

} // namespace LinuxPlatform
