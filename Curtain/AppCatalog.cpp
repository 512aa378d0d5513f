#include "Curtain/AppCatalog.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

namespace Curtain {
namespace {

void keepFirstOfEachIdentifier(std::vector<CatalogEntry>& entries) {
    std::set<std::string> seen;
    std::erase_if(entries, [&](const auto& entry) { return !seen.insert(entry.bundleID).second; });
}

QCollator nameCollator() {
    QCollator collator;
    // That locale has no letters, only bytes.
    if (collator.locale().language() == QLocale::C) {
        collator.setLocale(QLocale(QLocale::English));
    }
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

void sortByName(std::vector<CatalogEntry>& entries) {
    const auto collator = nameCollator();
    std::vector<std::pair<QCollatorSortKey, std::size_t>> order;
    order.reserve(entries.size());
    for (std::size_t index = 0; index < entries.size(); ++index) {
        order.emplace_back(collator.sortKey(QString::fromStdString(entries[index].name)), index);
    }
    std::ranges::stable_sort(
        order, [](const auto& left, const auto& right) { return left.first.compare(right.first) < 0; });
    std::vector<CatalogEntry> sorted;
    sorted.reserve(entries.size());
    for (const auto& [key, index] : order) {
        sorted.push_back(std::move(entries[index]));
    }
    entries = std::move(sorted);
}

/// The file name's extension, without the dot; empty when there is none.
std::string extensionOf(const std::filesystem::path& path) {
    const auto extension = path.extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

} // namespace

AppCatalog::AppCatalog(Platform::Workspace& workspace, Platform::FileManager& fileManager,
                       Platform::Bundles& bundles, Platform::ApplicationFolders folders)
    : workspace_(workspace),
      fileManager_(fileManager),
      bundles_(bundles),
      folders_(std::move(folders)) {}

std::vector<CatalogEntry> AppCatalog::runningApps() const {
    std::vector<CatalogEntry> entries;
    for (const auto& application : workspace_.runningApplications()) {
        const auto bundleID = application->bundleIdentifier();
        if (application->activationPolicy() == Platform::ActivationPolicy::regular && bundleID) {
            entries.push_back({*bundleID, application->localizedName().value_or(*bundleID)});
        }
    }
    keepFirstOfEachIdentifier(entries);
    sortByName(entries);
    return entries;
}

std::vector<CatalogEntry> AppCatalog::installedApps() const {
    const auto generation = bundles_.generation();
    if (!installed_ || installed_->generation != generation || canReadMore()) {
        installed_ = readInstalledApps();
        installed_->generation = generation;
    }
    return installed_->entries;
}

bool AppCatalog::canReadMore() const {
    return std::ranges::any_of(installed_->unreadFolders, [this](const auto& folder) {
        return fileManager_.contentsOfDirectory(folder).has_value();
    });
}

std::vector<CatalogEntry> AppCatalog::allApps() const {
    auto all = installedApps();
    const auto isKnown = [&](const CatalogEntry& entry) {
        return std::ranges::find(all, entry.bundleID, &CatalogEntry::bundleID) != all.end();
    };
    const auto collator = nameCollator();
    const auto isBefore = [&](const CatalogEntry& left, const CatalogEntry& right) {
        return collator.compare(QString::fromStdString(left.name), QString::fromStdString(right.name)) < 0;
    };
    // They are few, and the installed ones, in order already, may be thousands.
    for (auto& entry : runningApps()) {
        if (!isKnown(entry)) {
            all.insert(std::ranges::upper_bound(all, entry, isBefore), std::move(entry));
        }
    }
    return all;
}

std::vector<CatalogEntry> AppCatalog::appsToChoose() const {
    auto apps = allApps();
    std::set<std::string> running;
    for (const auto& entry : runningApps()) {
        running.insert(entry.bundleID);
    }
    std::ranges::stable_sort(apps, {}, [&](const CatalogEntry& entry) {
        return running.contains(entry.bundleID)                     ? 0
               : installed_->controlPanels.contains(entry.bundleID) ? 2
                                                                    : 1;
    });
    return apps;
}

AppCatalog::Installed AppCatalog::readInstalledApps() const {
    Installed installed;
    auto& entries = installed.entries;
    for (const auto& folder : folders_.paths) {
        const auto contents = fileManager_.contentsOfDirectory(folder);
        if (!contents) {
            installed.unreadFolders.push_back(folder);
        }
        for (const auto& item : contents.value_or(std::vector<std::string>{})) {
            const std::filesystem::path path(item);
            if (extensionOf(path) != folders_.extension) {
                continue;
            }
            const auto bundle = bundles_.open(item);
            if (!bundle || !bundle->bundleIdentifier) {
                continue;
            }
            if (bundle->isControlPanel) {
                installed.controlPanels.insert(*bundle->bundleIdentifier);
            }
            const auto name = bundle->infoDictionary.find(Platform::bundleNameKey);
            entries.push_back({*bundle->bundleIdentifier,
                               name != bundle->infoDictionary.end() ? name->second : path.stem().string()});
        }
    }
    keepFirstOfEachIdentifier(entries);
    sortByName(entries);
    return installed;
}

bool AppCatalog::isGone(const CatalogEntry& entry) const {
    return bundles_.isGone(entry.bundleID, entry.name);
}

std::optional<Platform::Image> AppCatalog::icon(const std::string& bundleID) const {
    const auto path = workspace_.urlForApplicationWithBundleIdentifier(bundleID);
    return path ? workspace_.iconForFile(*path) : std::nullopt;
}

} // namespace Curtain
