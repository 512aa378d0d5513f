#include "platform/linux/windows/kwin/KWinRequests.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

namespace LinuxPlatform {

void PrintTo(const KWinRequests::Request& request, std::ostream* stream) {
    *stream << static_cast<int>(request.act) << ' ' << request.windows.join(QLatin1Char(' ')).toStdString();
}

} // namespace LinuxPlatform

namespace {

using LinuxPlatform::KWinRequests;
using testing::ElementsAre;
using testing::IsEmpty;
using Act = KWinRequests::Act;
using Request = KWinRequests::Request;

QStringList named(const std::string& letters) {
    QStringList names;
    for (const auto letter : letters) {
        names.append(QString(QLatin1Char(letter)));
    }
    return names;
}

Request request(Act act, const std::string& letters) {
    return {act, named(letters)};
}

struct KWinRequestsTest : testing::Test {
    KWinRequests requests;

    void add(Act act, const std::string& letters) { requests.add(act, named(letters)); }
};

/// KWin's X server ends when KWin does not get round to reading what each window that is shown makes it send.
TEST_F(KWinRequestsTest, WindowsAreShownOneAtATime) {
    add(Act::show, "abc");
    for (const auto* const one : {"a", "b", "c"}) {
        EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::show, one)));
    }
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, SixteenWindowsAreHiddenAtATime) {
    add(Act::hide, "abcdefghij");
    add(Act::hide, "klmnopqrst");
    EXPECT_THAT(requests.takePortion(),
                ElementsAre(request(Act::hide, "abcdefghij"), request(Act::hide, "klmnop")));
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::hide, "qrst")));
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, WhatIsHiddenIsNotShownAnyMore) {
    add(Act::show, "abc");
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::show, "a")));
    add(Act::hide, "abc");
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::hide, "abc")));
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, WhatIsHiddenIsNotActivatedAnyMore) {
    add(Act::activate, "a");
    add(Act::hide, "ab");
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::hide, "ab")));
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, WhatIsShownIsNotHiddenAnyMore) {
    add(Act::hide, "abc");
    add(Act::show, "b");
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::hide, "ac"), request(Act::show, "b")));
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, HidingDoesNotWaitForOtherWindowsToBeShown) {
    add(Act::show, "abc");
    add(Act::hide, "x");
    add(Act::hide, "y");
    EXPECT_THAT(requests.takePortion(),
                ElementsAre(request(Act::hide, "x"), request(Act::hide, "y"), request(Act::show, "a")));
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::show, "b")));
}

TEST_F(KWinRequestsTest, AWindowIsActivatedTogetherWithTheLastThatIsShown) {
    add(Act::show, "ab");
    add(Act::activate, "b");
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::show, "a")));
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::show, "b"), request(Act::activate, "b")));
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, APortionIsPutBackButForWhatHasBeenContradicted) {
    add(Act::hide, "ab");
    add(Act::show, "cd");
    const auto portion = requests.takePortion();
    EXPECT_THAT(portion, ElementsAre(request(Act::hide, "ab"), request(Act::show, "c")));
    add(Act::show, "a");
    add(Act::hide, "c");
    requests.putBack(portion);
    EXPECT_THAT(requests.takePortion(),
                ElementsAre(request(Act::hide, "b"), request(Act::hide, "c"), request(Act::show, "d")));
    EXPECT_THAT(requests.takePortion(), ElementsAre(request(Act::show, "a")));
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(KWinRequestsTest, ItIsKnownWhichWindowsWaitToBeShown) {
    add(Act::show, "ab");
    add(Act::hide, "bc");
    EXPECT_TRUE(requests.shows(QStringLiteral("a")));
    EXPECT_FALSE(requests.shows(QStringLiteral("b")));
    EXPECT_FALSE(requests.shows(QStringLiteral("c")));
    EXPECT_FALSE(requests.shows(QString()));
}

TEST_F(KWinRequestsTest, NothingIsNoRequest) {
    add(Act::hide, "");
    EXPECT_TRUE(requests.isEmpty());
    EXPECT_THAT(requests.takePortion(), IsEmpty());
}

TEST_F(KWinRequestsTest, TheScriptHasThemAsText) {
    const QJsonArray asked = KWinRequests::forScript(
        {request(Act::hide, "ab"), request(Act::show, "c"), request(Act::activate, "d")});
    std::vector<std::string> texts;
    for (const auto& one : asked) {
        texts.push_back(one[QStringLiteral("act")].toString().toStdString() + ' ' +
                        one[QStringLiteral("ids")][0].toString().toStdString());
    }
    EXPECT_THAT(texts, ElementsAre("hide a", "show c", "activate d"));
    EXPECT_EQ(asked[0][QStringLiteral("ids")].toArray().size(), 2);
}

} // namespace
