#include "platform/linux/desktopicons/DesktopIconsRunner.h"

#include "platform/DesktopIconsCommand.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

using Arguments = std::vector<std::string>;

namespace Command = Platform::DesktopIconsCommand;

constexpr auto hiddenAnswer = "0\n";
constexpr auto shownAnswer = "1\n";
/// A desktop that has to start first is taken at its word for so long.
constexpr Platform::MainQueue::Seconds timeToAppear{5};
constexpr Platform::MainQueue::Seconds timeBetweenLooks{0.2};

const Arguments& readingArguments() {
    static const Arguments arguments{"read", Command::domain, Command::key};
    return arguments;
}

Arguments writingArguments(const char* value) {
    return {"write", Command::domain, Command::key, "-bool", value};
}

} // namespace

DesktopIconsRunner::DesktopIconsRunner(Platform::ProcessRunner& programs, Platform::MainQueue& clock,
                                       Desktops desktops, Look look)
    : programs_(programs),
      clock_(clock),
      desktops_(std::move(desktops)),
      look_(std::move(look)) {}

std::string DesktopIconsRunner::run(const std::string& path, const Arguments& arguments) {
    if (path == Command::defaultsPath) {
        if (arguments == readingArguments()) {
            return read();
        }
        if (arguments == writingArguments("true")) {
            write(true);
            return {};
        }
        if (arguments == writingArguments("false")) {
            write(false);
            return {};
        }
    }
    if (path == Command::killallPath && arguments == Arguments{Command::program}) {
        // The desktops have followed their settings already.
        return {};
    }
    return programs_.run(path, arguments);
}

std::string DesktopIconsRunner::read() {
    if (pendingHide_) {
        // Whoever wants the icons has to call that off.
        return hiddenAnswer;
    }
    const auto scene = look_();
    if (!scene.busNames) {
        return {};
    }
    std::vector<DesktopIcons> found;
    for (const auto& desktop : desktops_) {
        found.push_back(desktop->icons(scene));
    }
    const auto has = [&](DesktopIcons icons) { return std::ranges::count(found, icons) > 0; };
    if (has(DesktopIcons::shown)) {
        askedToShow_.reset();
        return shownAnswer;
    }
    if (has(DesktopIcons::unknown)) {
        return {};
    }
    if (isComingBack()) {
        return shownAnswer;
    }
    const bool isKnown = has(DesktopIcons::hidden) || scene.isEveryWindowKnown;
    return isKnown && isEachWindowWithoutIcons(scene.desktopWindows, found) ? hiddenAnswer : "";
}

/// Whether each belongs to a desktop that hides its icons. `found` is what the desktops say, in their order.
bool DesktopIconsRunner::isEachWindowWithoutIcons(const std::vector<DesktopScene::Window>& windows,
                                                  const std::vector<DesktopIcons>& found) const {
    std::set<std::string_view> classes;
    for (std::size_t index = 0; index < found.size(); ++index) {
        if (found[index] == DesktopIcons::hidden) {
            classes.insert(desktops_[index]->windowClass());
        }
    }
    return std::ranges::all_of(windows, [&](const auto& window) {
        return !window.className.empty() && classes.contains(window.className);
    });
}

void DesktopIconsRunner::write(bool shown) {
    pendingHide_.reset();
    pendingShow_ = {};
    const auto scene = look_();
    if (!scene.busNames) {
        return;
    }
    if (shown) {
        show(scene);
        pendingShow_ = clock_.repeating(timeBetweenLooks, [this] { bringBack(); });
    } else if (hideShown(scene)) {
        askedToShow_.reset();
    } else if (isComingBack()) {
        pendingHide_ = clock_.repeating(timeBetweenLooks, [this] { hideWhenShown(); });
    }
}

void DesktopIconsRunner::show(const DesktopScene& scene) {
    for (const auto& desktop : desktops_) {
        const bool isToShow = desktop->icons(scene) == DesktopIcons::hidden || desktop->isAboutToHide(scene);
        if (isToShow && desktop->show(scene)) {
            askedToShow_ = clock_.now();
        }
    }
}

void DesktopIconsRunner::bringBack() {
    const auto isComingBack = [](const auto& desktop) { return desktop->isComingBack(); };
    if (std::ranges::none_of(desktops_, isComingBack)) {
        pendingShow_ = {};
        return;
    }
    const auto scene = look_();
    for (const auto& desktop : desktops_) {
        if (scene.busNames && desktop->isComingBack()) {
            desktop->icons(scene);
        }
    }
}

bool DesktopIconsRunner::hideShown(const DesktopScene& scene) {
    bool wasShown = false;
    for (const auto& desktop : desktops_) {
        if (desktop->icons(scene) == DesktopIcons::shown) {
            desktop->hide(scene);
            wasShown = true;
        }
    }
    return wasShown;
}

void DesktopIconsRunner::hideWhenShown() {
    const auto scene = look_();
    if (scene.busNames && hideShown(scene)) {
        askedToShow_.reset();
    }
    if (!isComingBack()) {
        pendingHide_.reset();
    }
}

bool DesktopIconsRunner::isComingBack() const {
    return askedToShow_ && clock_.now() - *askedToShow_ < timeToAppear;
}

} // namespace LinuxPlatform
