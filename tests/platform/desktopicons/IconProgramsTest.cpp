#include "Curtain/DesktopChecker.h"
#include "Curtain/DesktopController.h"
#include "Curtain/FixEverything.h"
#include "Curtain/ReadinessCoordinator.h"
#include "platform/linux/desktopicons/CajaDesktop.h"
#include "platform/linux/desktopicons/DesktopProgram.h"
#include "platform/linux/desktopicons/LinuxDesktopIcons.h"
#include "platform/linux/session/SessionProbe.h"
#include "platform/linux/system/GSettingsKey.h"
#include "platform/linux/system/PosixFileManager.h"
#include "platform/linux/system/ThreadWorkQueues.h"
#include "platform/linux/system/XdgUserFolders.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/workspace/PrivacyMode.h"

#include "tests/platform/system/Orphans.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/DesktopPicture.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

#include <QDBusConnectionInterface>

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::DesktopScene;
using LinuxPlatform::GSettingsKey;
using LinuxPlatform::LinuxDesktopIcons;
using LinuxPlatform::X11Connection;
using LinuxPlatform::X11DesktopWindows;
using testing::IsEmpty;
using TestSupport::ChildProcess;
using TestSupport::DesktopPicture;
using TestSupport::readFile;
using TestSupport::spinUntil;
using TestSupport::writeFile;

using namespace std::chrono_literals;

/// These programs take their time on a busy machine.
constexpr std::chrono::seconds patience{30};

/// The program of a service that the bus of the virtual desktop does not start by itself.
std::string serviceProgram(const std::string& name) {
    const auto description = readFile("/usr/share/dbus-1/services/" + name + ".service");
    const auto begin = description.find("Exec=") + 5;
    return description.substr(begin, description.find('\n', begin) - begin);
}

/// The real programs that draw icons, one after another on the same screen, as the application sees them.
struct IconProgramsTest : testing::Test {
    TestSupport::Orphans orphans;
    TestSupport::TemporaryFolder stateFolder;
    TestSupport::HandDrivenQueue clock;
    TestSupport::RecordingLog log;
    TestSupport::X11TestClient client;
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    X11DesktopWindows windows{*connection};
    std::vector<std::unique_ptr<ChildProcess>> programs;
    std::unique_ptr<LinuxDesktopIcons> runner = makeRunner();

    IconProgramsTest() {
        const std::filesystem::path home = std::getenv("HOME");
        for (const auto* name : {"letter.txt", "plan.txt", "photo.txt"}) {
            writeFile(home / "Desktop" / name, "words");
        }
        EXPECT_TRUE(spinUntil([&] { return windows.list().empty() && isBare(); }, patience));
    }

    ~IconProgramsTest() override {
        for (auto program = programs.rbegin(); program != programs.rend(); ++program) {
            (*program)->end(SIGTERM);
        }
        // Those that were started anew are not among the programs.
        EXPECT_TRUE(spinUntil([] { return TestSupport::Orphans::haveEnded(); }, patience));
    }

    std::unique_ptr<LinuxDesktopIcons> makeRunner() {
        return std::make_unique<LinuxDesktopIcons>(
            LinuxPlatform::probeSession(LinuxPlatform::sourcesOfThisSession()), connection.get(),
            QDBusConnection::sessionBus(), clock, log, stateFolder.path());
    }

    void start(const std::vector<std::string>& command) {
        programs.push_back(std::make_unique<ChildProcess>(command));
    }

    void startService(const std::string& name) {
        start({serviceProgram(name)});
        EXPECT_TRUE(spinUntil([&] { return hasName(name); }, patience)) << name;
    }

    static bool hasName(const std::string& name) {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(QString::fromStdString(name));
    }

    bool iconsHidden() { return Curtain::DesktopController(*runner).iconsHidden(); }
    void setIconsHidden(bool hidden) { Curtain::DesktopController(*runner).setIconsHidden(hidden); }

    DesktopPicture picture() const { return DesktopPicture::take(client); }
    bool isBare() const { return picture().isBare(); }

    /// The picture once the icons are on it and it has not changed for a while.
    DesktopPicture pictureWithIcons() {
        EXPECT_TRUE(spinUntil([&] { return !isBare(); }, patience));
        auto last = picture();
        int equalOnes = 0;
        EXPECT_TRUE(spinUntil(
            [&] {
                auto next = picture();
                equalOnes = next == last ? equalOnes + 1 : 0;
                last = std::move(next);
                return equalOnes >= 30;
            },
            patience));
        return last;
    }

