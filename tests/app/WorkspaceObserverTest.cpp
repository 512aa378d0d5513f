#include "Curtain/WorkspaceObserver.h"

#include "tests/support/FakeWorkspace.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using Platform::WorkspaceNotification;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeRunningApplication;
using TestSupport::FakeWorkspace;

struct WorkspaceObserverTest : testing::Test {
    FakeWorkspace workspace;
    std::vector<std::string> appeared;
    std::unique_ptr<Curtain::WorkspaceObserver> observer =
        std::make_unique<Curtain::WorkspaceObserver>(workspace);

    void start() {
        observer->onAppAppeared = [this](const std::string& bundleID) { appeared.push_back(bundleID); };
        observer->start();
    }

    std::shared_ptr<FakeRunningApplication> application(const std::optional<std::string>& identifier) {
        return std::make_shared<FakeRunningApplication>(workspace.calls, identifier);
    }
};

TEST_F(WorkspaceObserverTest, ObservesNothingBeforeItStarts) {
    EXPECT_THAT(workspace.observed, IsEmpty());
}

TEST_F(WorkspaceObserverTest, ObservesActivationThenLaunch) {
    start();
    EXPECT_THAT(workspace.observed, ElementsAre(WorkspaceNotification::didActivateApplication,
                                                WorkspaceNotification::didLaunchApplication));
}

TEST_F(WorkspaceObserverTest, AppThatIsLaunchedAndComesToTheFrontIsToldTwice) {
    start();
    workspace.post(WorkspaceNotification::didLaunchApplication, application("a"));
    workspace.post(WorkspaceNotification::didActivateApplication, application("a"));
    EXPECT_THAT(appeared, ElementsAre("a", "a"));
}

TEST_F(WorkspaceObserverTest, StartingTwiceRegistersEverythingTwice) {
    start();
    start();
    workspace.post(WorkspaceNotification::didLaunchApplication, application("a"));
    EXPECT_THAT(appeared, ElementsAre("a", "a"));
}

TEST_F(WorkspaceObserverTest, AppThatIsNotKnownIsIgnored) {
    start();
    workspace.post(WorkspaceNotification::didLaunchApplication, nullptr);
    workspace.post(WorkspaceNotification::didActivateApplication, application(std::nullopt));
    EXPECT_THAT(appeared, IsEmpty());
}

TEST_F(WorkspaceObserverTest, WithoutACallbackNothingHappens) {
    observer->start();
    workspace.post(WorkspaceNotification::didLaunchApplication, application("a"));
}

TEST_F(WorkspaceObserverTest, DestroyedObserverIgnoresNotifications) {
    start();
    observer.reset();
    workspace.post(WorkspaceNotification::didLaunchApplication, application("a"));
    workspace.post(WorkspaceNotification::didActivateApplication, application("a"));
    EXPECT_THAT(appeared, IsEmpty());
}

} // namespace
