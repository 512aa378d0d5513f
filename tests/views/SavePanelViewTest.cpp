#include "platform/qt/savepanel/SaveFileModel.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/views/ViewFixture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using QtPlatform::SaveFileModel;
using testing::ElementsAre;
using TestSupport::ShownView;

struct SavePanelView : TestSupport::ViewTest {
    TestSupport::TemporaryFolder folder;
    std::shared_ptr<SaveFileModel> model;

    ShownView show() {
        for (const auto* const name : {"first", "second"}) {
            std::filesystem::create_directory(folder.path() / name);
        }
        const Platform::SavePanelOptions options{
            "me.jpg", folder.path().string(), "image/jpeg", "Save", {"", "Cancel", "In use.", "en", false}};
        model = std::make_shared<SaveFileModel>(options, [](const auto&) {});
        return ShownView({"qrc:/Curtain/SavePanel.qml", model}, {480, 400}, TestSupport::Motion::reduced);
    }
};

TEST_F(SavePanelView, TheFoldersAreOneStopOfTheTabKeyInBothDirections) {
    auto view = show();
    const auto reached = [&](int key) {
        std::vector<std::string> stops;
        for (int step = 0; step < 4; ++step) {
            view.press(key);
            stops.push_back(view.window().activeFocusItem()->property("text").toString().toStdString());
        }
        return stops;
    };
    EXPECT_THAT(reached(Qt::Key_Tab), ElementsAre("..", "Cancel", "Save", "me.jpg"));
    EXPECT_THAT(reached(Qt::Key_Backtab), ElementsAre("Save", "Cancel", "..", "me.jpg"));
}

TEST_F(SavePanelView, AFolderIsChosenByTheArrowKeysAndEnteredByReturn) {
    auto view = show();
    for (const auto key : {Qt::Key_Tab, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}) {
        view.press(key);
    }
    EXPECT_EQ(model->folder().toStdString(), (folder.path() / "second").string());
}

} // namespace
