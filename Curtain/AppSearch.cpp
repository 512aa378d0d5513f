#include "Curtain/AppSearch.h"

#include "Curtain/ViewText.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Curtain {

void AppSearch::setEntries(std::vector<CatalogEntry> entries) {
    if (entries == entries_) {
        return;
    }
    entries_ = std::move(entries);
    searchTexts_.clear();
    searchTexts_.reserve(entries_.size());
    for (const auto& entry : entries_) {
        searchTexts_.emplace_back(shownName(entry.name, entry.bundleID), lang_);
    }
}

bool AppSearch::holds(const CatalogEntry& entry, const QString& query) const {
    const SearchText name(shownName(entry.name, entry.bundleID), lang_);
    return name.contains(SearchText(query.simplified(), lang_));
}

std::vector<std::size_t> AppSearch::matching(const QString& query) const {
    std::vector<std::size_t> places(entries_.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    if (const auto words = query.simplified(); !words.isEmpty()) {
        const SearchText wanted(words, lang_);
        std::erase_if(places, [&](std::size_t place) { return !searchTexts_[place].contains(wanted); });
    }
    return places;
}

} // namespace Curtain
