#pragma once

#include "Curtain/OnboardingViewModel.h"
#include "tests/support/FakeAudioServices.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeSystemVersion.h"
#include "tests/support/FakeUrlOpener.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/RecordingLog.h"

#include <algorithm>
#include <memory>
#include <string>

namespace TestSupport {

/// Everything that the wizard's model stands on: one camera, one microphone, three files on the desktop.
struct OnboardingWorld {
    FakeSystemVersion system;
    FakeCaptureServices capture;
    FakeAudioServices audio;
    FakeMediaAuthorization authorization;
    FakeWorkspace workspace;
    FakeInstallation files;
    FakeUserFolders folders;
    FakeProcessRunner runner;
    FakeUrlOpener urlOpener;
    RecordingLog log;
    HandDrivenQueue mainQueue;
    HandDrivenWorkQueues workQueues;
    Curtain::DesktopController desktopController{runner};
    Curtain::DesktopChecker desktopChecker{desktopController, files, folders, workQueues, mainQueue};
    Curtain::CameraPreviewManager::Services cameraServices{capture, authorization, mainQueue, workQueues};
    Curtain::CameraPreviewManager cameraManager{cameraServices};
    Curtain::MicrophoneMonitor micMonitor{{audio, authorization, files, folders, mainQueue, workQueues, log}};

    OnboardingWorld() {
        capture.cameras = {{"camera", "Camera"}};
        audio.isInputDeviceThere = true;
        for (const auto* const name : {"letter.odt", "photo.jpg", "Invoices"}) {
            files.addFile("/home/ada/Desktop/" + std::string(name));
        }
    }

    std::shared_ptr<Curtain::OnboardingViewModel>
    makeModel(const std::string& lang = "en",
              CurtainCore::OnboardingStep startAt = CurtainCore::OnboardingStep::welcome()) {
        return std::make_shared<Curtain::OnboardingViewModel>(
            Curtain::OnboardingViewModel::Services{
                cameraManager, micMonitor, desktopChecker,
                Curtain::CompatibilityProbe({system, capture, audio, workspace}), authorization,
                cameraServices, urlOpener},
            lang, startAt);
    }

    bool isMicrophoneOn() {
        settle();
        return std::ranges::any_of(audio.engines, [](const auto& engine) { return engine->isRunning; });
    }
    bool isCameraOn() {
        settle();
        return capture.session->isRunning();
    }

    /// Lets everything happen that was put off, on whichever queue.
    void settle() {
        do {
            workQueues.runAll();
            mainQueue.runReady();
        } while (workQueues.waiting() > 0);
    }
};

} // namespace TestSupport
