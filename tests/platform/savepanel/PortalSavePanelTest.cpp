#include "platform/linux/savepanel/PortalSavePanel.h"

#include "platform/linux/savepanel/PortalFileFilter.h"
#include "tests/platform/dbus/BusQuestion.h"
#include "tests/platform/dbus/FakePortal.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeShell.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/TemporaryFolder.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusMessage>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::PortalFileFilter;
using LinuxPlatform::PortalRequest;
using LinuxPlatform::PortalSavePanel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::FakePortal;
using TestSupport::FakeSavePanel;
using TestSupport::spinUntil;

constexpr auto patience = std::chrono::seconds(30);

struct PortalSavePanelTest : testing::Test {
    using Answer = std::optional<std::string>;

    TestSupport::PrivateBus bus;
    TestSupport::TemporaryFolder folder;
    QDBusConnection ours = bus.connect(QStringLiteral("ours"));
    TestSupport::HandDrivenQueue queue;
    std::unique_ptr<FakePortal> portal =
        std::make_unique<FakePortal>(bus.connect(QStringLiteral("the portal's")));
    std::vector<std::string> events;
    FakeSavePanel* toolkits = nullptr;
    std::unique_ptr<PortalSavePanel> panel = panelOn(ours);
    QString window = QStringLiteral("x11:1e00007");
    std::vector<Answer> first;
    std::vector<Answer> second;

    void TearDown() override {
        portal.reset();
        for (const auto* name : {"ours", "the portal's", "the next portal's"}) {
            QDBusConnection::disconnectFromBus(QLatin1String(name));
        }
    }

    std::unique_ptr<PortalSavePanel> panelOn(const QDBusConnection& connection) {
        auto other = std::make_unique<FakeSavePanel>(events);
        toolkits = other.get();
        return std::make_unique<PortalSavePanel>(
            connection, queue, [this] { return window; }, std::move(other));
    }
    /// A portal appears, in place of the one that there was.
    void startNextPortal() {
        portal.reset();
        portal = std::make_unique<FakePortal>(bus.connect(QStringLiteral("the next portal's")));
        readTheBus();
    }
    /// Returns when all that the bus has told so far has been received: its answers come in order.
    void readTheBus() const {
        const auto driver = QStringLiteral("org.freedesktop.DBus");
        TestSupport::askOverBus(ours, QDBusMessage::createMethodCall(driver,
                                                                     QStringLiteral("/org/freedesktop/DBus"),
                                                                     driver, QStringLiteral("GetId")));
    }

    void open(const std::string& name, std::vector<Answer>& answers) {
        panel->open({name, folder.path().string(), "image/jpeg", "Salva…", {}},
                    [&answers](const Answer& path) { answers.push_back(path); });
    }
    bool isAsked(std::size_t times = 1) {
        return spinUntil([&] { return portal->questions.size() == times; }, patience);
    }
    bool isOtherAsked(std::size_t times = 1) {
        return spinUntil([&] { return toolkits->openings.size() == times; }, patience);
    }
    static bool isAnswered(const std::vector<Answer>& answers) {
        return spinUntil([&] { return !answers.empty(); }, patience);
    }
    static QVariantMap chosen(const std::string& address) {
        return {{QStringLiteral("uris"), QStringList{QString::fromStdString(address)}}};
    }
    void choose(const std::string& address) { portal->answer(0, chosen(address)); }
    /// What comes of the user's choice of a path.
    Answer answerTo(const std::filesystem::path& path) {
        std::vector<Answer> answers;
        open("one.jpg", answers);
        EXPECT_TRUE(isAsked(portal->questions.size() + 1));
        choose("file://" + path.string());
        EXPECT_TRUE(isAnswered(answers));
        return answers.empty() ? std::nullopt : answers.front();
    }
};

TEST_F(PortalSavePanelTest, AsksThePortalForAFileInTheFolder) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    const auto& question = portal->questions.front();
    EXPECT_EQ(question.interface(), QStringLiteral("org.freedesktop.portal.FileChooser"));
    EXPECT_EQ(question.member(), QStringLiteral("SaveFile"));
    EXPECT_EQ(question.signature(), QStringLiteral("ssa{sv}"));
    EXPECT_EQ(question.arguments().at(0), QStringLiteral("x11:1e00007"));
    EXPECT_EQ(question.arguments().at(1), QStringLiteral("Salva…"));
    const auto options = portal->options();
    EXPECT_EQ(options.value("modal"), true);
    EXPECT_EQ(options.value("current_name"), QStringLiteral("one.jpg"));
    const auto path = folder.path().string();
    EXPECT_EQ(options.value("current_folder").toByteArray(),
              QByteArray(path.c_str(), static_cast<qsizetype>(path.size() + 1)));
    EXPECT_THAT(toolkits->openings, IsEmpty());
}

