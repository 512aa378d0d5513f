#pragma once

#include "Curtain/PlatformWording.h"
#include "core/PreferencesStore.h"
#include "platform/Application.h"
#include "platform/MainQueue.h"
#include "platform/UserNotificationCenter.h"
#include "platform/UuidSource.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace Curtain {

/// Posts the program's notifications and routes the user's answers. Main thread only.
class Notifier : public Platform::UserNotificationCenterDelegate {
public:
    static constexpr const char* undoAction = "CURTAIN_UNDO";
    static constexpr const char* revealAction = "CURTAIN_REVEAL";
    static constexpr const char* activatedCategory = "CURTAIN_ACTIVATED";
    static constexpr const char* rehiddenCategory = "CURTAIN_REHIDDEN";
    static constexpr const char* openAction = "CURTAIN_OPEN";
    static constexpr const char* homeCategory = "CURTAIN_HOME";
    static constexpr const char* bundleKey = "bundleID";

    /// The services outlive the notifier.
    Notifier(Platform::UserNotificationCenter& center, const Platform::Application& application,
             Platform::UuidSource& uuids, Platform::MainQueue& mainQueue);
    ~Notifier() override;
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;

    std::function<void()> onUndo;
    std::function<void(const std::string& bundleID)> onReveal;
    std::function<void()> onOpen;
    /// The code of the language of the texts, asked at each post; English until it is set.
    std::function<std::string()> languageProvider;

    /// Whether notifications can be used at all; otherwise nothing below does anything.
    bool enabled() const { return enabled_; }

    /// Takes the answers from now on, and registers the kinds of notifications.
    void becomeDelegate();
    void notifyActivated();
    /// Privacy mode is on since an earlier run, which did not end in good order.
    void notifyResumed();
    void notifyRehidden(const std::string& appName, const std::string& bundleID);
    void notifyPrompt();
    /// Says in `damage` what became of the settings.
    void notifySettingsLost(const CurtainCore::PreferencesDamage& damage);
    /// Privacy mode is on and hides nothing, since the private apps were lost with the settings.
    void notifyNothingHidden();
    /// Privacy mode is on, and nothing can be hidden, for this reason. Takes the place of an earlier one, and
    /// of the notice that privacy mode was switched on.
    void notifyPrivacyModeInVain(const std::string& reason);
    void withdrawPrivacyModeInVain();
    /// Another program has switched privacy mode off.
    void notifyPrivacyModeEnded();
    /// Privacy mode is off, though an earlier run left it on: others ended while they took it up.
    void notifyNotResumed();
    void withdrawPrivacyModeEnded();
    /// Where Curtain is to be found: in the panel, or nowhere but in this notice. Takes the place of an
    /// earlier one. `shortcut` is the combination that switches privacy mode, empty for none.
    void notifyHome(bool hasPanel, const std::string& shortcut);
    void withdrawHome();
    /// For this reason; `photoNotSaved` for an unknown one.
    void notifyPhotoNotSaved(PlatformKey reason);
    /// Takes every notice off the screen that is true only while privacy mode is on, and the prompts.
    void withdrawPrivacyNotices();
    /// The one about this app, which is hidden no longer.
    void withdrawRehidden(const std::string& bundleID);
    /// `completion` runs on the main queue, whatever the answer.
    void requestAuthorization(std::function<void()> completion);

    void didReceive(const Platform::NotificationResponse& response,
                    const std::function<void()>& completion) override;
    void willPresent(const Platform::NotificationRequest& request,
                     const std::function<void(std::uint64_t options)>& completion) override;

private:
    void registerCategories();
    std::vector<Platform::NotificationCategory> categories() const;
    void notifyOn(const std::string& body);
    void notifyOff(PlatformKey reason);
    void addPrivacyNotice(const Platform::NotificationRequest& request);
    void withdrawPrivacyNotice(const std::string& identifier);
    void reveal(const Platform::NotificationContent& content) const;

    Platform::UserNotificationCenter& center_;
    Platform::UuidSource& uuids_;
    Platform::MainQueue& mainQueue_;
    bool enabled_;
    bool isDelegate_ = false;
    /// What has been posted about privacy mode since it was last taken back; no identifier twice.
    std::set<std::string> privacyNotices_;
    /// Of the latest notice that privacy mode was switched on.
    std::string activatedNotice_;
    bool hasToldOfEnd_ = false;
    bool hasToldOfHome_ = false;
};

} // namespace Curtain
