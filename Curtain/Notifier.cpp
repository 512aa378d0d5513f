#include "Curtain/Notifier.h"

#include "Curtain/SettingsLoss.h"
#include "Curtain/ViewText.h"

#include <utility>

namespace Curtain {
namespace {

using CurtainCore::LocKey;
using Platform::NotificationOption::alert;
using Platform::NotificationOption::banner;
using Platform::NotificationOption::sound;

template <class Key>
std::string text(Key key, const std::string& lang) {
    return std::string(PlatformWording::string(key, lang));
}

constexpr auto inVainIdentifier = "privacyModeInVain";
constexpr auto endedIdentifier = "privacyModeEnded";
constexpr auto homeIdentifier = "home";

std::string rehiddenIdentifier(const std::string& bundleID) {
    return "rehidden." + bundleID;
}

} // namespace

Notifier::Notifier(Platform::UserNotificationCenter& center, const Platform::Application& application,
                   Platform::UuidSource& uuids, Platform::MainQueue& mainQueue)
    : languageProvider([] { return "en"; }),
      center_(center),
      uuids_(uuids),
      mainQueue_(mainQueue),
      enabled_(application.bundleIdentifier().has_value()) {}

Notifier::~Notifier() {
    if (isDelegate_) {
        center_.setDelegate(nullptr);
    }
}

void Notifier::becomeDelegate() {
    if (!enabled_) {
        return;
    }
    isDelegate_ = true;
    center_.setDelegate(this);
    registerCategories();
}

void Notifier::notifyActivated() {
    notifyOn(text(LocKey::privacyOnBody, languageProvider()));
}

void Notifier::notifyResumed() {
    notifyOn(text(PlatformKey::privacyModeResumed, languageProvider()));
}

void Notifier::notifyOn(const std::string& body) {
    if (!enabled_) {
        return;
    }
    registerCategories();
    activatedNotice_ = uuids_.makeUuid();
    addPrivacyNotice(
        {activatedNotice_, {text(LocKey::privacyOnTitle, languageProvider()), body, activatedCategory, {}}});
}

void Notifier::notifyRehidden(const std::string& appName, const std::string& bundleID) {
    if (!enabled_) {
        return;
    }
    registerCategories();
    const auto lang = languageProvider();
    addPrivacyNotice({rehiddenIdentifier(bundleID),
                      {text(LocKey::rehiddenTitle, lang),
                       PlatformWording::opening(shownName(appName, bundleID).toStdString(), lang) + " " +
                           text(LocKey::rehiddenReason, lang),
                       rehiddenCategory,
                       {{bundleKey, bundleID}}}});
}

void Notifier::notifyPrompt() {
    if (!enabled_) {
        return;
    }
    const auto lang = languageProvider();
    // A server that held it back would show it after the share.
    addPrivacyNotice({uuids_.makeUuid(),
                      {text(LocKey::sharePromptTitle, lang), text(LocKey::sharePromptBody, lang), {}, {}}});
}

void Notifier::notifySettingsLost(const CurtainCore::PreferencesDamage& damage) {
    if (!enabled_) {
        return;
    }
    const auto lang = languageProvider();
    center_.add({uuids_.makeUuid(),
                 {text(PlatformKey::settingsLostTitle, lang), settingsLossText(damage, lang), {}, {}}});
}

void Notifier::notifyNothingHidden() {
    if (!enabled_) {
        return;
    }
    const auto lang = languageProvider();
    addPrivacyNotice(
        {uuids_.makeUuid(),
         {text(PlatformKey::nothingHiddenTitle, lang), text(PlatformKey::privateAppsLost, lang), {}, {}}});
}

void Notifier::notifyPrivacyModeInVain(const std::string& reason) {
    if (!enabled_) {
        return;
    }
    registerCategories();
    const auto title = PlatformWording::string(PlatformKey::privacyModeInVain, languageProvider());
    withdrawPrivacyNotice(activatedNotice_);
    addPrivacyNotice({inVainIdentifier, {std::string(title), reason, activatedCategory, {}}});
}

void Notifier::withdrawPrivacyModeInVain() {
    withdrawPrivacyNotice(inVainIdentifier);
}

void Notifier::notifyPrivacyModeEnded() {
    notifyOff(PlatformKey::privacyModeEndedBody);
}

void Notifier::notifyNotResumed() {
    notifyOff(PlatformKey::privacyModeNotResumed);
}

void Notifier::notifyOff(PlatformKey reason) {
    if (!enabled_) {
        return;
    }
    const auto lang = languageProvider();
    hasToldOfEnd_ = true;
    center_.add(
        {endedIdentifier, {text(PlatformKey::privacyModeEndedTitle, lang), text(reason, lang), {}, {}}});
}

void Notifier::withdrawPrivacyModeEnded() {
    if (std::exchange(hasToldOfEnd_, false)) {
        center_.removeDeliveredNotifications({endedIdentifier});
    }
}

void Notifier::notifyHome(bool hasPanel, const std::string& shortcut) {
    if (!enabled_) {
        return;
    }
    const auto lang = languageProvider();
    auto all = categories();
    all.push_back({homeCategory, {{openAction, text(LocKey::open, lang)}}});
    center_.setNotificationCategories(std::move(all));
    auto body = text(hasPanel ? PlatformKey::whereCurtainIs : PlatformKey::noTray, lang);
    if (!shortcut.empty()) {
        body += " " + text(PlatformKey::shortcutHidesApps, lang) + " " + shortcut;
    }
    hasToldOfHome_ = true;
    center_.add({homeIdentifier,
                 {text(hasPanel ? PlatformKey::inYourPanelTitle : PlatformKey::runsWithoutTrayTitle, lang),
                  body,
                  homeCategory,
                  {}}});
}

void Notifier::withdrawHome() {
    if (std::exchange(hasToldOfHome_, false)) {
        center_.removeDeliveredNotifications({homeIdentifier});
    }
}

void Notifier::notifyPhotoNotSaved(PlatformKey reason) {
    if (!enabled_) {
        return;
    }
    const auto lang = languageProvider();
    const auto body = reason == PlatformKey::photoNotSaved ? std::string() : text(reason, lang);
    center_.add({uuids_.makeUuid(), {text(PlatformKey::photoNotSaved, lang), body, {}, {}}});
}

void Notifier::withdrawPrivacyNotices() {
    if (!privacyNotices_.empty()) {
        center_.removeDeliveredNotifications({privacyNotices_.begin(), privacyNotices_.end()});
        privacyNotices_.clear();
    }
}

void Notifier::withdrawRehidden(const std::string& bundleID) {
    withdrawPrivacyNotice(rehiddenIdentifier(bundleID));
}

void Notifier::requestAuthorization(std::function<void()> completion) {
    if (!enabled_) {
        return;
    }
    center_.requestAuthorization(alert | sound,
                                 [&mainQueue = mainQueue_, completion = std::move(completion)](bool) mutable {
                                     mainQueue.async(std::move(completion));
                                 });
}

void Notifier::didReceive(const Platform::NotificationResponse& response,
                          const std::function<void()>& completion) {
    const auto& action = response.actionIdentifier;
    const auto& content = response.request.content;
    if (action == undoAction) {
        if (onUndo) {
            onUndo();
        }
    } else if (action == revealAction || (action == Platform::NotificationResponse::defaultActionIdentifier &&
                                          content.categoryIdentifier == rehiddenCategory)) {
        reveal(content);
    }
    if (content.categoryIdentifier == homeCategory && onOpen &&
        (action == openAction || action == Platform::NotificationResponse::defaultActionIdentifier)) {
        onOpen();
    }
    completion();
}

void Notifier::willPresent(const Platform::NotificationRequest& /*request*/,
                           const std::function<void(std::uint64_t options)>& completion) {
    completion(banner | sound);
}

void Notifier::registerCategories() {
    center_.setNotificationCategories(categories());
}

std::vector<Platform::NotificationCategory> Notifier::categories() const {
    const auto lang = languageProvider();
    return {{activatedCategory, {{undoAction, text(LocKey::undo, lang)}}},
            {rehiddenCategory, {{revealAction, text(LocKey::reveal, lang)}}}};
}

void Notifier::addPrivacyNotice(const Platform::NotificationRequest& request) {
    privacyNotices_.insert(request.identifier);
    center_.add(request);
}

void Notifier::withdrawPrivacyNotice(const std::string& identifier) {
    if (privacyNotices_.erase(identifier) > 0) {
        center_.removeDeliveredNotifications({identifier});
    }
}

void Notifier::reveal(const Platform::NotificationContent& content) const {
    const auto bundleID = content.userInfo.find(bundleKey);
    if (bundleID != content.userInfo.end() && onReveal) {
        onReveal(bundleID->second);
    }
}

} // namespace Curtain