TEST_F(PortalSavePanelTest, OnlyPicturesOfTheKindAreShown) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    const auto argument = portal->options().value("filters").value<QDBusArgument>();
    EXPECT_EQ(argument.currentSignature(), QStringLiteral("a(sa(us))"));
    const auto filters = qdbus_cast<QList<PortalFileFilter>>(argument);
    ASSERT_THAT(filters, SizeIs(1));
    ASSERT_THAT(filters.front().rules, SizeIs(1));
    EXPECT_EQ(filters.front().rules.front().kind, 1U);
    EXPECT_EQ(filters.front().rules.front().value, QStringLiteral("image/jpeg"));
}

TEST_F(PortalSavePanelTest, AnswersWithThePath) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    choose("file:///home/ada/Sch%C3%B6ne%20Bilder/one.jpg");
    ASSERT_TRUE(isAnswered(first));
    EXPECT_THAT(first, ElementsAre("/home/ada/Schöne Bilder/one.jpg"));
}

TEST_F(PortalSavePanelTest, WhatIsNoFileIsToldByItsAddress) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    choose("sftp://example.org/one.jpg");
    ASSERT_TRUE(isAnswered(first));
    EXPECT_THAT(first, ElementsAre("sftp://example.org/one.jpg"));
}

TEST_F(PortalSavePanelTest, AnEndingIsAddedWhereTheUserTypedNone) {
    const auto me = (folder.path() / "me").string();
    EXPECT_EQ(answerTo(me), me + ".jpg");
    EXPECT_EQ(answerTo(me + ".v2"), me + ".v2.jpg");
    EXPECT_EQ(answerTo(me + ".JPEG"), me + ".JPEG");
}

TEST_F(PortalSavePanelTest, NoEndingIsAddedThatWouldReplaceAFile) {
    TestSupport::writeFile(folder.path() / "me.jpg", "");
    std::filesystem::create_symlink("nowhere", folder.path() / "link.jpg");
    for (const auto* const name : {"me", "link"}) {
        EXPECT_EQ(answerTo(folder.path() / name), (folder.path() / name).string());
    }
}

TEST_F(PortalSavePanelTest, AFileThatIsHandedIntoASandboxKeepsItsName) {
    qputenv("XDG_RUNTIME_DIR", "/run/user/1000");
    EXPECT_EQ(answerTo("/run/user/1000/doc/1f3a/me"), "/run/user/1000/doc/1f3a/me");
    EXPECT_EQ(answerTo("/run/user/1000/me"), "/run/user/1000/me.jpg");
}

TEST_F(PortalSavePanelTest, TheWindowIsTheOneOfTheRequest) {
    open("one.jpg", first);
    window = QString();
    ASSERT_TRUE(isAsked());
    EXPECT_EQ(portal->questions.front().arguments().at(0), QStringLiteral("x11:1e00007"));
}

TEST_F(PortalSavePanelTest, AnAnswerThatCannotBeReadIsNoChoice) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    portal->respond({0, chosen("file:///home/ada/one.jpg")});
    ASSERT_TRUE(isAnswered(first));
    EXPECT_THAT(first, ElementsAre(std::nullopt));
}

TEST_F(PortalSavePanelTest, ADialogThatWasClosedIsNotFollowedByAnother) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    portal->answer(2);
    ASSERT_TRUE(isAnswered(first));
    EXPECT_THAT(first, ElementsAre(std::nullopt));
    EXPECT_THAT(toolkits->openings, IsEmpty());
}

TEST_F(PortalSavePanelTest, CancellingAnswersWithoutAPath) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    portal->answer(1);
    ASSERT_TRUE(isAnswered(first));
    EXPECT_THAT(first, ElementsAre(std::nullopt));
    open("two.jpg", second);
    ASSERT_TRUE(isAsked(2));
    choose("file:///home/ada/two.jpg");
    ASSERT_TRUE(isAnswered(second));
    EXPECT_THAT(second, ElementsAre("/home/ada/two.jpg"));
}

TEST_F(PortalSavePanelTest, AFolderThatIsMissingIsLeftToThePortal) {
    panel->open({"one.jpg", (folder.path() / "missing").string(), "image/jpeg", "Save", {}},
                [](const Answer&) {});
    ASSERT_TRUE(isAsked());
    EXPECT_FALSE(portal->options().contains("current_folder"));
}

TEST_F(PortalSavePanelTest, ASecondRequestTakesTheDialogOver) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    const auto earlier = portal->request();
    open("two.jpg", second);
    EXPECT_THAT(first, ElementsAre(std::nullopt)) << "it cannot be answered any more";
    ASSERT_TRUE(isAsked(2));
    EXPECT_EQ(portal->withdrawn, QStringList{earlier});
    EXPECT_EQ(portal->options().value("current_name"), QStringLiteral("two.jpg"));
    choose("file:///home/ada/two.jpg");
    ASSERT_TRUE(isAnswered(second));
    EXPECT_THAT(first, SizeIs(1));
}

