#include "platform/linux/session/AutostartEntry.h"

#include "tests/platform/system/ForkedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gio/gdesktopappinfo.h>
#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <vector>

namespace {

namespace fs = std::filesystem;

using LinuxPlatform::AutostartEntry;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;
using TestSupport::readFile;
using TestSupport::runAsOrdinaryUser;
using TestSupport::TemporaryFolder;
using TestSupport::writeFile;

struct AutostartEntryTest : testing::Test {
    TemporaryFolder config;
    fs::path path = config.path() / "autostart/com.curtain.Curtain.desktop";

    AutostartEntry entry(const fs::path& program = "/usr/bin/curtain") const {
        return {config.path(), program};
    }

    /// What a session would start, as the library that sessions use reads it.
    std::vector<std::string> command() const {
        const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                          &g_key_file_unref);
        EXPECT_TRUE(g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr));
        const std::unique_ptr<char, decltype(&g_free)> line(
            g_key_file_get_string(file.get(), "Desktop Entry", "Exec", nullptr), &g_free);
        int count = 0;
        char** arguments = nullptr;
        EXPECT_TRUE(g_shell_parse_argv(line.get(), &count, &arguments, nullptr)) << line.get();
        const std::unique_ptr<char*, decltype(&g_strfreev)> owner(arguments, &g_strfreev);
        return {arguments, arguments + count};
    }
};

TEST_F(AutostartEntryTest, RegisteringWritesAnEntryThatSessionsStart) {
    EXPECT_EQ(entry().registerItem(), std::nullopt);
    EXPECT_THAT(command(), ElementsAre("/usr/bin/curtain"));
    const auto text = readFile(path);
    EXPECT_TRUE(text.starts_with("[Desktop Entry]\nType=Application\nName=Curtain\n")) << text;
    EXPECT_THAT(text, HasSubstr("\nTerminal=false\n"));
    EXPECT_THAT(text, HasSubstr("\nStartupNotify=false\n"));
    EXPECT_THAT(text, HasSubstr("\nTryExec=/usr/bin/curtain\n"));
}

TEST_F(AutostartEntryTest, UnregisteringRemovesTheEntryAndNothingElse) {
    writeFile(config.path() / "autostart/other.desktop", "[Desktop Entry]\n");
    ASSERT_EQ(entry().registerItem(), std::nullopt);
    EXPECT_EQ(entry().unregisterItem(), std::nullopt);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(std::distance(fs::directory_iterator(config.path() / "autostart"), fs::directory_iterator()),
              1);
}

TEST_F(AutostartEntryTest, UnregisteringWhatIsNotThereIsNoError) {
    EXPECT_EQ(entry().unregisterItem(), std::nullopt);
    EXPECT_FALSE(fs::exists(config.path() / "autostart"));
}

TEST_F(AutostartEntryTest, RegisteringAgainTakesTheProgramsPlaceAnew) {
    ASSERT_EQ(entry("/old/curtain").registerItem(), std::nullopt);
    ASSERT_EQ(entry().registerItem(), std::nullopt);
    EXPECT_THAT(command(), ElementsAre("/usr/bin/curtain"));
}

TEST_F(AutostartEntryTest, APathIsQuotedAsDesktopEntriesWantIt) {
    // A percent sign begins a field code unless it is doubled, which the session undoes.
    for (const auto* const program :
         {"/opt/My Apps/curtain", "/opt/a\"b/curtain", "/opt/$HOME/`x`/curtain", "/opt/back\\slash/curtain",
          "/opt/it's/curtain", "/opt/Ünïcödé/curtain"}) {
        ASSERT_EQ(entry(program).registerItem(), std::nullopt);
        EXPECT_THAT(command(), ElementsAre(program));
    }
    ASSERT_EQ(entry("/opt/100%/curtain").registerItem(), std::nullopt);
    EXPECT_THAT(command(), ElementsAre("/opt/100%%/curtain"));
}

TEST_F(AutostartEntryTest, AnEntryMadeForASessionIsAccepted) {
    const auto program = config.path() / "it is $here/curtain";
    writeFile(program, "#!/bin/sh\n");
    fs::permissions(program, fs::perms::owner_all);
    ASSERT_EQ(entry(program).registerItem(), std::nullopt);
    const std::unique_ptr<GDesktopAppInfo, decltype(&g_object_unref)> info(
        g_desktop_app_info_new_from_filename(path.c_str()), &g_object_unref);
    EXPECT_NE(info, nullptr);
    fs::remove(program);
    const std::unique_ptr<GDesktopAppInfo, decltype(&g_object_unref)> gone(
        g_desktop_app_info_new_from_filename(path.c_str()), &g_object_unref);
    EXPECT_EQ(gone, nullptr) << "a program that was removed is not to be started";
}

