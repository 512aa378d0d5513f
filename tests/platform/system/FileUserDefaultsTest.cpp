#include "platform/linux/system/FileUserDefaults.h"

#include "core/PreferencesStore.h"
#include "platform/linux/system/FileReplacement.h"
#include "tests/platform/system/ForkedChild.h"
#include "tests/platform/system/UserDefaultsContract.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

using LinuxPlatform::FileUserDefaults;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using TestSupport::ForkedChild;
using TestSupport::readFile;
using TestSupport::RecordingLog;
using TestSupport::runAsOrdinaryUser;
using TestSupport::TemporaryFolder;
using TestSupport::writeFile;

constexpr std::uintmax_t largestValue = 64U << 20U;

struct FileWorld {
    TemporaryFolder parent;
    fs::path folder = parent.path() / "curtain";
    RecordingLog log;
    FileUserDefaults defaults{folder, log};

    void put(const std::string& key, const std::string& bytes) const { writeFile(folder / key, bytes); }
    void putUnreadable(const std::string& key) const {
        fs::create_directories(folder);
        fs::remove(folder / key);
        ASSERT_EQ(mkfifo((folder / key).c_str(), 0600), 0);
    }
    std::string stored(const std::string& key) const { return readFile(folder / key); }

    std::vector<std::string> copies(const std::string& key) const {
        std::vector<std::string> texts;
        for (int number = 1;; ++number) {
            const auto copy = folder / (key + ".damaged-" + std::to_string(number));
            if (!fs::exists(copy)) {
                return texts;
            }
            texts.push_back(fs::is_regular_file(copy) ? readFile(copy) : "unreadable");
        }
    }

    std::set<std::string> names() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
};

struct FileUserDefaultsTest : testing::Test, FileWorld {};

