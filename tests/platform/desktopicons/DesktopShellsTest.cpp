#include "platform/linux/desktopicons/DesktopBus.h"
#include "platform/linux/desktopicons/GnomeDesktop.h"
#include "platform/linux/desktopicons/PcmanfmQtDesktop.h"
#include "platform/linux/desktopicons/PlasmaDesktop.h"
#include "platform/linux/desktopicons/XfceDesktop.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::DesktopBus;
using LinuxPlatform::DesktopIcons;
using LinuxPlatform::DesktopScene;
using testing::IsEmpty;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

constexpr std::chrono::seconds patience{30};

const std::string session = "boot /run/server 1";

/// Shells that answer on the bus as the real ones do.
struct DesktopShellsTest : testing::Test {
    TestSupport::HandDrivenQueue clock;
    TestSupport::MemoryUserDefaults state;
    DesktopBus bus{QDBusConnection::sessionBus(), clock, patience};
    DesktopBus hastyBus{QDBusConnection::sessionBus(), clock, std::chrono::milliseconds(500)};
    LinuxPlatform::PlasmaDesktop plasma{bus, {state, "plasma", session}};
    LinuxPlatform::GnomeDesktop gnome{bus, {state, "gnome", session}};
    std::unique_ptr<ChildProcess> shell;
    std::string shellName;

    void start(const std::string& name, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), DESKTOP_SHELL_PROGRAM);
        shell = std::make_unique<ChildProcess>(arguments);
        shellName = name;
        EXPECT_TRUE(spinUntil([&] { return scene().hasName(shellName); }, patience));
    }

    ~DesktopShellsTest() override {
        shell.reset();
        EXPECT_TRUE(spinUntil([&] { return !bus.names().value().contains(shellName); }, patience));
    }

    DesktopScene scene() { return {bus.names(), {}, false}; }

    /// By a shell that follows when it is no longer waited for.
    void hideLate(LinuxPlatform::IconDesktop& hasty) {
        const auto now = scene();
        ask(QStringLiteral("hesitate"), {});
        EXPECT_TRUE(spinUntil(
            [&] {
                clock.advance(11);
                hasty.hide(now);
                return !state.values.empty();
            },
            patience));
        ask(QStringLiteral("catchUp"), {});
    }

    QVariant ask(const QString& method, const QVariantList& arguments) {
        const auto answer = bus.call(QString::fromStdString(shellName), QStringLiteral("/com/curtain/Test"),
                                     QStringLiteral("com.curtain.Test"), method, arguments);
        EXPECT_TRUE(LinuxPlatform::isReply(answer)) << answer.errorMessage().toStdString();
        return answer.arguments().value(0);
    }
};

