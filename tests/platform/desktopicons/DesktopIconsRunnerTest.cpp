#include "platform/linux/desktopicons/DesktopIconsRunner.h"

#include "Curtain/DesktopController.h"
#include "platform/linux/desktopicons/CajaDesktop.h"
#include "platform/linux/desktopicons/PcmanfmDesktop.h"
#include "platform/linux/session/EarlierValue.h"
#include "platform/linux/system/PosixFileManager.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using Invocation = TestSupport::FakeProcessRunner::Invocation;
using LinuxPlatform::DesktopIcons;
using LinuxPlatform::DesktopIconsRunner;
using LinuxPlatform::DesktopScene;
using LinuxPlatform::EarlierValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string session = "boot /run/server 1";

/// A desktop in the state that the test puts it into; writes down what it is told.
class FakeIconDesktop : public LinuxPlatform::IconDesktop {
public:
    FakeIconDesktop(std::vector<std::string>& calls, std::string windowClass)
        : calls_(calls),
          windowClass_(std::move(windowClass)) {}

    DesktopIcons state = DesktopIcons::absent;
    DesktopIcons stateAfterShowing = DesktopIcons::shown;
    bool canShow = true;
    bool isHiding = false;
    int looksUntilItIsBack = 0;

    std::string_view windowClass() const override { return windowClass_; }
    DesktopIcons icons(const DesktopScene&) override {
        looksUntilItIsBack -= looksUntilItIsBack > 0 ? 1 : 0;
        return state;
    }
    bool isAboutToHide(const DesktopScene&) const override { return isHiding; }
    bool isComingBack() const override { return looksUntilItIsBack > 0; }
    void hide(const DesktopScene&) override {
        calls_.emplace_back("hide");
        state = DesktopIcons::hidden;
    }
    bool show(const DesktopScene&) override {
        calls_.emplace_back("show");
        state = canShow ? stateAfterShowing : state;
        return canShow;
    }

private:
    std::vector<std::string>& calls_;
    std::string windowClass_;
};

struct DesktopIconsRunnerTest : testing::Test {
    TestSupport::FakeProcessRunner programs;
    TestSupport::HandDrivenQueue clock;
    std::vector<std::string> calls;
    FakeIconDesktop* first = nullptr;
    FakeIconDesktop* second = nullptr;
    DesktopScene scene{std::set<std::string>{}, {}, true};
    DesktopIconsRunner runner{programs, clock, makeDesktops(), [this] { return scene; }};

    DesktopIconsRunner::Desktops makeDesktops() {
        DesktopIconsRunner::Desktops desktops;
        const auto add = [&](FakeIconDesktop*& place, const char* windowClass) {
            auto desktop = std::make_unique<FakeIconDesktop>(calls, windowClass);
            place = desktop.get();
            desktops.push_back(std::move(desktop));
        };
        add(first, "First");
        add(second, "");
        return desktops;
    }

    std::string read() {
        return runner.run("/usr/bin/defaults", {"read", "com.apple.finder", "CreateDesktop"});
    }
    std::string readIn(DesktopIcons one, DesktopIcons other) {
        first->state = one;
        second->state = other;
        return read();
    }
    void setIconsHidden(bool hidden) { Curtain::DesktopController(runner).setIconsHidden(hidden); }
};

TEST_F(DesktopIconsRunnerTest, IconsAreHiddenOnlyWhenEveryDesktopAtWorkHidesThem) {
    EXPECT_EQ(readIn(DesktopIcons::shown, DesktopIcons::absent), "1\n");
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::absent), "0\n");
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::shown), "1\n");
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::unknown), "");
    EXPECT_EQ(readIn(DesktopIcons::unknown, DesktopIcons::shown), "1\n");
    EXPECT_EQ(readIn(DesktopIcons::unknown, DesktopIcons::absent), "");
}

TEST_F(DesktopIconsRunnerTest, WithoutADesktopItDependsOnWhatCanBeSeen) {
    EXPECT_EQ(read(), "0\n");
    scene.desktopWindows = {{"Pinboard", std::nullopt}};
    EXPECT_EQ(read(), "");
    scene.desktopWindows.clear();
    scene.isEveryWindowKnown = false;
    EXPECT_EQ(read(), "");
}

