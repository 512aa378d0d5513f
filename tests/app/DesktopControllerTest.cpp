#include "Curtain/DesktopController.h"

#include "tests/support/FakeProcessRunner.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using testing::ElementsAre;
using TestSupport::FakeProcessRunner;
using Invocation = FakeProcessRunner::Invocation;

struct DesktopControllerTest : testing::Test {
    FakeProcessRunner runner;
    Curtain::DesktopController controller{runner};

    bool isHiddenFor(const std::string& output) {
        runner.setting = output;
        return controller.iconsHidden();
    }
};

TEST_F(DesktopControllerTest, ReadsTheFileManagersSetting) {
    controller.iconsHidden();
    EXPECT_THAT(runner.runs,
                ElementsAre(Invocation{"/usr/bin/defaults", {"read", "com.apple.finder", "CreateDesktop"}}));
}

TEST_F(DesktopControllerTest, OnlyTheNumberZeroMeansHidden) {
    EXPECT_TRUE(isHiddenFor("0"));
    EXPECT_TRUE(isHiddenFor("0\n"));
    EXPECT_TRUE(isHiddenFor(" \t0 \r\n"));
    EXPECT_TRUE(isHiddenFor("\n\v\f0"));
    EXPECT_FALSE(isHiddenFor(""));
    EXPECT_FALSE(isHiddenFor("\n"));
    EXPECT_FALSE(isHiddenFor("1\n"));
    EXPECT_FALSE(isHiddenFor("true\n"));
    EXPECT_FALSE(isHiddenFor("false\n"));
    EXPECT_FALSE(isHiddenFor("00"));
    EXPECT_FALSE(isHiddenFor("0 0"));
    EXPECT_FALSE(isHiddenFor("-0"));
    EXPECT_FALSE(isHiddenFor(std::string("0\0", 2)));
    EXPECT_FALSE(
        isHiddenFor("The domain/default pair of (com.apple.finder, CreateDesktop) does not exist\n"));
}

TEST_F(DesktopControllerTest, AsksAfreshEachTime) {
    EXPECT_FALSE(isHiddenFor("1"));
    EXPECT_TRUE(isHiddenFor("0"));
    EXPECT_FALSE(isHiddenFor(""));
    EXPECT_EQ(runner.runs.size(), 3U);
}

TEST_F(DesktopControllerTest, HidingWritesTheOppositeAndRestartsTheFileManager) {
    controller.setIconsHidden(true);
    EXPECT_THAT(runner.runs,
                ElementsAre(Invocation{"/usr/bin/defaults",
                                       {"write", "com.apple.finder", "CreateDesktop", "-bool", "false"}},
                            Invocation{"/usr/bin/killall", {"Finder"}}));
}

TEST_F(DesktopControllerTest, ShowingWritesTheOppositeAndRestartsTheFileManager) {
    controller.setIconsHidden(false);
    EXPECT_THAT(runner.runs,
                ElementsAre(Invocation{"/usr/bin/defaults",
                                       {"write", "com.apple.finder", "CreateDesktop", "-bool", "true"}},
                            Invocation{"/usr/bin/killall", {"Finder"}}));
}

TEST_F(DesktopControllerTest, RestartsEvenWhenTheSettingIsAsAsked) {
    runner.setting = "0\n";
    controller.setIconsHidden(true);
    EXPECT_THAT(runner.runs,
                ElementsAre(FakeProcessRunner::writingIcons(false), FakeProcessRunner::restartingDesktop()));
}

} // namespace