    /// Whether the desktop stays bare: one that is made anew with other settings is so for a moment.
    bool isBareForGood() {
        int bareOnes = 0;
        return spinUntil(
            [&] {
                bareOnes = isBare() ? bareOnes + 1 : 0;
                return bareOnes >= 30;
            },
            patience);
    }

    bool showsAgain(const DesktopPicture& before) {
        // The application looks again and again, too.
        return spinUntil([&] { return !iconsHidden() && picture() == before; }, patience);
    }

    std::vector<std::filesystem::path> keptFiles() const {
        return {std::filesystem::directory_iterator(stateFolder.path()), {}};
    }

    /// What the application goes by, for whoever reads of a failure.
    std::string whatIsThere() {
        std::ostringstream text;
        for (const auto& program : programs) {
            text << "process " << program->id() << (program->hasEnded() ? " has ended\n" : " runs\n");
        }
        for (const auto& window : windows.list()) {
            text << "window of " << window.className << ", process " << window.process.value_or(0) << '\n';
        }
        for (const auto& file : keptFiles()) {
            text << file.filename() << " holds " << readFile(file) << '\n';
        }
        for (const auto& line : log.lines) {
            text << line << '\n';
        }
        return text.str();
    }

    /// What every desktop has to do, whatever its ways; `setting` reads what the user had chosen.
    template <class Setting>
    void hideAndShow(const Setting& setting) {
        const auto before = pictureWithIcons();
        const auto settingBefore = setting();
        EXPECT_FALSE(iconsHidden());

        setIconsHidden(true);
        EXPECT_TRUE(isBareForGood());
        EXPECT_TRUE(spinUntil([&] { return iconsHidden(); }, patience));
        EXPECT_EQ(keptFiles().size(), 1U);

        // Hiding once more must not take the hidden icons for the user's choice, nor must our own end.
        setIconsHidden(true);
        runner = makeRunner();
        EXPECT_TRUE(iconsHidden());

        setIconsHidden(false);
        EXPECT_FALSE(iconsHidden()) << whatIsThere();
        EXPECT_TRUE(showsAgain(before)) << whatIsThere();
        EXPECT_FALSE(iconsHidden());
        // A service stores it, and others read what is stored.
        auto settingAfter = setting();
        EXPECT_TRUE(spinUntil([&] { return (settingAfter = setting()) == settingBefore; }, patience))
            << testing::PrintToString(settingAfter) << " instead of "
            << testing::PrintToString(settingBefore);
        EXPECT_THAT(keptFiles(), IsEmpty());
    }
};

struct XfceTest : IconProgramsTest {
    XfceTest() {
        startService("org.xfce.Xfconf");
        xfconf({"/desktop-icons", "-r", "-R"});
        // A plain background.
        xfconf({"/backdrop/screen0/monitorscreen/workspace0/image-style", "-n", "-t", "int", "-s", "0"});
        start({"xfdesktop"});
        EXPECT_TRUE(spinUntil([&] { return hasName("org.xfce.xfdesktop"); }, patience));
    }

    std::string xfconf(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"-c", "xfce4-desktop", "-p"});
        return LinuxPlatform::PosixProcessRunner(patience).run("/usr/bin/xfconf-query", arguments);
    }

    std::string style() { return xfconf({"/desktop-icons/style"}); }
};

TEST_F(XfceTest, WithoutASetting) {
    hideAndShow([this] { return style(); });
}

TEST_F(XfceTest, GivesBackWhichIconsTheUserHadChosen) {
    xfconf({"/desktop-icons/style", "-n", "-t", "int", "-s", "2"});
    xfconf({"/desktop-icons/file-icons/show-home", "-n", "-t", "bool", "-s", "false"});
    hideAndShow([this] { return style() + xfconf({"/desktop-icons/file-icons/show-home"}); });
    EXPECT_EQ(style(), "2\n");

    // Icons of minimised windows count as icons.
    xfconf({"/desktop-icons/style", "-t", "int", "-s", "1"});
    EXPECT_FALSE(iconsHidden());
    setIconsHidden(true);
    EXPECT_EQ(style(), "0\n");
    setIconsHidden(false);
    EXPECT_EQ(style(), "1\n");
}

