#include "platform/qt/views/ViewLibrary.h"
#include "platform/qt/views/LazyViews.h"

#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace {

using QtPlatform::ViewLibrary;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ViewLibraryTest : public testing::Test {
protected:
    TestSupport::TemporaryFolder folder;
    const std::string path = (folder.path() / "views.so").string();
    TestSupport::RecordingLog log;
};

TEST_F(ViewLibraryTest, MissingFileIsAProblemThatNamesIt) {
    using QtPlatform::OwnLibrary;
    EXPECT_THAT(OwnLibrary::problemWith(path, "windows").value_or(""),
                AllOf(HasSubstr(path), HasSubstr("its windows are missing")));
    TestSupport::writeFile(path, "");
    EXPECT_EQ(OwnLibrary::problemWith(path, "windows"), std::nullopt);
}

TEST_F(ViewLibraryTest, WhatIsNoLibraryIsToldOnceAndShowsNothing) {
    TestSupport::writeFile(path, "no library");
    ViewLibrary library(path, log);
    EXPECT_THAT(log.lines, IsEmpty());
    const QtPlatform::QtScreens screens({});
    QtPlatform::LazyWindows windows(library, screens, {});
    const auto window = windows.makeWindow({"qrc:/view.qml", nullptr}, {}, {});
    window->makeKeyAndOrderFront();
    EXPECT_FALSE(window->isVisible());
    EXPECT_THAT(log.lines, ElementsAre(HasSubstr("its windows cannot be shown")));

    QtPlatform::LazyPopover popover(library, screens, {});
    popover.setContent({"qrc:/view.qml", nullptr});
    EXPECT_FALSE(popover.isShown());
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(ViewLibraryTest, NothingThatIsShownNeedsNoLibrary) {
    ViewLibrary library(path, log);
    const QtPlatform::QtScreens screens({});
    QtPlatform::LazyPopover popover(library, screens, {});
    popover.setContentSize({700, 618});
    popover.setContent({});
    popover.close();
    EXPECT_FALSE(popover.isShown());
    EXPECT_THAT(log.lines, IsEmpty());
}

} // namespace
