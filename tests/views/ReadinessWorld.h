#pragma once

#include "Curtain/MeetingReadinessView.h"
#include "core/PreferencesStore.h"
#include "platform/View.h"
#include "tests/support/FakeAudioServices.h"
#include "tests/support/FakeCaptureServices.h"
#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeLocale.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeSystemVersion.h"
#include "tests/support/FakeUrlOpener.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// A person in front of a wall.
inline std::shared_ptr<const Platform::Picture> portrait(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor("#E7DDD2"));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.scale(width / 664.0, height / 372.0);
    painter.setBrush(QColor("#CFE0EA"));
    painter.drawRect(60, 0, 130, 190);
    painter.setBrush(QColor("#3F5570"));
    painter.drawRoundedRect(188, 272, 288, 140, 80, 80);
    painter.setBrush(QColor("#33251F"));
    painter.drawEllipse(QPointF(332, 165), 86, 108);
    painter.setBrush(QColor("#EBBB99"));
    painter.drawEllipse(QPointF(332, 176), 56, 76);
    painter.end();
    auto picture = std::make_shared<Platform::Picture>(*plainPicture(width, height, 0, 0, 0));
    for (int line = 0; line < height; ++line) {
        std::memcpy(picture->pixels.data() + static_cast<std::ptrdiff_t>(line) * width * 4,
                    image.constScanLine(line), static_cast<std::size_t>(width) * 4);
    }
    return picture;
}

/// Everything that the popover's content reads, over services that do what the test says.
struct ReadinessWorld {
    MemoryUserDefaults defaults;
    CurtainCore::PreferencesStore store{defaults};
    FakeWorkspace workspace;
    FakeProcessRunner runner;
    FakeInstallation files;
    FakeUserFolders folders;
    HandDrivenWorkQueues workQueues;
    HandDrivenQueue mainQueue;
    FakeCaptureServices capture;
    FakeMediaAuthorization authorization;
    FakeAudioServices audio;
    FakeUrlOpener urlOpener;
    FakeLocale locale;
    FakeSystemVersion system;
    RecordingLog log;
    Curtain::DesktopController desktop{runner};
    Curtain::DesktopChecker checker{desktop, files, folders, workQueues, mainQueue};
    Curtain::ReadinessCoordinator coordinator{store, workspace, desktop, checker};
    Curtain::CameraPreviewManager camera{{capture, authorization, mainQueue, workQueues}};
    Curtain::MicrophoneMonitor mic{{audio, authorization, files, folders, mainQueue, workQueues, log}};
    Curtain::AppCatalog catalog{workspace, files, files, {{"/apps"}, "desktop"}};
    /// The actions that the view asked for, in order.
    std::vector<std::string> actions;
    bool isPrivacyModeActive = false;
    bool isPrivacyModeAutomatic = false;
    Curtain::ProviderReadiness cameraReadiness;
    Curtain::ProviderReadiness micReadiness;
    std::shared_ptr<Curtain::MeetingReadinessView> view;

    ReadinessWorld() {
        coordinator.isPrivacyModeActive = [this] { return isPrivacyModeActive; };
        coordinator.isPrivacyModeAutomatic = [this] { return isPrivacyModeAutomatic; };
        coordinator.cameraReadinessProvider = [this] { return cameraReadiness; };
        coordinator.micReadinessProvider = [this] { return micReadiness; };
        capture.cameras = {{"front", "Integrated Camera"}, {"desk", "Desk View Camera"}};
    }

    Curtain::MeetingReadinessView& makeView(const std::string& lang = "en") {
        const auto note = [this](const char* name) { return [this, name] { actions.emplace_back(name); }; };
        Curtain::MeetingReadinessActions callbacks;
        callbacks.onFixEverything = note("fixEverything");
        callbacks.onHidePrivateApps = note("hidePrivateApps");
        callbacks.onRestore = note("restore");
        callbacks.onUndo = [this] {
            actions.emplace_back("undo");
            isPrivacyModeActive = isPrivacyModeAutomatic = false;
            coordinator.refresh();
        };
        callbacks.onToggleDesktop = note("toggleDesktop");
        callbacks.onSelectCamera = [this](const std::string& id) { actions.push_back("selectCamera " + id); };
        callbacks.onTakePhoto = note("takePhoto");
        callbacks.onCopyPhoto = note("copyPhoto");
        callbacks.onSavePhoto = note("savePhoto");
        callbacks.onOpenSettings = note("openSettings");
        callbacks.onQuit = note("quit");
        view = std::make_shared<Curtain::MeetingReadinessView>(
            Curtain::MeetingReadinessView::Services{coordinator, camera, mic, store, capture, workspace,
                                                    catalog, urlOpener, locale, system},
            lang, std::move(callbacks));
        return *view;
    }

    Platform::View content() const { return {"qrc:/Curtain/MeetingReadinessView.qml", view}; }

    void change(const std::function<void(CurtainCore::Preferences&)>& edit) {
        auto preferences = store.load();
        edit(preferences);
        store.save(preferences);
    }

    void setPrivateApps(std::vector<CurtainCore::TargetApp> apps) {
        change([&](auto& preferences) { preferences.targetApps = std::move(apps); });
    }

    void install(const std::string& bundleID, const std::string& name) {
        Platform::Bundle bundle;
        bundle.bundleIdentifier = bundleID;
        bundle.infoDictionary["CFBundleName"] = name;
        files.install("/apps/" + bundleID + ".desktop", bundle);
    }

    void putOnDesktop(int count) {
        for (int number = 0; number < count; ++number) {
            files.addFile("/home/ada/Desktop/file " + std::to_string(number));
        }
    }

    void runAll() {
        for (int round = 0; round < 5; ++round) {
            workQueues.runAll();
            mainQueue.runReady();
        }
    }

    void startCamera() {
        camera.start(std::nullopt);
        runAll();
        capture.session->show(portrait(664, 372));
    }

    void takePhoto() {
        capture.decodedImage = portrait(1280, 720);
        camera.capture();
        capture.photoOutput->finish(capture.image);
        mainQueue.runReady();
    }

    void startMicrophone() {
        mic.start();
        runAll();
    }

    void speak(float level = 0.03F) {
        audio.engine().feedSamples({level, -level});
        mainQueue.runReady();
    }

    /// Two apps on the screen, one hidden, one not running; files; notifications; camera and microphone at
    /// work.
    void makeRisky() {
        setPrivateApps({{"org.app.Messages", "Messages"},
                        {"org.app.Mail", "Mail"},
                        {"org.app.Safe", "Password Safe"},
                        {"org.app.Albums", "Photo Albums"}});
        workspace.run("org.app.Messages");
        workspace.run("org.app.Mail");
        workspace.run("org.app.Safe").hidden = true;
        putOnDesktop(12);
        cameraReadiness = {true, true};
        micReadiness = {true, true};
        startCamera();
        startMicrophone();
        speak();
        coordinator.refresh();
    }

    /// Nothing to be seen, and privacy mode on.
    void makeClear() {
        workspace.quitAll();
        setPrivateApps({{"org.app.Messages", "Messages"}, {"org.app.Albums", "Photo Albums"}});
        workspace.run("org.app.Messages").hidden = true;
        runner.setting = "0\n";
        change([](auto& preferences) { preferences.notificationsMarkedHandled = true; });
        isPrivacyModeActive = true;
        cameraReadiness = {true, true};
        micReadiness = {true, true};
        startCamera();
        startMicrophone();
        speak(0.02F);
        coordinator.refresh();
    }
};

} // namespace TestSupport
