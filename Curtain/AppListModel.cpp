#include "Curtain/AppListModel.h"

#include "Curtain/ViewText.h"

#include <algorithm>
#include <iterator>
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
    case PrivateAppVisibility::notInstalled:
        return QStringLiteral("notInstalled");
    case PrivateAppVisibility::unknown:
        return QStringLiteral("cannotTell");
    }
    return {};
}

} // namespace

AppListModel::AppListModel(IconSource iconSource) : iconSource_(std::move(iconSource)) {}

void AppListModel::setRows(std::vector<AppListRow> rows) {
    // Kind by kind: an app that goes from one kind to another leaves all others where they are.
    std::ptrdiff_t begin = 0;
    for (const auto kind :
         {AppListRow::Kind::privateApp, AppListRow::Kind::divider, AppListRow::Kind::candidate}) {
        begin = setRowsOfKind(kind, rows, begin);
    }
    for (std::size_t line = 0; line < rows.size(); ++line) {
        if (rows_[line] != rows[line]) {
            rows_[line] = rows[line];
            const auto changed = index(static_cast<int>(line));
            Q_EMIT dataChanged(changed, changed);
        }
    }
}

std::ptrdiff_t AppListModel::setRowsOfKind(AppListRow::Kind kind, const std::vector<AppListRow>& rows,
                                           std::ptrdiff_t begin) {
    const auto isOfKind = [kind](const AppListRow& row) { return row.kind == kind; };
    const auto oldBegin = rows_.begin() + begin;
    const auto newBegin = rows.begin() + begin;
    const auto oldCount = std::find_if_not(oldBegin, rows_.end(), isOfKind) - oldBegin;
    const auto newCount = std::find_if_not(newBegin, rows.end(), isOfKind) - newBegin;
    const auto shorter = std::min(oldCount, newCount);
    const auto head = std::mismatch(oldBegin, oldBegin + shorter, newBegin, isSameLine).first - oldBegin;
    const auto oldTail = std::make_reverse_iterator(oldBegin + oldCount);
    const auto newTail = std::make_reverse_iterator(newBegin + newCount);
    const auto tail = std::mismatch(oldTail, oldTail + (shorter - head), newTail, isSameLine).first - oldTail;
    const auto first = begin + head;
    if (const auto count = oldCount - tail - head; count > 0) {
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count) - 1);
        rows_.erase(rows_.begin() + first, rows_.begin() + first + count);
        endRemoveRows();
    }
    if (const auto count = newCount - tail - head; count > 0) {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + count) - 1);
        rows_.insert(rows_.begin() + first, rows.begin() + first, rows.begin() + first + count);
        endInsertRows();
    }
    return begin + newCount;
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
