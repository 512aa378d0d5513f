#include "platform/qt/savepanel/QtSavePanel.h"

#include "platform/qt/savepanel/SaveFileModel.h"
#include "tests/support/FakeWindows.h"
#include "tests/support/TemporaryFolder.h"

#include <QDir>
#include <QString>
#include <QStringList>

#include <gmock/gmock.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using QtPlatform::SaveFileModel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct QtSavePanelTest : testing::Test {
    using Answer = std::optional<std::string>;

    TestSupport::TemporaryFolder folder;
    std::vector<std::string> events;
    TestSupport::FakeWindows windows{events};
    QtPlatform::QtSavePanel panel{windows};
    std::vector<Answer> first;
    std::vector<Answer> second;

    void open(const std::string& name, std::vector<Answer>& answers, const Answer& wanted) {
        panel.open({name,
                    wanted,
                    "image/jpeg",
                    "Guardar",
                    {"qrc:/view.qml", "Cancelar", "Ya existe un archivo con ese nombre.", "es", false}},
                   [&answers](const Answer& path) { answers.push_back(path); });
    }
    void open(const std::string& name, std::vector<Answer>& answers) {
        open(name, answers, folder.path().string());
    }

    SaveFileModel& model() { return static_cast<SaveFileModel&>(*windows.all.back()->view.model); }
    void save(const std::string& name) { model().save(QString::fromStdString(name)); }
    bool isOpen() const { return !windows.all.empty() && windows.all.back()->isVisible(); }

    std::string inFolder(const std::string& name) const { return (folder.path() / name).string(); }
};

TEST_F(QtSavePanelTest, ShowsTheNameAndTheFolderAboveThePopover) {
    std::filesystem::create_directory(folder.path() / "trip");
    open("one.jpg", first);
    ASSERT_TRUE(isOpen());
    const auto& window = *windows.all.back();
    EXPECT_TRUE(window.style.isKeptAbove);
    EXPECT_EQ(window.title, "Guardar");
    EXPECT_EQ(window.view.source, "qrc:/view.qml");
    EXPECT_EQ(model().proposedName(), QStringLiteral("one.jpg"));
    EXPECT_EQ(model().folder().toStdString(), folder.path());
    EXPECT_EQ(model().folders(), QStringList({"..", "trip"}));
    EXPECT_EQ(model().saveTitle(), QStringLiteral("Guardar"));
    EXPECT_EQ(model().cancelTitle(), QStringLiteral("Cancelar"));
    EXPECT_EQ(model().property("lang"), QStringLiteral("es"));
}

TEST_F(QtSavePanelTest, AnswersWithThePath) {
    open("one.jpg", first);
    EXPECT_THAT(first, IsEmpty());
    save("me.jpg");
    EXPECT_THAT(first, ElementsAre(inFolder("me.jpg")));
    EXPECT_FALSE(isOpen());
}

TEST_F(QtSavePanelTest, APathOfItsOwnIsTakenAndTheEndingAdded) {
    open("one.jpg", first);
    save(" /elsewhere/me ");
    EXPECT_THAT(first, ElementsAre("/elsewhere/me.jpg"));
    open("two.jpg", second);
    save("me.v2.JPEG");
    EXPECT_THAT(second, ElementsAre(inFolder("me.v2.JPEG")));
}

TEST_F(QtSavePanelTest, WhatIsNoNameIsNotTaken) {
    open("one.jpg", first);
    save("  ");
    save("trip/");
    EXPECT_TRUE(isOpen());
    EXPECT_THAT(first, IsEmpty());
}

TEST_F(QtSavePanelTest, NoFileIsReplaced) {
    TestSupport::writeFile(folder.path() / "me.jpg", "");
    std::filesystem::create_symlink("nowhere", folder.path() / "link.jpg");
    open("one.jpg", first);
    for (const auto* const name : {"me", "link.jpg"}) {
        save(name);
        EXPECT_TRUE(isOpen());
        EXPECT_EQ(model().problem(), QStringLiteral("Ya existe un archivo con ese nombre."));
        model().forgetProblem();
        EXPECT_EQ(model().problem(), QString());
    }
    EXPECT_THAT(first, IsEmpty());
}

TEST_F(QtSavePanelTest, FoldersAreEnteredAndLeft) {
    std::filesystem::create_directories(folder.path() / "trip/night");
    open("one.jpg", first);
    model().enter("trip");
    EXPECT_EQ(model().folder().toStdString(), inFolder("trip"));
    EXPECT_EQ(model().folders(), QStringList({"..", "night"}));
    model().enter("gone");
    EXPECT_EQ(model().folder().toStdString(), inFolder("trip"));
    model().enter("night");
    model().enter("..");
    save("me.jpg");
    EXPECT_THAT(first, ElementsAre(inFolder("trip/me.jpg")));
}

TEST_F(QtSavePanelTest, WithoutAFolderThatExistsItOpensInTheHomeFolder) {
    for (const auto& wanted : {Answer(), Answer(inFolder("missing"))}) {
        open("one.jpg", first, wanted);
        EXPECT_EQ(model().folder(), QDir::homePath());
        model().cancel();
    }
}

TEST_F(QtSavePanelTest, CancellingAndClosingAnswerOnceWithoutAPath) {
    open("one.jpg", first);
    model().cancel();
    EXPECT_THAT(first, ElementsAre(std::nullopt));
    EXPECT_FALSE(isOpen());
    open("two.jpg", second);
    windows.all.back()->close();
    EXPECT_THAT(second, ElementsAre(std::nullopt));
    EXPECT_THAT(first, SizeIs(1));
}

TEST_F(QtSavePanelTest, ASecondRequestTakesTheOpenPanelOver) {
    std::filesystem::create_directory(folder.path() / "trip");
    open("one.jpg", first);
    model().enter("trip");
    open("two.jpg", second);
    EXPECT_THAT(windows.all, SizeIs(1));
    EXPECT_EQ(model().proposedName(), QStringLiteral("two.jpg"));
    EXPECT_THAT(first, ElementsAre(std::nullopt)) << "it cannot be answered any more";
    save("two.jpg");
    EXPECT_THAT(first, SizeIs(1));
    EXPECT_THAT(second, ElementsAre(inFolder("trip/two.jpg"))) << "the user's choice of a folder stays";
}

} // namespace
