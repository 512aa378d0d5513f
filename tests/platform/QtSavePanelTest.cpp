#include "platform/qt/QtSavePanel.h"

#include "tests/support/ProgramArguments.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Lets the toolkit do without a display and keep its files to itself.
struct OwnFolder : TestSupport::TemporaryFolder {
    OwnFolder() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        for (const auto* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"}) {
            qputenv(name, path().c_str());
        }
    }
};

struct QtSavePanelTest : testing::Test {
    using Answer = std::optional<std::string>;

    OwnFolder folder;
    TestSupport::ProgramArguments arguments;
    QApplication application{arguments.count, arguments.values.data()};
    QtPlatform::QtSavePanel panel;
    std::vector<Answer> first;
    std::vector<Answer> second;

    void open(const std::string& name, std::vector<Answer>& answers) {
        panel.open({name, folder.path().string(), "image/jpeg", "Save"},
                   [&answers](const Answer& path) { answers.push_back(path); });
    }

    static std::vector<QFileDialog*> dialogs() {
        std::vector<QFileDialog*> found;
        for (auto* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<QFileDialog*>(widget); dialog && dialog->isVisible()) {
                found.push_back(dialog);
            }
        }
        return found;
    }
    static QString proposedName() { return dialogs().front()->findChild<QLineEdit*>()->text(); }
    static void accept() { static_cast<QDialog*>(dialogs().front())->accept(); }

    Answer inFolder(const std::string& name) const { return (folder.path() / name).string(); }
};

TEST_F(QtSavePanelTest, AnswersWithThePath) {
    open("one.jpg", first);
    ASSERT_THAT(dialogs(), SizeIs(1));
    EXPECT_EQ(proposedName(), QStringLiteral("one.jpg"));
    EXPECT_THAT(first, IsEmpty());
    accept();
    EXPECT_THAT(first, ElementsAre(inFolder("one.jpg")));
    EXPECT_THAT(dialogs(), IsEmpty());
}

TEST_F(QtSavePanelTest, WithoutAFolderThatExistsItOpensInTheHomeFolder) {
    for (const auto& wanted : {std::optional<std::string>(), Answer((folder.path() / "missing").string())}) {
        panel.open({"one.jpg", wanted, "image/jpeg", "Save"}, [](const Answer& /*path*/) {});
        ASSERT_THAT(dialogs(), SizeIs(1));
        EXPECT_EQ(dialogs().front()->directory().path(), QDir::homePath());
        dialogs().front()->reject();
    }
}

TEST_F(QtSavePanelTest, CancellingAnswersWithoutAPath) {
    open("one.jpg", first);
    ASSERT_THAT(dialogs(), SizeIs(1));
    dialogs().front()->reject();
    EXPECT_THAT(first, ElementsAre(std::nullopt));
}

TEST_F(QtSavePanelTest, ASecondRequestTakesTheOpenDialogOver) {
    open("one.jpg", first);
    open("two.jpg", second);
    ASSERT_THAT(dialogs(), SizeIs(1));
    EXPECT_EQ(proposedName(), QStringLiteral("two.jpg"));
    EXPECT_THAT(first, ElementsAre(std::nullopt)) << "it cannot be answered any more";
    accept();
    EXPECT_THAT(first, SizeIs(1));
    EXPECT_THAT(second, ElementsAre(inFolder("two.jpg")));
}

TEST_F(QtSavePanelTest, TheUsersChoiceOfAFolderOutlivesASecondRequest) {
    open("one.jpg", first);
    ASSERT_THAT(dialogs(), SizeIs(1));
    std::filesystem::create_directory(folder.path() / "trip");
    dialogs().front()->setDirectory(QString::fromStdString((folder.path() / "trip").string()));
    open("two.jpg", second);
    accept();
    EXPECT_THAT(second, ElementsAre(inFolder("trip/two.jpg")));
}

} // namespace
