#pragma once

#include "Curtain/CameraPreviewManager.h"
#include "Curtain/MeetingReadinessView.h"
#include "Curtain/OnboardingViewModel.h"
#include "Curtain/SettingsSwitches.h"
#include "Curtain/SettingsView.h"
#include "Curtain/ShortcutField.h"
#include "Curtain/ViewTexts.h"

#include <qqml.h>

/// The application's objects under the names by which the QML module Curtain knows their types. Their own
/// headers know nothing of QML, since the program runs without it until the first view.
namespace Curtain::ViewTypes {

struct MeetingReadiness {
    Q_GADGET
    QML_FOREIGN(Curtain::MeetingReadinessView)
    QML_NAMED_ELEMENT(MeetingReadinessViewModel)
    QML_UNCREATABLE("The application makes it")
};

struct Settings {
    Q_GADGET
    QML_FOREIGN(Curtain::SettingsView)
    QML_NAMED_ELEMENT(SettingsViewModel)
    QML_UNCREATABLE("The application makes it")
};

struct Switches {
    Q_GADGET
    QML_FOREIGN(Curtain::SettingsSwitches)
    QML_NAMED_ELEMENT(SettingsSwitches)
    QML_UNCREATABLE("The application makes it")
};

struct Onboarding {
    Q_GADGET
    QML_FOREIGN(Curtain::OnboardingViewModel)
    QML_NAMED_ELEMENT(OnboardingViewModel)
    QML_UNCREATABLE("The application makes it")
};

struct Shortcut {
    Q_GADGET
    QML_FOREIGN(Curtain::ShortcutField)
    QML_NAMED_ELEMENT(ShortcutField)
    QML_UNCREATABLE("The application makes it")
};

struct Camera {
    Q_GADGET
    QML_FOREIGN(Curtain::CameraPreviewManager)
    QML_NAMED_ELEMENT(CameraPreviewManager)
    QML_UNCREATABLE("The application makes it")
};

struct Texts {
    Q_GADGET
    QML_FOREIGN(Curtain::ViewTexts)
    QML_NAMED_ELEMENT(ViewTexts)
    QML_UNCREATABLE("The application makes it")
};

} // namespace Curtain::ViewTypes