TEST_F(PortalSavePanelTest, ASecondRequestBeforeThePortalWasAskedIsTheOnlyOne) {
    open("one.jpg", first);
    open("two.jpg", second);
    EXPECT_THAT(first, ElementsAre(std::nullopt));
    ASSERT_TRUE(isAsked());
    EXPECT_EQ(portal->options().value("current_name"), QStringLiteral("two.jpg"));
    choose("file:///home/ada/two.jpg");
    ASSERT_TRUE(isAnswered(second));
    EXPECT_THAT(portal->questions, SizeIs(1));
}

TEST_F(PortalSavePanelTest, WhereThePortalDiesWithItsDialogTheToolkitAsks) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    portal.reset();
    ASSERT_TRUE(isOtherAsked());
    EXPECT_THAT(first, IsEmpty());
    toolkits->choose("/home/ada/one.jpg");
    EXPECT_THAT(first, ElementsAre("/home/ada/one.jpg"));
}

TEST_F(PortalSavePanelTest, TheToolkitsDialogIsTakenOverThoughAPortalHasCome) {
    portal.reset();
    open("one.jpg", first);
    ASSERT_TRUE(isOtherAsked());
    startNextPortal();
    open("two.jpg", second);
    EXPECT_THAT(toolkits->openings, SizeIs(2));
    toolkits->supersede();
    EXPECT_THAT(first, ElementsAre(std::nullopt));
    std::vector<Answer> third;
    open("three.jpg", third);
    EXPECT_THAT(toolkits->openings, SizeIs(3));
    toolkits->supersede();
    EXPECT_THAT(second, ElementsAre(std::nullopt));
    toolkits->choose("/home/ada/three.jpg");
    EXPECT_THAT(third, ElementsAre("/home/ada/three.jpg"));
    EXPECT_THAT(portal->questions, IsEmpty());
    open("four.jpg", first);
    ASSERT_TRUE(isAsked());
}

TEST_F(PortalSavePanelTest, AQuestionThatThePortalDoesNotTakeUpIsWithdrawn) {
    readTheBus();
    portal->mood = FakePortal::Mood::saysNothing;
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    queue.advance(PortalRequest::patience);
    EXPECT_THAT(toolkits->openings, SizeIs(1));
    ASSERT_TRUE(spinUntil([&] { return !portal->withdrawn.isEmpty(); }, patience));
    EXPECT_EQ(portal->withdrawn, QStringList{portal->request()});
    toolkits->choose("/home/ada/one.jpg");
    EXPECT_THAT(first, ElementsAre("/home/ada/one.jpg"));
    open("two.jpg", second);
    EXPECT_THAT(toolkits->openings, SizeIs(2)) << "it is not waited for again";
}

TEST_F(PortalSavePanelTest, APortalThatHangsIsNotAskedAgainButItsSuccessorIs) {
    readTheBus();
    portal->mood = FakePortal::Mood::hangs;
    open("one.jpg", first);
    queue.advance(PortalRequest::patience);
    EXPECT_THAT(toolkits->openings, SizeIs(1));
    toolkits->choose("/home/ada/one.jpg");
    open("two.jpg", second);
    EXPECT_THAT(toolkits->openings, SizeIs(2));
    toolkits->choose("/home/ada/two.jpg");
    startNextPortal();
    open("three.jpg", first);
    ASSERT_TRUE(isAsked());
    EXPECT_THAT(toolkits->openings, SizeIs(2));
}

TEST_F(PortalSavePanelTest, WithoutAPortalTheToolkitAsks) {
    portal.reset();
    open("one.jpg", first);
    ASSERT_TRUE(isOtherAsked());
    EXPECT_EQ(toolkits->openings.front().proposedName, "one.jpg");
    toolkits->choose("/home/ada/one.jpg");
    EXPECT_THAT(first, ElementsAre("/home/ada/one.jpg"));
}

TEST_F(PortalSavePanelTest, APortalWithoutFileDialogsIsNoneAndOneThatRefusesNeither) {
    portal->version.reset();
    open("one.jpg", first);
    ASSERT_TRUE(isOtherAsked());
    EXPECT_THAT(portal->questions, IsEmpty());
    toolkits->choose(std::nullopt);
    EXPECT_THAT(first, ElementsAre(std::nullopt));
    toolkits->openings.clear();
    portal->version = 1;
    portal->mood = FakePortal::Mood::refuses;
    open("two.jpg", second);
    ASSERT_TRUE(isOtherAsked());
    EXPECT_THAT(portal->questions, SizeIs(1));
    toolkits->choose("/home/ada/two.jpg");
    EXPECT_THAT(second, ElementsAre("/home/ada/two.jpg"));
}

TEST_F(PortalSavePanelTest, WithoutABusTheToolkitAsks) {
    panel = panelOn(QDBusConnection(QStringLiteral("none")));
    open("one.jpg", first);
    EXPECT_THAT(toolkits->openings, SizeIs(1));
}

TEST_F(PortalSavePanelTest, AnAnswerAfterTheEndHarmsNobody) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    panel = panelOn(ours);
    choose("file:///home/ada/one.jpg");
    open("two.jpg", second);
    ASSERT_TRUE(isAsked(2));
    EXPECT_THAT(first, IsEmpty());
}

} // namespace
