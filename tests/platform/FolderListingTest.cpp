#include "platform/linux/FolderListing.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
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
