#pragma once

#include "core/RawValue.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

/// Every key once, in the order in which the texts are listed: the enumeration and its stored names both come
/// from here.
#define CURTAIN_LOC_KEYS(KEY)                                                                                \
    KEY(readyForCall)                                                                                        \
    KEY(youAreReady)                                                                                         \
    KEY(needsAttention)                                                                                      \
    KEY(sharingExposes)                                                                                      \
    KEY(camera)                                                                                              \
    KEY(microphone)                                                                                          \
    KEY(desktop)                                                                                             \
    KEY(notifications)                                                                                       \
    KEY(privateApps)                                                                                         \
    KEY(fixEverything)                                                                                       \
    KEY(testShareMode)                                                                                       \
    KEY(restore)                                                                                             \
    KEY(openFocusSettings)                                                                                   \
    KEY(markHandled)                                                                                         \
    KEY(embarrassmentScore)                                                                                  \
    KEY(riskLow)                                                                                             \
    KEY(riskMedium)                                                                                          \
    KEY(riskHigh)                                                                                            \
    KEY(riskVeryHigh)                                                                                        \
    KEY(why)                                                                                                 \
    KEY(settings)                                                                                            \
    KEY(quit)                                                                                                \
    KEY(hideFinder)                                                                                          \
    KEY(filesOnDesktop)                                                                                      \
    KEY(notificationsMayAppear)                                                                              \
    KEY(privateAppsVisible)                                                                                  \
    KEY(holdToHearYourself)                                                                                  \
    KEY(ifYouSharedNow)                                                                                      \
    KEY(hideDesktop)                                                                                         \
    KEY(showDesktop)                                                                                         \
    KEY(desktopHidden)                                                                                       \
    KEY(tagline)                                                                                             \
    KEY(screenShareRisk)                                                                                     \
    KEY(readinessCheck)                                                                                      \
    KEY(looksGood)                                                                                           \
    KEY(attentionNeeded)                                                                                     \
    KEY(notCheckedYet)                                                                                       \
    KEY(cameraNeedsAccess)                                                                                   \
    KEY(openSystemSettings)                                                                                  \
    KEY(noCameraFound)                                                                                       \
    KEY(cameraPreview)                                                                                       \
    KEY(addApp)                                                                                              \
    KEY(add)                                                                                                 \
    KEY(added)                                                                                               \
    KEY(editApps)                                                                                            \
    KEY(remove)                                                                                              \
    KEY(hidePrivateApps)                                                                                     \
    KEY(addPrivateAppsHint)                                                                                  \
    KEY(visible)                                                                                             \
    KEY(hidden)                                                                                              \
    KEY(notRunning)                                                                                          \
    KEY(openFocus)                                                                                           \
    KEY(micWorking)                                                                                          \
    KEY(micSaySomething)                                                                                     \
    KEY(micAccessDenied)                                                                                     \
    KEY(micNoInput)                                                                                          \
    KEY(recordTitle)                                                                                         \
    KEY(recordingTitle)                                                                                      \
    KEY(playingTitle)                                                                                        \
    KEY(tabGeneral)                                                                                          \
    KEY(tabApps)                                                                                             \
    KEY(tabPermissions)                                                                                      \
    KEY(language)                                                                                            \
    KEY(systemOption)                                                                                        \
    KEY(defaultOption)                                                                                       \
    KEY(showScore)                                                                                           \
    KEY(runTestOnOpen)                                                                                       \
    KEY(launchAtLogin)                                                                                       \
    KEY(globalShortcut)                                                                                      \
    KEY(running)                                                                                             \
    KEY(installed)                                                                                           \
    KEY(searchApps)                                                                                          \
    KEY(autoDetect)                                                                                          \
    KEY(autoDetectNote)                                                                                      \
    KEY(showCameraPreview)                                                                                   \
    KEY(cameraNote)                                                                                          \
    KEY(showMicCheck)                                                                                        \
    KEY(micTestMode)                                                                                         \
    KEY(micPlayback)                                                                                         \
    KEY(micLiveMonitor)                                                                                      \
    KEY(micNote)                                                                                             \
    KEY(checkNotifications)                                                                                  \
    KEY(notifHandled)                                                                                        \
    KEY(notifNote)                                                                                           \
    KEY(rehiddenTitle)                                                                                       \
    KEY(rehiddenReason)                                                                                      \
    KEY(privacyOnTitle)                                                                                      \
    KEY(privacyOnBody)                                                                                       \
    KEY(sharePromptTitle)                                                                                    \
    KEY(sharePromptBody)                                                                                     \
    KEY(undo)                                                                                                \
    KEY(reveal)                                                                                              \
    KEY(onboardTitle)                                                                                        \
    KEY(onboardBody)                                                                                         \
    KEY(onboardRequest)                                                                                      \
    KEY(hideApps)                                                                                            \
    KEY(takePhoto)                                                                                           \
    KEY(cancel)                                                                                              \
    KEY(copyClip)                                                                                            \
    KEY(saveFile)                                                                                            \
    KEY(open)                                                                                                \
    KEY(autoDetectRestart)                                                                                   \
    KEY(wizWelcomeTitle)                                                                                     \
    KEY(wizWelcomeBody)                                                                                      \
    KEY(wizWelcomeCTA)                                                                                       \
    KEY(wizWelcomeMicro)                                                                                     \
    KEY(wizCompatTitle)                                                                                      \
    KEY(wizCompatBelong)                                                                                     \
    KEY(wizCompatOSFail)                                                                                     \
    KEY(wizCompatContinue)                                                                                   \
    KEY(wizCompatCheckOS)                                                                                    \
    KEY(wizCompatCheckCamMic)                                                                                \
    KEY(wizCompatCheckApps)                                                                                  \
    KEY(wizPermDesktopTitle)                                                                                 \
    KEY(wizPermDesktopBody)                                                                                  \
    KEY(wizPermMicTitle)                                                                                     \
    KEY(wizPermMicBody)                                                                                      \
    KEY(wizPermCamTitle)                                                                                     \
    KEY(wizPermCamBody)                                                                                      \
    KEY(wizPermAllow)                                                                                        \
    KEY(wizPermContinue)                                                                                     \
    KEY(wizPermDeniedHint)                                                                                   \
    KEY(wizPermOpenSettings)                                                                                 \
    KEY(wizValidCam)                                                                                         \
    KEY(wizValidMic)                                                                                         \
    KEY(wizValidDesktop)                                                                                     \
    KEY(wizSummaryTitle)                                                                                     \
    KEY(wizSummaryDesktop)                                                                                   \
    KEY(wizSummaryMic)                                                                                       \
    KEY(wizSummaryCam)                                                                                       \
    KEY(wizSummaryStart)

namespace CurtainCore {

/// Names a text that the user sees.
enum class LocKey {
#define CURTAIN_ENUMERATOR(name) name,
    CURTAIN_LOC_KEYS(CURTAIN_ENUMERATOR)
#undef CURTAIN_ENUMERATOR
};

template <>
struct RawValues<LocKey> {
    static constexpr auto cases = std::to_array<std::pair<LocKey, std::string_view>>({
#define CURTAIN_CASE(name) {LocKey::name, #name},
        CURTAIN_LOC_KEYS(CURTAIN_CASE)
#undef CURTAIN_CASE
    });
};

inline constexpr std::size_t locKeyCount = RawValues<LocKey>::cases.size();

} // namespace CurtainCore

#undef CURTAIN_LOC_KEYS