TEST_F(DesktopShellsTest, XfceThatHidesLateGetsItsStyleBack) {
    LinuxPlatform::XfceDesktop xfce{bus, {state, "xfce", session}};
    start("org.xfce.Xfconf", {"xfce", "style=1"});
    const DesktopScene now{bus.names(), {{"Xfdesktop", std::nullopt}}, true};
    EXPECT_EQ(xfce.icons(now), DesktopIcons::shown);
    LinuxPlatform::XfceDesktop hasty{hastyBus, {state, "xfce", session}};
    hideLate(hasty);
    EXPECT_EQ(xfce.icons(now), DesktopIcons::hidden);
    EXPECT_EQ(LinuxPlatform::EarlierValue(state, "xfce", session).get(), "1");
    EXPECT_TRUE(xfce.show(now));
    EXPECT_EQ(xfce.icons(now), DesktopIcons::shown);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(DesktopShellsTest, PcmanfmQtThatHidesLateIsSwitchedOnAgain) {
    const auto startNothing = [](const auto&) { return false; };
    LinuxPlatform::PcmanfmQtDesktop lxqt{bus, {state, "pcmanfm-qt", session}, startNothing};
    LinuxPlatform::PcmanfmQtDesktop hasty{hastyBus, {state, "pcmanfm-qt", session}, startNothing};
    start("org.pcmanfm.PCManFM", {"lxqt"});
    EXPECT_EQ(lxqt.icons(scene()), DesktopIcons::shown);
    hideLate(hasty);
    EXPECT_EQ(lxqt.icons(scene()), DesktopIcons::hidden);
    EXPECT_TRUE(lxqt.show(scene()));
    EXPECT_EQ(lxqt.icons(scene()), DesktopIcons::shown);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(DesktopShellsTest, PcmanfmQtThatHasEndedSinceItWasLookedForIsStarted) {
    int starts = 0;
    LinuxPlatform::PcmanfmQtDesktop lxqt{bus, {state, "pcmanfm-qt", session}, [&](const auto&) {
                                             ++starts;
                                             return true;
                                         }};
    start("org.pcmanfm.PCManFM", {"lxqt"});
    lxqt.hide(scene());
    const auto before = scene();
    EXPECT_TRUE(lxqt.show(before));
    EXPECT_EQ(starts, 0);
    lxqt.hide(before);
    shell.reset();
    ASSERT_TRUE(spinUntil([&] { return !scene().hasName(shellName); }, patience));
    EXPECT_TRUE(lxqt.show(before));
    EXPECT_EQ(starts, 1);
    EXPECT_THAT(state.values, IsEmpty());
}

struct PlasmaDesktopTest : DesktopShellsTest {
    void startPlasma(const std::vector<std::string>& desktops) {
        std::vector<std::string> arguments{"plasma"};
        arguments.insert(arguments.end(), desktops.begin(), desktops.end());
        start("org.kde.plasmashell", arguments);
    }

    void choose(int desktop, const char* key, const char* value) {
        ask(QStringLiteral("choose"), {desktop, QString::fromLatin1(key), QString::fromLatin1(value)});
    }

    std::vector<std::string> filter(int desktop) {
        std::vector<std::string> values;
        for (const auto* key : {"filterMode", "filterPattern", "filterMimeTypes"}) {
            values.push_back(
                ask(QStringLiteral("seen"), {desktop, QString::fromLatin1(key)}).toString().toStdString());
        }
        return values;
    }
};

using Filter = std::vector<std::string>;
const Filter hidesAll{"2", "*", "all/all"};

TEST_F(PlasmaDesktopTest, IsAbsentWithoutItsShell) {
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::absent);
}

TEST_F(PlasmaDesktopTest, HidesEveryDesktopThatShowsAFolderAndGivesBackItsFilter) {
    startPlasma({"1=org.kde.plasma.folder", "7=org.kde.desktopcontainment", "9=org.kde.plasma.folder"});
    choose(9, "filterMode", "1");
    choose(9, "filterPattern", R"(a "quoted" \ name*)");
    choose(9, "filterMimeTypes", "text/plain,image/png");
    const auto before = filter(9);
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::shown);

    plasma.hide(scene());
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::hidden);
    EXPECT_EQ(filter(1), hidesAll);
    EXPECT_EQ(filter(9), hidesAll);
    EXPECT_EQ(filter(7), (Filter{"", "", ""}));

    EXPECT_TRUE(plasma.show(scene()));
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::shown);
    EXPECT_EQ(filter(9), before);
    EXPECT_EQ(filter(1), (Filter{"0", "*", "all/all"}));
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(PlasmaDesktopTest, OneThatHidesLateGetsItsFilterBack) {
    startPlasma({"1=org.kde.plasma.folder"});
    choose(1, "filterMode", "1");
    choose(1, "filterPattern", "*.txt");
    choose(1, "filterMimeTypes", "all/all");
    const auto before = filter(1);
    LinuxPlatform::PlasmaDesktop hasty{hastyBus, {state, "plasma", session}};
    hideLate(hasty);
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::hidden);
    EXPECT_TRUE(plasma.show(scene()));
    EXPECT_EQ(filter(1), before);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(PlasmaDesktopTest, ADesktopThatCameLaterIsHiddenBesideTheOthers) {
    startPlasma({"1=org.kde.plasma.folder"});
    choose(1, "filterMode", "1");
    choose(1, "filterPattern", "*.txt");
    choose(1, "filterMimeTypes", "all/all");
    const auto before = filter(1);
    plasma.hide(scene());

    ask(QStringLiteral("add"), {2, QStringLiteral("org.kde.plasma.folder")});
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::shown);
    plasma.hide(scene());
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::hidden);
    // What the user has chosen since then holds.
    choose(2, "filterMode", "1");
    choose(2, "filterPattern", "*.pdf");
    const auto chosen = filter(2);
    plasma.hide(scene());
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::hidden);

    EXPECT_TRUE(plasma.show(scene()));
    EXPECT_EQ(filter(1), before);
    EXPECT_EQ(filter(2), chosen);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(PlasmaDesktopTest, WhatWasHiddenInAnEarlierSessionGetsItsFilterBackUnlessItWasShownSince) {
    startPlasma({"1=org.kde.plasma.folder"});
    choose(1, "filterMode", "1");
    choose(1, "filterPattern", "*.txt");
    choose(1, "filterMimeTypes", "all/all");
    const auto chosen = filter(1);
    LinuxPlatform::PlasmaDesktop earlier{bus, {state, "plasma", "another session"}};
    earlier.hide(scene());
    EXPECT_TRUE(plasma.show(scene()));
    EXPECT_EQ(filter(1), chosen);

    earlier.hide(scene());
    choose(1, "filterMode", "0");
    choose(1, "filterPattern", "*");
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::shown);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(PlasmaDesktopTest, WhatWasHiddenInAnEarlierSessionIsNotTakenAlong) {
    startPlasma({"1=org.kde.plasma.folder", "2=org.kde.plasma.folder"});
    choose(2, "filterMode", "1");
    choose(2, "filterPattern", "*.txt");
    LinuxPlatform::PlasmaDesktop earlier{bus, {state, "plasma", "another session"}};
    choose(1, "filterMode", "2");
    earlier.hide(scene());
    const auto hidden = filter(2);
    choose(1, "filterMode", "0");
    plasma.hide(scene());
    EXPECT_TRUE(plasma.show(scene()));
    EXPECT_EQ(filter(2), hidden);
}

