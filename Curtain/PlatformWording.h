#pragma once

#include "core/LocKey.h"
#include "core/RawValue.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace Curtain {

/// Names a text that only Linux needs: a sentence or, from `mirrorPicture` on, a few words.
enum class PlatformKey {
    /// Why apps cannot be hidden, to stand below `wizCompatOSFail` or alone: the session is a Wayland one
    /// that has no way to do it.
    noHidingOnWayland,
    /// The same: nothing manages the windows.
    noWindowManager,
    /// The same: what hides them is installed, and the desktop loads it when its next session begins.
    logOutOnce,
    /// The same: what manages the windows does not hide them when it is asked.
    windowManagerIgnoresHiding,
    /// The same: the extension of GNOME Shell that hides them is not installed, is switched off, does not
    /// work.
    extensionMissing,
    extensionOff,
    extensionFails,
    /// The same, for now: the session has not answered yet.
    hidingNotKnownYet,
    /// What helps against noHidingOnWayland, noWindowManager and windowManagerIgnoresHiding.
    chooseX11Session,
    startWindowManager,
    chooseAnotherDesktop,
    /// What helps against extensionMissing and extensionOff.
    installExtension,
    switchExtensionOn,
    /// Where not every window of the session is known.
    privateAppsUnseen,
    /// The same, above the list of running apps.
    runningAppsUnseen,
    /// The desktop has no page that a settings button could open, and what to do instead.
    noSettingsPage,
    /// The same, where the page would grant a permission.
    noPermissionPage,
    noTray,
    noGlobalShortcuts,
    shortcutInX11WindowsOnly,
    noShareDetection,
    /// Something can tell as a rule, and cannot at this moment.
    shareDetectionUnknown,
    /// The stored settings could not be understood, and what that means; the name of their copy stands below.
    settingsDamaged,
    /// The same where they cannot even be read.
    settingsUnreadable,
    /// Why privacy mode has hidden nothing: the list of private apps was lost with the settings.
    privateAppsLost,
    /// The system itself lets the user have no camera, and what helps.
    cameraForbidden,
    /// Why a camera shows nothing: it is not plugged in any more.
    cameraGone,
    /// The same: another program uses it.
    cameraInUse,
    /// The same: it does not begin, for whatever reason.
    cameraDoesNotStart,
    /// The same: it has begun and sends nothing that can be shown.
    cameraSendsNothing,
    /// Why privacy mode has ended.
    privacyModeEndedBody,
    /// Why privacy mode is on from the start.
    privacyModeResumed,
    /// Why it is off, though an earlier run left it on.
    privacyModeNotResumed,
    /// What became of a test photo.
    photoCopied,
    photoNotCopied,
    photoSaved,
    photoNotSaved,
    photoNotSavedNoSpace,
    photoNotSavedNotAllowed,
    photoNotTaken,
    /// Of the name that it was to be saved under.
    nameInUse,
    /// Why none can be taken.
    noPictureYet,
    /// The shortcut does nothing, for the system has refused it.
    shortcutInUse,
    /// In a list of apps: none of them has the name that is searched for.
    noAppFound,
    /// The same: there is none to be listed, among those that run and among the private ones.
    noAppRuns,
    noAppPrivate,
    /// The program is to start at login, and the desktop's own tool has switched that off.
    launchSwitchedOff,
    /// Where Curtain is from its start on, and what switches privacy mode; the shortcut stands behind it.
    whereCurtainIs,
    shortcutHidesApps,
    mirrorPicture,
    moreOptions,
    clearSearch,
    /// The titles of the notices about the three sentences above.
    settingsLostTitle,
    nothingHiddenTitle,
    close,
    /// A button that does what switchExtensionOn says.
    switchOn,
    /// What one app is where nobody knows whether it can be seen, and the risk for want of such answers.
    cannotTell,
    /// Behind the name of a private app that the system does not know.
    notInstalled,
    /// Below a score: none of them is in it, or not all are.
    privateAppsNotCounted,
    somePrivateAppsNotCounted,
    /// Privacy mode is on, and nothing can be hidden.
    privacyModeInVain,
    /// Another program has switched privacy mode off: the title of the notice.
    privacyModeEndedTitle,
    /// A button: opens the list of apps that can be made private.
    choosePrivateApps,
    /// One of a list's choices: those apps alone that are private.
    privateOnly,
    /// A button.
    restartCurtain,
    /// The titles of the notices at the first start.
    inYourPanelTitle,
    runsWithoutTrayTitle,
};

/// The texts that the user sees on Linux: those of `CurtainCore::Localizer`, but for the few that would be
/// untrue here, and some of its own. Texts and codes are UTF-8, texts live as long as the program, and a
/// lookup allocates nothing; callable from any thread.
namespace PlatformWording {

/// The text in a language, by its two-letter code; in English when the code is not known. A text may hold the
/// placeholder "%@" for a value, as often as the localizer's.
std::string_view string(CurtainCore::LocKey key, std::string_view lang);

/// A sentence or two or a name, without placeholders, in a language chosen in the same way.
std::string_view string(PlatformKey key, std::string_view lang);

/// A name as a sentence of this language begins with it: a Latin one would otherwise lay an Arabic sentence
/// out from left to right.
std::string opening(std::string_view name, std::string_view lang);

} // namespace PlatformWording

} // namespace Curtain

