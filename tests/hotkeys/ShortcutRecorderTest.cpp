#include "hotkeys/ShortcutRecorder.h"

#include "hotkeys/ShortcutTexts.h"
#include "tests/support/FakeHotKeyService.h"
#include "tests/support/FakeKeyboard.h"
#include "tests/support/FakeSystemShortcuts.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

namespace {

using namespace KeyboardShortcuts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint64_t shift = 0x20000;
constexpr std::uint64_t control = 0x40000;
constexpr std::uint64_t option = 0x80000;
constexpr std::uint64_t command = 0x100000;
constexpr std::uint64_t capsLock = 0x10000;
constexpr std::uint64_t keypad = 0x200000;
constexpr std::uint64_t function = 0x800000;

constexpr std::int64_t keyH = 4;
constexpr std::int64_t keyP = 35;
constexpr std::int64_t keyF5 = 96;
constexpr std::int64_t keyF9 = 101;
constexpr std::int64_t keyF13 = 105;
constexpr std::int64_t keyTab = 48;
constexpr std::int64_t keyDelete = 51;
constexpr std::int64_t keyEscape = 53;
constexpr std::int64_t keyForwardDelete = 117;
constexpr std::int64_t keyLeft = 123;

constexpr Shortcut defaultShortcut{keyH, 6400};
constexpr std::int64_t keyW = 13;
constexpr std::int64_t keyZ = 6;
constexpr std::int64_t keyPageUp = 116;
constexpr Shortcut controlW{keyW, 4096};
constexpr Shortcut controlShiftF9{keyF9, 4096 + 512};
constexpr auto storeKey = "KeyboardShortcuts_toggle";

struct ShortcutRecorderTest : testing::Test {
    TestSupport::MemoryUserDefaults defaults;
    TestSupport::FakeHotKeyService service;
    TestSupport::RecordingLog log;
    TestSupport::FakeKeyboard keyboard;
    TestSupport::FakeSystemShortcuts system;
    ::KeyboardShortcuts::KeyboardShortcuts shortcuts{defaults, service, log};
    Name name = shortcuts.name("toggle", defaultShortcut);
    int toggles = 0;
    Platform::Subscription listener = shortcuts.onKeyUp(name, [this] { ++toggles; });
    ShortcutRecorder recorder{{shortcuts, keyboard, system}, name, {{"W", control}, {"Page Up", control}}};
    std::vector<ShortcutAlert> alerts;
    int changes = 0;

    ShortcutRecorderTest() {
        recorder.onAlert = [this](const auto& alert) { alerts.push_back(alert); };
        recorder.onChange = [this] { ++changes; };
        recorder.begin();
        changes = 0;
    }

    bool press(std::optional<std::int64_t> key, std::uint64_t flags = 0) {
        return recorder.keyDown({key, flags});
    }
    std::optional<Shortcut> stored() const { return shortcuts.getShortcut(name); }
    std::optional<Shortcut> registered() const {
        return service.registrations.empty()
                   ? std::nullopt
                   : std::optional(Shortcut{service.registrations.at(0).combination.keyCode,
                                            service.registrations.at(0).combination.modifiers});
    }
};

TEST_F(ShortcutRecorderTest, RecordsACombinationAndEnds) {
    EXPECT_TRUE(press(keyF9, control | shift));
    ASSERT_THAT(system.questions, SizeIs(1));
    EXPECT_EQ(system.questions[0].combination.keyCode, keyF9);
    EXPECT_EQ(system.questions[0].combination.modifiers, 4096 + 512);
    EXPECT_EQ(stored(), defaultShortcut) << "before the system has answered";
    system.answer(false);
    recorder.keyUp();
    EXPECT_EQ(stored(), controlShiftF9);
    EXPECT_EQ(registered(), controlShiftF9);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_GT(changes, 0);
    EXPECT_THAT(alerts, IsEmpty());
    service.release();
    EXPECT_EQ(toggles, 1);
}

TEST_F(ShortcutRecorderTest, TabIsLeftToTheFocus) {
    EXPECT_FALSE(press(keyTab));
    EXPECT_FALSE(press(keyTab, capsLock | keypad));
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_EQ(keyboard.beeps, 0);
}

TEST_F(ShortcutRecorderTest, TabWithAModifierIsACombinationLikeOthers) {
    EXPECT_TRUE(press(keyTab, shift));
    EXPECT_EQ(keyboard.beeps, 1);
    EXPECT_TRUE(press(keyTab, control));
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyTab, 4096}));
}

