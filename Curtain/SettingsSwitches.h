#pragma once

#include "Curtain/SettingsModel.h"

#include <QObject>

namespace Curtain {

/// What is switched on in the settings, each by the name of its label's key. Main thread only.
class SettingsSwitches : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool showScore READ showScore WRITE setShowScore NOTIFY changed)
    Q_PROPERTY(bool runTestOnOpen READ runTestOnOpen WRITE setRunTestOnOpen NOTIFY changed)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY changed)
    Q_PROPERTY(bool autoDetect READ autoDetect WRITE setAutoDetect NOTIFY changed)
    Q_PROPERTY(bool showCameraPreview READ showCameraPreview WRITE setShowCameraPreview NOTIFY changed)
    Q_PROPERTY(bool showMicCheck READ showMicCheck WRITE setShowMicCheck NOTIFY changed)
    Q_PROPERTY(bool checkNotifications READ checkNotifications WRITE setCheckNotifications NOTIFY changed)
    Q_PROPERTY(bool notifHandled READ notifHandled WRITE setNotifHandled NOTIFY changed)

public:
    /// The settings outlive the switches.
    explicit SettingsSwitches(SettingsModel& settings) : settings_(settings) {
        connect(&settings_, &SettingsModel::prefsChanged, this, &SettingsSwitches::changed);
    }

    bool showScore() const { return prefs().showEmbarrassmentScore; }
    bool runTestOnOpen() const { return prefs().runTestShareModeOnOpen; }
    bool launchAtLogin() const { return prefs().launchAtLogin; }
    bool autoDetect() const { return prefs().autoDetectEnabled; }
    bool showCameraPreview() const { return prefs().showCameraPreview; }
    bool showMicCheck() const { return prefs().showMicrophoneCheck; }
    bool checkNotifications() const { return prefs().checkNotifications; }
    bool notifHandled() const { return prefs().notificationsMarkedHandled; }

    void setShowScore(bool on) { settings_.set(&Prefs::showEmbarrassmentScore, on); }
    void setRunTestOnOpen(bool on) { settings_.set(&Prefs::runTestShareModeOnOpen, on); }
    void setLaunchAtLogin(bool on) { settings_.setLaunchAtLogin(on); }
    void setAutoDetect(bool on) { settings_.set(&Prefs::autoDetectEnabled, on); }
    void setShowCameraPreview(bool on) { settings_.set(&Prefs::showCameraPreview, on); }
    void setShowMicCheck(bool on) { settings_.set(&Prefs::showMicrophoneCheck, on); }
    void setCheckNotifications(bool on) { settings_.set(&Prefs::checkNotifications, on); }
    void setNotifHandled(bool on) { settings_.set(&Prefs::notificationsMarkedHandled, on); }

Q_SIGNALS:
    void changed();

private:
    using Prefs = CurtainCore::Preferences;

    const Prefs& prefs() const { return settings_.prefs(); }

    SettingsModel& settings_;
};

} // namespace Curtain
