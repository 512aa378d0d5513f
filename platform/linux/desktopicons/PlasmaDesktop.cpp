#include "platform/linux/desktopicons/PlasmaDesktop.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <set>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr auto busName = "org.kde.plasmashell";

/// Prints [{"id", "filterMode", "filterPattern", "filterMimeTypes"}, …], all but the numbers `id` being texts
/// as they stand in the configuration.
constexpr auto readingScript = R"js(
var filters = [];
var all = desktops();
for (var index = 0; index < all.length; ++index) {
    var desktop = all[index];
    if (desktop.type == 'org.kde.plasma.folder') {
        desktop.currentConfigGroup = ['General'];
        filters.push({id: desktop.id,
                      filterMode: String(desktop.readConfig('filterMode', '0')),
                      filterPattern: String(desktop.readConfig('filterPattern', '*')),
                      filterMimeTypes: String(desktop.readConfig('filterMimeTypes', 'all/all'))});
    }
}
print(JSON.stringify(filters));
)js";

/// The wanted filters stand in front of it.
constexpr auto writingScript = R"js(
var all = desktops();
var written = 0;
for (var index = 0; index < all.length; ++index) {
    for (var number = 0; number < wanted.length; ++number) {
        var desktop = all[index];
        var filter = wanted[number];
        if (desktop.id == filter.id) {
            desktop.currentConfigGroup = ['General'];
            desktop.writeConfig('filterMode', filter.filterMode);
            desktop.writeConfig('filterPattern', filter.filterPattern);
            desktop.writeConfig('filterMimeTypes', filter.filterMimeTypes);
            desktop.reloadConfig();
            ++written;
        }
    }
}
print('written ' + written);
)js";

QJsonObject filter(const QJsonValue& desktop, const char* mode) {
    return {{QStringLiteral("id"), desktop},
            {QStringLiteral("filterMode"), QString::fromLatin1(mode)},
            {QStringLiteral("filterPattern"), QStringLiteral("*")},
            {QStringLiteral("filterMimeTypes"), QStringLiteral("all/all")}};
}

QJsonObject hidingFilter(const QJsonValue& desktop) {
    return filter(desktop, "2");
}

QJsonObject noFilter(const QJsonValue& desktop) {
    return filter(desktop, "0");
}

bool isHiding(const QJsonObject& filter) {
    return filter == hidingFilter(filter.value(QStringLiteral("id")));
}

bool isFilter(const QJsonValue& value) {
    const auto object = value.toObject();
    return object.size() == 4 && object.value(QStringLiteral("id")).isDouble() &&
           object.value(QStringLiteral("filterMode")).isString() &&
           object.value(QStringLiteral("filterPattern")).isString() &&
           object.value(QStringLiteral("filterMimeTypes")).isString();
}

/// Absent when the text is not what the script prints.
std::optional<QJsonArray> parseFilters(const QByteArray& text) {
    const auto document = QJsonDocument::fromJson(text.trimmed());
    if (!document.isArray()) {
        return std::nullopt;
    }
    const auto filters = document.array();
    for (const auto& value : filters) {
        if (!isFilter(value)) {
            return std::nullopt;
        }
    }
    return filters;
}

} // namespace

PlasmaDesktop::PlasmaDesktop(DesktopBus& bus, EarlierValue earlier)
    : bus_(bus),
      earlier_(std::move(earlier)) {}

DesktopIcons PlasmaDesktop::icons(const DesktopScene& scene) {
    if (!scene.hasName(busName)) {
        return DesktopIcons::absent;
    }
    const auto current = filters();
    if (!current) {
        return DesktopIcons::unknown;
    }
    for (const auto& filter : *current) {
        if (!isHiding(filter.toObject())) {
            forgetAnotherSession(filter.toObject().value(QStringLiteral("id")).toInt());
            return DesktopIcons::shown;
        }
    }
    return DesktopIcons::hidden;
}

void PlasmaDesktop::forgetAnotherSession(int shown) {
    if (earlier_.isOfThisSession()) {
        return;
    }
    for (const auto& filter : earlierFilters()) {
        if (filter.toObject().value(QStringLiteral("id")).toInt() == shown) {
            earlier_.forget();
            return;
        }
    }
}

void PlasmaDesktop::hide(const DesktopScene&) {
    const auto current = filters();
    if (!current) {
        return;
    }
    QJsonArray found;
    QJsonArray wanted;
    std::set<int> shown;
    for (const auto& filter : *current) {
        if (!isHiding(filter.toObject())) {
            const auto id = filter.toObject().value(QStringLiteral("id"));
            found.append(filter);
            wanted.append(hidingFilter(id));
            shown.insert(id.toInt());
        }
    }
    // Others may have been hidden before these came.
    const auto before = earlier_.isOfThisSession() ? earlier_.get() : std::nullopt;
    for (const auto& filter : before ? earlierFilters() : QJsonArray()) {
        if (!shown.contains(filter.toObject().value(QStringLiteral("id")).toInt())) {
            found.append(filter);
        }
    }
    earlier_.keep(QJsonDocument(found).toJson(QJsonDocument::Compact).toStdString());
    if (setFilters(wanted) == false) {
        earlier_.replace(before);
    }
}

bool PlasmaDesktop::show(const DesktopScene&) {
    auto wanted = earlierFilters();
    if (wanted.isEmpty() || setFilters(wanted) != true) {
        wanted = QJsonArray();
        for (const auto& filter : filters().value_or(QJsonArray())) {
            wanted.append(noFilter(filter.toObject().value(QStringLiteral("id"))));
        }
        if (wanted.isEmpty() || setFilters(wanted) != true) {
            return false;
        }
    }
    earlier_.forget();
    return true;
}

QJsonArray PlasmaDesktop::earlierFilters() const {
    const auto text = earlier_.get();
    return text ? parseFilters(QByteArray::fromStdString(*text)).value_or(QJsonArray()) : QJsonArray();
}

std::optional<QJsonArray> PlasmaDesktop::filters() {
    const auto answer = evaluate(QString::fromLatin1(readingScript));
    return isReply(answer) ? parseFilters(answer.arguments().value(0).toString().toUtf8()) : std::nullopt;
}

std::optional<bool> PlasmaDesktop::setFilters(const QJsonArray& filters) {
    const auto answer = evaluate(QStringLiteral("var wanted = ") +
                                 QString::fromUtf8(QJsonDocument(filters).toJson(QJsonDocument::Compact)) +
                                 QLatin1Char(';') + QString::fromLatin1(writingScript));
    if (!isReply(answer)) {
        return isDone(answer);
    }
    const auto printed = answer.arguments().value(0).toString().trimmed();
    return printed.startsWith(QStringLiteral("written ")) && printed != QStringLiteral("written 0");
}

QDBusMessage PlasmaDesktop::evaluate(const QString& script) {
    return bus_.call(QString::fromLatin1(busName), QStringLiteral("/PlasmaShell"),
                     QStringLiteral("org.kde.PlasmaShell"), QStringLiteral("evaluateScript"), {script});
}

} // namespace LinuxPlatform
