#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/PrivateAppsInspector.h"

#include <QAbstractListModel>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Curtain {

/// One line of a list of apps.
struct AppListRow {
    enum class Kind { privateApp, divider, candidate };

    Kind kind = Kind::privateApp;
    CatalogEntry app;
    PrivateAppVisibility visibility = PrivateAppVisibility::notRunning;

    bool operator==(const AppListRow&) const = default;
};

/// A list of apps for QML. Icons are looked up when their row is shown for the first time. Main thread only.
class AppListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { kindRole = Qt::UserRole, bundleIDRole, nameRole, visibilityRole, iconRole };

    /// Finds an icon's address, empty for none.
    using IconSource = std::function<QString(const std::string& bundleID)>;

    explicit AppListModel(IconSource iconSource);

    const std::vector<AppListRow>& rows() const { return rows_; }
    /// The rows stand in the order of their kinds. Tells views no more than what is new, so that they keep
    /// their place.
    void setRows(std::vector<AppListRow> rows);

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    /// Replaces those of one kind, which begin at the same place in both. Returns where they end.
    std::ptrdiff_t setRowsOfKind(AppListRow::Kind kind, const std::vector<AppListRow>& rows,
                                 std::ptrdiff_t begin);

    IconSource iconSource_;
    std::vector<AppListRow> rows_;
    mutable std::map<std::string, QString> icons_;
};

} // namespace Curtain
