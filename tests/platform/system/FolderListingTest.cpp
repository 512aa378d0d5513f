#include "platform/linux/system/FolderListing.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

namespace {

using LinuxPlatform::FolderListing;
using std::chrono::milliseconds;
using testing::ElementsAre;
using Contents = FolderListing::Contents;

constexpr std::chrono::seconds generous{30};

/// A drive that answers only when it is let.
struct Drive {
    std::promise<void> isBack;
    std::shared_future<void> answer = isBack.get_future().share();
    std::atomic<int> listings = 0;
};

struct FolderListingTest : testing::Test {
    std::shared_ptr<Drive> drive = std::make_shared<Drive>();
    FolderListing::List list = [drive = drive](const std::string& path) {
        ++drive->listings;
        if (path == "/network") {
            drive->answer.wait();
        }
        return path == "/missing" ? Contents() : Contents({path + "/file"});
    };
};

TEST_F(FolderListingTest, ReturnsWhatIsListed) {
    FolderListing listing(list, generous);
    EXPECT_THAT(listing.contents("/home").value(), ElementsAre("/home/file"));
    EXPECT_FALSE(listing.contents("/missing"));
    EXPECT_THAT(listing.contents("/home").value(), ElementsAre("/home/file"));
    EXPECT_EQ(drive->listings, 3);
}

TEST_F(FolderListingTest, WaitsOnceForAFolderThatDoesNotAnswer) {
    FolderListing listing(list, milliseconds(50));
    for (int round = 0; round < 1000; ++round) {
        EXPECT_FALSE(listing.contents("/network"));
    }
    EXPECT_EQ(drive->listings, 1);
    drive->isBack.set_value();
    const auto deadline = std::chrono::steady_clock::now() + generous;
    Contents contents;
    while (!contents && std::chrono::steady_clock::now() < deadline) {
        contents = listing.contents("/network");
    }
    EXPECT_THAT(contents.value(), ElementsAre("/network/file"));
}

TEST_F(FolderListingTest, AFolderThatAlwaysTakesTooLongIsAnsweredFromItsLastListing) {
    const auto mayEnd = std::make_shared<std::array<std::promise<void>, 3>>();
    const auto listings = std::make_shared<std::atomic<std::size_t>>(0);
    FolderListing listing(
        [mayEnd, listings](const std::string&) -> Contents {
            const auto number = (*listings)++;
            mayEnd->at(number).get_future().wait();
            return {{std::to_string(number)}};
        },
        milliseconds(0));
    const auto deadline = std::chrono::steady_clock::now() + generous;
    EXPECT_FALSE(listing.contents("/slow"));
    for (const auto* number : {"0", "1"}) {
        mayEnd->at(std::stoul(number)).set_value();
        Contents contents;
        do {
            contents = listing.contents("/slow");
        } while (contents != Contents({number}) && std::chrono::steady_clock::now() < deadline);
        for (int round = 0; round < 1000; ++round) {
            EXPECT_THAT(listing.contents("/slow").value(), ElementsAre(number));
        }
    }
    EXPECT_LE(*listings, 3U);
    mayEnd->back().set_value();
}

TEST_F(FolderListingTest, AFolderThatAnswersInTimeAgainIsListedEachTime) {
    FolderListing listing(
        [drive = drive](const std::string&) -> Contents {
            const auto number = ++drive->listings;
            drive->answer.wait();
            return {{std::to_string(number)}};
        },
        milliseconds(50));
    EXPECT_FALSE(listing.contents("/network"));
    drive->isBack.set_value();
    const auto deadline = std::chrono::steady_clock::now() + generous;
    int before = 0;
    Contents contents;
    do {
        before = drive->listings;
        contents = listing.contents("/network");
    } while (contents != Contents({std::to_string(before + 1)}) &&
             std::chrono::steady_clock::now() < deadline);
    EXPECT_THAT(contents.value(), ElementsAre(std::to_string(before + 1)));
}

TEST_F(FolderListingTest, TwoThreadsMayAskForTheSameFolder) {
    FolderListing listing(list, generous);
    auto first = std::async(std::launch::async, [&] { return listing.contents("/network"); });
    auto second = std::async(std::launch::async, [&] { return listing.contents("/network"); });
    drive->isBack.set_value();
    EXPECT_THAT(first.get().value(), ElementsAre("/network/file"));
    EXPECT_THAT(second.get().value(), ElementsAre("/network/file"));
}

TEST_F(FolderListingTest, MayEndWhileAFolderIsListed) {
    FolderListing(list, milliseconds(1)).contents("/network");
    drive->isBack.set_value();
}

} // namespace