TEST_F(PlasmaDesktopTest, LeavesADesktopAloneThatTheUserHadHidden) {
    startPlasma({"1=org.kde.plasma.folder", "2=org.kde.plasma.folder"});
    choose(1, "filterMode", "2");
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::shown);
    plasma.hide(scene());
    plasma.show(scene());
    EXPECT_EQ(filter(1), (Filter{"2", "", ""}));
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::shown);
}

TEST_F(PlasmaDesktopTest, WithoutAnEarlierFilterTheDefaultIsShown) {
    startPlasma({"1=org.kde.plasma.folder"});
    choose(1, "filterMode", "2");
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::hidden);
    EXPECT_TRUE(plasma.show(scene()));
    EXPECT_EQ(filter(1), (Filter{"0", "*", "all/all"}));
}

TEST_F(PlasmaDesktopTest, ADamagedEarlierFilterIsNotRunAsAScript) {
    startPlasma({"1=org.kde.plasma.folder"});
    plasma.hide(scene());
    for (const auto* damaged : {"[];print('x')", "[{\"id\":1}]", "{}", "", "[]"}) {
        LinuxPlatform::EarlierValue(state, "plasma", session).keep(damaged);
        EXPECT_TRUE(plasma.show(scene())) << damaged;
        EXPECT_EQ(filter(1), (Filter{"0", "*", "all/all"})) << damaged;
        plasma.hide(scene());
    }
}

TEST_F(PlasmaDesktopTest, DesktopsWithoutAFolderShowNoIcons) {
    startPlasma({"7=org.kde.desktopcontainment"});
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::hidden);
    EXPECT_FALSE(plasma.show(scene()));
}

TEST_F(PlasmaDesktopTest, AnAnswerThatMakesNoSenseIsNoAnswer) {
    startPlasma({"1=org.kde.plasma.folder"});
    for (const auto* answer :
         {"ReferenceError: desktops is not defined", R"({"id": 1})", "[1]", "null",
          R"([{"id":"1","filterMode":"2","filterPattern":"*","filterMimeTypes":"all/all"}])"}) {
        ask(QStringLiteral("answerWith"), {QString::fromLatin1(answer)});
        EXPECT_EQ(plasma.icons(scene()), DesktopIcons::unknown) << answer;
        plasma.hide(scene());
        EXPECT_THAT(state.values, IsEmpty());
    }
    ask(QStringLiteral("answerWith"), {QString(8'000'000, QLatin1Char('x'))});
    EXPECT_EQ(plasma.icons(scene()), DesktopIcons::unknown);
}

TEST_F(PlasmaDesktopTest, AFrozenShellIsLeftAloneForAWhile) {
    startPlasma({"1=org.kde.plasma.folder"});
    LinuxPlatform::PlasmaDesktop hasty{hastyBus, {state, "plasma", session}};
    const auto now = scene();
    ::kill(shell->id(), SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(hasty.icons(now), DesktopIcons::unknown);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    ::kill(shell->id(), SIGCONT);
    EXPECT_EQ(hasty.icons(now), DesktopIcons::unknown);
    EXPECT_TRUE(spinUntil(
        [&] {
            clock.advance(11);
            return hasty.icons(now) == DesktopIcons::shown;
        },
        patience));
}

struct GnomeDesktopTest : DesktopShellsTest {
    void startGnome(const std::vector<std::string>& extensions) {
        std::vector<std::string> arguments{"gnome"};
        arguments.insert(arguments.end(), extensions.begin(), extensions.end());
        start("org.gnome.Shell", arguments);
    }

    double stateOf(const char* extension) {
        return ask(QStringLiteral("state"), {QString::fromLatin1(extension)}).toDouble();
    }
};

TEST_F(GnomeDesktopTest, IsAbsentWithoutItsShell) {
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::absent);
}

