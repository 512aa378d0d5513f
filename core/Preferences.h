#pragma once

#include "core/RawValue.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace CurtainCore {

/// One private app. Its identity is the bundle identifier; equality compares the name too.
struct TargetApp {
    std::string bundleID;
    std::string displayName;

    const std::string& id() const { return bundleID; }
    bool operator==(const TargetApp&) const = default;
};

/// What a sure detection of screen sharing does.
enum class AutoDetectMode { activateAndNotify, promptOnly };

enum class MicrophoneTestMode { threeSecondPlayback, liveMonitor };

/// The user's choice of interface language, in the order of the language picker.
enum class AppLanguage { system, en, es, zh, hi, ar, pt, fr, ru };

template <>
struct RawValues<AutoDetectMode> {
    static constexpr std::array<std::pair<AutoDetectMode, std::string_view>, 2> cases{{
        {AutoDetectMode::activateAndNotify, "activateAndNotify"},
        {AutoDetectMode::promptOnly, "promptOnly"},
    }};
};

template <>
struct RawValues<MicrophoneTestMode> {
    static constexpr std::array<std::pair<MicrophoneTestMode, std::string_view>, 2> cases{{
        {MicrophoneTestMode::threeSecondPlayback, "threeSecondPlayback"},
        {MicrophoneTestMode::liveMonitor, "liveMonitor"},
    }};
};

template <>
struct RawValues<AppLanguage> {
    static constexpr std::array<std::pair<AppLanguage, std::string_view>, 9> cases{{
        {AppLanguage::system, "system"},
        {AppLanguage::en, "en"},
        {AppLanguage::es, "es"},
        {AppLanguage::zh, "zh"},
        {AppLanguage::hi, "hi"},
        {AppLanguage::ar, "ar"},
        {AppLanguage::pt, "pt"},
        {AppLanguage::fr, "fr"},
        {AppLanguage::ru, "ru"},
    }};
};

/// All of the user's settings: one record, stored as one document, each field under its own name.
struct Preferences {
    /// Apps whose presence counts as a call app until the user chooses others.
    static const std::vector<std::string> defaultTriggerBundleIDs;

    /// The private apps that privacy mode hides, in the user's order.
    std::vector<TargetApp> targetApps;
    bool autoDetectEnabled = true;
    AutoDetectMode autoDetectMode = AutoDetectMode::activateAndNotify;
    std::vector<std::string> triggerBundleIDs = defaultTriggerBundleIDs;
    AppLanguage language = AppLanguage::system;
    bool showCameraPreview = true;
    /// Absent means the system's default camera.
    std::optional<std::string> selectedCameraID;
    bool showMicrophoneCheck = true;
    /// Absent means the system's default microphone.
    std::optional<std::string> selectedMicrophoneID;
    MicrophoneTestMode microphoneTestMode = MicrophoneTestMode::threeSecondPlayback;
    bool checkDesktopFiles = true;
    /// The one-step fix also hides the desktop icons.
    bool hideFinderWithFixEverything = true;
    bool checkNotifications = true;
    bool notificationsMarkedHandled = false;
    bool showEmbarrassmentScore = true;
    bool runTestShareModeOnOpen = false;
    bool launchAtLogin = false;
    bool hasOnboarded = false;

    /// Of the private apps, in the user's order.
    std::vector<std::string> targetBundleIDs() const;

    bool operator==(const Preferences&) const = default;
};

} // namespace CurtainCore
