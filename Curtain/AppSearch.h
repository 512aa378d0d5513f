#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/SearchText.h"

#include <QString>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Curtain {

/// Apps that are searched by name, as people compare words. Prepares each name once, so that thousands are
/// searched while the user types.
class AppSearch {
public:
    /// `lang` is the code of the user's language.
    explicit AppSearch(std::string lang) : lang_(std::move(lang)) {}

    const std::vector<CatalogEntry>& entries() const { return entries_; }
    void setEntries(std::vector<CatalogEntry> entries);
    /// The places of the entries whose name holds the query, in order; all for an empty one.
    std::vector<std::size_t> matching(const QString& query) const;
    /// Whether the name of any app holds the query.
    bool holds(const CatalogEntry& entry, const QString& query) const;

private:
    std::string lang_;
    std::vector<CatalogEntry> entries_;
    std::vector<SearchText> searchTexts_;
};

} // namespace Curtain
