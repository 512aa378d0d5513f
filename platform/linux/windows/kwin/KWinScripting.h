#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace LinuxPlatform {

/// Runs scripts inside KWin 5 and 6, by way of the objects that it has on the session bus
/// (org.kde.kwin.Scripting and org.kde.kwin.Script). Waits for nobody and starts no service. Main thread
/// only.
class KWinScripting {
public:
    /// Whether the script has begun to run. Nobody else can tell: KWin may run another script in its place
    /// and say that all is well.
    using HasBegun = std::function<bool()>;
    using Done = std::function<void(bool isRunning)>;

    /// `queue` outlives this object. `folder` is one of the user's own that KWin can read.
    KWinScripting(QDBusConnection bus, Platform::MainQueue& queue, std::filesystem::path folder);

    /// Replaces the script of this name. `owner` is KWin's unique name on the bus. `done` is called later, or
    /// never when this object ends before. One at a time for each name.
    void run(const QString& owner, const QString& name, const std::string& text, HasBegun hasBegun,
             Done done);
    /// Runs a script that is over at once, and waits for KWin, one second for each of its answers at most and
    /// no longer once one is missing. For the end, when there is no later. `name` is one that no other script
    /// has. False where it may not have run.
    bool runAndWait(const QString& owner, const QString& name, const std::string& text) const;
    void unload(const QString& owner, const QString& name) const;
    /// `answer` is not called where KWin does not answer.
    void askWhetherLoaded(const QString& owner, const QString& name, std::function<void(bool)> answer) const;

private:
    struct Start;
    using Answer = std::function<void(const QDBusMessage&)>;

    void load(const std::shared_ptr<Start>& start);
    void loadFile(const std::shared_ptr<Start>& start);
    void runAt(const std::shared_ptr<Start>& start, const QString& path, const QString& otherPath);
    void lookWhetherItRuns(const std::shared_ptr<Start>& start);
    void tryNextPlace(const std::shared_ptr<Start>& start);
    void finish(const std::shared_ptr<Start>& start, bool isRunning) const;
    void call(const QString& owner, const QString& method, const QVariantList& arguments,
              Answer answer) const;
    void send(const QDBusMessage& message, Answer answer) const;

    QDBusConnection bus_;
    Platform::MainQueue& queue_;
    std::filesystem::path folder_;
    /// Without it nobody waits for answers any more.
    std::unique_ptr<QObject> context_ = std::make_unique<QObject>();
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
