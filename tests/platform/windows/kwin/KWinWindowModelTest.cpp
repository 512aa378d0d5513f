#include "platform/linux/windows/kwin/KWinWindowModel.h"
#include "platform/linux/windows/kwin/KWinRequests.h"
#include "platform/linux/windows/kwin/KWinScripts.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace LinuxPlatform;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const auto first = QStringLiteral("{00000000-0000-4000-8000-000000000001}");
const auto second = QStringLiteral("{00000000-0000-4001-8000-000000000001}");
constexpr WindowId firstId = 0x4000;
constexpr WindowId secondId = 0x4001;

QJsonObject window(const QString& id, const QString& windowClass = QStringLiteral("app")) {
    return {{QStringLiteral("id"), id},
            {QStringLiteral("class"), windowClass},
            {QStringLiteral("pid"), 7},
            {QStringLiteral("isInTaskList"), true},
            {QStringLiteral("isHere"), true}};
}

QJsonObject minimized(QJsonObject window, bool isMinimized) {
    window[QStringLiteral("isMinimized")] = isMinimized;
    return window;
}

QJsonObject list(const QJsonArray& windows) {
    return {{QStringLiteral("event"), QStringLiteral("list")}, {QStringLiteral("windows"), windows}};
}

QJsonObject event(const char* name, const QJsonObject& window) {
    return {{QStringLiteral("event"), QLatin1String(name)}, {QStringLiteral("window"), window}};
}

TEST(KWinWindowModel, WindowsOfTheFirstListAreBackUnlessTheyAreMinimized) {
    KWinWindowModel model;
    const auto changes = model.take(list({window(first), minimized(window(second), true)}));
    EXPECT_THAT(changes.opened, IsEmpty());
    EXPECT_THAT(changes.returned, ElementsAre(firstId));
    EXPECT_THAT(model.windows(), SizeIs(2));
}

TEST(KWinWindowModel, ALaterListTellsWhatHappenedMeanwhile) {
    KWinWindowModel model;
    model.take(list({minimized(window(first), true)}));
    const auto changes = model.take(list({minimized(window(first), false), window(second)}));
    EXPECT_THAT(changes.opened, ElementsAre(secondId));
    EXPECT_THAT(changes.returned, ElementsAre(firstId));
    model.take(list({window(second)}));
    EXPECT_EQ(model.find(firstId), nullptr);
}

TEST(KWinWindowModel, AWindowOfAnotherAppCountsAsOpened) {
    KWinWindowModel model;
    model.take(list({window(first)}));
    EXPECT_THAT(model.take(event("changed", window(first))).opened, IsEmpty());
    EXPECT_THAT(model.take(event("changed", window(first, QStringLiteral("other")))).opened,
                ElementsAre(firstId));
}

TEST(KWinWindowModel, ReportsWithoutSenseAreLeftAlone) {
    KWinWindowModel model;
    for (const auto& report :
         {QJsonObject(), event("opened", {}), event("opened", window(QStringLiteral("\"; evil(); \""))),
          event("explode", window(first)), list({1, QStringLiteral("text"), QJsonArray()})}) {
        EXPECT_TRUE(model.take(report).empty());
    }
    EXPECT_THAT(model.windows(), IsEmpty());
}

TEST(KWinWindowModel, NamesOfWindowsAreDataWhateverTheySay) {
    KWinWindowModel model;
    const auto hostile = QStringLiteral("\"}); evil(); ({\"\n\u2028</script>");
    model.take(event("opened", window(first, hostile)));
    EXPECT_EQ(model.find(firstId)->hints.className, hostile.toStdString());
    KWinRequests requests;
    requests.add(KWinRequests::Act::hide, {model.nameOf(firstId)});
    const auto script = KWinScripts::requests({}, 1, 1, KWinRequests::forScript(requests.takePortion()));
    EXPECT_THAT(script, testing::Not(HasSubstr("evil")));
    EXPECT_THAT(script, HasSubstr(first.toStdString()));
}

} // namespace
