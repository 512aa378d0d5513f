#include "platform/linux/system/XdgUserFolders.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace {

using LinuxPlatform::XdgUserFolders;

/// The system library keeps the home folder for as long as the process lives.
const TestSupport::TemporaryFolder homeFolder;

class XdgUserFoldersTest : public testing::Test {
protected:
    void SetUp() override {
        setenv("HOME", home().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (home() + "/.config").c_str(), 1);
        setenv("XDG_CACHE_HOME", (home() + "/.cache").c_str(), 1);
        unsetenv("XDG_RUNTIME_DIR");
        std::filesystem::remove_all(home() + "/.config");
    }

    static std::string home() { return homeFolder.path().string(); }

    static void writeUserDirs(const std::string& text) {
        std::filesystem::create_directories(home() + "/.config");
        std::ofstream(home() + "/.config/user-dirs.dirs") << text;
    }

    XdgUserFolders folders;
};

TEST_F(XdgUserFoldersTest, WithoutSettingsTheDesktopIsBelowTheHomeFolder) {
    EXPECT_EQ(folders.home(), home());
    EXPECT_EQ(folders.desktop(), home() + "/Desktop");
    EXPECT_EQ(folders.pictures(), std::nullopt);
}

TEST_F(XdgUserFoldersTest, SettingsNameTheFolders) {
    writeUserDirs("XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\nXDG_PICTURES_DIR=\"/srv/pictures\"\n");
    EXPECT_EQ(folders.desktop(), home() + "/Schreibtisch");
    EXPECT_EQ(folders.pictures(), "/srv/pictures");
}

TEST_F(XdgUserFoldersTest, ASettingThatNamesTheHomeFolderMeansNone) {
    writeUserDirs("XDG_DESKTOP_DIR=\"$HOME/\"\nXDG_PICTURES_DIR=\"$HOME\"\n");
    EXPECT_EQ(folders.desktop(), std::nullopt);
    EXPECT_EQ(folders.pictures(), std::nullopt);
}

TEST_F(XdgUserFoldersTest, TheHomeFolderIsKnownByItsNameOnly) {
    writeUserDirs("XDG_DESKTOP_DIR=\"$HOME/./\"\n");
    EXPECT_EQ(folders.desktop(), std::nullopt);
    // Where it leads is not looked up, since that may take for ever.
    std::filesystem::create_directory_symlink(home(), home() + "/Link");
    writeUserDirs("XDG_DESKTOP_DIR=\"$HOME/Link\"\n");
    EXPECT_EQ(folders.desktop(), home() + "/Link");
}

TEST_F(XdgUserFoldersTest, AChangeCountsAtOnce) {
    writeUserDirs("XDG_DESKTOP_DIR=\"$HOME/One\"\n");
    EXPECT_EQ(folders.desktop(), home() + "/One");
    writeUserDirs("XDG_DESKTOP_DIR=\"$HOME/Two\"\n");
    EXPECT_EQ(folders.desktop(), home() + "/Two");
}

TEST_F(XdgUserFoldersTest, TemporaryFilesLieInTheRuntimeFolderWhereThereIsOne) {
    const auto runtime = home() + "/run";
    std::filesystem::create_directory(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
    EXPECT_EQ(folders.temporary(), runtime);
}

TEST_F(XdgUserFoldersTest, ARuntimeFolderThatOthersMayEnterIsNotUsed) {
    const auto runtime = home() + "/open";
    std::filesystem::create_directory(runtime);
    setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
    for (const auto mode : {0701, 0704, 0710, 0720, 0777}) {
        std::filesystem::permissions(runtime, std::filesystem::perms(mode));
        EXPECT_EQ(folders.temporary(), home() + "/.cache/curtain") << std::oct << mode;
    }
}

TEST_F(XdgUserFoldersTest, NorIsOneOfAnotherUserOrNone) {
    const auto file = home() + "/file";
    std::ofstream(file) << "";
    auto others = std::string("/root");
    if (geteuid() == 0) {
        others = home() + "/others";
        std::filesystem::create_directory(others);
        std::filesystem::permissions(others, std::filesystem::perms::owner_all);
        ASSERT_EQ(chown(others.c_str(), 1, 1), 0);
    }
    for (const auto& runtime : {others, std::string("relative"), file, home() + "/missing"}) {
        setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
        EXPECT_EQ(folders.temporary(), home() + "/.cache/curtain") << runtime;
    }
}

TEST_F(XdgUserFoldersTest, OtherwiseInAFolderThatNobodyElseMayEnter) {
    const auto folder = folders.temporary();
    EXPECT_EQ(folder, home() + "/.cache/curtain");
    EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
}

} // namespace