TEST_F(ShortcutRecorderTest, EscapeEndsWithoutAChange) {
    EXPECT_TRUE(press(keyEscape, capsLock));
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(stored(), defaultShortcut);
    EXPECT_THAT(system.questions, IsEmpty());
}

TEST_F(ShortcutRecorderTest, ShiftWithAKeyThatEndsOrClearsIsRefusedWithABeep) {
    for (const auto key : {keyEscape, keyDelete, keyForwardDelete}) {
        keyboard.beeps = 0;
        EXPECT_TRUE(press(key, shift));
        EXPECT_EQ(keyboard.beeps, 1) << key;
        EXPECT_TRUE(recorder.isRecording()) << key;
        EXPECT_EQ(stored(), defaultShortcut) << key;
    }
}

TEST_F(ShortcutRecorderTest, TheFunctionFlagIsAModifierOfAKeyThatEndsOrClears) {
    for (const auto key : {keyEscape, keyDelete, keyForwardDelete}) {
        keyboard.beeps = 0;
        EXPECT_TRUE(press(key, function));
        EXPECT_EQ(keyboard.beeps, 1) << key;
        EXPECT_TRUE(recorder.isRecording()) << key;
        EXPECT_EQ(stored(), defaultShortcut) << key;
    }
}

TEST_F(ShortcutRecorderTest, DeletingKeysEndEvenWhereNothingIsToBeCleared) {
    press(keyDelete);
    recorder.keyUp();
    for (const auto key : {keyDelete, keyForwardDelete}) {
        recorder.begin();
        EXPECT_TRUE(press(key, capsLock | keypad));
        EXPECT_FALSE(recorder.isRecording()) << key;
        EXPECT_EQ(stored(), std::nullopt) << key;
        recorder.keyUp();
    }
}

TEST_F(ShortcutRecorderTest, EveryFunctionKeyIsAcceptedAlone) {
    for (const std::int64_t key :
         {122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111, 105, 107, 113, 106, 64, 79, 80, 90}) {
        recorder.begin();
        EXPECT_TRUE(press(key));
        system.answer(false);
        recorder.keyUp();
        EXPECT_EQ(stored(), (Shortcut{key, 0}));
    }
    EXPECT_EQ(keyboard.beeps, 0);
}

TEST_F(ShortcutRecorderTest, EscapeWithAModifierIsACombination) {
    EXPECT_TRUE(press(keyEscape, control));
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyEscape, 4096}));
}

TEST_F(ShortcutRecorderTest, DeletingKeysClear) {
    for (const auto key : {keyDelete, keyForwardDelete}) {
        shortcuts.setShortcut(defaultShortcut, name);
        recorder.begin();
        EXPECT_TRUE(press(key));
        recorder.keyUp();
        EXPECT_FALSE(recorder.isRecording());
        EXPECT_EQ(defaults.values.at(storeKey), "false");
        EXPECT_EQ(registered(), std::nullopt);
        EXPECT_EQ(recorder.description(), "");
    }
}

TEST_F(ShortcutRecorderTest, ClearedStaysClearedAtTheNextLaunch) {
    press(keyDelete);
    recorder.keyUp();
    ::KeyboardShortcuts::KeyboardShortcuts nextLaunch(defaults, service, log);
    const auto again = nextLaunch.onKeyUp(nextLaunch.name("toggle", defaultShortcut), [] {});
    EXPECT_EQ(defaults.values.at(storeKey), "false");
    EXPECT_THAT(service.registrations, IsEmpty());
}

