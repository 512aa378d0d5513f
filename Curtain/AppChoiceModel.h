#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/AppSearch.h"
#include "Curtain/SettingsModel.h"

#include <QAbstractListModel>

#include <cstddef>
#include <string>
#include <vector>

namespace Curtain {

/// The rows of a list of apps to choose from: those whose names hold the query, in the order of the entries.
/// The roles are "name", "isSelected" and "icon", the address of an image or empty. Main thread only.
class AppChoiceModel : public QAbstractListModel {
    Q_OBJECT

public:
    /// Both outlive this model. `lang` is the code of the user's language.
    AppChoiceModel(SettingsModel& settings, const AppCatalog& catalog, std::string lang);

    /// Those that are `missing`, private apps that are no longer installed, come first and say so.
    void setEntries(std::vector<CatalogEntry> entries, const std::vector<CatalogEntry>& missing = {});
    /// An empty query shows all entries.
    void setQuery(const QString& query);
    const QString& query() const { return query_; }
    void toggle(int row);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    enum Role { name = Qt::UserRole, isSelected, icon };

    const CatalogEntry* entryAt(int row) const;
    QString nameOf(int row) const;

    SettingsModel& settings_;
    const AppCatalog& catalog_;
    AppSearch search_;
    QString query_;
    std::size_t missing_ = 0;
    /// The entries that are shown.
    std::vector<std::size_t> shown_;
};

} // namespace Curtain
