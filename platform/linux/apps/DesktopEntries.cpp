#include "platform/linux/apps/DesktopEntries.h"

#include "platform/linux/apps/BundleIdentifiers.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/system/AsciiCase.h"
#include "platform/linux/system/LegacyText.h"

#include <gio/gdesktopappinfo.h>
#include <glib.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include <sys/stat.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view suffix = ".desktop";
/// Entries are a few thousand bytes, Wine's menus a few folders deep. Anybody's folder may hold more.
constexpr std::uintmax_t largestFile = std::uintmax_t{1} << 20U;
constexpr std::size_t deepestFolder = 16;
constexpr std::size_t mostFolders = 500;
constexpr std::size_t mostFiles = 20000;

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

std::string text(const char* value) {
    return value != nullptr ? value : "";
}

/// The options of env that take the argument after them.
bool takesAnArgument(std::string_view option) {
    return option == "-u" || option == "--unset" || option == "-C" || option == "--chdir";
}

struct Command {
    std::string program;
    bool hasArguments = false;
    bool namesContent = false;
};

bool isContent(std::string_view argument) {
    return !argument.starts_with('%') && (!argument.starts_with('-') || argument.starts_with("--app"));
}

/// Skips what stands before the program itself: "env", assignments and options of theirs, an interpreter.
Command parseCommand(const char* commandLine) {
    int count = 0;
    char** arguments = nullptr;
    if (commandLine == nullptr || g_shell_parse_argv(commandLine, &count, &arguments, nullptr) == FALSE) {
        return {};
    }
    const std::unique_ptr<char*, decltype(&g_strfreev)> owner(arguments, &g_strfreev);
    Command command;
    bool isAfterEnv = false;
    std::vector<std::string> words;
    for (int index = 0; index < count; ++index) {
        const std::string_view argument = arguments[index];
        if (!command.program.empty()) {
            command.hasArguments = command.hasArguments || !argument.starts_with('%');
            command.namesContent = command.namesContent || isContent(argument);
            words.emplace_back(argument);
        } else if (argument == "env" || argument.ends_with("/env")) {
            isAfterEnv = true;
        } else if (isAfterEnv && takesAnArgument(argument)) {
            ++index;
        } else if (!isAfterEnv ||
                   (argument.find('=') == std::string_view::npos && !argument.starts_with('-'))) {
            command.program = fs::path(argument).filename().string();
            words.emplace_back(argument);
        }
    }
    if (auto program = interpretedProgram(words)) {
        // Options of the interpreter and of the program cannot be told apart.
        command = {
            std::move(*program),
            std::ranges::count_if(words, [](const std::string& word) { return !word.starts_with('%'); }) > 2,
            false};
    }
    return command;
}

std::vector<std::string> urlSchemes(GAppInfo* app) {
    constexpr std::string_view prefix = "x-scheme-handler/";
    std::vector<std::string> schemes;
    const char** types = g_app_info_get_supported_types(app);
    for (; types != nullptr && *types != nullptr; ++types) {
        const auto type = asciiLowerCase(*types);
        if (type.starts_with(prefix)) {
            schemes.push_back(type.substr(prefix.size()));
        }
    }
    return schemes;
}

bool isListedUnderSettings(GDesktopAppInfo* info) {
    const auto categories = ";" + text(g_desktop_app_info_get_categories(info)) + ";";
    return categories.find(";Settings;") != std::string::npos;
}

std::optional<DesktopEntry> readEntry(const fs::path& path, std::string id) {
    // Opening a named pipe would wait for its writer.
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > largestFile) {
        return std::nullopt;
    }
    const std::unique_ptr<GDesktopAppInfo, decltype(&g_object_unref)> info(
        g_desktop_app_info_new_from_filename(path.c_str()), &g_object_unref);
    if (!info || g_desktop_app_info_get_is_hidden(info.get()) != FALSE) {
        return std::nullopt;
    }
    auto* const app = G_APP_INFO(info.get());
    DesktopEntry entry;
    entry.bundleIdentifier = bundleIdentifierFor(id);
    entry.id = std::move(id);
    const OwnedText name(g_desktop_app_info_get_locale_string(info.get(), G_KEY_FILE_DESKTOP_KEY_NAME),
                         g_free);
    entry.name = text(name.get());
    entry.path = path.string();
    const OwnedText icon(g_desktop_app_info_get_string(info.get(), G_KEY_FILE_DESKTOP_KEY_ICON), g_free);
    entry.icon = text(icon.get());
    entry.startupWMClass = text(g_desktop_app_info_get_startup_wm_class(info.get()));
    auto command = parseCommand(g_app_info_get_commandline(app));
    entry.program = std::move(command.program);
    entry.hasArguments = command.hasArguments;
    entry.urlSchemes = urlSchemes(app);
    entry.namesContent = command.namesContent;
    entry.isControlPanel = isListedUnderSettings(info.get());
    // What runs in a terminal has no windows of its own by which it could be known.
    entry.shouldShow = g_app_info_should_show(app) != FALSE &&
                       g_desktop_app_info_get_boolean(info.get(), G_KEY_FILE_DESKTOP_KEY_TERMINAL) == FALSE;
    for (const auto* const key : {"X-Flatpak", "X-SnapInstanceName"}) {
        const OwnedText sandbox(g_desktop_app_info_get_string(info.get(), key), g_free);
        entry.sandbox += text(sandbox.get());
    }
    return entry;
}