mode_t modeOf(const fs::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

/// Writing fails beyond a size, as on a full disk, or ends the process there.
void limitFileSize(rlim_t size, bool endsTheProcess) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    std::signal(SIGXFSZ, endsTheProcess ? SIG_DFL : SIG_IGN);
    const rlimit limit{size, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
}

/// The id of a process that has ended.
std::string endedProcess() {
    const auto process = fork();
    if (process == 0) {
        _exit(0);
    }
    waitpid(process, nullptr, 0);
    return std::to_string(process);
}

TEST_F(FileUserDefaultsTest, FolderAndFilesAreForTheirUserAlone) {
    const auto formerMask = umask(0);
    defaults.setString("key", "value");
    umask(formerMask);
    EXPECT_EQ(modeOf(folder), 0700U);
    EXPECT_EQ(modeOf(folder / "key"), 0600U);
    EXPECT_THAT(names(), ElementsAre("key"));
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(FileUserDefaultsTest, FoldersOnTheWayAreForTheirUserAlone) {
    const auto formerMask = umask(0);
    FileUserDefaults(parent.path() / "home/config/curtain/", log).setString("key", "value");
    umask(formerMask);
    EXPECT_EQ(modeOf(parent.path() / "home"), 0700U);
    EXPECT_EQ(modeOf(parent.path() / "home/config"), 0700U);
    EXPECT_EQ(readFile(parent.path() / "home/config/curtain/key"), "value");
}

TEST_F(FileUserDefaultsTest, AFileThatOthersCouldReadIsClosedToThemWithTheNextWrite) {
    put("key", "value");
    fs::permissions(folder / "key", fs::perms(0644));
    defaults.setString("key", "secret");
    EXPECT_EQ(modeOf(folder / "key"), 0600U);
}

TEST_F(FileUserDefaultsTest, ReadingMakesNoFolder) {
    defaults.contains("key");
    defaults.data("key");
    defaults.keepCopy("key");
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(FileUserDefaultsTest, ValuesLastBeyondTheProcess) {
    ForkedChild child([&] { defaults.setString("key", "value"); });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(defaults.string("key"), "value");
}

TEST_F(FileUserDefaultsTest, KeysThatAreNoPlainFileNamesStoreNothing) {
    writeFile(parent.path() / "outside", "outside");
    fs::create_directories(folder);
    for (const auto& key : {std::string(), std::string("."), std::string(".."), std::string(".x"),
                            std::string("a/b"), std::string("../outside"), std::string("/"),
                            (parent.path() / "outside").string(), std::string("a\0b", 3)}) {
        defaults.setString(key, "value");
        EXPECT_FALSE(defaults.contains(key)) << key;
        EXPECT_EQ(defaults.data(key), std::nullopt) << key;
        defaults.keepCopy(key);
        defaults.remove(key);
    }
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_EQ(readFile(parent.path() / "outside"), "outside");
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(FileUserDefaultsTest, AValueOfTenMegabytesIsStored) {
    std::string value;
    value.assign(10'000'000, 'x');
    defaults.setData("key", value);
    EXPECT_EQ(defaults.data("key"), value);
    EXPECT_EQ(fs::file_size(folder / "key"), value.size());
}

TEST_F(FileUserDefaultsTest, AFileBeyondEverySizeOfSettingsIsUnreadable) {
    put("key", "");
    fs::resize_file(folder / "key", largestValue + 1);
    EXPECT_TRUE(defaults.contains("key"));
    EXPECT_EQ(defaults.data("key"), std::nullopt);
    defaults.keepCopy("key");
    defaults.setString("key", "new");
    EXPECT_EQ(fs::file_size(folder / "key.damaged-1"), largestValue + 1);
    EXPECT_EQ(stored("key"), "new");
}

TEST_F(FileUserDefaultsTest, ALinkToAFileElsewhereStays) {
    writeFile(parent.path() / "dotfiles/first", "old");
    fs::create_directories(folder);
    fs::create_symlink("../second", parent.path() / "dotfiles/link");
    fs::rename(parent.path() / "dotfiles/first", parent.path() / "second");
    fs::create_symlink("../dotfiles/link", folder / "key");
    EXPECT_EQ(defaults.string("key"), "old");
    defaults.setString("key", "new");
    EXPECT_EQ(defaults.string("key"), "new");
    EXPECT_EQ(fs::read_symlink(folder / "key"), "../dotfiles/link");
    EXPECT_TRUE(fs::is_symlink(parent.path() / "dotfiles/link"));
    EXPECT_EQ(readFile(parent.path() / "second"), "new");
    EXPECT_THAT(names(), ElementsAre("key"));
}

TEST_F(FileUserDefaultsTest, RemovingALinkLeavesItsTarget) {
    writeFile(parent.path() / "target", "value");
    fs::create_directories(folder);
    fs::create_symlink(parent.path() / "target", folder / "key");
    defaults.remove("key");
    EXPECT_FALSE(defaults.contains("key"));
    EXPECT_EQ(readFile(parent.path() / "target"), "value");
}

TEST_F(FileUserDefaultsTest, LinksThatLeadNowhereAreUnreadableAndGiveWay) {
    fs::create_directories(folder);
    for (const auto* target : {"missing", "missing/deeper", "key"}) {
        fs::remove(folder / "key");
        fs::create_symlink(target, folder / "key");
        FileUserDefaults fresh(folder, log);
        EXPECT_TRUE(fresh.contains("key"));
        EXPECT_EQ(fresh.data("key"), std::nullopt);
        fresh.setString("key", "new");
        EXPECT_EQ(fresh.string("key"), "new") << target;
        EXPECT_EQ(FileUserDefaults(folder, log).string("key"), "new") << target;
    }
    EXPECT_THAT(log.lines, SizeIs(3));
    EXPECT_THAT(log.lines, testing::Each(HasSubstr("cannot be read")));
}

TEST_F(FileUserDefaultsTest, ALinkThatLeadsNowhereIsKeptAsItIs) {
    fs::create_directories(folder);
    fs::create_symlink("missing", folder / "key");
    defaults.keepCopy("key");
    defaults.setString("key", "new");
    EXPECT_EQ(fs::read_symlink(folder / "key.damaged-1"), "missing");
    EXPECT_EQ(stored("key"), "new");
}

TEST_F(FileUserDefaultsTest, AFolderInThePlaceOfAValueIsUnreadableAndCanBeKept) {
    put("key/inside", "something");
    EXPECT_TRUE(defaults.contains("key"));
    EXPECT_EQ(defaults.data("key"), std::nullopt);
    defaults.keepCopy("key");
    defaults.setString("key", "new");
    EXPECT_EQ(stored("key"), "new");
    EXPECT_EQ(stored("key.damaged-1/inside"), "something");
}

TEST_F(FileUserDefaultsTest, AFolderInThePlaceOfAValueLosesNothing) {
    put("key/inside", "something");
    defaults.setString("key", "new");
    defaults.setString("key", "newer");
    EXPECT_EQ(defaults.string("key"), "newer");
    EXPECT_EQ(stored("key/inside"), "something");
    EXPECT_THAT(log.lines, ElementsAre(HasSubstr("Is a directory")));
    EXPECT_THAT(names(), ElementsAre("key"));
}

TEST_F(FileUserDefaultsTest, AValueThatCannotBeSavedKeepsNoOtherFromBeingSaved) {
    put("key/inside", "something");
    defaults.setString("key", "new");
    defaults.setString("other", "value");
    EXPECT_EQ(stored("other"), "value");
    EXPECT_THAT(log.lines, SizeIs(1));
}

TEST_F(FileUserDefaultsTest, WhatCannotBeSavedLastsAndIsSavedLater) {
    writeFile(folder, "a file in the way");
    defaults.setString("key", "value");
    defaults.setBool("other", true);
    defaults.setString("gone", "value");
    defaults.remove("gone");
    EXPECT_EQ(defaults.string("key"), "value");
    EXPECT_TRUE(defaults.contains("other"));
    EXPECT_FALSE(defaults.contains("gone"));
    EXPECT_THAT(log.lines, ElementsAre("Curtain: the settings cannot be saved in " + folder.string() +
                                       " (Not a directory); changes last until Curtain ends"));
    EXPECT_EQ(readFile(folder), "a file in the way");

    fs::remove(folder);
    defaults.setString("third", "value");
    EXPECT_THAT(names(), ElementsAre("key", "other", "third"));
    EXPECT_EQ(stored("key"), "value");
    EXPECT_EQ(stored("other"), "true");
}

TEST_F(FileUserDefaultsTest, AParentThatIsNoFolderLosesNothing) {
    writeFile(parent.path() / "file", "");
    FileUserDefaults elsewhere(parent.path() / "file/deeper/curtain", log);
    elsewhere.keepCopy("key");
    elsewhere.setString("key", "value");
    elsewhere.remove("other");
    EXPECT_EQ(elsewhere.string("key"), "value");
    EXPECT_THAT(log.lines, ElementsAre(HasSubstr("Not a directory")));
}

TEST_F(FileUserDefaultsTest, AFolderThatMayNotBeWrittenLosesNothing) {
    put("key", "old");
    put("removed", "old");
    runAsOrdinaryUser(parent.path(), [&] {
        fs::permissions(folder, fs::perms(0500));
        defaults.setString("key", "new");
        defaults.remove("removed");
        EXPECT_EQ(defaults.string("key"), "new");
        EXPECT_FALSE(defaults.contains("removed"));
        EXPECT_EQ(stored("key"), "old");
        EXPECT_EQ(stored("removed"), "old");
        EXPECT_THAT(log.lines, ElementsAre(HasSubstr("Permission denied")));

        fs::permissions(folder, fs::perms(0700));
        defaults.setString("other", "value");
        EXPECT_THAT(names(), ElementsAre("key", "other"));
        EXPECT_EQ(stored("key"), "new");
        EXPECT_THAT(log.lines, SizeIs(1));
    });
}

TEST_F(FileUserDefaultsTest, AFolderThatCannotBeListedStillSaves) {
    put("key", "old");
    put("removed", "old");
    runAsOrdinaryUser(parent.path(), [&] {
        fs::permissions(folder, fs::perms(0300));
        defaults.setString("key", "new");
        defaults.remove("removed");
        EXPECT_EQ(stored("key"), "new");
        EXPECT_FALSE(fs::exists(folder / "removed"));
        EXPECT_THAT(log.lines, IsEmpty());
        fs::permissions(folder, fs::perms(0700));
    });
}

TEST_F(FileUserDefaultsTest, AFullDiskKeepsTheOldValueAndNoRemains) {
    const std::string large(100'000, 'x');
    put("key", "old");
    ForkedChild child([&] {
        limitFileSize(50'000, false);
        defaults.setString("key", large);
        EXPECT_EQ(defaults.string("key"), large);
        EXPECT_EQ(stored("key"), "old");
        EXPECT_THAT(names(), ElementsAre("key"));
        EXPECT_THAT(log.lines, ElementsAre(HasSubstr("File too large")));

        limitFileSize(RLIM_INFINITY, false);
        defaults.setString("other", "value");
        EXPECT_EQ(stored("key"), large);
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST_F(FileUserDefaultsTest, SettingsOfALaterVersionOutliveAFullDisk) {
    const std::string key = "curtain.preferences.v1";
    const auto document = R"({"hasOnboarded": true, "invented": ")" + std::string(100'000, 'x') + "\"}";
    put(key, document);
    ForkedChild child([&] {
        limitFileSize(100, false);
        CurtainCore::PreferencesStore store(defaults);
        auto preferences = store.load();
        preferences.showCameraPreview = false;
        store.save(preferences);
        EXPECT_EQ(stored(key), document);
        EXPECT_THAT(names(), ElementsAre(key));
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST_F(FileUserDefaultsTest, WithoutSpaceForACopyTheValueItselfIsKept) {
    const std::string large(100'000, 'x');
    put("key", large);
    ForkedChild child([&] {
        limitFileSize(50'000, false);
        defaults.keepCopy("key");
        defaults.setString("key", "new");
        EXPECT_THAT(copies("key"), ElementsAre(large));
        EXPECT_EQ(stored("key"), "new");
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST_F(FileUserDefaultsTest, AFileThatMayNotBeReadIsKeptAside) {
    put("key", "mine");
    runAsOrdinaryUser(parent.path(), [&] {
        fs::permissions(folder / "key", fs::perms::none);
        EXPECT_TRUE(defaults.contains("key"));
        EXPECT_EQ(defaults.data("key"), std::nullopt);
        defaults.keepCopy("key");
        defaults.setString("key", "new");
        EXPECT_EQ(defaults.string("key"), "new");
        fs::permissions(folder / "key.damaged-1", fs::perms(0600));
        EXPECT_THAT(copies("key"), ElementsAre("mine"));
    });
}

TEST_F(FileUserDefaultsTest, AFileThatMayNotBeReadAnyMoreIsWhatItWas) {
    put("key", "mine");
    runAsOrdinaryUser(parent.path(), [&] {
        EXPECT_EQ(defaults.string("key"), "mine");
        fs::permissions(folder / "key", fs::perms::none);
        EXPECT_EQ(defaults.string("key"), "mine");
        EXPECT_EQ(defaults.data("key"), "mine");
        EXPECT_TRUE(defaults.contains("key"));
        EXPECT_THAT(log.lines,
                    ElementsAre("Curtain: " + (folder / "key").string() +
                                " cannot be read (Permission denied); what was read before stays in "
                                "force"));

        fs::permissions(folder / "key", fs::perms(0600));
        put("key", "edited");
        EXPECT_EQ(defaults.string("key"), "edited") << "nothing is kept from one that can be read";
        fs::permissions(folder / "key", fs::perms::none);
        EXPECT_EQ(defaults.string("key"), "edited");
        EXPECT_THAT(log.lines, SizeIs(2)) << "that is another time";
    });
}

TEST_F(FileUserDefaultsTest, AFolderThatMayNotBeEnteredHidesNoValue) {
    put("key", "mine");
    runAsOrdinaryUser(parent.path(), [&] {
        EXPECT_EQ(defaults.string("key"), "mine");
        fs::permissions(folder, fs::perms::none);
        EXPECT_EQ(defaults.string("key"), "mine");
        EXPECT_TRUE(FileUserDefaults(folder, log).contains("key")) << "it cannot be told that there is none";
        EXPECT_EQ(FileUserDefaults(folder, log).string("key"), std::nullopt);
        fs::permissions(folder, fs::perms(0700));
    });
}

TEST_F(FileUserDefaultsTest, WithoutAFreeDescriptorAValueIsWhatItWas) {
    put("key", "mine");
    ForkedChild child([&] {
        EXPECT_EQ(defaults.string("key"), "mine");
        rlimit usual{};
        getrlimit(RLIMIT_NOFILE, &usual);
        const rlimit none{0, usual.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        EXPECT_EQ(defaults.string("key"), "mine");
        EXPECT_TRUE(defaults.contains("key"));
        defaults.setString("key", "new");
        EXPECT_EQ(defaults.string("key"), "new");
        setrlimit(RLIMIT_NOFILE, &usual);
        EXPECT_EQ(stored("key"), "mine") << "neither replaced nor moved away";
        EXPECT_THAT(log.lines,
                    ElementsAre(HasSubstr("Too many open files"), HasSubstr("Too many open files")));
        defaults.setString("other", "value");
        EXPECT_EQ(stored("key"), "new");
        EXPECT_THAT(copies("key"), ElementsAre("mine"));
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST_F(FileUserDefaultsTest, AValueThatWasWrittenIsWhatItWasToo) {
    runAsOrdinaryUser(parent.path(), [&] {
        defaults.setString("key", "written");
        defaults.setString("gone", "written");
        defaults.remove("gone");
        fs::permissions(folder, fs::perms::none);
        EXPECT_EQ(defaults.string("key"), "written");
        EXPECT_EQ(defaults.string("gone"), std::nullopt);
        fs::permissions(folder, fs::perms(0700));
    });
}

TEST_F(FileUserDefaultsTest, WhatIsGoneOrNoFileAnyMoreIsNotKept) {
    put("key", "mine");
    EXPECT_EQ(defaults.string("key"), "mine");
    fs::remove(folder / "key");
    EXPECT_EQ(defaults.string("key"), std::nullopt);
    EXPECT_FALSE(defaults.contains("key"));
    put("key", "mine");
    EXPECT_EQ(defaults.string("key"), "mine");
    putUnreadable("key");
    EXPECT_EQ(defaults.string("key"), std::nullopt);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(FileUserDefaultsTest, AWriteOverAFileThatCannotBeReadKeepsIt) {
    put("key", "mine");
    runAsOrdinaryUser(parent.path(), [&] {
        EXPECT_EQ(defaults.string("key"), "mine");
        put("key", "edited by hand");
        fs::permissions(folder / "key", fs::perms::none);
        EXPECT_EQ(defaults.string("key"), "mine");
        defaults.setString("key", "new");
        EXPECT_EQ(stored("key"), "new");
        fs::permissions(folder / "key.damaged-1", fs::perms(0600));
        EXPECT_THAT(copies("key"), ElementsAre("edited by hand"));
    });
}

bool becomesTrue(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

/// A drive that answers when the test lets it.
struct SlowDrive {
    std::mutex mutex;
    std::condition_variable changed;
    bool answers = true;
    int asked = 0;

    void setAnswers(bool answersNow) {
        const std::lock_guard lock(mutex);
        answers = answersNow;
        changed.notify_all();
    }

    int timesAsked() {
        const std::lock_guard lock(mutex);
        return asked;
    }

    void wait() {
        std::unique_lock lock(mutex);
        ++asked;
        changed.wait(lock, [this] { return answers; });
    }

    LinuxPlatform::FileReading read(const fs::path& path) {
        wait();
        return LinuxPlatform::readSettingsFile(path);
    }

    LinuxPlatform::SettingsOutcome change(const fs::path& folder,
                                          const LinuxPlatform::SettingsChanges& changes) {
        wait();
        return LinuxPlatform::changeSettings(folder, changes);
    }
};

LinuxPlatform::LocalDrives drivesThatAreAll(bool areLocal) {
    return LinuxPlatform::LocalDrives([areLocal](const fs::path&) { return areLocal; },
                                      std::chrono::seconds(20));
}

TEST_F(FileUserDefaultsTest, ADriveThatDoesNotAnswerIsNotWaitedForAgain) {
    const auto drive = std::make_shared<SlowDrive>();
    FileUserDefaults remote(
        folder, log,
        LinuxPlatform::BoundedReader([drive](const fs::path& path) { return drive->read(path); },
                                     drivesThatAreAll(false), std::chrono::milliseconds(100)));
    put("key", "mine");
    ASSERT_TRUE(becomesTrue([&] { return remote.string("key") == "mine"; }));
    drive->setAnswers(false);
    const auto asked = drive->timesAsked();
    for (int count = 0; count < 50; ++count) {
        EXPECT_EQ(remote.string("key"), "mine");
        EXPECT_TRUE(remote.contains("key"));
    }
    EXPECT_TRUE(becomesTrue([&] { return drive->timesAsked() > asked; }));
    EXPECT_EQ(drive->timesAsked(), asked + 1);
    EXPECT_THAT(log.lines, testing::Contains(HasSubstr("Connection timed out")));
    put("key", "edited");
    drive->setAnswers(true);
    EXPECT_TRUE(becomesTrue([&] { return remote.string("key") == "edited"; }));
}

struct SlowWritesTest : FileUserDefaultsTest {
    std::shared_ptr<SlowDrive> drive = std::make_shared<SlowDrive>();
    FileUserDefaults remote{
        folder, log, LinuxPlatform::BoundedReader(LinuxPlatform::readSettingsFile),
        LinuxPlatform::SettingsWriter(
            [drive = drive](const auto& where, const auto& changes) { return drive->change(where, changes); },
            drivesThatAreAll(false), std::chrono::milliseconds(100))};

    ~SlowWritesTest() override { drive->setAnswers(true); }
    SlowWritesTest() = default;
    SlowWritesTest(const SlowWritesTest&) = delete;
    SlowWritesTest& operator=(const SlowWritesTest&) = delete;
};

TEST_F(SlowWritesTest, ADriveThatDoesNotAnswerIsNotWaitedForAgain) {
    put("key", "old");
    drive->setAnswers(false);
    for (int count = 0; count < 50; ++count) {
        remote.setString("key", std::to_string(count));
        remote.setBool("other", true);
    }
    EXPECT_TRUE(becomesTrue([&] { return drive->timesAsked() > 0; }));
    EXPECT_EQ(drive->timesAsked(), 1);
    EXPECT_EQ(remote.string("key"), "49");
    EXPECT_EQ(stored("key"), "old");
    EXPECT_THAT(log.lines, ElementsAre("Curtain: the settings cannot be saved in " + folder.string() +
                                       " (Connection timed out); changes last until Curtain ends"));
}

TEST_F(SlowWritesTest, OnceItAnswersTheLatestValuesAreWritten) {
    drive->setAnswers(false);
    remote.setString("key", "first");
    remote.setString("key", "second");
    remote.setString("gone", "value");
    remote.remove("gone");
    drive->setAnswers(true);
    EXPECT_TRUE(becomesTrue([&] { return fs::exists(folder / "key") && stored("key") == "second"; }));
    EXPECT_TRUE(becomesTrue([&] {
        put("key", "edited");
        return remote.string("key") == "edited";
    }));
    EXPECT_THAT(names(), ElementsAre("key"));
}

TEST_F(SlowWritesTest, WhatIsToBeKeptIsKeptOnceBeforeItIsReplaced) {
    put("key", "damaged");
    drive->setAnswers(false);
    remote.keepCopy("key");
    EXPECT_EQ(remote.copyNow("key"), std::nullopt);
    remote.setString("key", "new");
    drive->setAnswers(true);
    EXPECT_TRUE(becomesTrue([&] { return stored("key") == "new"; }));
    remote.setString("key", "newer");
    EXPECT_TRUE(becomesTrue([&] { return stored("key") == "newer"; }));
    EXPECT_THAT(copies("key"), ElementsAre("damaged"));
}

TEST_F(FileUserDefaultsTest, ADriveOfThisComputerIsWaitedFor) {
    FileUserDefaults local(folder, log,
                           LinuxPlatform::BoundedReader(LinuxPlatform::readSettingsFile,
                                                        drivesThatAreAll(true), std::chrono::milliseconds(0)),
                           LinuxPlatform::SettingsWriter(LinuxPlatform::changeSettings,
                                                         drivesThatAreAll(true),
                                                         std::chrono::milliseconds(0)));
    local.setString("key", "value");
    EXPECT_EQ(stored("key"), "value");
    EXPECT_EQ(local.string("absent"), std::nullopt);
    EXPECT_EQ(local.string("key"), "value");
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(FileUserDefaultsTest, WhatIsAbsentLiesWhereItsFolderDoesAndWhatFailsLiesNowhere) {
    EXPECT_EQ(LinuxPlatform::isOnLocalDrive(fs::path(folder) / "absent" / "file"),
              LinuxPlatform::isOnLocalDrive(folder));
    fs::create_directories(folder);
    const auto endless = fs::path(folder) / "endless";
    fs::create_symlink(endless, endless);
    EXPECT_FALSE(LinuxPlatform::isOnLocalDrive(endless / "file"));
}

TEST_F(FileUserDefaultsTest, ADriveThatDoesNotSayWhereItIsIsAskedOnce) {
    const auto drive = std::make_shared<SlowDrive>();
    drive->setAnswers(false);
    LinuxPlatform::LocalDrives drives(
        [drive](const fs::path&) {
            drive->wait();
            return true;
        },
        std::chrono::milliseconds(100));
    EXPECT_FALSE(drives.isLocal(folder));
    EXPECT_FALSE(drives.isLocal(folder));
    drive->setAnswers(true);
    EXPECT_TRUE(becomesTrue([&] { return drives.isLocal(folder); }));
    EXPECT_TRUE(drives.isLocal(folder));
    EXPECT_EQ(drive->timesAsked(), 1);
}

TEST_F(FileUserDefaultsTest, AReaderNeverSeesPartOfAValue) {
    const std::string first(1'000'000, 'a');
    const std::string second(700'000, 'b');
    defaults.setData("key", first);
    std::atomic<int> reads = 0;
    std::atomic<bool> isPartial = false;
    std::jthread reader([&](const std::stop_token& stop) {
        RecordingLog readersLog;
        const FileUserDefaults readers(folder, readersLog);
        while (!stop.stop_requested()) {
            const auto value = readers.data("key");
            isPartial = isPartial || (value != first && value != second);
            ++reads;
        }
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (int writes = 0; writes < 20 || reads < 20; ++writes) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        defaults.setData("key", writes % 2 == 0 ? second : first);
    }
    reader.request_stop();
    reader.join();
    EXPECT_FALSE(isPartial);
}

TEST_F(FileUserDefaultsTest, AnEndAtAnyByteLeavesTheOldValue) {
    const std::string old = "old";
    const std::string large(300'000, 'x');
    defaults.setData("key", old);
    for (const rlim_t size : {0U, 1U, 4096U, 150'000U, 299'999U}) {
        ForkedChild child([&] {
            limitFileSize(size, true);
            defaults.setData("key", large);
        });
        const auto status = child.wait();
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
        EXPECT_EQ(defaults.data("key"), old);
        EXPECT_THAT(names(), SizeIs(2)) << "the child should have been killed while it wrote";
        defaults.setData("key", old);
        EXPECT_THAT(names(), ElementsAre("key"));
    }
}

TEST_F(FileUserDefaultsTest, AKillAtAnyMomentLeavesTheOldValueOrTheNew) {
    const std::string first(2'000'000, 'a');
    const std::string second(1'500'000, 'b');
    std::mt19937 random(1);
    std::uniform_int_distribution<int> delay(0, 8000);
    for (int round = 0; round < 15; ++round) {
        defaults.setData("key", first);
        std::array<int, 2> ready{};
        ASSERT_EQ(pipe(ready.data()), 0);
        ForkedChild child([&] {
            [[maybe_unused]] const auto written = write(ready[1], "r", 1);
            for (;;) {
                defaults.setData("key", second);
                defaults.setData("key", first);
            }
        });
        char byte = 0;
        ASSERT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
        close(ready[1]);
        std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
        child.kill(SIGKILL);
        child.wait();
        const auto value = defaults.data("key");
        EXPECT_TRUE(value == first || value == second);
        defaults.setData("key", "small");
        EXPECT_THAT(names(), ElementsAre("key"));
    }
}

TEST_F(FileUserDefaultsTest, OnlyRemainsOfEndedWritersAreRemoved) {
    const auto ended = endedProcess();
    const auto living = std::to_string(getppid());
    put("key", "value");
    put(".key." + ended + ".new", "half");
    put(".key." + living + ".new", "half");
    put(".other." + ended + ".new", "half");
    put(".key." + ended + ".1.new", "half of key." + ended);
    put(".key.notes.new", "someone's");
    put(".key.backup", "someone's");
    defaults.setString("key", "new");
    EXPECT_THAT(names(), UnorderedElementsAre("key", ".key." + living + ".new", ".other." + ended + ".new",
                                              ".key." + ended + ".1.new", ".key.notes.new", ".key.backup"));
}

TEST_F(FileUserDefaultsTest, RemainsOfAnEarlierProcessWithTheSameIdAreReplaced) {
    const auto remains = folder / (".key." + std::to_string(getpid()) + ".new");
    fs::create_directories(folder);
    ASSERT_EQ(mkfifo(remains.c_str(), 0666), 0);
    EXPECT_FALSE(LinuxPlatform::replaceFile(folder / "key", "value"));
    EXPECT_EQ(stored("key"), "value");
    put(remains.filename(), "half of a longer value");
    fs::permissions(remains, fs::perms(0666));
    EXPECT_FALSE(LinuxPlatform::replaceFile(folder / "key", "value"));
    EXPECT_EQ(stored("key"), "value");
    EXPECT_EQ(modeOf(folder / "key"), 0600U);
    EXPECT_THAT(names(), ElementsAre("key"));
}

TEST_F(FileUserDefaultsTest, RemainsBesideTheTargetOfALinkAreRemovedToo) {
    const auto remains = parent.path() / (".target." + endedProcess() + ".new");
    writeFile(parent.path() / "target", "value");
    writeFile(remains, "half");
    fs::create_directories(folder);
    fs::create_symlink(parent.path() / "target", folder / "key");
    defaults.setString("key", "new");
    EXPECT_FALSE(fs::exists(remains));
}

struct StoredPreferencesTest : testing::Test, FileWorld {
    static constexpr auto key = "curtain.preferences.v1";
    CurtainCore::PreferencesStore store{defaults};
    CurtainCore::Preferences changed;

    StoredPreferencesTest() { changed.hasOnboarded = true; }
};

TEST_F(StoredPreferencesTest, ASavedRecordIsLoadedByTheNextLaunch) {
    store.save(changed);
    FileUserDefaults nextDefaults(folder, log);
    EXPECT_EQ(CurtainCore::PreferencesStore(nextDefaults).load(), changed);
    EXPECT_THAT(names(), ElementsAre(key));
}

TEST_F(StoredPreferencesTest, ACorruptFileStaysUntilTheNextSaveKeepsIt) {
    put(key, R"({"hasOnboarded": tru)");
    EXPECT_EQ(store.load(), CurtainCore::Preferences{});
    EXPECT_EQ(stored(key), R"({"hasOnboarded": tru)");
    store.save(changed);
    store.save(changed);
    EXPECT_EQ(store.load(), changed);
    EXPECT_THAT(copies(key), ElementsAre(R"({"hasOnboarded": tru)"));
}

TEST_F(StoredPreferencesTest, EveryCorruptFileIsKept) {
    put(key, "first");
    store.save(changed);
    put(key, "second");
    store.save(changed);
    EXPECT_THAT(copies(key), ElementsAre("first", "second"));
}

TEST_F(StoredPreferencesTest, WhateverStandsInTheFilesPlaceIsKept) {
    putUnreadable(key);
    EXPECT_EQ(store.load(), CurtainCore::Preferences{});
    store.save(changed);
    fs::remove(folder / key);
    put(std::string(key) + "/inside", "something");
    EXPECT_EQ(store.load(), CurtainCore::Preferences{});
    store.save(changed);
    EXPECT_EQ(store.load(), changed);
    EXPECT_TRUE(fs::is_fifo(folder / "curtain.preferences.v1.damaged-1"));
    EXPECT_EQ(stored("curtain.preferences.v1.damaged-2/inside"), "something");
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(StoredPreferencesTest, ACorruptFileThatCannotBeKeptYetIsNotReplacedBefore) {
    put(key, "corrupt");
    runAsOrdinaryUser(parent.path(), [&] {
        fs::permissions(folder, fs::perms(0500));
        store.save(changed);
        store.save(changed);
        EXPECT_EQ(store.load(), changed);
        EXPECT_EQ(stored(key), "corrupt");

        fs::permissions(folder, fs::perms(0700));
        store.save(changed);
        EXPECT_EQ(store.load(), changed);
        EXPECT_THAT(copies(key), ElementsAre("corrupt"));
        EXPECT_THAT(names(), SizeIs(2));
    });
}

TEST_F(StoredPreferencesTest, AFileThatMayNotBeReadIsKept) {
    put(key, R"({"launchAtLogin": true})");
    runAsOrdinaryUser(parent.path(), [&] {
        fs::permissions(folder / key, fs::perms::none);
        EXPECT_EQ(store.load(), CurtainCore::Preferences{});
        store.save(changed);
        EXPECT_EQ(store.load(), changed);
        fs::permissions(folder / "curtain.preferences.v1.damaged-1", fs::perms(0600));
        EXPECT_THAT(copies(key), ElementsAre(R"({"launchAtLogin": true})"));
    });
}

TEST_F(StoredPreferencesTest, ARecordThatCannotBeReadForAWhileStaysInForce) {
    changed.targetApps = {{"org.mail", "Mail"}};
    store.save(changed);
    runAsOrdinaryUser(parent.path(), [&] {
        EXPECT_EQ(store.load(), changed);
        fs::permissions(folder / key, fs::perms::none);
        EXPECT_EQ(store.load(), changed);
        EXPECT_FALSE(store.damage());
        fs::permissions(folder / key, fs::perms(0600));
        EXPECT_EQ(store.load(), changed);
        EXPECT_THAT(log.lines, SizeIs(1));
        EXPECT_THAT(names(), ElementsAre(key));
    });
}

TEST_F(StoredPreferencesTest, ADamagedFileIsKeptAsSoonAsItIsFoundAndStaysWhereItIs) {
    put(key, "damaged");
    store.load();
    EXPECT_EQ(store.damage(), (CurtainCore::PreferencesDamage{"curtain.preferences.v1.damaged-1"}));
    FileUserDefaults nextDefaults(folder, log);
    const CurtainCore::PreferencesStore next(nextDefaults);
    next.load();
    EXPECT_EQ(next.damage(), store.damage());
    EXPECT_EQ(stored(key), "damaged");
    EXPECT_THAT(copies(key), ElementsAre("damaged"));
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(StoredPreferencesTest, ARecordOfTenMegabytesIsLoaded) {
    changed.targetApps = {{"large", ""}};
    changed.targetApps[0].displayName.assign(10'000'000, 'n');
    store.save(changed);
    EXPECT_GT(fs::file_size(folder / key), 10'000'000U);
    EXPECT_EQ(store.load(), changed);
}

} // namespace

namespace TestSupport {

INSTANTIATE_TYPED_TEST_SUITE_P(File, UserDefaultsContract, FileWorld);

} // namespace TestSupport
