#include "platform/linux/windows/i3/I3Place.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <iterator>

namespace LinuxPlatform {
namespace {

/// On each side. With more of them nobody knows what is beside what.
constexpr std::ptrdiff_t mostNeighbours = 16;

QJsonValue number(std::int64_t value) {
    return static_cast<qint64>(value);
}

QString qtText(const std::string& text) {
    return QString::fromStdString(text);
}

QJsonArray jsonOf(const I3Rect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

I3Rect rectOf(const QJsonValue& json) {
    const auto numbers = json.toArray();
    return {numbers[0].toInt(), numbers[1].toInt(), numbers[2].toInt(), numbers[3].toInt()};
}

QJsonObject jsonOf(const I3Place::Item& item) {
    QJsonArray windows;
    for (const auto window : item.windows) {
        windows.append(number(static_cast<std::int64_t>(window)));
    }
    return {{QStringLiteral("windows"), windows},
            {QStringLiteral("group"), number(item.group)},
            {QStringLiteral("rect"), jsonOf(item.rect)}};
}

I3Place::Item itemOf(const QJsonObject& json) {
    I3Place::Item item;
    for (const auto& window : json[QLatin1String("windows")].toArray()) {
        item.windows.push_back(static_cast<WindowId>(window.toInteger()));
    }
    item.group = json[QLatin1String("group")].toInteger();
    item.rect = rectOf(json[QLatin1String("rect")]);
    return item;
}

QJsonObject jsonOf(const I3Place::Level& level) {
    QJsonArray items;
    for (const auto& item : level.items) {
        items.append(jsonOf(item));
    }
    return {{QStringLiteral("layout"), qtText(level.layout)},
            {QStringLiteral("items"), items},
            {QStringLiteral("index"), number(static_cast<std::int64_t>(level.index))}};
}

I3Place::Level levelOf(const QJsonObject& json) {
    I3Place::Level level;
    level.layout = json[QLatin1String("layout")].toString().toStdString();
    for (const auto& item : json[QLatin1String("items")].toArray()) {
        level.items.push_back(itemOf(item.toObject()));
    }
    level.index = static_cast<std::size_t>(json[QLatin1String("index")].toInteger());
    return level;
}

I3Place::Item itemOf(const I3Node& node) {
    return {windowsIn(node), node.isWindow ? 0 : node.id, node.isFullscreen ? I3Rect() : node.rect};
}

I3Place::Level levelOf(const I3Node& group, const I3Node& child) {
    I3Place::Level level;
    level.layout = group.layout;
    const auto position = &child - group.nodes.data();
    const auto first = std::max(position - mostNeighbours, std::ptrdiff_t{0});
    const auto end = std::min(position + mostNeighbours + 1, std::ssize(group.nodes));
    for (auto index = first; index < end; ++index) {
        level.items.push_back(itemOf(group.nodes[static_cast<std::size_t>(index)]));
    }
    level.index = static_cast<std::size_t>(position - first);
    return level;
}

} // namespace

I3Place I3Place::of(const I3Leaf& leaf) {
    I3Place place;
    const auto& node = *leaf.node;
    place.workspace = leaf.workspace->name;
    place.output = leaf.output != nullptr ? leaf.output->name : "";
    place.isFloating = leaf.floating != nullptr;
    place.rect = place.isFloating ? leaf.floating->rect : node.rect;
    place.isFullscreen = node.isFullscreen;
    for (const auto* const around : {leaf.node, leaf.floating, leaf.floatingGroup}) {
        place.isSticky = place.isSticky || (around != nullptr && around->isSticky);
        place.isOfScratchpad = place.isOfScratchpad || (around != nullptr && around->isOfScratchpad);
    }
    place.border = node.border;
    place.borderWidth = node.borderWidth;
    if (!leaf.ancestors.empty()) {
        const auto& order = leaf.ancestors.back()->focusOrder;
        place.isOnTop = !order.empty() && order.front() == node.id;
        for (std::size_t depth = 0; depth < leaf.ancestors.size(); ++depth) {
            const bool isInnermost = depth + 1 == leaf.ancestors.size();
            place.levels.push_back(
                levelOf(*leaf.ancestors[depth], isInnermost ? node : *leaf.ancestors[depth + 1]));
        }
    }
    return place;
}

void I3Place::takeSizes(const I3Place& other) {
    for (auto& level : levels) {
        const auto same = std::ranges::find_if(other.levels, [&](const Level& candidate) {
            return std::ranges::equal(candidate.items, level.items, {}, &Item::windows, &Item::windows);
        });
        if (same != other.levels.end()) {
            level.items = same->items;
        }
    }
}

std::string I3Place::text() const {
    QJsonArray levelList;
    for (const auto& level : levels) {
        levelList.append(jsonOf(level));
    }
    const QJsonObject json{{QStringLiteral("process"), number(process.value_or(0))},
                           {QStringLiteral("workspace"), qtText(workspace)},
                           {QStringLiteral("output"), qtText(output)},
                           {QStringLiteral("floating"), isFloating},
                           {QStringLiteral("rect"), jsonOf(rect)},
                           {QStringLiteral("fullscreen"), isFullscreen},
                           {QStringLiteral("sticky"), isSticky},
                           {QStringLiteral("scratchpad"), isOfScratchpad},
                           {QStringLiteral("top"), isOnTop},
                           {QStringLiteral("border"), qtText(border)},
                           {QStringLiteral("borderWidth"), borderWidth},
                           {QStringLiteral("levels"), levelList}};
    return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

std::optional<I3Place> I3Place::fromText(const std::string& text) {
    const auto json = QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
    I3Place place;
    place.workspace = json[QLatin1String("workspace")].toString().toStdString();
    if (place.workspace.empty()) {
        return std::nullopt;
    }
    if (const auto process = json[QLatin1String("process")].toInteger(); process > 0) {
        place.process = static_cast<std::uint32_t>(process);
    }
    place.output = json[QLatin1String("output")].toString().toStdString();
    place.isFloating = json[QLatin1String("floating")].toBool();
    place.rect = rectOf(json[QLatin1String("rect")]);
    place.isFullscreen = json[QLatin1String("fullscreen")].toBool();
    place.isSticky = json[QLatin1String("sticky")].toBool();
    place.isOfScratchpad = json[QLatin1String("scratchpad")].toBool();
    place.isOnTop = json[QLatin1String("top")].toBool();
    place.border = json[QLatin1String("border")].toString().toStdString();
    place.borderWidth = json[QLatin1String("borderWidth")].toInt();
    for (const auto& level : json[QLatin1String("levels")].toArray()) {
        place.levels.push_back(levelOf(level.toObject()));
    }
    const bool isWhole = std::ranges::all_of(
        place.levels, [](const Level& level) { return level.index < level.items.size(); });
    return isWhole ? std::optional(place) : std::nullopt;
}

} // namespace LinuxPlatform
