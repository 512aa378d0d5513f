#include "platform/linux/apps/AppIdentity.h"

#include "platform/linux/apps/AsciiCase.h"
#include "platform/linux/apps/BundleIdentifiers.h"
#include "platform/linux/apps/LegacyText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::string_view entrySuffix = ".desktop";

/// Programs that run other programs: their own name tells nothing about the app.
bool isInterpreter(std::string_view program) {
    constexpr std::array<std::string_view, 12> prefixes{
        "python", "perl", "ruby", "node", "java", "mono", "wine", "electron", "gjs", "sh", "bash", "dotnet"};
    return std::ranges::any_of(prefixes, [&](std::string_view prefix) {
        if (!program.starts_with(prefix)) {
            return false;
        }
        const auto rest = program.substr(prefix.size());
        return std::ranges::all_of(rest, [](unsigned char character) {
            return std::isdigit(character) != 0 || character == '.' || character == '-';
        });
    });
}

} // namespace

AppIdentity::AppIdentity(DesktopEntries& entries, ProcessTable processes)
    : entries_(entries),
      processes_(std::move(processes)) {}

std::optional<AppIdentifier> AppIdentity::identify(const WindowHints& hints) {
    auto program = hints.process ? processes_.program(*hints.process) : std::nullopt;
    if (program && isInterpreter(*program)) {
        program.reset();
    }
    if (const auto* const entry = entryFor(hints, program)) {
        return AppIdentifier{entry->bundleIdentifier, entry->name.empty() ? entry->id : entry->name};
    }
    // The settings could not be written with an identifier that is not Unicode.
    const auto name = utf8FromLegacyText(!hints.className.empty()      ? hints.className
                                         : !hints.instanceName.empty() ? hints.instanceName
                                                                       : program.value_or(std::string{}));
    if (name.empty()) {
        return std::nullopt;
    }
    return AppIdentifier{bundleIdentifierFor(asciiLowerCase(name)), name};
}

const DesktopEntry* AppIdentity::entryFor(const WindowHints& hints,
                                          const std::optional<std::string>& program) {
    for (const auto* const hint : {&hints.desktopFile, &hints.applicationId}) {
        if (const auto* const entry = entryNamed(*hint)) {
            return entry;
        }
    }
    if (const auto* const entry = entryForClass(hints)) {
        return entry;
    }
    return program ? entries_.withProgram(*program) : nullptr;
}

const DesktopEntry* AppIdentity::entryNamed(std::string_view idOrPath) {
    auto name = idOrPath.starts_with('/') ? std::filesystem::path(idOrPath).filename().string()
                                          : std::string(idOrPath);
    if (name.ends_with(entrySuffix)) {
        name.resize(name.size() - entrySuffix.size());
    }
    return name.empty() ? nullptr : entries_.withId(name);
}

const DesktopEntry* AppIdentity::entryForClass(const WindowHints& hints) {
    // The instance tells a browser's web apps from the browser, so it goes first; but many programs leave it
    // to whatever name they were started under, so without regard to case the class does.
    const std::array<std::pair<const std::string*, bool>, 4> attempts{{{&hints.instanceName, false},
                                                                       {&hints.className, false},
                                                                       {&hints.className, true},
                                                                       {&hints.instanceName, true}}};
    for (const auto& [windowClass, ignoringCase] : attempts) {
        if (windowClass->empty()) {
            continue;
        }
        if (const auto* const entry = entries_.withWindowClass(*windowClass, ignoringCase)) {
            return entry;
        }
    }
    for (const auto* const windowClass : {&hints.className, &hints.instanceName}) {
        if (const auto* const entry = entryNamed(*windowClass)) {
            return entry;
        }
    }
    return nullptr;
}

} // namespace LinuxPlatform