bool isMissing(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

/// As much as can be read of it; the error says why that is not all.
std::vector<fs::path> sortedContents(const fs::path& folder, std::error_code& error) {
    std::vector<fs::path> contents;
    for (fs::directory_iterator iterator(folder, error); !error && iterator != fs::directory_iterator();
         iterator.increment(error)) {
        contents.push_back(iterator->path());
    }
    std::ranges::sort(contents);
    return contents;
}

fs::file_time_type changeTime(const fs::path& folder) {
    std::error_code error;
    const auto time = fs::last_write_time(folder, error);
    return error ? fs::file_time_type::min() : time;
}

void addDataFolders(std::vector<fs::path>& folders, const char* list) {
    std::string_view rest = list;
    while (!rest.empty()) {
        const auto length = std::min(rest.find(':'), rest.size());
        // Relative paths are to be ignored.
        if (rest.starts_with('/')) {
            folders.push_back(fs::path(rest.substr(0, length)) / "applications");
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
}

std::string environment(const char* name, std::string otherwise) {
    const auto* const value = g_getenv(name);
    return value != nullptr && *value != '\0' ? value : std::move(otherwise);
}

} // namespace

DesktopEntries::DesktopEntries(std::vector<fs::path> folders)
    : folders_(std::move(folders)),
      changes_(suffix) {}

std::vector<fs::path> DesktopEntries::standardFolders() {
    const fs::path dataHome = g_get_user_data_dir();
    std::vector<fs::path> folders{dataHome / "applications"};
    addDataFolders(folders, environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share").c_str());
    for (const auto& folder : {dataHome / "flatpak/exports/share/applications",
                               fs::path("/var/lib/flatpak/exports/share/applications"),
                               fs::path("/var/lib/snapd/desktop/applications")}) {
        if (std::ranges::find(folders, folder) == folders.end()) {
            folders.push_back(folder);
        }
    }
    return folders;
}

void DesktopEntries::readAhead() {
    if (!readingAhead_.valid() && generation_ == 0) {
        readingAhead_ = std::async(std::launch::async, [this] { read(); });
    }
}

std::uint64_t DesktopEntries::generation() {
    readIfChanged();
    return generation_;
}

const std::vector<DesktopEntry>& DesktopEntries::all() {
    readIfChanged();
    return entries_;
}

const DesktopEntry* DesktopEntries::withId(std::string_view id) {
    readIfChanged();
    const auto* const exact = find(byId_, id);
    return exact != nullptr ? exact : find(byLowerCaseId_, asciiLowerCase(id));
}

const DesktopEntry* DesktopEntries::withOneOfIds(std::span<const std::string> ids) {
    for (const auto& id : ids) {
        if (const auto* const entry = withId(id)) {
            return entry;
        }
    }
    return nullptr;
}

const DesktopEntry* DesktopEntries::withBundleIdentifier(std::string_view bundleID) {
    readIfChanged();
    return find(byBundleIdentifier_, bundleID);
}

bool DesktopEntries::mayHold(std::string_view bundleID) {
    return withBundleIdentifier(bundleID) != nullptr || hasUnreadFolder_ || unusable_.contains(bundleID);
}

const DesktopEntry* DesktopEntries::withPath(const std::string& path) {
    readIfChanged();
    return find(byPath_, path);
}

const DesktopEntry* DesktopEntries::withWindowClass(std::string_view windowClass, bool ignoringCase) {
    readIfChanged();
    return ignoringCase ? find(byLowerCaseWindowClass_, asciiLowerCase(windowClass))
                        : find(byWindowClass_, windowClass);
}

const DesktopEntry* DesktopEntries::withProgram(std::string_view program) {
    readIfChanged();
    return find(byProgram_, program);
}

void DesktopEntries::readIfChanged() {
    if (readingAhead_.valid()) {
        readingAhead_.get();
    }
    const bool isChanged = generation_ == 0 || changes_.take() ||
                           !std::ranges::equal(unwatchedFolders_, folderTimes_, {}, changeTime);
    if (isChanged) {
        read();
    }
}

void DesktopEntries::read() {
    ++generation_;
    entries_.clear();
    unusable_.clear();
    hasUnreadFolder_ = false;
    unwatchedFolders_.clear();
    folderTimes_.clear();
    std::set<std::string> seen;
    // The folders that are being read, links resolved: one that comes again in itself is a loop.
    std::vector<fs::path> ancestors;
    std::size_t folderCount = 0;
    const auto readFolder = [&](const auto& self, const fs::path& folder, const std::string& prefix) -> void {
        std::error_code error;
        const auto resolved = fs::weakly_canonical(folder, error);
        if (std::ranges::find(ancestors, resolved) != ancestors.end()) {
            return;
        }
        // Links that cross each other are more ways than can be gone.
        if (ancestors.size() == deepestFolder || folderCount == mostFolders) {
            hasUnreadFolder_ = true;
            return;
        }
        ++folderCount;
        ancestors.push_back(resolved);
        if (!changes_.add(folder)) {
            unwatchedFolders_.push_back(folder);
            folderTimes_.push_back(changeTime(folder));
        }
        const auto contents = sortedContents(folder, error);
        hasUnreadFolder_ = hasUnreadFolder_ || (error && !isMissing(error));
        for (const auto& path : contents) {
            if (seen.size() == mostFiles) {
                hasUnreadFolder_ = true;
                break;
            }
            const auto name = path.filename().string();
            if (name.ends_with(suffix)) {
                // The settings could not be written with an identifier that is not Unicode.
                auto id = utf8FromLegacyText(prefix + name.substr(0, name.size() - suffix.size()));
                if (seen.insert(id).second) {
                    if (auto entry = entryIn(path, id)) {
                        entries_.push_back(std::move(*entry));
                    } else {
                        unusable_.insert(bundleIdentifierFor(id));
                    }
                }
            } else if (fs::is_directory(path, error)) {
                self(self, path, prefix + name + "-");
            }
        }
        ancestors.pop_back();
    };
    for (const auto& folder : folders_) {
        readFolder(readFolder, folder, "");
    }
    std::erase_if(files_, [this](const auto& file) { return file.second.generation != generation_; });
    buildIndexes();
}

std::optional<DesktopEntry> DesktopEntries::entryIn(const fs::path& path, const std::string& id) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    const decltype(ReadFile::stamp) stamp{
        static_cast<std::int64_t>(status.st_dev),          static_cast<std::int64_t>(status.st_ino),
        static_cast<std::int64_t>(status.st_size),         static_cast<std::int64_t>(status.st_mtim.tv_sec),
        static_cast<std::int64_t>(status.st_mtim.tv_nsec), static_cast<std::int64_t>(status.st_ctim.tv_nsec)};
    auto& file = files_[path.string()];
    // Whether a file is an entry may depend on programs elsewhere, so those that are none are tried again.
    const bool isKnown = file.entry && file.entry->id == id && file.stamp == stamp;
    if (!isKnown) {
        file.stamp = stamp;
        file.entry = readEntry(path, id);
    }
    file.generation = generation_;
    return file.entry;
}

void DesktopEntries::buildIndexes() {
    for (auto* const index : {&byId_, &byLowerCaseId_, &byBundleIdentifier_, &byPath_, &byWindowClass_,
                              &byLowerCaseWindowClass_, &byProgram_}) {
        index->clear();
    }
    const auto add = [](Index& index, std::string key, std::size_t position) {
        if (!key.empty()) {
            index.emplace(std::move(key), position);
        }
    };
    // Entries that stand in the app list come first: others often lend their class or program to a single
    // function.
    std::vector<std::size_t> order(entries_.size());
    for (std::size_t position = 0; position < order.size(); ++position) {
        order[position] = position;
    }
    std::ranges::stable_sort(order, std::greater{},
                             [&](std::size_t position) { return entries_[position].shouldShow; });
    for (const auto position : order) {
        const auto& entry = entries_[position];
        add(byId_, entry.id, position);
        add(byLowerCaseId_, asciiLowerCase(entry.id), position);
        add(byBundleIdentifier_, entry.bundleIdentifier, position);
        add(byPath_, entry.path, position);
        add(byWindowClass_, entry.startupWMClass, position);
        add(byLowerCaseWindowClass_, asciiLowerCase(entry.startupWMClass), position);
    }
    indexPrograms();
}

void DesktopEntries::indexPrograms() {
    struct Starters {
        std::vector<std::size_t> plain;
        std::vector<std::size_t> shownWithArguments;
    };
    std::unordered_map<std::string, Starters> startersOf;
    for (std::size_t position = 0; position < entries_.size(); ++position) {
        const auto& entry = entries_[position];
        auto& starters = startersOf[entry.program];
        if (!entry.hasArguments) {
            starters.plain.push_back(position);
        } else if (entry.shouldShow && !entry.namesContent) {
            starters.shownWithArguments.push_back(position);
        }
    }
    startersOf.erase(std::string());
    for (const auto& [program, starters] : startersOf) {
        // One that stands alone is for the program as a whole, whatever it tells it.
        const auto& candidates = starters.plain.empty() ? starters.shownWithArguments : starters.plain;
        if (candidates.size() == 1) {
            byProgram_.emplace(program, candidates.front());
        } else if (const auto own = byId_.find(program); !starters.plain.empty() && own != byId_.end()) {
            byProgram_.emplace(program, own->second);
        }
    }
}

const DesktopEntry* DesktopEntries::find(const Index& index, std::string_view key) {
    const auto found = index.find(std::string(key));
    return found == index.end() ? nullptr : &entries_[found->second];
}

} // namespace LinuxPlatform
