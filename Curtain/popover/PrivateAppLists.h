#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/AppListModel.h"
#include "Curtain/AppSearch.h"
#include "Curtain/PrivateAppsInspector.h"
#include "core/PreferencesStore.h"
#include "platform/Workspace.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Curtain {

/// The popover's lists of apps: the private ones, and while they are edited those with all that can be made
/// private below them. Main thread only.
class PrivateAppLists {
public:
    /// All of them outlive the lists.
    struct Services {
        const CurtainCore::PreferencesStore& store;
        Platform::Workspace& workspace;
        const AppCatalog& catalog;
    };

    /// `lang` is the code of the user's language. The lists are empty until they are filled.
    PrivateAppLists(const Services& services, std::string lang);

    /// There are private apps now and were none before, or the reverse.
    std::function<void()> onPresenceChange;

    AppListModel& privateApps() { return privateApps_; }
    AppListModel& editedApps() { return editedApps_; }
    bool hasPrivateApps() const { return !privateApps_.rows().empty(); }
    bool isAny(PrivateAppVisibility visibility) const { return count(visibility) > 0; }
    /// How many of the private apps.
    std::ptrdiff_t count(PrivateAppVisibility visibility) const;
    /// Absent where there is no such app to edit.
    std::optional<CatalogEntry> editedApp(const std::string& bundleID) const;
    /// Whether a row of the edited apps only parts the others.
    bool isDivider(int row) const;

    bool isEditing() const { return isEditing_; }
    void setEditing(bool isEditing);
    const QString& query() const { return query_; }
    /// Fills the lists.
    void setQuery(const QString& query);
    /// The row of the edited apps that was searched for when the query was set, the first of them without a
    /// query; -1 where no name holds the query.
    int found() const { return found_; }
    /// Reads everything anew.
    void fill();

private:
    std::vector<AppListRow> privateRows() const;
    /// The private apps, and below them the others that match the query.
    std::vector<AppListRow> editedRows() const;
    QString iconSource(const std::string& bundleID) const;

    Services services_;
    AppListModel privateApps_;
    AppListModel editedApps_;
    AppSearch apps_;
    bool isEditing_ = false;
    QString query_;
    int found_ = 0;
};

} // namespace Curtain
