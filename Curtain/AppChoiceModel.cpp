#include "Curtain/AppChoiceModel.h"

#include "Curtain/PlatformWording.h"
#include "Curtain/ViewText.h"

#include <utility>

namespace Curtain {

AppChoiceModel::AppChoiceModel(SettingsModel& settings, const AppCatalog& catalog, std::string lang)
    : settings_(settings),
      catalog_(catalog),
      search_(std::move(lang)) {
    connect(&settings, &SettingsModel::prefsChanged, this, [this] {
        if (!shown_.empty()) {
            Q_EMIT dataChanged(index(0), index(rowCount() - 1), {Role::isSelected, Role::name});
        }
    });
}

void AppChoiceModel::setEntries(std::vector<CatalogEntry> entries, const std::vector<CatalogEntry>& missing) {
    entries.insert(entries.begin(), missing.begin(), missing.end());
    if (entries == search_.entries() && missing.size() == missing_) {
        return;
    }
    beginResetModel();
    missing_ = missing.size();
    search_.setEntries(std::move(entries));
    shown_ = search_.matching(query_);
    endResetModel();
}

void AppChoiceModel::setQuery(const QString& query) {
    query_ = query;
    auto shown = search_.matching(query_);
    if (shown != shown_) {
        beginResetModel();
        shown_ = std::move(shown);
        endResetModel();
    }
}

void AppChoiceModel::toggle(int row) {
    if (const auto* const entry = entryAt(row)) {
        settings_.toggle(*entry);
    }
}

int AppChoiceModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

QVariant AppChoiceModel::data(const QModelIndex& index, int role) const {
    const auto* const entry = entryAt(index.row());
    if (entry == nullptr) {
        return {};
    }
    switch (role) {
    case Role::name:
        return nameOf(index.row());
    case Role::isSelected:
        return settings_.isSelected(*entry);
    case Role::icon: {
        const auto image = catalog_.icon(entry->bundleID);
        return image ? iconAddress(*image) : QString();
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> AppChoiceModel::roleNames() const {
    return {{Role::name, "name"}, {Role::isSelected, "isSelected"}, {Role::icon, "icon"}};
}

QString AppChoiceModel::nameOf(int row) const {
    const auto& entry = *entryAt(row);
    const auto shown = shownName(entry.name, entry.bundleID);
    if (shown_[static_cast<std::size_t>(row)] >= missing_) {
        return shown;
    }
    const auto lang = settings_.lang();
    return toQString(PlatformWording::opening(shown.toStdString(), lang)) + QStringLiteral(" — ") +
           toQString(PlatformWording::string(PlatformKey::notInstalled, lang));
}

const CatalogEntry* AppChoiceModel::entryAt(int row) const {
    return row >= 0 && row < rowCount() ? &search_.entries()[shown_[static_cast<std::size_t>(row)]] : nullptr;
}

} // namespace Curtain
