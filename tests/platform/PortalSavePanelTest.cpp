#include "platform/linux/savepanel/PortalSavePanel.h"

#include "platform/linux/savepanel/PortalFileFilter.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakePortal.h"
#include "tests/support/FakeShell.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusMessage>

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::PortalFileFilter;
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
    std::unique_ptr<FakePortal> portal =
        std::make_unique<FakePortal>(bus.connect(QStringLiteral("the portal's")));
    std::vector<std::string> events;
    FakeSavePanel* toolkits = nullptr;
    std::unique_ptr<PortalSavePanel> panel = panelOn(ours);
    std::vector<Answer> first;
    std::vector<Answer> second;

    void TearDown() override {
        portal.reset();
        for (const auto* name : {"ours", "the portal's"}) {
            QDBusConnection::disconnectFromBus(QLatin1String(name));
        }
    }

    std::unique_ptr<PortalSavePanel> panelOn(const QDBusConnection& connection) {
        auto other = std::make_unique<FakeSavePanel>(events);
        toolkits = other.get();
        return std::make_unique<PortalSavePanel>(
            connection, [] { return QStringLiteral("x11:1e00007"); }, std::move(other));
    }

    void open(const std::string& name, std::vector<Answer>& answers) {
        panel->open({name, folder.path().string(), "image/jpeg", "Salva…", {}},
                    [&answers](const Answer& path) { answers.push_back(path); });
    }
    bool isAsked(std::size_t times = 1) {
        return spinUntil([&] { return portal->questions.size() == times; }, patience);
    }
    bool isOtherAsked() {
        return spinUntil([&] { return !toolkits->openings.empty(); }, patience);
    }
    static bool isAnswered(const std::vector<Answer>& answers) {
        return spinUntil([&] { return !answers.empty(); }, patience);
    }
    void choose(const char* address) {
        portal->answer(0, {{QStringLiteral("uris"), QStringList{QString::fromUtf8(address)}}});
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

TEST_F(PortalSavePanelTest, APortalThatDiesWithItsDialogHasNotBeenAnswered) {
    open("one.jpg", first);
    ASSERT_TRUE(isAsked());
    portal.reset();
    ASSERT_TRUE(isAnswered(first));
    EXPECT_THAT(first, ElementsAre(std::nullopt));
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