TEST_F(ShortcutRecorderTest, AKeyWithoutModifiersIsRefusedWithABeepUnlessItIsAFunctionKey) {
    for (const auto flags : {std::uint64_t{0}, shift, shift | capsLock, keypad, function}) {
        keyboard.beeps = 0;
        EXPECT_TRUE(press(keyP, flags));
        EXPECT_EQ(keyboard.beeps, 1) << flags;
        EXPECT_TRUE(recorder.isRecording());
    }
    EXPECT_TRUE(press(keyLeft, function | keypad));
    EXPECT_EQ(keyboard.beeps, 2);
    EXPECT_THAT(system.questions, IsEmpty());
    EXPECT_TRUE(press(keyF5));
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyF5, 0}));
}

TEST_F(ShortcutRecorderTest, ShiftWithAFunctionKeyIsAccepted) {
    press(keyF5, shift | function);
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyF5, 512 + 131072}));
}

TEST_F(ShortcutRecorderTest, EveryModifierCounts) {
    for (const auto& [flag, modifier] : {std::pair(control, 4096), {option, 2048}, {command, 256}}) {
        recorder.begin();
        EXPECT_TRUE(press(keyP, flag));
        system.answer(false);
        recorder.keyUp();
        EXPECT_EQ(stored(), (Shortcut{keyP, modifier}));
    }
}

TEST_F(ShortcutRecorderTest, AKeyThatShortcutsCannotNameIsRefusedWithABeep) {
    EXPECT_TRUE(press(std::nullopt, control));
    EXPECT_EQ(keyboard.beeps, 1);
    EXPECT_TRUE(recorder.isRecording());
}

TEST_F(ShortcutRecorderTest, ACombinationOfTheMainMenuIsRefused) {
    press(keyW, control);
    EXPECT_THAT(alerts,
                ElementsAre(ShortcutAlert{controlW, "keyboard_shortcut_used_by_menu_item", {}, false}));
    EXPECT_THAT(system.questions, IsEmpty());
    recorder.forceUse();
    EXPECT_EQ(stored(), defaultShortcut) << "there is no way to have it all the same";
}

TEST_F(ShortcutRecorderTest, CombinationsOfTheMainMenuAreThoseOfTheKeysLabels) {
    // As a French keyboard has them.
    keyboard.labels = {{keyW, "Z"}, {keyZ, "W"}};
    press(keyZ, control);
    EXPECT_THAT(alerts,
                ElementsAre(ShortcutAlert{{keyZ, 4096}, "keyboard_shortcut_used_by_menu_item", {}, false}));
    recorder.begin();
    press(keyW, control);
    EXPECT_THAT(alerts, SizeIs(1));
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyW, 4096}));
}

TEST_F(ShortcutRecorderTest, OnAKeyboardOfAnotherScriptTheUSLabelCounts) {
    keyboard.labels = {{keyW, "Ц"}};
    press(keyW, control);
    EXPECT_THAT(alerts, SizeIs(1));
}

TEST_F(ShortcutRecorderTest, KeysWithoutALabelHaveTheirNameInTheMainMenu) {
    press(keyPageUp, control);
    EXPECT_THAT(alerts, ElementsAre(ShortcutAlert{
                            {keyPageUp, 4096}, "keyboard_shortcut_used_by_menu_item", {}, false}));
    recorder.begin();
    press(keyPageUp, control | shift);
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyPageUp, 4096 + 512})) << "other modifiers, another combination";
}

TEST_F(ShortcutRecorderTest, TheMainMenuIsAskedBeforeWhatIsDisallowed) {
    recorder.end();
    ShortcutRecorder other{{shortcuts, keyboard, system}, name, {{"F5", control | option}}};
    std::vector<std::string_view> messages;
    other.onAlert = [&](const auto& alert) { messages.push_back(alert.message); };
    other.begin();
    other.keyDown({keyF5, control | option});
    EXPECT_THAT(messages, ElementsAre("keyboard_shortcut_used_by_menu_item"));
}

