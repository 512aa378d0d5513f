#include "tests/platform/hotkeys/HotKeyServiceContract.h"
#include "tests/platform/system/FileManagerContract.h"
#include "tests/platform/workspace/WorkspaceContract.h"
#include "tests/support/FakeHotKeyService.h"
#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeWorkspace.h"

namespace TestSupport {
namespace {

struct FakeFileWorld {
    FakeInstallation manager;
    std::string folder = "/folder";

    FakeFileWorld() {
        manager.addFile(folder + "/one");
        manager.addFile(folder + "/.hidden");
    }
};

struct FakeKeysWorld {
    FakeHotKeyService service_;

    Platform::HotKeyService& service() { return service_; }
    static void settle() {}

    void type(const Platform::HotKeyCombination& combination) {
        for (const auto event : {Platform::HotKeyEvent::pressed, Platform::HotKeyEvent::released}) {
            for (const auto& registration : service_.registrations) {
                if (registration.combination.keyCode == combination.keyCode &&
                    registration.combination.modifiers == combination.modifiers) {
                    service_.send(event, registration.id);
                }
            }
        }
    }
};

struct FakeAppsWorld {
    FakeWorkspace workspace;

    void run(const std::string& bundleID) { workspace.run(bundleID); }
    void quitAll() { workspace.quitAll(); }
    void tell(Platform::WorkspaceNotification notification) {
        workspace.post(notification, workspace.runningApplications().at(0));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FileManagerContract, FakeFileWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, HotKeyServiceContract, FakeKeysWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WorkspaceContract, FakeAppsWorld);

} // namespace
} // namespace TestSupport
