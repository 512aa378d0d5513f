#pragma once

#include "platform/linux/windows/WindowSystem.h"

#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// The windows of the session as a script in KWin reports them; `KWinScripts` describes the reports. Main
/// thread only.
class KWinWindowModel {
public:
    /// What a report made different, in this order.
    struct Changes {
        /// New, or that of another app from now on.
        std::vector<WindowId> opened;
        /// Minimized before, or not known, and to be seen now.
        std::vector<WindowId> returned;
        std::optional<WindowId> activated;

        bool empty() const { return opened.empty() && returned.empty() && !activated; }
    };

    /// The windows of the first list are not new, but those in view count as returned. A report that makes no
    /// sense is left alone.
    Changes take(const QJsonObject& report);

    /// Changes whenever `windows` does.
    std::uint64_t generation() const { return generation_; }
    /// Oldest first; valid until the next report.
    const std::vector<Window>& windows();
    /// Null when there is no such window; valid until the next report.
    const Window* find(WindowId window) const;
    /// As KWin writes it; empty when there is no such window.
    QString nameOf(WindowId window) const;
    /// On the present desktop and activity.
    bool isHere(WindowId window) const;
    std::optional<WindowId> active() const { return active_; }
    /// Bottom to top, as far as the windows came up or were activated one after another.
    std::vector<WindowId> stackingOrder() const;

private:
    struct Entry {
        Window window;
        QString name;
        bool isHere = true;
        std::uint64_t raised = 0;
    };

    void takeList(const QJsonObject& report, Changes& changes);
    void takeWindow(const QJsonObject& described, Changes& changes);
    void takeActivated(const QString& name, Changes& changes);
    void takeWhatIsHere(const QJsonObject& report);
    void raise(WindowId window);

    std::map<WindowId, Entry> entries_;
    std::optional<WindowId> active_;
    std::vector<Window> windows_;
    std::uint64_t generation_ = 1;
    std::uint64_t builtGeneration_ = 0;
    std::uint64_t lastBirth_ = 0;
    std::uint64_t lastRaised_ = 0;
    bool isFirstList_ = true;
};

} // namespace LinuxPlatform
