#include "platform/linux/shortcutlists/DesktopShortcuts.h"

#include "platform/linux/shortcutlists/GSettingsShortcuts.h"
#include "platform/linux/shortcutlists/I3Shortcuts.h"
#include "platform/linux/shortcutlists/KdeShortcuts.h"
#include "tests/support/FakeHotKeyService.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <string>

#include <sys/stat.h>

namespace {

using LinuxPlatform::Accelerator;
using LinuxPlatform::DesktopShortcuts;
using LinuxPlatform::GSettingsShortcuts;
using LinuxPlatform::I3Shortcuts;
using LinuxPlatform::KdeShortcuts;
using LinuxPlatform::WantedShortcut;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr std::int64_t command = 256;
constexpr std::int64_t shift = 512;
constexpr std::int64_t option = 2048;
constexpr std::int64_t control = 4096;

TEST(Accelerator, ReadsWhatGtkWrites) {
    using A = Accelerator;
    EXPECT_EQ(A::fromGtk("<Control><Alt>t"), (A{control + option, XKB_KEY_t}));
    EXPECT_EQ(A::fromGtk("<Primary><Shift>F9"), (A{control + shift, XKB_KEY_F9}));
    EXPECT_EQ(A::fromGtk("<super>Page_Up"), (A{command, XKB_KEY_Page_Up}));
    EXPECT_EQ(A::fromGtk("<Mod4>slash"), (A{command, XKB_KEY_slash}));
    EXPECT_EQ(A::fromGtk("Print"), (A{0, XKB_KEY_Print}));
    EXPECT_EQ(A::fromGtk("<Alt>Cyrillic_er"), (A{option, XKB_KEY_Cyrillic_er}));
}

TEST(Accelerator, WhatIsNoCombinationIsAbsent) {
    for (const auto* const text : {"", "disabled", "<Control>", "<Control", "<Mod3>t", "<>t", "no such key",
                                   "<Control><Alt>\xFF\xFE", "Super+h"}) {
        EXPECT_EQ(Accelerator::fromGtk(text), std::nullopt) << text;
    }
}

TEST(Accelerator, ReadsWhatI3Writes) {
    using A = Accelerator;
    EXPECT_EQ(A::fromI3("Mod4+Shift+q"), (A{command + shift, XKB_KEY_q}));
    EXPECT_EQ(A::fromI3("Ctrl+Mod1+Return"), (A{control + option, XKB_KEY_Return}));
    EXPECT_EQ(A::fromI3("XF86AudioMute"), (A{0, XKB_KEY_XF86AudioMute}));
    EXPECT_EQ(A::fromI3("Mode_switch+x"), std::nullopt);
    EXPECT_EQ(A::fromI3("Mod4+"), std::nullopt);
}

TEST(WantedShortcut, MatchesAnyMeaningOfTheKeyInWhateverCase) {
    const WantedShortcut wanted{control, {XKB_KEY_h, XKB_KEY_H, XKB_KEY_Cyrillic_er}};
    EXPECT_TRUE(wanted.matches(Accelerator{control, XKB_KEY_H}));
    EXPECT_TRUE(wanted.matches(Accelerator{control, XKB_KEY_Cyrillic_ER}));
    EXPECT_FALSE(wanted.matches(Accelerator{control + shift, XKB_KEY_h}));
    EXPECT_FALSE(wanted.matches(Accelerator{control, XKB_KEY_j}));
    EXPECT_FALSE(wanted.matches(std::nullopt));
}

TEST(I3Bindings, ReadsBindingsWithVariablesAndOptions) {
    EXPECT_THAT(I3Shortcuts::bindings("set $mod Mod4\n"
                                      "set $modshift $mod+Shift  \n"
                                      "# bindsym $mod+c kill\n"
                                      "bindsym $mod+Return exec i3-sensible-terminal\n"
                                      "    bindsym --release --no-startup-id $modshift+q kill\r\n"
                                      "bindsym Print exec scrot\n"
                                      "bindsym $mod+\n"
                                      "bindcode 43 kill\n")
                    .bySymbol,
                ElementsAre(Accelerator{command, XKB_KEY_Return}, Accelerator{command + shift, XKB_KEY_q},
                            Accelerator{0, XKB_KEY_Print}));
}

TEST(I3Bindings, ReadsThoseByPosition) {
    using Position = LinuxPlatform::I3Bindings::Position;
    EXPECT_THAT(I3Shortcuts::bindings("set $mod Mod4\n"
                                      "bindcode 43 kill\n"
                                      "bindcode --release $mod+Shift+44 kill\n"
                                      "bindcode Mod4+h kill\n"
                                      "bindcode Nonsense+44 kill\n"
                                      "bindcode 4294967296 kill\n"
                                      "bindcode\n")
                    .byPosition,
                ElementsAre(Position{0, 43}, Position{command + shift, 44}));
}

TEST(I3Bindings, LeavesOutThoseOfModes) {
    EXPECT_THAT(I3Shortcuts::bindings("mode \"resize\" {\n"
                                      "  bindsym Left resize shrink width 10 px\n"
                                      "  bindsym {\n"
                                      "  }\n"
                                      "}\n"
                                      "bindsym Mod4+r mode \"resize\"\n")
                    .bySymbol,
                ElementsAre(Accelerator{command, XKB_KEY_r}));
    EXPECT_THAT(I3Shortcuts::bindings("").bySymbol, IsEmpty());
    EXPECT_THAT(I3Shortcuts::bindings("mode x {\nbindsym a b\n").bySymbol, IsEmpty());
}

TEST(I3Bindings, ReadsWhatIsIncludedWithTheSameVariables) {
    const TestSupport::TemporaryFolder scratch;
    const auto folder = scratch.path() / "a user's";
    const auto main = folder / "config";
    TestSupport::writeFile(folder / "parts" / "a.conf", "bindsym $mod+a kill\nset $later Mod1\n");
    TestSupport::writeFile(folder / "parts" / "b.conf",
                           "bindsym $mod+b kill\ninclude b.conf\ninclude ../config\n");
    TestSupport::writeFile(folder / "other", "bindsym $mod+o kill\n");
    TestSupport::writeFile(folder / "long", "bindsym $mod+l kill\n" + std::string(1 << 20, '#'));
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const auto text = "set $mod Mod4\n"
                      "include parts/*.conf\n"
                      "bindsym $later+c kill\n"
                      "include \"" +
                      (folder / "other").string() +
                      "\"\n"
                      "include pipe\n"
                      "include long\n"
                      "include nowhere\n"
                      "include .\n"
                      "include $(cat other)\n"
                      "include \"unfinished\n"
                      "include\n"
                      "bindsym $mod+z kill\n";
    TestSupport::writeFile(main, text);
    EXPECT_THAT(I3Shortcuts::bindings(text, main).bySymbol,
                ElementsAre(Accelerator{command, XKB_KEY_a}, Accelerator{command, XKB_KEY_b},
                            Accelerator{option, XKB_KEY_c}, Accelerator{command, XKB_KEY_o},
                            Accelerator{command, XKB_KEY_z}));
    EXPECT_THAT(I3Shortcuts::bindings(text).bySymbol, ElementsAre(Accelerator{command, XKB_KEY_z}))
        << "whose file is not known";
}

TEST(KdeShortcuts, NumbersKeysAsQtDoes) {
    EXPECT_THAT(KdeShortcuts::qtKey(control + option, XKB_KEY_h), Optional(0x0C000048));
    EXPECT_THAT(KdeShortcuts::qtKey(command, XKB_KEY_F9), Optional(0x11000038));
    EXPECT_THAT(KdeShortcuts::qtKey(shift, XKB_KEY_Page_Up), Optional(0x03000016));
    EXPECT_THAT(KdeShortcuts::qtKey(0, XKB_KEY_Cyrillic_er), Optional(0x420));
    EXPECT_EQ(KdeShortcuts::qtKey(0, XKB_KEY_Shift_L), std::nullopt);
}

TEST(GSettingsShortcuts, OnlyDesktopsThatKeepThemThereHaveSchemas) {
    const auto first = [](const char* desktop) {
        const auto schemas = GSettingsShortcuts::schemasOf(desktop);
        return schemas.empty() ? std::string() : schemas.front().id;
    };
    EXPECT_EQ(first("ubuntu:GNOME"), "org.gnome.desktop.wm.keybindings");
    EXPECT_EQ(first("X-Cinnamon"), "org.cinnamon.desktop.keybindings");
    EXPECT_EQ(first("MATE"), "org.mate.Marco.global-keybindings");
    EXPECT_EQ(first("XFCE"), "");
    EXPECT_EQ(first("KDE"), "");
    EXPECT_EQ(first(""), "");
}

/// A list that answers when the test wants.
class FakeList : public LinuxPlatform::ShortcutList {
public:
    explicit FakeList(std::vector<Answer>& answers) : answers_(answers) {}