TEST_F(AutostartEntryTest, APathWithALineBreakIsAnError) {
    EXPECT_THAT(entry("/opt/a\nb/curtain").registerItem(), Optional(HasSubstr("/opt/a")));
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(AutostartEntryTest, WhatTheUserSwitchedOffInTheDesktopsToolStaysOff) {
    for (const auto* const key :
         {"Hidden=true", "X-GNOME-Autostart-enabled=false", "X-MATE-Autostart-enabled=false"}) {
        const auto text = std::string("[Desktop Entry]\nType=Application\nExec=curtain\n") + key + "\n";
        writeFile(path, text);
        EXPECT_THAT(entry().registerItem(), Optional(HasSubstr("switched off"))) << key;
        EXPECT_EQ(readFile(path), text);
        EXPECT_EQ(entry().isSwitchedOff(), true) << key;
        EXPECT_EQ(entry().unregisterItem(), std::nullopt);
        EXPECT_FALSE(fs::exists(path));
        EXPECT_EQ(entry().isSwitchedOff(), false);
        EXPECT_EQ(entry().registerItem(), std::nullopt);
        EXPECT_EQ(entry().isSwitchedOff(), false);
    }
}

TEST_F(AutostartEntryTest, ADriveThatDoesNotAnswerKeepsNobodyWaitingAndNothingIsWritten) {
    const std::string text = "[Desktop Entry]\nType=Application\nExec=curtain\nHidden=true\n";
    writeFile(path, text);
    std::promise<void> answer;
    AutostartEntry remote(
        config.path(), "/usr/bin/curtain",
        LinuxPlatform::BoundedReader(
            [answered = answer.get_future().share()](const fs::path& entryPath) {
                answered.wait();
                return LinuxPlatform::readSettingsFile(entryPath);
            },
            LinuxPlatform::LocalDrives([](const fs::path&) { return false; }, std::chrono::seconds(20)),
            std::chrono::milliseconds(100)));
    EXPECT_EQ(remote.isSwitchedOff(), std::nullopt);
    EXPECT_THAT(remote.registerItem(), Optional(HasSubstr("timed out")));
    EXPECT_EQ(readFile(path), text);
    answer.set_value();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::optional<bool> isOff;
    // Each waits for a tenth of a second at most.
    while (!(isOff = remote.isSwitchedOff()) && std::chrono::steady_clock::now() < deadline) {
    }
    EXPECT_EQ(isOff, true);
}

TEST_F(AutostartEntryTest, WhatIsRegisteredAnewIsSwitchedOnOrStaysAsItWas) {
    const std::string text = "[Desktop Entry]\nType=Application\nExec=curtain\nHidden=true\n";
    writeFile(path, text);
    EXPECT_NE(entry("/opt/a\nb/curtain").registerAnew(), std::nullopt);
    EXPECT_EQ(readFile(path), text) << "what cannot be written takes nothing away";
    EXPECT_EQ(entry().registerAnew(), std::nullopt);
    EXPECT_EQ(entry().isSwitchedOff(), false);
    EXPECT_THAT(command(), ElementsAre("/usr/bin/curtain"));
}

TEST_F(AutostartEntryTest, ABrokenEntryIsReplaced) {
    for (const auto* const text : {"", "\xFF\xFE garbage", "[Desktop Entry]\nHidden=perhaps\n"}) {
        writeFile(path, text);
        EXPECT_EQ(entry().registerItem(), std::nullopt);
        EXPECT_THAT(command(), ElementsAre("/usr/bin/curtain"));
    }
    fs::remove(path);
    fs::create_symlink("/nowhere/at/all", path);
    EXPECT_EQ(entry().registerItem(), std::nullopt);
    EXPECT_THAT(command(), ElementsAre("/usr/bin/curtain"));
}

TEST_F(AutostartEntryTest, AFolderThatCannotBeWrittenIsAnErrorInWords) {
    runAsOrdinaryUser(config.path(), [&] {
        fs::permissions(config.path(), fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_THAT(entry().registerItem(), Optional(HasSubstr("Permission denied")));
        fs::permissions(config.path(), fs::perms::owner_all);
        ASSERT_EQ(entry().registerItem(), std::nullopt);
        fs::permissions(path.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_THAT(entry().registerItem(), Optional(HasSubstr("Permission denied")));
        EXPECT_THAT(entry().unregisterItem(), Optional(HasSubstr("Permission denied")));
        EXPECT_TRUE(fs::exists(path));
        fs::permissions(path.parent_path(), fs::perms::owner_all);
    });
}

TEST_F(AutostartEntryTest, AFileInThePlaceOfTheFolderIsAnError) {
    writeFile(config.path() / "autostart", "");
    EXPECT_NE(entry().registerItem(), std::nullopt);
}

} // namespace