TEST_F(DesktopIconsRunnerTest, IconsMayBeShownByADesktopThatIsNotKnown) {
    const DesktopScene::Window ofFirst{"First", std::nullopt};
    scene.desktopWindows = {ofFirst, ofFirst};
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::absent), "0\n");
    scene.desktopWindows = {ofFirst, {"Pinboard", std::nullopt}};
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::absent), "");
    EXPECT_EQ(readIn(DesktopIcons::shown, DesktopIcons::absent), "1\n");
    scene.desktopWindows = {{"", std::nullopt}};
    EXPECT_EQ(readIn(DesktopIcons::absent, DesktopIcons::hidden), "");
    // It has a window, whatever it says.
    scene.desktopWindows = {ofFirst};
    EXPECT_EQ(readIn(DesktopIcons::absent, DesktopIcons::absent), "");
    EXPECT_EQ(readIn(DesktopIcons::absent, DesktopIcons::hidden), "");
}

TEST_F(DesktopIconsRunnerTest, AHiddenDesktopIsEnoughWhereNotEveryWindowIsKnown) {
    scene.isEveryWindowKnown = false;
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::absent), "0\n");
}

TEST_F(DesktopIconsRunnerTest, ABusThatDoesNotAnswerLeavesEverythingOpen) {
    scene.busNames.reset();
    EXPECT_EQ(readIn(DesktopIcons::hidden, DesktopIcons::absent), "");
    first->state = DesktopIcons::shown;
    setIconsHidden(true);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(DesktopIconsRunnerTest, WritesOnlyWhatIsNotSoAlready) {
    first->state = DesktopIcons::hidden;
    second->state = DesktopIcons::unknown;
    setIconsHidden(true);
    EXPECT_THAT(calls, IsEmpty());
    second->state = DesktopIcons::shown;
    setIconsHidden(true);
    EXPECT_THAT(calls, ElementsAre("hide"));
    setIconsHidden(false);
    EXPECT_THAT(calls, ElementsAre("hide", "show", "show"));
    setIconsHidden(false);
    EXPECT_EQ(calls.size(), 3U);
    EXPECT_THAT(programs.runs, IsEmpty());
}

TEST_F(DesktopIconsRunnerTest, ADesktopThatHasToStartFirstIsTakenAtItsWordForAWhile) {
    first->state = DesktopIcons::hidden;
    first->stateAfterShowing = DesktopIcons::absent;
    setIconsHidden(false);
    EXPECT_EQ(read(), "1\n");
    clock.advance(4.9);
    EXPECT_EQ(read(), "1\n");
    clock.advance(0.2);
    EXPECT_EQ(read(), "0\n");
}

struct DesktopThatComesBackTest : DesktopIconsRunnerTest {
    DesktopThatComesBackTest() {
        first->state = DesktopIcons::hidden;
        first->stateAfterShowing = DesktopIcons::absent;
        setIconsHidden(false);
        clock.advance(0.5);
    }
};

TEST_F(DesktopThatComesBackTest, IsHiddenAsSoonAsItAppears) {
    EXPECT_EQ(read(), "1\n");
    setIconsHidden(true);
    EXPECT_EQ(read(), "0\n") << "they are not to be seen, and will not be";
    clock.advance(1);
    EXPECT_EQ(read(), "0\n");
    EXPECT_THAT(calls, ElementsAre("show"));

    first->state = DesktopIcons::shown;
    clock.advance(0.3);
    EXPECT_EQ(read(), "0\n");
    EXPECT_THAT(calls, ElementsAre("show", "hide"));
    // The user shows them by other means.
    first->state = DesktopIcons::shown;
    clock.advance(10);
    EXPECT_THAT(calls, ElementsAre("show", "hide"));
}

TEST_F(DesktopThatComesBackTest, IsHiddenThoughItWasSeenBefore) {
    setIconsHidden(true);
    first->state = DesktopIcons::shown;
    EXPECT_EQ(read(), "0\n");
    EXPECT_THAT(calls, ElementsAre("show"));
    clock.advance(0.3);
    EXPECT_EQ(read(), "0\n");
    EXPECT_THAT(calls, ElementsAre("show", "hide"));
}

TEST_F(DesktopThatComesBackTest, IsHiddenThoughTheBusDoesNotAnswerForAWhile) {
    setIconsHidden(true);
    scene.busNames.reset();
    clock.advance(1);
    scene.busNames.emplace();
    first->state = DesktopIcons::shown;
    clock.advance(0.3);
    EXPECT_THAT(calls, ElementsAre("show", "hide"));
}

TEST_F(DesktopThatComesBackTest, IsNotHiddenOnceItIsToBeShownAgain) {
    setIconsHidden(true);
    setIconsHidden(false);
    EXPECT_EQ(read(), "1\n");
    first->state = DesktopIcons::shown;
    clock.advance(10);
    EXPECT_EQ(read(), "1\n");
    EXPECT_THAT(calls, ElementsAre("show"));
}

TEST_F(DesktopThatComesBackTest, StaysWhenTheHideIsCalledOffByOneWhoAsksFirst) {
    setIconsHidden(true);
    clock.advance(0.5);
    // As the application does to restore everything, and to flip the icons.
    const Curtain::DesktopController controller(runner);
    ASSERT_TRUE(controller.iconsHidden());
    controller.setIconsHidden(!controller.iconsHidden());
    first->state = DesktopIcons::shown;
    clock.advance(10);
    EXPECT_FALSE(controller.iconsHidden());
    EXPECT_THAT(calls, ElementsAre("show"));
}

TEST_F(DesktopThatComesBackTest, IsNotAwaitedForEver) {
    setIconsHidden(true);
    clock.advance(5);
    EXPECT_EQ(read(), "0\n");
    first->state = DesktopIcons::shown;
    clock.advance(10);
    EXPECT_THAT(calls, ElementsAre("show"));
}

TEST_F(DesktopIconsRunnerTest, WhatHasBegunToShowIsBroughtToItsEndThoughNobodyAsks) {
    first->state = DesktopIcons::hidden;
    second->looksUntilItIsBack = 10;
    setIconsHidden(false);
    clock.advance(1);
    EXPECT_LT(second->looksUntilItIsBack, 6);
    scene.busNames.reset();
    clock.advance(10);
    EXPECT_GT(second->looksUntilItIsBack, 0) << "nobody can look";
    scene.busNames.emplace();
    clock.advance(10);
    EXPECT_EQ(second->looksUntilItIsBack, 0);
    // Then nothing is looked at any more.
    second->looksUntilItIsBack = 1000;
    clock.advance(10);
    EXPECT_EQ(second->looksUntilItIsBack, 1000);
}

TEST_F(DesktopIconsRunnerTest, WhatIsAboutToHideIsShownToo) {
    first->state = DesktopIcons::shown;
    setIconsHidden(false);
    EXPECT_THAT(calls, IsEmpty());
    first->isHiding = true;
    setIconsHidden(false);
    EXPECT_THAT(calls, ElementsAre("show"));
}

TEST_F(DesktopIconsRunnerTest, ADesktopThatCannotShowIsNotTakenAtItsWord) {
    first->state = DesktopIcons::hidden;
    first->canShow = false;
    setIconsHidden(false);
    EXPECT_EQ(read(), "0\n");
}

TEST_F(DesktopIconsRunnerTest, TheDesktopsMayChangeBetweenTwoRuns) {
    EXPECT_EQ(readIn(DesktopIcons::shown, DesktopIcons::absent), "1\n");
    setIconsHidden(true);
    EXPECT_EQ(readIn(DesktopIcons::absent, DesktopIcons::shown), "1\n");
    setIconsHidden(true);
    EXPECT_EQ(read(), "0\n");
    EXPECT_THAT(calls, ElementsAre("hide", "hide"));
}

TEST_F(DesktopIconsRunnerTest, OtherProgramsAreStarted) {
    runner.run("/usr/bin/defaults", {"read", "com.apple.dock"});
    runner.run("/usr/bin/killall", {"Dock"});
    runner.run("/bin/true", {});
    EXPECT_THAT(programs.runs,
                ElementsAre(Invocation{"/usr/bin/defaults", {"read", "com.apple.dock"}},
                            Invocation{"/usr/bin/killall", {"Dock"}}, Invocation{"/bin/true", {}}));
}

TEST(EarlierValueTest, IsKeptForOthersAndKnowsItsSession) {
    TestSupport::MemoryUserDefaults state;
    EarlierValue value(state, "xfce", session);
    EXPECT_FALSE(value.get());
    EXPECT_FALSE(value.isOfThisSession());
    value.keep("2");
    EXPECT_EQ(EarlierValue(state, "xfce", session).get(), "2");
    EXPECT_TRUE(EarlierValue(state, "xfce", session).isOfThisSession());
    EXPECT_FALSE(EarlierValue(state, "caja", session).get());
    EXPECT_EQ(EarlierValue(state, "xfce", session + "0").get(), "2");
    EXPECT_FALSE(EarlierValue(state, "xfce", session + "0").isOfThisSession());

    state.values["xfce"] = "another boot 1 :0\n2";
    EXPECT_EQ(value.get(), "2");
    EXPECT_FALSE(value.isOfThisSession());
    for (const auto* damaged : {"", "2", "\xff\n2"}) {
        state.values["xfce"] = damaged;
        EXPECT_FALSE(value.get()) << damaged;
        EXPECT_FALSE(value.isOfThisSession()) << damaged;
    }
    value.forget();
    EXPECT_THAT(state.values, IsEmpty());
}

TEST(DesktopProgramTest, FindsTheProfileInACommandLine) {
    const TestSupport::TemporaryFolder root;
    const auto profileIn = [&](const std::string& commandLine) {
        TestSupport::writeFile(root.path() / "7" / "cmdline", commandLine);
        return LinuxPlatform::profileArguments(7, root.path());
    };
    using std::string_literals::operator""s;
    EXPECT_THAT(profileIn("pcmanfm\0--desktop\0--profile\0LXDE\0"s), ElementsAre("--profile=LXDE"));
    EXPECT_THAT(profileIn("pcmanfm\0-p\0a b\0--desktop\0"s), ElementsAre("--profile=a b"));
    EXPECT_THAT(profileIn("pcmanfm-qt\0--profile=lxqt\0"s), ElementsAre("--profile=lxqt"));
    EXPECT_THAT(profileIn("pcmanfm\0--desktop\0"s), IsEmpty());
    EXPECT_THAT(profileIn("pcmanfm\0--profile\0"s), IsEmpty());
    EXPECT_THAT(profileIn(""), IsEmpty());
    EXPECT_THAT(LinuxPlatform::profileArguments(8, root.path()), IsEmpty());
}

TEST(DesktopProgram, RunsUntilItHasEndedWhetherAskedAboutOrNot) {
    const TestSupport::TemporaryFolder root;
    const auto isRunning = [&](const std::string& state) {
        TestSupport::writeFile(root.path() / "7" / "stat", state);
        return LinuxPlatform::isRunning(7, root.path());
    };
    EXPECT_TRUE(isRunning("7 (a) Z) S 1 7"));
    EXPECT_TRUE(isRunning("7 (pcmanfm) T 1 7"));
    EXPECT_FALSE(isRunning("7 (a) S) Z 1 7"));
    EXPECT_FALSE(isRunning("7 (pcmanfm) X 1 7"));
    EXPECT_FALSE(isRunning("7 (pcmanfm)"));
    EXPECT_FALSE(isRunning(""));
    EXPECT_FALSE(LinuxPlatform::isRunning(8, root.path()));
}

struct PcmanfmDesktopTest : testing::Test {
    TestSupport::FakeProcessRunner programs;
    TestSupport::MemoryUserDefaults state;
    std::vector<std::vector<std::string>> started;
    bool canStart = true;
    LinuxPlatform::PcmanfmDesktop desktop{programs, EarlierValue(state, "pcmanfm", session),
                                          [this](const auto& command) {
                                              started.push_back(command);
                                              return canStart;
                                          }};
    DesktopScene withDesktop{std::set<std::string>{}, {{"Pcmanfm", std::nullopt}}, true};
    DesktopScene without{std::set<std::string>{}, {}, true};
};

TEST_F(PcmanfmDesktopTest, OnlyADesktopOfThisSessionThatWasSwitchedOffIsHidden) {
    EXPECT_EQ(desktop.icons(without), DesktopIcons::absent);
    EXPECT_EQ(desktop.icons(withDesktop), DesktopIcons::shown);
    desktop.hide(withDesktop);
    EXPECT_THAT(programs.runs, ElementsAre(Invocation{"/usr/bin/pcmanfm", {"--desktop-off"}}));
    EXPECT_EQ(desktop.icons(without), DesktopIcons::hidden);
    // Somebody else switched it on again.
    EXPECT_EQ(desktop.icons(withDesktop), DesktopIcons::shown);

    state.values["pcmanfm"] = "another boot 1 :0\n--profile=LXDE";
    EXPECT_EQ(desktop.icons(without), DesktopIcons::absent);
}

TEST_F(PcmanfmDesktopTest, WhatCannotBeStartedIsNotForgotten) {
    EarlierValue(state, "pcmanfm", session).keep("--profile=LXDE");
    canStart = false;
    EXPECT_FALSE(desktop.show(without));
    EXPECT_EQ(desktop.icons(without), DesktopIcons::hidden);
    canStart = true;
    EXPECT_TRUE(desktop.show(without));
    EXPECT_THAT(started.back(), ElementsAre("pcmanfm", "--desktop", "--profile=LXDE"));
    EXPECT_EQ(desktop.icons(without), DesktopIcons::absent);
}

TEST_F(PcmanfmDesktopTest, IsStartedAgainWhenItWasAboutToEnd) {
    TestSupport::ChildProcess process({"sleep", "60"});
    withDesktop.desktopWindows.front().process = static_cast<std::uint32_t>(process.id());
    desktop.hide(withDesktop);
    EXPECT_TRUE(desktop.show(without));
    EXPECT_THAT(started, SizeIs(1)) << "the process that is still there may have taken the request";
    desktop.icons(without);
    EXPECT_THAT(started, SizeIs(1));
    process.end(SIGTERM);
    desktop.icons(without);
    EXPECT_THAT(started, ElementsAre(started.front(), started.front()));
    desktop.icons(without);
    EXPECT_THAT(started, SizeIs(2)) << "once is enough";
}

TEST_F(PcmanfmDesktopTest, IsNotStartedAgainOnceItShowsItsIcons) {
    TestSupport::ChildProcess process({"sleep", "60"});
    withDesktop.desktopWindows.front().process = static_cast<std::uint32_t>(process.id());
    desktop.hide(withDesktop);
    EXPECT_TRUE(desktop.show(without));
    EXPECT_EQ(desktop.icons(withDesktop), DesktopIcons::shown);
    process.end(SIGTERM);
    desktop.icons(without);
    EXPECT_THAT(started, SizeIs(1));
}

TEST_F(PcmanfmDesktopTest, IsStartedOnceWhereItHasEnded) {
    TestSupport::ChildProcess process({"sleep", "60"});
    withDesktop.desktopWindows.front().process = static_cast<std::uint32_t>(process.id());
    desktop.hide(withDesktop);
    process.end(SIGTERM);
    EXPECT_TRUE(desktop.show(without));
    desktop.icons(without);
    EXPECT_THAT(started, SizeIs(1));
}

struct PosixDesktopFolderTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    LinuxPlatform::PosixFileManager files;
};

TEST_F(PosixDesktopFolderTest, AFolderThatCannotBeListedIsAbsent) {
    EXPECT_FALSE(files.contentsOfDirectory((folder.path() / "missing").string()));
    TestSupport::writeFile(folder.path() / "file", "");
    EXPECT_FALSE(files.contentsOfDirectory((folder.path() / "file").string()));
    std::filesystem::create_symlink(folder.path() / "loop", folder.path() / "loop");
    EXPECT_FALSE(files.contentsOfDirectory((folder.path() / "loop").string()));
    EXPECT_FALSE(files.contentsOfDirectory(""));
}

TEST_F(PosixDesktopFolderTest, EntriesAreNotFollowed) {
    std::filesystem::create_symlink(folder.path() / "loop", folder.path() / "loop");
    std::filesystem::create_symlink("/", folder.path() / "root");
    std::filesystem::create_symlink("nowhere", folder.path() / "dangling");
    EXPECT_EQ(files.contentsOfDirectory(folder.path().string()).value().size(), 3U);
}

} // namespace
