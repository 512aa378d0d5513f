// A refresh of the readiness state, without what the desktop takes to read its own setting.

#include "Curtain/DesktopChecker.h"
#include "Curtain/ReadinessCoordinator.h"
#include "platform/linux/system/FileUserDefaults.h"
#include "platform/linux/system/PosixFileManager.h"
#include "platform/linux/system/ThreadWorkQueues.h"
#include "tests/platform/workspace/PrivacyMode.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/FakeWindowSystem.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

namespace {

/// Everything real but the window system and the desktop's tool.
struct Application {
    TestSupport::TemporaryFolder folder;
    TestSupport::RecordingLog log;
    TestSupport::HandDrivenQueue mainQueue;
    TestSupport::FakeProcessRunner runner;
    TestSupport::FakeUserFolders folders;
    TestSupport::FakeWindowSystem windows;
    LinuxPlatform::PosixFileManager fileManager;
    LinuxPlatform::ThreadWorkQueues workQueues;
    LinuxPlatform::FileUserDefaults defaults{folder.path() / "settings", log};
    PlatformTests::PrivacyMode privacy{windows, mainQueue};
    CurtainCore::PreferencesStore store{defaults};
    Curtain::DesktopController desktop{runner};
    Curtain::DesktopChecker checker{desktop, fileManager, folders, workQueues, mainQueue};
    Curtain::ReadinessCoordinator coordinator{store, privacy.workspace, desktop, checker};

    Application(int apps, int files) {
        const auto desktopFolder = folder.path() / "Desktop";
        std::filesystem::create_directory(desktopFolder);
        for (int number = 0; number < files; ++number) {
            std::filesystem::create_symlink("nowhere", desktopFolder / ("file " + std::to_string(number)));
        }
        folders.desktopFolder = desktopFolder.string();
        CurtainCore::Preferences preferences;
        for (int number = 0; number < apps; ++number) {
            const auto name = "app-" + std::to_string(number);
            preferences.targetApps.push_back({name, name});
            windows.open(static_cast<LinuxPlatform::WindowId>(number + 1), name, 1);
        }
        store.save(preferences);
    }
};

void refresh(benchmark::State& state) {
    Application application(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for ([[maybe_unused]] const auto round : state) {
        application.coordinator.refresh();
    }
    if (application.coordinator.state().desktopFileCount != state.range(1)) {
        state.SkipWithError("the files were not counted");
    }
}

BENCHMARK(refresh)
    ->Name("ReadinessCoordinator.refresh/apps/files")
    ->Args({0, 0})
    ->Args({20, 500})
    ->Args({20, 10000})
    ->Unit(benchmark::kMillisecond);

} // namespace
