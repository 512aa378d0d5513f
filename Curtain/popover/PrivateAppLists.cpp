#include "Curtain/popover/PrivateAppLists.h"

#include "Curtain/ViewText.h"

#include <algorithm>
#include <set>
#include <utility>

namespace Curtain {

PrivateAppLists::PrivateAppLists(const Services& services, std::string lang)
    : services_(services),
      privateApps_([this](const std::string& bundleID) { return iconSource(bundleID); }),
      editedApps_([this](const std::string& bundleID) { return iconSource(bundleID); }),
      apps_(std::move(lang)) {}

std::ptrdiff_t PrivateAppLists::count(PrivateAppVisibility visibility) const {
    return std::ranges::count(privateApps_.rows(), visibility, &AppListRow::visibility);
}

std::optional<CatalogEntry> PrivateAppLists::editedApp(const std::string& bundleID) const {
    const auto& rows = editedApps_.rows();
    const auto found = std::ranges::find_if(rows, [&](const AppListRow& row) {
        return row.kind != AppListRow::Kind::divider && row.app.bundleID == bundleID;
    });
    return found != rows.end() ? std::optional(found->app) : std::nullopt;
}

bool PrivateAppLists::isDivider(int row) const {
    const auto& rows = editedApps_.rows();
    const auto index = static_cast<std::size_t>(row);
    return index < rows.size() && rows[index].kind == AppListRow::Kind::divider;
}

void PrivateAppLists::setEditing(bool isEditing) {
    isEditing_ = isEditing;
    apps_.setEntries(isEditing ? services_.catalog.appsToChoose() : std::vector<CatalogEntry>());
}

void PrivateAppLists::setQuery(const QString& query) {
    query_ = query;
    fill();
    const auto& rows = editedApps_.rows();
    const auto found = std::ranges::find_if(rows, [this](const AppListRow& row) {
        return row.kind != AppListRow::Kind::divider && apps_.holds(row.app, query_);
    });
    found_ = found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

void PrivateAppLists::fill() {
    const auto hadPrivateApps = hasPrivateApps();
    privateApps_.setRows(privateRows());
    editedApps_.setRows(isEditing_ ? editedRows() : std::vector<AppListRow>());
    if (hadPrivateApps != hasPrivateApps() && onPresenceChange) {
        onPresenceChange();
    }
}

std::vector<AppListRow> PrivateAppLists::privateRows() const {
    const auto targets = services_.store.load().targetApps;
    std::vector<AppListRow> rows;
    for (const auto& app : PrivateAppsInspector::rows(services_.workspace, targets)) {
        const CatalogEntry entry{app.bundleID, app.name};
        const bool isGone =
            app.visibility == PrivateAppVisibility::notRunning && services_.catalog.isGone(entry);
        rows.push_back({AppListRow::Kind::privateApp, entry,
                        isGone ? PrivateAppVisibility::notInstalled : app.visibility});
    }
    return rows;
}

std::vector<AppListRow> PrivateAppLists::editedRows() const {
    auto rows = privateApps_.rows();
    std::set<std::string> known;
    for (const auto& row : rows) {
        known.insert(row.app.bundleID);
    }
    std::vector<AppListRow> candidates;
    for (const auto place : apps_.matching(query_)) {
        const auto& entry = apps_.entries()[place];
        if (!known.contains(entry.bundleID)) {
            candidates.push_back({AppListRow::Kind::candidate, entry, {}});
        }
    }
    if (!rows.empty() && !candidates.empty()) {
        rows.push_back({AppListRow::Kind::divider, {}, {}});
    }
    rows.insert(rows.end(), candidates.begin(), candidates.end());
    return rows;
}

QString PrivateAppLists::iconSource(const std::string& bundleID) const {
    const auto icon = services_.catalog.icon(bundleID);
    return icon ? iconAddress(*icon) : QString();
}

} // namespace Curtain