    void ask(const WantedShortcut& /*wanted*/, Answer answer) override {
        answers_.push_back(std::move(answer));
    }

private:
    std::vector<Answer>& answers_;
};

struct DesktopShortcutsTest : testing::Test {
    TestSupport::FakeHotKeyService service;
    TestSupport::HandDrivenQueue queue;
    std::vector<LinuxPlatform::ShortcutList::Answer> waiting;
    std::vector<bool> answers;

    std::unique_ptr<DesktopShortcuts> shortcuts(int count) {
        std::vector<std::unique_ptr<LinuxPlatform::ShortcutList>> lists;
        lists.reserve(static_cast<std::size_t>(count));
        for (int index = 0; index < count; ++index) {
            lists.push_back(std::make_unique<FakeList>(waiting));
        }
        return std::make_unique<DesktopShortcuts>(
            service, queue, [](std::int64_t) { return std::vector<xkb_keysym_t>{XKB_KEY_h}; },
            std::move(lists));
    }

    void ask(DesktopShortcuts& shortcuts) {
        shortcuts.isTaken({4, control}, [this](bool isTaken) { answers.push_back(isTaken); });
    }
};

TEST_F(DesktopShortcutsTest, AHeldCombinationIsTaken) {
    service.status = Platform::hotKeyExists;
    const auto asked = shortcuts(1);
    ask(*asked);
    EXPECT_THAT(answers, IsEmpty()) << "never from inside the call";
    queue.runReady();
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_THAT(waiting, IsEmpty());
}

TEST_F(DesktopShortcutsTest, TryingLeavesNothingRegistered) {
    const auto asked = shortcuts(0);
    ask(*asked);
    queue.runReady();
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_THAT(service.registrations, IsEmpty());
    EXPECT_THAT(service.calls, testing::SizeIs(2));
}

TEST_F(DesktopShortcutsTest, ASessionWithoutShortcutsHasNoneTaken) {
    service.status = Platform::hotKeyInvalid;
    const auto asked = shortcuts(0);
    ask(*asked);
    queue.runReady();
    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(DesktopShortcutsTest, OneListThatHasItIsEnough) {
    const auto asked = shortcuts(3);
    ask(*asked);
    waiting.at(0)(false);
    waiting.at(1)(true);
    queue.runReady();
    EXPECT_THAT(answers, ElementsAre(true));
    waiting.at(2)(false);
    queue.advance(5);
    EXPECT_THAT(answers, ElementsAre(true));
}

TEST_F(DesktopShortcutsTest, AllMustHaveAnsweredBeforeItIsFree) {
    const auto asked = shortcuts(2);
    ask(*asked);
    waiting.at(0)(false);
    queue.runReady();
    EXPECT_THAT(answers, IsEmpty());
    waiting.at(1)(false);
    queue.runReady();
    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(DesktopShortcutsTest, AListThatKeepsSilentIsNotWaitedForLong) {
    const auto asked = shortcuts(2);
    ask(*asked);
    waiting.at(0)(false);
    queue.advance(0.9);
    EXPECT_THAT(answers, IsEmpty());
    queue.advance(0.2);
    EXPECT_THAT(answers, ElementsAre(false));
    waiting.at(1)(true);
    queue.advance(5);
    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(DesktopShortcutsTest, NothingIsToldOnceItIsGone) {
    auto asked = shortcuts(1);
    ask(*asked);
    waiting.at(0)(true);
    asked.reset();
    queue.advance(5);
    EXPECT_THAT(answers, IsEmpty());
}

} // namespace
