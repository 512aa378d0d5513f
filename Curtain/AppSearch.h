#pragma once

#include "Curtain/AppCatalog.h"

#include <QString>

#include <vector>

namespace Curtain {

/// Apps that are searched by name, without regard to case and accents. Folds each name once, so that
/// thousands are searched while the user types.
class AppSearch {
public:
    AppSearch() = default;
    /// Each identifier once, in the order of their names.
    explicit AppSearch(std::vector<CatalogEntry> entries);

    const std::vector<CatalogEntry>& entries() const { return entries_; }
    /// Those whose name contains the query; all for an empty one. In order.
    std::vector<CatalogEntry> matching(const QString& query) const;

private:
    std::vector<CatalogEntry> entries_;
    std::vector<QString> folded_;
};

} // namespace Curtain