TEST_F(ShortcutRecorderTest, CombinationsThatNeverReachAProgramAreDisallowed) {
    for (const auto key : {keyF5, keyF9, keyDelete, keyForwardDelete}) {
        alerts.clear();
        recorder.begin();
        press(key, control | option);
        EXPECT_THAT(alerts, ElementsAre(ShortcutAlert{
                                {key, 4096 + 2048}, "keyboard_shortcut_disallowed", {}, false}));
        recorder.forceUse();
    }
    EXPECT_EQ(stored(), defaultShortcut);
    EXPECT_THAT(system.questions, IsEmpty());
    recorder.begin();
    press(keyF13, control | option);
    system.answer(false);
    EXPECT_EQ(stored(), (Shortcut{keyF13, 4096 + 2048})) << "no console has this key";
}

TEST_F(ShortcutRecorderTest, ATakenCombinationIsRefusedButMayBeForced) {
    press(keyP, control);
    system.answer(true);
    EXPECT_THAT(
        alerts,
        ElementsAre(ShortcutAlert{
            {keyP, 4096}, "keyboard_shortcut_used_by_system", "keyboard_shortcuts_can_be_changed", true}));
    EXPECT_EQ(stored(), defaultShortcut);
    EXPECT_FALSE(recorder.isRecording());
    recorder.keyUp();
    EXPECT_EQ(registered(), defaultShortcut) << "the shortcut acts again while the alert is shown";
    recorder.forceUse();
    EXPECT_EQ(stored(), (Shortcut{keyP, 4096}));
    EXPECT_EQ(registered(), (Shortcut{keyP, 4096}));
    recorder.forceUse();
    EXPECT_THAT(service.registrations, SizeIs(1));
}

TEST_F(ShortcutRecorderTest, AForcedCombinationThatTheSystemRefusesIsSaidToBeSoAndTheDefaultHelps) {
    EXPECT_FALSE(recorder.isRefused());
    press(keyF9, control | shift);
    system.answer(true);
    recorder.keyUp();
    service.status = -9878;
    recorder.forceUse();
    EXPECT_EQ(stored(), controlShiftF9);
    EXPECT_TRUE(recorder.isRefused());
    service.status = 0;
    changes = 0;
    recorder.useDefault();
    EXPECT_EQ(stored(), defaultShortcut);
    EXPECT_FALSE(recorder.isRefused());
    EXPECT_EQ(changes, 1);
}

TEST_F(ShortcutRecorderTest, ARefusalAfterTheKeysAreLetGoIsTold) {
    press(keyF9, control | shift);
    service.status = -9878;
    system.answer(false);
    EXPECT_FALSE(recorder.isRefused()) << "it has not been asked for yet";
    changes = 0;
    recorder.keyUp();
    EXPECT_TRUE(recorder.isRefused());
    EXPECT_EQ(changes, 1);
    recorder.clear();
    EXPECT_FALSE(recorder.isRefused());
}

TEST_F(ShortcutRecorderTest, RefusalIsForgottenWhenRecordingBeginsAgain) {
    press(keyP, control);
    system.answer(true);
    recorder.begin();
    recorder.forceUse();
    EXPECT_EQ(stored(), defaultShortcut);
}

TEST_F(ShortcutRecorderTest, ThePresentShortcutCanBeRecordedAgain) {
    press(keyH, control | option | command);
    EXPECT_THAT(service.registrations, IsEmpty()) << "this program holds nothing that would be found taken";
    system.answer(false);
    recorder.keyUp();
    EXPECT_EQ(stored(), defaultShortcut);
    EXPECT_EQ(registered(), defaultShortcut);
    EXPECT_THAT(service.registrations, SizeIs(1));
}

