#pragma once

#include "platform/Workspace.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace TestSupport {

/// What every workspace does. A world has `workspace`, `run(bundleID)`, which starts an app with a window in
/// the task list, `quitAll()`, and `tell(notification)`, which tells the observers about the first app that
/// runs.
template <class World>
struct WorkspaceContract : testing::Test {
    World world;
    Platform::Workspace& workspace = world.workspace;

    auto instances(const std::string& bundleID) {
        return workspace.runningApplicationsWithBundleIdentifier(bundleID);
    }
};

TYPED_TEST_SUITE_P(WorkspaceContract);

TYPED_TEST_P(WorkspaceContract, AppsAreFoundByTheirIdentifiers) {
    this->world.run("one");
    this->world.run("two");
    this->world.run("one");
    EXPECT_THAT(this->workspace.runningApplications(), testing::SizeIs(3));
    EXPECT_THAT(this->instances("one"), testing::SizeIs(2));
    EXPECT_EQ(this->instances("two").at(0)->bundleIdentifier(), "two");
    EXPECT_EQ(this->instances("two").at(0)->localizedName(), "two");
    EXPECT_EQ(this->instances("two").at(0)->activationPolicy(), Platform::ActivationPolicy::regular);
    EXPECT_THAT(this->instances("three"), testing::IsEmpty());
    EXPECT_THAT(this->instances("ONE"), testing::IsEmpty());
}

TYPED_TEST_P(WorkspaceContract, AnAppIsHiddenAndShownAgain) {
    this->world.run("one");
    this->world.run("two");
    EXPECT_FALSE(this->instances("one").at(0)->isHidden());
    this->instances("one").at(0)->hide();
    EXPECT_TRUE(this->instances("one").at(0)->isHidden());
    EXPECT_FALSE(this->instances("two").at(0)->isHidden());
    this->instances("one").at(0)->hide();
    this->instances("one").at(0)->unhide();
    EXPECT_FALSE(this->instances("one").at(0)->isHidden());
}

TYPED_TEST_P(WorkspaceContract, AnAppThatQuitIsNotFound) {
    this->world.run("one");
    const auto handle = this->instances("one").at(0);
    this->world.quitAll();
    EXPECT_THAT(this->workspace.runningApplications(), testing::IsEmpty());
    EXPECT_THAT(this->instances("one"), testing::IsEmpty());
    handle->hide();
    handle->unhide();
    handle->activate(Platform::ActivationOptions::ignoringOtherApps);
}

TYPED_TEST_P(WorkspaceContract, ObserversAreToldOfTheirNotification) {
    using Platform::WorkspaceNotification;
    std::vector<std::string> told;
    const auto observe = [&](WorkspaceNotification notification, const std::string& name) {
        return this->workspace.addObserver(notification, [&told, name](const auto& app) {
            told.push_back(name + " " + app->bundleIdentifier().value_or("unknown"));
        });
    };
    this->world.run("one");
    const auto activated = observe(WorkspaceNotification::didActivateApplication, "activated");
    auto launched = observe(WorkspaceNotification::didLaunchApplication, "launched");
    this->world.tell(WorkspaceNotification::didLaunchApplication);
    this->world.tell(WorkspaceNotification::didActivateApplication);
    EXPECT_THAT(told, testing::ElementsAre("launched one", "activated one"));
    launched = {};
    this->world.tell(WorkspaceNotification::didLaunchApplication);
    EXPECT_THAT(told, testing::SizeIs(2));
}

TYPED_TEST_P(WorkspaceContract, WhatIsNotInstalledHasNoPlaceAndNoIcon) {
    EXPECT_EQ(this->workspace.urlForApplicationWithBundleIdentifier("not.installed"), std::nullopt);
    EXPECT_EQ(this->workspace.iconForFile("/not/installed"), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(WorkspaceContract, AppsAreFoundByTheirIdentifiers, AnAppIsHiddenAndShownAgain,
                            AnAppThatQuitIsNotFound, ObserversAreToldOfTheirNotification,
                            WhatIsNotInstalledHasNoPlaceAndNoIcon);

} // namespace TestSupport