TEST_F(XfceTest, FollowsWhatOthersDo) {
    pictureWithIcons();
    xfconf({"/desktop-icons/style", "-n", "-t", "int", "-s", "0"});
    EXPECT_TRUE(iconsHidden());
    // The user had hidden them: there is nothing to give back.
    setIconsHidden(true);
    EXPECT_THAT(keptFiles(), IsEmpty());
    setIconsHidden(false);
    EXPECT_EQ(style(), "2\n");
    EXPECT_FALSE(iconsHidden());
}

TEST_F(XfceTest, TwoCurtainsOfTheSameUser) {
    xfconf({"/desktop-icons/style", "-n", "-t", "int", "-s", "1"});
    const auto otherRunner = makeRunner();
    const Curtain::DesktopController other(*otherRunner);
    setIconsHidden(true);
    EXPECT_TRUE(other.iconsHidden());
    other.setIconsHidden(true);
    EXPECT_TRUE(iconsHidden());
    other.setIconsHidden(false);
    EXPECT_EQ(style(), "1\n");
    EXPECT_FALSE(iconsHidden());
    setIconsHidden(false);
    EXPECT_EQ(style(), "1\n");
    EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(XfceTest, AFrozenSettingsServiceIsNotWaitedForAgainAndAgain) {
    EXPECT_FALSE(iconsHidden());
    const auto service = programs.front()->id();
    ::kill(service, SIGSTOP);
    const auto start = std::chrono::steady_clock::now();
    for (int round = 0; round < 50; ++round) {
        EXPECT_FALSE(iconsHidden());
    }
    setIconsHidden(true);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    ::kill(service, SIGCONT);
    clock.advance(11);
    EXPECT_TRUE(spinUntil([&] { return clock.advance(11), !iconsHidden(); }, patience));
    setIconsHidden(true);
    EXPECT_TRUE(iconsHidden());
    setIconsHidden(false);
}

TEST_F(XfceTest, TheOneStepFixOfEverything) {
    using CurtainCore::LocKey;
    using CurtainCore::ReadinessIssue;
    using CurtainCore::ReadinessStatus;
    pictureWithIcons();
    QtPlatform::QtMainQueue mainQueue;
    LinuxPlatform::X11WindowSystem system(*connection, mainQueue);
    PlatformTests::PrivacyMode privacy(system, mainQueue);
    const TestSupport::TemporaryFolder settings;
    LinuxPlatform::FileUserDefaults defaults(settings.path(), log);
    CurtainCore::PreferencesStore store(defaults);
    LinuxPlatform::PosixFileManager fileManager;
    LinuxPlatform::XdgUserFolders folders;
    LinuxPlatform::ThreadWorkQueues workQueues;
    const Curtain::DesktopController desktop(*runner);
    const Curtain::DesktopChecker checker(desktop, fileManager, folders, workQueues, mainQueue);
    Curtain::ReadinessCoordinator coordinator(store, privacy.workspace, desktop, checker);
    coordinator.isPrivacyModeActive = [&] { return privacy.engine.isActive(); };
    auto preferences = store.load();
    preferences.targetApps = {{"ant", "Ant"}, {"bee", "Bee"}};
    store.save(preferences);
    const auto state = [&] {
        coordinator.refresh();
        return coordinator.state();
    };

    client.open("ant", "Ant");
    client.open("bee", "Bee");
    const ReadinessIssue notifications(LocKey::notifications, ReadinessStatus::warning);
    const CurtainCore::ReadinessState before{
        .desktop = ReadinessStatus::warning,
        .notifications = ReadinessStatus::warning,
        .privateApps = ReadinessStatus::danger,
        .desktopFileCount = 3,
        .score = 80,
        .risk = CurtainCore::RiskLevel::high,
        .issues = {{LocKey::privateApps, ReadinessStatus::danger},
                   {LocKey::desktop, ReadinessStatus::warning},
                   notifications},
        .privacyModeActive = false,
        .desktopHidden = false,
    };
    EXPECT_TRUE(spinUntil([&] { return state() == before; }, patience));

    EXPECT_TRUE(Curtain::FixEverything::run(privacy.engine, store, desktop));
    const CurtainCore::ReadinessState after{
        .desktop = ReadinessStatus::ok,
        .notifications = ReadinessStatus::warning,
        .privateApps = ReadinessStatus::ok,
        .desktopFileCount = 3,
        .score = 20,
        .risk = CurtainCore::RiskLevel::low,
        .issues = {notifications},
        .privacyModeActive = true,
        .desktopHidden = true,
    };
    EXPECT_TRUE(spinUntil([&] { return state() == after; }, patience));
    EXPECT_TRUE(spinUntil([&] { return isBare(); }, patience));

    privacy.engine.deactivate();
    desktop.setIconsHidden(false);
    EXPECT_TRUE(spinUntil([&] { return state() == before; }, patience));
}

struct GSettingsTest : IconProgramsTest {
    GSettingsTest() { startService("ca.desrt.dconf"); }

    static std::string gsettings(const std::vector<std::string>& arguments) {
        return LinuxPlatform::PosixProcessRunner(patience).run("/usr/bin/gsettings", arguments);
    }
};

TEST_F(GSettingsTest, Nemo) {
    gsettings({"set", "org.nemo.preferences", "treat-root-as-normal", "true"});
    gsettings({"reset", "org.nemo.desktop", "desktop-layout"});
    start({"nemo-desktop"});
    hideAndShow([] { return gsettings({"get", "org.nemo.desktop", "desktop-layout"}); });
    EXPECT_FALSE(GSettingsKey("org.nemo.desktop", "desktop-layout").chosenValue());

    gsettings({"set", "org.nemo.desktop", "desktop-layout", "true::true"});
    hideAndShow([] { return gsettings({"get", "org.nemo.desktop", "desktop-layout"}); });
    EXPECT_EQ(GSettingsKey("org.nemo.desktop", "desktop-layout").chosenValue(), "'true::true'");

    gsettings({"set", "org.nemo.desktop", "desktop-layout", "false::false"});
    EXPECT_TRUE(spinUntil([&] { return iconsHidden(); }, patience));
    setIconsHidden(false);
    EXPECT_EQ(GSettingsKey("org.nemo.desktop", "desktop-layout").value(), "'true::false'");
}

TEST_F(GSettingsTest, NemoThatHasEndedMeanwhileShowsTheIconsWhenItStartsAgain) {
    gsettings({"set", "org.nemo.preferences", "treat-root-as-normal", "true"});
    gsettings({"reset", "org.nemo.desktop", "desktop-layout"});
    start({"nemo-desktop"});
    const auto before = pictureWithIcons();
    setIconsHidden(true);
    EXPECT_TRUE(isBareForGood());
    programs.back()->end(SIGKILL);
    ASSERT_TRUE(spinUntil([] { return !hasName("org.NemoDesktop"); }, patience));
    EXPECT_TRUE(iconsHidden());
    setIconsHidden(false);
    EXPECT_FALSE(GSettingsKey("org.nemo.desktop", "desktop-layout").chosenValue());
    EXPECT_THAT(keptFiles(), IsEmpty());
    start({"nemo-desktop"});
    EXPECT_TRUE(showsAgain(before)) << whatIsThere();
}

TEST_F(GSettingsTest, CajaWhichEndsWithItsDesktop) {
    start({"caja", "--no-default-window", "--force-desktop"});
    hideAndShow([] { return gsettings({"get", "org.mate.background", "show-desktop-icons"}); });
    EXPECT_FALSE(GSettingsKey("org.mate.background", "show-desktop-icons").chosenValue());
}

/// Caja's ways, in orders that the real one takes now and then; time passes by hand.
struct CajaOrdersTest : GSettingsTest {
    using Icons = LinuxPlatform::DesktopIcons;

    TestSupport::MemoryUserDefaults state;
    int starts = 0;
    LinuxPlatform::CajaDesktop::Clock::time_point now{};
    LinuxPlatform::CajaDesktop caja{{state, "caja", "session"},
                                    [this](const auto&) {
                                        ++starts;
                                        return true;
                                    },
                                    [this] { return now; }};
    GSettingsKey setting{"org.mate.background", "show-desktop-icons"};
    const DesktopScene drawing{std::set<std::string>{"org.mate.Caja"}, {{"Caja", std::nullopt}}, true};
    const DesktopScene ending{std::set<std::string>{"org.mate.Caja"}, {}, true};
    const DesktopScene ended{std::set<std::string>{}, {}, true};
    /// Its window goes after its name.
    const DesktopScene leaving{std::set<std::string>{}, {{"Caja", std::nullopt}}, true};

    CajaOrdersTest() {
        setting.reset();
        EXPECT_EQ(caja.icons(drawing), Icons::shown);
        caja.hide(drawing);
    }

    ~CajaOrdersTest() override {
        setting.reset();
        // What is written is on its way for a while.
        EXPECT_TRUE(spinUntil(
            [] {
                return gsettings({"get", "org.mate.background", "show-desktop-icons"}) == "true\n";
            },
            patience));
    }

    void pass(std::chrono::milliseconds time) { now += time; }
};

TEST_F(CajaOrdersTest, OneThatHasEndedIsStartedOnce) {
    EXPECT_EQ(caja.icons(ended), Icons::hidden);
    EXPECT_TRUE(caja.show(ended));
    EXPECT_EQ(starts, 1);
    for (int look = 0; look < 10; ++look) {
        pass(200ms);
        caja.icons(ended);
    }
    EXPECT_EQ(starts, 1) << "it takes its time";
    caja.icons(drawing);
    pass(2s);
    caja.icons(drawing);
    EXPECT_FALSE(caja.isComingBack());
    caja.icons(ended);
    EXPECT_EQ(starts, 1) << "its user has ended it";
}

TEST_F(CajaOrdersTest, OneThatIsAboutToEndIsStartedAgain) {
    EXPECT_EQ(caja.icons(ending), Icons::hidden);
    EXPECT_TRUE(caja.show(ending));
    caja.icons(ending);
    EXPECT_EQ(starts, 0);
    caja.icons(ended);
    EXPECT_EQ(starts, 1);
}

TEST_F(CajaOrdersTest, OneThatShowsItsDesktopOnceMoreBeforeItEndsIsStartedAgain) {
    EXPECT_TRUE(caja.show(ending));
    pass(10ms);
    EXPECT_EQ(caja.icons(drawing), Icons::shown);
    pass(500ms);
    EXPECT_EQ(caja.icons(leaving), Icons::shown);
    EXPECT_TRUE(caja.isComingBack());
    pass(10ms);
    caja.icons(ended);
    EXPECT_EQ(starts, 1);
}

TEST_F(CajaOrdersTest, SuccessorThatEndsWithItIsStartedAgain) {
    EXPECT_TRUE(caja.show(ended));
    EXPECT_EQ(starts, 1);
    caja.icons(drawing);
    pass(300ms);
    caja.icons(ended);
    EXPECT_EQ(starts, 1) << "too early to say";
    pass(2s);
    caja.icons(ended);
    EXPECT_EQ(starts, 2);
}

TEST_F(CajaOrdersTest, OneThatHasNotBegunToHideStays) {
    EXPECT_TRUE(caja.isAboutToHide(drawing));
    // Twice is not to take the hidden icons for its user's choice.
    caja.hide(drawing);
    EXPECT_TRUE(caja.show(drawing));
    EXPECT_FALSE(setting.chosenValue());
    EXPECT_FALSE(caja.isAboutToHide(drawing));
    EXPECT_EQ(caja.icons(drawing), Icons::shown);
    caja.icons(ended);
    EXPECT_EQ(starts, 1) << "it hid them all the same, and ended";
}

TEST_F(CajaOrdersTest, OneThatIsHiddenAgainOrByOthersIsNotStarted) {
    EXPECT_TRUE(caja.show(ending));
    EXPECT_TRUE(setting.write("false"));
    caja.icons(ended);
    EXPECT_EQ(starts, 0);
    EXPECT_FALSE(caja.isComingBack());
}

TEST_F(CajaOrdersTest, OneThatNeverComesIsNotStartedForEver) {
    EXPECT_TRUE(caja.show(ended));
    for (int look = 0; look < 1000; ++look) {
        pass(200ms);
        caja.icons(ended);
    }
    EXPECT_FALSE(caja.isComingBack());
    EXPECT_LE(starts, 15);
}

TEST_F(GSettingsTest, CajaThatWasHiddenInAnEarlierSession) {
    TestSupport::MemoryUserDefaults state;
    std::vector<std::vector<std::string>> started;
    LinuxPlatform::CajaDesktop caja({state, "caja", "session"}, [&](const auto& command) {
        started.push_back(command);
        return true;
    });
    // What is written is on its way for a while.
    const auto isWritten = [](const char* value) {
        return spinUntil(
            [&] {
                return gsettings({"get", "org.mate.background", "show-desktop-icons"}) == value;
            },
            patience);
    };
    GSettingsKey setting("org.mate.background", "show-desktop-icons");
    EXPECT_TRUE(setting.write("false"));
    EXPECT_TRUE(isWritten("false\n"));
    state.setString("caja", "another boot :0\ndefault");
    const DesktopScene elsewhere{std::set<std::string>{}, {}, true};
    const DesktopScene mate{std::set<std::string>{"org.mate.SettingsDaemon"}, {}, true};

    EXPECT_EQ(caja.icons(elsewhere), LinuxPlatform::DesktopIcons::absent);
    EXPECT_EQ(caja.icons(mate), LinuxPlatform::DesktopIcons::hidden);
    EXPECT_TRUE(caja.show(mate));
    EXPECT_TRUE(isWritten("true\n"));
    EXPECT_EQ(started.size(), 1U);
    EXPECT_THAT(state.values, IsEmpty());
    EXPECT_EQ(caja.icons(mate), LinuxPlatform::DesktopIcons::absent) << "until it has started";
}

TEST_F(IconProgramsTest, Pcmanfm) {
    start({"pcmanfm", "--desktop", "--profile", "LXDE"});
    EXPECT_TRUE(spinUntil([&] { return !windows.list().empty(); }, patience));
    hideAndShow([&] {
        const auto list = windows.list();
        return list.empty() ? std::vector<std::string>{}
                            : LinuxPlatform::profileArguments(list.front().process.value());
    });
    EXPECT_EQ(LinuxPlatform::profileArguments(windows.list().at(0).process.value()),
              std::vector<std::string>{"--profile=LXDE"});
}

TEST_F(IconProgramsTest, PcmanfmThatIsAskedToShowWhileItIsAboutToEnd) {
    start({"pcmanfm", "--desktop", "--profile", "LXDE"});
    for (int round = 0; round < 4; ++round) {
        ASSERT_TRUE(spinUntil([&] { return !windows.list().empty() && !iconsHidden(); }, patience)) << round;
        setIconsHidden(true);
        ASSERT_TRUE(spinUntil([&] { return iconsHidden(); }, patience)) << round;
        setIconsHidden(false);
        // The application looks again and again.
        EXPECT_TRUE(spinUntil([&] { return !iconsHidden() && !windows.list().empty(); }, patience)) << round;
    }
}

TEST_F(IconProgramsTest, PcmanfmQt) {
    start({VOLUME_MONITOR});
    EXPECT_TRUE(spinUntil([] { return hasName("org.gtk.vfs.UDisks2VolumeMonitor"); }, patience));
    start({"pcmanfm-qt", "--desktop", "--profile=lxqt"});
    EXPECT_TRUE(spinUntil([&] { return !windows.list().empty(); }, patience));
    hideAndShow([&] {
        const auto list = windows.list();
        return list.empty() ? std::vector<std::string>{}
                            : LinuxPlatform::profileArguments(list.front().process.value());
    });
}

TEST_F(IconProgramsTest, WhereNothingDrawsIconsTheyAreHiddenAndNothingIsWritten) {
    EXPECT_TRUE(iconsHidden());
    setIconsHidden(false);
    EXPECT_TRUE(iconsHidden());
    setIconsHidden(true);
    EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(IconProgramsTest, AnUnknownDesktopIsTakenToShowIcons) {
    const auto window = client.create("pinboard", "Pinboard");
    const std::array<std::uint32_t, 1> type{client.atom("_NET_WM_WINDOW_TYPE_DESKTOP")};
    client.setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, type);
    EXPECT_TRUE(iconsHidden());
    client.map(window);
    EXPECT_TRUE(spinUntil([&] { return !iconsHidden(); }, patience));
    setIconsHidden(true);
    EXPECT_FALSE(iconsHidden());
    EXPECT_THAT(keptFiles(), IsEmpty());
    client.destroy(window);
    EXPECT_TRUE(spinUntil([&] { return iconsHidden(); }, patience));
}

} // namespace
