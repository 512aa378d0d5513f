#pragma once

#include "platform/MainQueue.h"
#include "platform/ProcessRunner.h"
#include "platform/linux/desktopicons/IconDesktop.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Answers the two programs with which the application reads and changes the icons on the desktop, for the
/// desktops that are at work at this moment; starts every other program. Main thread only.
class DesktopIconsRunner : public Platform::ProcessRunner {
public:
    using Desktops = std::vector<std::unique_ptr<IconDesktop>>;
    using Look = std::function<DesktopScene()>;

    /// `programs` and `clock` outlive this object.
    DesktopIconsRunner(Platform::ProcessRunner& programs, Platform::MainQueue& clock, Desktops desktops,
                       Look look);

    std::string run(const std::string& path, const std::vector<std::string>& arguments) override;

private:
    /// "0" when the icons are hidden everywhere or about to be, or it is known that nothing draws any, "1"
    /// when they are shown anywhere, nothing when it cannot be known.
    std::string read();
    bool isEachWindowWithoutIcons(const std::vector<DesktopScene::Window>& windows,
                                  const std::vector<DesktopIcons>& found) const;
    void write(bool shown);
    /// Whether any was shown.
    bool hideShown(const DesktopScene& scene);
    void show(const DesktopScene& scene);
    /// Sees to it that what was to be shown appears, though nobody asks.
    void bringBack();
    /// Hides what is about to appear as soon as it does.
    void hideWhenShown();
    bool isComingBack() const;

    Platform::ProcessRunner& programs_;
    Platform::MainQueue& clock_;
    Desktops desktops_;
    Look look_;
    std::optional<Platform::MainQueue::Seconds> askedToShow_;
    /// While a desktop is awaited whose icons are to be hidden.
    std::optional<Platform::Subscription> pendingHide_;
    Platform::Subscription pendingShow_;
};

} // namespace LinuxPlatform
