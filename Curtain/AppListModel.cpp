#include "Curtain/AppListModel.h"

#include "Curtain/ViewText.h"

#include <algorithm>
#include <utility>

namespace Curtain {
namespace {

bool isSameLine(const AppListRow& one, const AppListRow& other) {
    return one.kind == other.kind && one.app == other.app;
}

QString kindName(AppListRow::Kind kind) {
    switch (kind) {
    case AppListRow::Kind::privateApp:
        return QStringLiteral("privateApp");
    case AppListRow::Kind::divider:
        return QStringLiteral("divider");
    case AppListRow::Kind::candidate:
        return QStringLiteral("candidate");
    }
    return {};
}

QString visibilityName(PrivateAppVisibility visibility) {
    switch (visibility) {
    case PrivateAppVisibility::visible:
        return QStringLiteral("visible");
    case PrivateAppVisibility::hidden:
        return QStringLiteral("hidden");
    case PrivateAppVisibility::notRunning:
        return QStringLiteral("notRunning");
    }
    return {};
}

} // namespace

AppListModel::AppListModel(IconSource iconSource) : iconSource_(std::move(iconSource)) {}

void AppListModel::setRows(std::vector<AppListRow> rows) {
    const auto shorter = static_cast<std::ptrdiff_t>(std::min(rows_.size(), rows.size()));
    const auto head =
        std::mismatch(rows_.begin(), rows_.begin() + shorter, rows.begin(), isSameLine).first - rows_.begin();
    const auto tail =
        std::mismatch(rows_.rbegin(), rows_.rbegin() + (shorter - head), rows.rbegin(), isSameLine).first -
        rows_.rbegin();
    const auto oldEnd = static_cast<std::ptrdiff_t>(rows_.size()) - tail;
    const auto newEnd = static_cast<std::ptrdiff_t>(rows.size()) - tail;
    if (head < oldEnd) {
        beginRemoveRows({}, static_cast<int>(head), static_cast<int>(oldEnd) - 1);
        rows_.erase(rows_.begin() + head, rows_.begin() + oldEnd);
        endRemoveRows();
    }
    if (head < newEnd) {
        beginInsertRows({}, static_cast<int>(head), static_cast<int>(newEnd) - 1);
        rows_.insert(rows_.begin() + head, rows.begin() + head, rows.begin() + newEnd);
        endInsertRows();
    }
    for (std::size_t line = 0; line < rows.size(); ++line) {
        if (rows_[line] != rows[line]) {
            rows_[line] = rows[line];
            const auto changed = index(static_cast<int>(line));
            Q_EMIT dataChanged(changed, changed);
        }
    }
}

int AppListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant AppListModel::data(const QModelIndex& index, int role) const {
    const auto& row = rows_.at(static_cast<std::size_t>(index.row()));
    switch (role) {
    case kindRole:
        return kindName(row.kind);
    case bundleIDRole:
        return QString::fromStdString(row.app.bundleID);
    case nameRole:
        return shownName(row.app.name, row.app.bundleID);
    case visibilityRole:
        return visibilityName(row.visibility);
    case iconRole: {
        auto found = icons_.find(row.app.bundleID);
        if (found == icons_.end()) {
            found = icons_.emplace(row.app.bundleID, iconSource_(row.app.bundleID)).first;
        }
        return found->second;
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> AppListModel::roleNames() const {
    return {{kindRole, "kind"},
            {bundleIDRole, "bundleID"},
            {nameRole, "name"},
            {visibilityRole, "visibility"},
            {iconRole, "icon"}};
}

} // namespace Curtain