TEST_F(GnomeDesktopTest, DisablesTheExtensionsAtWorkAndEnablesOnlyThoseAgain) {
    startGnome({"ding@rastersoft.com=1", "gtk4-ding@smedius.gitlab.com=2", "dock@example.com=1"});
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::shown);
    gnome.hide(scene());
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::hidden);
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 2);
    EXPECT_EQ(stateOf("dock@example.com"), 1);

    EXPECT_TRUE(gnome.show(scene()));
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::shown);
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 1);
    EXPECT_EQ(stateOf("gtk4-ding@smedius.gitlab.com"), 2);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(GnomeDesktopTest, OneThatHidesLateGetsItsExtensionsBack) {
    startGnome({"ding@rastersoft.com=1"});
    LinuxPlatform::GnomeDesktop hasty{hastyBus, {state, "gnome", session}};
    hideLate(hasty);
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::hidden);
    EXPECT_TRUE(gnome.show(scene()));
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 1);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(GnomeDesktopTest, AnExtensionThatCannotBeDisabledIsNotRemembered) {
    startGnome({"ding@rastersoft.com=1"});
    ask(QStringLiteral("refuse"), {});
    gnome.hide(scene());
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::shown);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(GnomeDesktopTest, AnExtensionThatWasEnabledLaterIsDisabledBesideTheOthers) {
    startGnome({"ding@rastersoft.com=1", "gtk4-ding@smedius.gitlab.com=2", "desktop-icons@csoriano=2"});
    gnome.hide(scene());
    ask(QStringLiteral("enable"), {QStringLiteral("gtk4-ding@smedius.gitlab.com")});
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::shown);
    gnome.hide(scene());
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::hidden);

    EXPECT_TRUE(gnome.show(scene()));
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 1);
    EXPECT_EQ(stateOf("gtk4-ding@smedius.gitlab.com"), 1);
    EXPECT_EQ(stateOf("desktop-icons@csoriano"), 2);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(GnomeDesktopTest, WithoutAnExtensionAtWorkThereAreNoIconsAndNothingIsChanged) {
    startGnome({"ding@rastersoft.com=3", "dock@example.com=1"});
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::hidden);
    EXPECT_FALSE(gnome.show(scene()));
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 3);
}

TEST_F(GnomeDesktopTest, AnotherExtensionThatSeemsToDrawIconsLeavesItOpen) {
    startGnome({"zorin-desktop-icons@zorinos.com=1", "dock@example.com=1"});
    auto now = scene();
    EXPECT_EQ(gnome.icons(now), DesktopIcons::unknown);
    now.isEveryWindowKnown = true;
    EXPECT_EQ(gnome.icons(now), DesktopIcons::hidden) << "its windows will tell";
}

TEST_F(GnomeDesktopTest, AnotherExtensionThatIsNotAtWorkDrawsNothing) {
    startGnome({"zorin-desktop-icons@zorinos.com=2", "desktop-dock@example.com=1", "icons@example.com=1"});
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::hidden);
}

TEST_F(GnomeDesktopTest, WhatWasDisabledInAnEarlierSessionComesBack) {
    startGnome({"ding@rastersoft.com=2"});
    LinuxPlatform::EarlierValue(state, "gnome", "another session").keep("ding@rastersoft.com");
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::hidden);
    EXPECT_TRUE(gnome.show(scene()));
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 1);
    EXPECT_THAT(state.values, IsEmpty());
}

TEST_F(GnomeDesktopTest, WhatItsUserHasEnabledSinceAnEarlierSessionIsHis) {
    startGnome({"ding@rastersoft.com=1"});
    LinuxPlatform::EarlierValue(state, "gnome", "another session").keep("ding@rastersoft.com");
    EXPECT_EQ(gnome.icons(scene()), DesktopIcons::shown);
    EXPECT_THAT(state.values, IsEmpty());
    ask(QStringLiteral("disable"), {QStringLiteral("ding@rastersoft.com")});
    EXPECT_FALSE(gnome.show(scene())) << "he has disabled it himself";
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 2);
}

TEST_F(GnomeDesktopTest, WhatWasDisabledInAnEarlierSessionIsNotTakenAlong) {
    startGnome({"ding@rastersoft.com=1", "desktop-icons@csoriano=2"});
    LinuxPlatform::EarlierValue(state, "gnome", "another session").keep("desktop-icons@csoriano");
    gnome.hide(scene());
    EXPECT_TRUE(gnome.show(scene()));
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 1);
    EXPECT_EQ(stateOf("desktop-icons@csoriano"), 2);
}

TEST_F(GnomeDesktopTest, AnExtensionThatIsGoneIsNotMissed) {
    startGnome({"ding@rastersoft.com=2"});
    LinuxPlatform::EarlierValue(state, "gnome", session).keep("desktop-icons@csoriano");
    EXPECT_FALSE(gnome.show(scene()));
    EXPECT_EQ(stateOf("ding@rastersoft.com"), 2);
}

} // namespace
