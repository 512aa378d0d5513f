#include "platform/linux/apps/AppIdentity.h"

#include "platform/linux/apps/BundleIdentifiers.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/system/AsciiCase.h"
#include "platform/linux/system/LegacyText.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::string_view entrySuffix = ".desktop";
/// Scripts that start scripts; a longer chain is no app's.
constexpr std::size_t mostOrigins = 5;

/// What toolkits and interpreters call the windows of whatever runs in them.
bool isClassOfManyPrograms(std::string_view windowClass) {
    constexpr std::array<std::string_view, 7> classes{
        "tk",     "toplevel", "java-lang-thread", "sun-awt-x11-xframepeer", "sun-awt-x11-xdialogpeer",
        "applet", "unknown"};
    const auto name = asciiLowerCase(windowClass);
    return name.empty() || isInterpreter(name) || std::ranges::find(classes, name) != classes.end();
}

} // namespace

AppIdentifier identifierOf(const DesktopEntry& entry) {
    return {entry.bundleIdentifier, entry.name.empty() ? entry.id : entry.name};
}

AppIdentity::AppIdentity(DesktopEntries& entries, ProcessTable processes)
    : entries_(entries),
      processes_(std::move(processes)) {}

std::optional<AppIdentifier> AppIdentity::identify(const WindowHints& hints) {
    const auto sandbox = hints.process ? sandboxOf(*hints.process) : std::nullopt;
    if (const auto* const entry = entryFor(hints, sandbox)) {
        return identifierOf(*entry);
    }
    if (sandbox) {
        return AppIdentifier{bundleIdentifierFor(sandbox->desktopEntryId), sandbox->name};
    }
    if (const auto image = hints.process ? appImages_.image(*hints.process) : std::nullopt;
        image && !image->desktopEntryId.empty()) {
        return AppIdentifier{bundleIdentifierFor(image->desktopEntryId), image->desktopEntryId};
    }
    // The settings could not be written with an identifier that is not Unicode.
    const auto name = utf8FromLegacyText(ownName(hints));
    if (name.empty()) {
        return std::nullopt;
    }
    return AppIdentifier{bundleIdentifierFor(asciiLowerCase(name)), name};
}

std::optional<AppIdentity::Sandbox> AppIdentity::sandboxOf(std::uint32_t process) const {
    if (const auto app = flatpak_.app(process)) {
        return Sandbox{*app, *app};
    }
    if (const auto app = snaps_.app(process)) {
        return Sandbox{app->snap, app->desktopEntryId()};
    }
    return std::nullopt;
}

std::vector<std::uint32_t> AppIdentity::originsOf(std::uint32_t process) const {
    std::vector<std::uint32_t> origins{process};
    while (origins.size() < mostOrigins) {
        const auto parent = processes_.parent(origins.back());
        const auto program = parent ? processes_.program(*parent) : std::nullopt;
        if (!program || !isLauncher(*program)) {
            break;
        }
        origins.push_back(*parent);
    }
    return origins;
}

const DesktopEntry* AppIdentity::entryFor(const WindowHints& hints, const std::optional<Sandbox>& sandbox) {
    if (const auto* const entry = entryForHints(hints, sandbox)) {
        return entry;
    }
    if (sandbox) {
        return entries_.withId(sandbox->desktopEntryId);
    }
    for (const auto process : hints.process ? originsOf(*hints.process) : std::vector<std::uint32_t>{}) {
        if (const auto* const entry = entryForProcess(process)) {
            return entry;
        }
    }
    return nullptr;
}

const DesktopEntry* AppIdentity::entryForHints(const WindowHints& hints,
                                               const std::optional<Sandbox>& sandbox) {
    // A sandbox can hold several apps, but none from elsewhere that only has the same class.
    const auto belongs = [&](const DesktopEntry* entry) {
        return entry != nullptr &&
               (!sandbox || entry->sandbox == sandbox->name || entry->id.starts_with(sandbox->name + ".") ||
                entry->id.starts_with(sandbox->name + "_"));
    };
    for (const auto* const hint : {&hints.desktopFile, &hints.applicationId}) {
        if (const auto* const entry = entryNamed(*hint); belongs(entry)) {
            return entry;
        }
    }
    const auto* const entry = entryForClass(hints);
    return belongs(entry) ? entry : nullptr;
}

const DesktopEntry* AppIdentity::entryForClass(const WindowHints& hints) {
    // The instance tells a browser's web apps from the browser, so it goes first; but many programs leave it
    // to whatever name they were started under, so without regard to case the class does.
    const std::array<std::pair<const std::string*, bool>, 4> attempts{{{&hints.instanceName, false},
                                                                       {&hints.className, false},
                                                                       {&hints.className, true},
                                                                       {&hints.instanceName, true}}};
    for (const auto& [windowClass, ignoringCase] : attempts) {
        if (isClassOfManyPrograms(*windowClass)) {
            continue;
        }
        if (const auto* const entry = entries_.withWindowClass(*windowClass, ignoringCase)) {
            return entry;
        }
    }
    for (const auto* const windowClass : {&hints.className, &hints.instanceName}) {
        const auto* const entry = isClassOfManyPrograms(*windowClass) ? nullptr : entryNamed(*windowClass);
        if (entry != nullptr) {
            return entry;
        }
    }
    // Most toolkits make the class out of the program's name.
    return isClassOfManyPrograms(hints.className) ? nullptr
                                                  : entries_.withProgram(asciiLowerCase(hints.className));
}

const DesktopEntry* AppIdentity::entryForProcess(std::uint32_t process) {
    for (const auto& name : programs_.of(process)) {
        if (const auto* const entry = entryForProgram(name)) {
            return entry;
        }
    }
    if (const auto image = appImages_.image(process)) {
        const auto file = std::filesystem::path(image->file).filename().string();
        if (const auto* const entry = entries_.withProgram(file)) {
            return entry;
        }
        if (const auto* const entry = entryNamed(image->desktopEntryId)) {
            return entry;
        }
    }
    if (const auto file = launches_.desktopFile(process)) {
        if (const auto* const entry = entryNamed(*file)) {
            return entry;
        }
    }
    const auto unit = scopes_.ledBy(process);
    return unit ? entries_.withOneOfIds(unit->desktopEntryIds) : nullptr;
}

const DesktopEntry* AppIdentity::entryForProgram(const std::string& name) {
    const auto* const entry = entries_.withProgram(name);
    return entry != nullptr ? entry : entryNamed(name);
}

const DesktopEntry* AppIdentity::entryNamed(std::string_view idOrPath) {
    std::string name(idOrPath);
    if (name.starts_with('/')) {
        if (const auto* const entry = entries_.withPath(name)) {
            return entry;
        }
        name = std::filesystem::path(name).filename().string();
    }
    if (name.ends_with(entrySuffix)) {
        name.resize(name.size() - entrySuffix.size());
    }
    return name.empty() ? nullptr : entries_.withId(name);
}

std::string AppIdentity::ownName(const WindowHints& hints) const {
    for (const auto* const windowClass : {&hints.className, &hints.instanceName}) {
        if (!isClassOfManyPrograms(*windowClass)) {
            return *windowClass;
        }
    }
    for (const auto process : hints.process ? originsOf(*hints.process) : std::vector<std::uint32_t>{}) {
        if (auto names = programs_.of(process); !names.empty()) {
            return std::move(names.front());
        }
    }
    return !hints.className.empty() ? hints.className : hints.instanceName;
}

} // namespace LinuxPlatform