template <>
struct CurtainCore::RawValues<Curtain::PlatformKey> {
    static constexpr std::array<std::pair<Curtain::PlatformKey, std::string_view>, 67> cases{{
        {Curtain::PlatformKey::noHidingOnWayland, "noHidingOnWayland"},
        {Curtain::PlatformKey::noWindowManager, "noWindowManager"},
        {Curtain::PlatformKey::logOutOnce, "logOutOnce"},
        {Curtain::PlatformKey::windowManagerIgnoresHiding, "windowManagerIgnoresHiding"},
        {Curtain::PlatformKey::extensionMissing, "extensionMissing"},
        {Curtain::PlatformKey::extensionOff, "extensionOff"},
        {Curtain::PlatformKey::extensionFails, "extensionFails"},
        {Curtain::PlatformKey::hidingNotKnownYet, "hidingNotKnownYet"},
        {Curtain::PlatformKey::chooseX11Session, "chooseX11Session"},
        {Curtain::PlatformKey::startWindowManager, "startWindowManager"},
        {Curtain::PlatformKey::chooseAnotherDesktop, "chooseAnotherDesktop"},
        {Curtain::PlatformKey::installExtension, "installExtension"},
        {Curtain::PlatformKey::switchExtensionOn, "switchExtensionOn"},
        {Curtain::PlatformKey::privateAppsUnseen, "privateAppsUnseen"},
        {Curtain::PlatformKey::runningAppsUnseen, "runningAppsUnseen"},
        {Curtain::PlatformKey::noSettingsPage, "noSettingsPage"},
        {Curtain::PlatformKey::noPermissionPage, "noPermissionPage"},
        {Curtain::PlatformKey::noTray, "noTray"},
        {Curtain::PlatformKey::noGlobalShortcuts, "noGlobalShortcuts"},
        {Curtain::PlatformKey::shortcutInX11WindowsOnly, "shortcutInX11WindowsOnly"},
        {Curtain::PlatformKey::noShareDetection, "noShareDetection"},
        {Curtain::PlatformKey::shareDetectionUnknown, "shareDetectionUnknown"},
        {Curtain::PlatformKey::settingsDamaged, "settingsDamaged"},
        {Curtain::PlatformKey::settingsUnreadable, "settingsUnreadable"},
        {Curtain::PlatformKey::privateAppsLost, "privateAppsLost"},
        {Curtain::PlatformKey::cameraForbidden, "cameraForbidden"},
        {Curtain::PlatformKey::cameraGone, "cameraGone"},
        {Curtain::PlatformKey::cameraInUse, "cameraInUse"},
        {Curtain::PlatformKey::cameraDoesNotStart, "cameraDoesNotStart"},
        {Curtain::PlatformKey::cameraSendsNothing, "cameraSendsNothing"},
        {Curtain::PlatformKey::privacyModeEndedBody, "privacyModeEndedBody"},
        {Curtain::PlatformKey::privacyModeResumed, "privacyModeResumed"},
        {Curtain::PlatformKey::privacyModeNotResumed, "privacyModeNotResumed"},
        {Curtain::PlatformKey::photoCopied, "photoCopied"},
        {Curtain::PlatformKey::photoNotCopied, "photoNotCopied"},
        {Curtain::PlatformKey::photoSaved, "photoSaved"},
        {Curtain::PlatformKey::photoNotSaved, "photoNotSaved"},
        {Curtain::PlatformKey::photoNotSavedNoSpace, "photoNotSavedNoSpace"},
        {Curtain::PlatformKey::photoNotSavedNotAllowed, "photoNotSavedNotAllowed"},
        {Curtain::PlatformKey::photoNotTaken, "photoNotTaken"},
        {Curtain::PlatformKey::nameInUse, "nameInUse"},
        {Curtain::PlatformKey::noPictureYet, "noPictureYet"},
        {Curtain::PlatformKey::shortcutInUse, "shortcutInUse"},
        {Curtain::PlatformKey::noAppFound, "noAppFound"},
        {Curtain::PlatformKey::noAppRuns, "noAppRuns"},
        {Curtain::PlatformKey::noAppPrivate, "noAppPrivate"},
        {Curtain::PlatformKey::launchSwitchedOff, "launchSwitchedOff"},
        {Curtain::PlatformKey::whereCurtainIs, "whereCurtainIs"},
        {Curtain::PlatformKey::shortcutHidesApps, "shortcutHidesApps"},
        {Curtain::PlatformKey::mirrorPicture, "mirrorPicture"},
        {Curtain::PlatformKey::moreOptions, "moreOptions"},
        {Curtain::PlatformKey::clearSearch, "clearSearch"},
        {Curtain::PlatformKey::settingsLostTitle, "settingsLostTitle"},
        {Curtain::PlatformKey::nothingHiddenTitle, "nothingHiddenTitle"},
        {Curtain::PlatformKey::close, "close"},
        {Curtain::PlatformKey::switchOn, "switchOn"},
        {Curtain::PlatformKey::cannotTell, "cannotTell"},
        {Curtain::PlatformKey::notInstalled, "notInstalled"},
        {Curtain::PlatformKey::privateAppsNotCounted, "privateAppsNotCounted"},
        {Curtain::PlatformKey::somePrivateAppsNotCounted, "somePrivateAppsNotCounted"},
        {Curtain::PlatformKey::privacyModeInVain, "privacyModeInVain"},
        {Curtain::PlatformKey::privacyModeEndedTitle, "privacyModeEndedTitle"},
        {Curtain::PlatformKey::choosePrivateApps, "choosePrivateApps"},
        {Curtain::PlatformKey::privateOnly, "privateOnly"},
        {Curtain::PlatformKey::restartCurtain, "restartCurtain"},
        {Curtain::PlatformKey::inYourPanelTitle, "inYourPanelTitle"},
        {Curtain::PlatformKey::runsWithoutTrayTitle, "runsWithoutTrayTitle"},
    }};
};