TEST_F(ShortcutRecorderTest, ThePresentShortcutThatAnotherProgramHoldsIsSaidToBeTaken) {
    press(keyH, control | option | command);
    system.answer(true);
    EXPECT_THAT(alerts, ElementsAre(ShortcutAlert{defaultShortcut, "keyboard_shortcut_used_by_system",
                                                  "keyboard_shortcuts_can_be_changed", true}));
    EXPECT_EQ(stored(), defaultShortcut);
}

TEST_F(ShortcutRecorderTest, NoShortcutActsWhileRecording) {
    EXPECT_THAT(service.registrations, IsEmpty());
    recorder.end();
    EXPECT_EQ(registered(), defaultShortcut);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ShortcutRecorderTest, TheKeysJustRecordedDoNotCountAsPressed) {
    press(keyP, control);
    system.answer(false);
    EXPECT_THAT(service.registrations, IsEmpty()) << "the keys are still down and may repeat";
    recorder.end();
    EXPECT_THAT(service.registrations, IsEmpty()) << "losing the focus lets go of no key";
    recorder.keyUp();
    EXPECT_EQ(registered(), (Shortcut{keyP, 4096}));
}

TEST_F(ShortcutRecorderTest, KeysLetGoBeforeTheAnswerAreNotWaitedFor) {
    press(keyP, control);
    recorder.keyUp();
    system.answer(false);
    EXPECT_EQ(registered(), (Shortcut{keyP, 4096}));
}

TEST_F(ShortcutRecorderTest, AnAnswerForAnEarlierCombinationIsIgnored) {
    press(keyP, control);
    press(keyF9, control | shift);
    system.questions.at(0).answer(true);
    EXPECT_THAT(alerts, IsEmpty());
    system.questions.at(1).answer(false);
    EXPECT_EQ(stored(), controlShiftF9);
}

TEST_F(ShortcutRecorderTest, AnAnswerAfterTheEndChangesNothing) {
    press(keyP, control);
    recorder.keyUp();
    recorder.end();
    system.answer(false);
    EXPECT_EQ(stored(), defaultShortcut);
}

TEST_F(ShortcutRecorderTest, AnAnswerAfterTheRecorderIsGoneChangesNothing) {
    {
        ShortcutRecorder other{{shortcuts, keyboard, system}, name, {}};
        recorder.end();
        other.begin();
        other.keyDown({keyP, control});
        other.keyUp();
    }
    system.answer(false);
    EXPECT_EQ(stored(), defaultShortcut);
    EXPECT_EQ(registered(), defaultShortcut);
}

TEST_F(ShortcutRecorderTest, KeysGoTheirWayWhenNothingIsRecorded) {
    recorder.end();
    EXPECT_FALSE(press(keyP, control));
    EXPECT_FALSE(press(keyDelete));
    EXPECT_EQ(stored(), defaultShortcut);
}

TEST_F(ShortcutRecorderTest, DescribesAsTheDesktopWritesItAndByTheLayout) {
    EXPECT_EQ(recorder.description(), "Ctrl+Alt+Super+H");
    keyboard.labels[keyH] = "Р";
    EXPECT_EQ(recorder.description(), "Ctrl+Alt+Super+Р");
    keyboard.style = {"Meta", true};
    EXPECT_EQ(recorder.description(), "Meta+Ctrl+Alt+Р");
    shortcuts.setShortcut(controlShiftF9, name);
    EXPECT_EQ(recorder.description(), "Ctrl+Shift+F9");
}

TEST_F(ShortcutRecorderTest, AChangeMadeElsewhereIsTold) {
    recorder.end();
    changes = 0;
    shortcuts.setShortcut(controlShiftF9, name);
    EXPECT_EQ(changes, 1);
    shortcuts.setShortcut(controlShiftF9, shortcuts.name("another"));
    EXPECT_EQ(changes, 1);
}

} // namespace
