#pragma once

#include "Curtain/PlatformWording.h"
#include "core/LocKey.h"

#include <QObject>
#include <QString>

#include <string>

namespace Curtain {

// Those that views show without a rule of their own, by their names.
#define CURTAIN_TABLE_TEXTS(TEXT)                                                                            \
    TEXT(add)                                                                                                \
    TEXT(addPrivateAppsHint)                                                                                 \
    TEXT(attentionNeeded)                                                                                    \
    TEXT(autoDetect)                                                                                         \
    TEXT(autoDetectNote)                                                                                     \
    TEXT(autoDetectRestart)                                                                                  \
    TEXT(camera)                                                                                             \
    TEXT(cameraNeedsAccess)                                                                                  \
    TEXT(cameraNote)                                                                                         \
    TEXT(cameraPreview)                                                                                      \
    TEXT(cancel)                                                                                             \
    TEXT(checkNotifications)                                                                                 \
    TEXT(copyClip)                                                                                           \
    TEXT(defaultOption)                                                                                      \
    TEXT(desktop)                                                                                            \
    TEXT(editApps)                                                                                           \
    TEXT(embarrassmentScore)                                                                                 \
    TEXT(fixEverything)                                                                                      \
    TEXT(globalShortcut)                                                                                     \
    TEXT(hidden)                                                                                             \
    TEXT(hideApps)                                                                                           \
    TEXT(hideDesktop)                                                                                        \
    TEXT(hidePrivateApps)                                                                                    \
    TEXT(ifYouSharedNow)                                                                                     \
    TEXT(installed)                                                                                          \
    TEXT(language)                                                                                           \
    TEXT(launchAtLogin)                                                                                      \
    TEXT(looksGood)                                                                                          \
    TEXT(micNote)                                                                                            \
    TEXT(micTestMode)                                                                                        \
    TEXT(microphone)                                                                                         \
    TEXT(noCameraFound)                                                                                      \
    TEXT(notRunning)                                                                                         \
    TEXT(notifHandled)                                                                                       \
    TEXT(notifNote)                                                                                          \
    TEXT(notifications)                                                                                      \
    TEXT(openFocus)                                                                                          \
    TEXT(openFocusSettings)                                                                                  \
    TEXT(openSystemSettings)                                                                                 \
    TEXT(privacyOnBody)                                                                                      \
    TEXT(privacyOnTitle)                                                                                     \
    TEXT(privateApps)                                                                                        \
    TEXT(quit)                                                                                               \
    TEXT(readinessCheck)                                                                                     \
    TEXT(remove)                                                                                             \
    TEXT(restore)                                                                                            \
    TEXT(runTestOnOpen)                                                                                      \
    TEXT(running)                                                                                            \
    TEXT(saveFile)                                                                                           \
    TEXT(screenShareRisk)                                                                                    \
    TEXT(searchApps)                                                                                         \
    TEXT(settings)                                                                                           \
    TEXT(showCameraPreview)                                                                                  \
    TEXT(showDesktop)                                                                                        \
    TEXT(showMicCheck)                                                                                       \
    TEXT(showScore)                                                                                          \
    TEXT(tabApps)                                                                                            \
    TEXT(tabGeneral)                                                                                         \
    TEXT(tabPermissions)                                                                                     \
    TEXT(tagline)                                                                                            \
    TEXT(takePhoto)                                                                                          \
    TEXT(testShareMode)                                                                                      \
    TEXT(undo)                                                                                               \
    TEXT(visible)                                                                                            \
    TEXT(wizCompatBelong)                                                                                    \
    TEXT(wizCompatCheckApps)                                                                                 \
    TEXT(wizCompatCheckCamMic)                                                                               \
    TEXT(wizCompatCheckOS)                                                                                   \
    TEXT(wizCompatContinue)                                                                                  \
    TEXT(wizCompatOSFail)                                                                                    \
    TEXT(wizCompatTitle)                                                                                     \
    TEXT(wizPermAllow)                                                                                       \
    TEXT(wizPermCamBody)                                                                                     \
    TEXT(wizPermCamTitle)                                                                                    \
    TEXT(wizPermContinue)                                                                                    \
    TEXT(wizPermDeniedHint)                                                                                  \
    TEXT(wizPermDesktopBody)                                                                                 \
    TEXT(wizPermDesktopTitle)                                                                                \
    TEXT(wizPermMicBody)                                                                                     \
    TEXT(wizPermMicTitle)                                                                                    \
    TEXT(wizPermOpenSettings)                                                                                \
    TEXT(wizSummaryCam)                                                                                      \
    TEXT(wizSummaryMic)                                                                                      \
    TEXT(wizSummaryStart)                                                                                    \
    TEXT(wizSummaryTitle)                                                                                    \
    TEXT(wizValidCam)                                                                                        \
    TEXT(wizValidDesktop)                                                                                    \
    TEXT(wizValidMic)                                                                                        \
    TEXT(wizWelcomeBody)                                                                                     \
    TEXT(wizWelcomeCTA)                                                                                      \
    TEXT(wizWelcomeMicro)                                                                                    \
    TEXT(wizWelcomeTitle)                                                                                    \
    TEXT(youAreReady)
#define CURTAIN_PLATFORM_TEXTS(TEXT)                                                                         \
    TEXT(cameraForbidden)                                                                                    \
    TEXT(cannotTell)                                                                                         \
    TEXT(choosePrivateApps)                                                                                  \
    TEXT(clearSearch)                                                                                        \
    TEXT(close)                                                                                              \
    TEXT(launchSwitchedOff)                                                                                  \
    TEXT(mirrorPicture)                                                                                      \
    TEXT(moreOptions)                                                                                        \
    TEXT(noAppFound)                                                                                         \
    TEXT(noAppPrivate)                                                                                       \
    TEXT(noAppRuns)                                                                                          \
    TEXT(noGlobalShortcuts)                                                                                  \
    TEXT(noPictureYet)                                                                                       \
    TEXT(noSettingsPage)                                                                                     \
    TEXT(noShareDetection)                                                                                   \
    TEXT(noTray)                                                                                             \
    TEXT(notInstalled)                                                                                       \
    TEXT(privacyModeInVain)                                                                                  \
    TEXT(privateOnly)                                                                                        \
    TEXT(restartCurtain)                                                                                     \
    TEXT(runningAppsUnseen)                                                                                  \
    TEXT(shareDetectionUnknown)                                                                              \
    TEXT(shortcutInUse)                                                                                      \
    TEXT(shortcutInX11WindowsOnly)                                                                           \
    TEXT(switchOn)

#define CURTAIN_TEXT_PROPERTY(key) Q_PROPERTY(QString key READ key NOTIFY changed)

/// The texts of the views in one language, each a property by the name of its key. Main thread only.
class ViewTexts : public QObject {
    Q_OBJECT
    CURTAIN_TABLE_TEXTS(CURTAIN_TEXT_PROPERTY)
    CURTAIN_PLATFORM_TEXTS(CURTAIN_TEXT_PROPERTY)

public:
    explicit ViewTexts(std::string lang);

    void setLang(std::string lang);

#define CURTAIN_TABLE_TEXT(key)                                                                              \
    QString key() const {                                                                                    \
        return textOf(CurtainCore::LocKey::key);                                                             \
    }
#define CURTAIN_PLATFORM_TEXT(key)                                                                           \
    QString key() const {                                                                                    \
        return textOf(PlatformKey::key);                                                                     \
    }
    CURTAIN_TABLE_TEXTS(CURTAIN_TABLE_TEXT)
    CURTAIN_PLATFORM_TEXTS(CURTAIN_PLATFORM_TEXT)
#undef CURTAIN_TABLE_TEXT
#undef CURTAIN_PLATFORM_TEXT

Q_SIGNALS:
    void changed();

private:
    QString textOf(CurtainCore::LocKey key) const;
    QString textOf(PlatformKey key) const;

    std::string lang_;
};

#undef CURTAIN_TEXT_PROPERTY
#undef CURTAIN_TABLE_TEXTS
#undef CURTAIN_PLATFORM_TEXTS

} // namespace Curtain
