#include "Curtain/AppSearch.h"

#include "Curtain/ViewText.h"

#include <cstddef>
#include <utility>

namespace Curtain {
namespace {

QString folded(const QString& text) {
    auto letters = text.normalized(QString::NormalizationForm_KD);
    letters.removeIf([](QChar character) { return character.category() == QChar::Mark_NonSpacing; });
    return letters.toCaseFolded().simplified();
}

} // namespace

AppSearch::AppSearch(std::vector<CatalogEntry> entries) : entries_(std::move(entries)) {
    folded_.reserve(entries_.size());
    for (const auto& entry : entries_) {
        folded_.push_back(folded(shownName(entry.name, entry.bundleID)));
    }
}

std::vector<CatalogEntry> AppSearch::matching(const QString& query) const {
    const auto wanted = folded(query);
    std::vector<CatalogEntry> found;
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        if (folded_[index].contains(wanted)) {
            found.push_back(entries_[index]);
        }
    }
    return found;
}

} // namespace Curtain
