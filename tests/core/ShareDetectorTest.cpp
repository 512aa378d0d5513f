#include "core/ShareDetector.h"

#include <gtest/gtest.h>

namespace {

using CurtainCore::DetectionConfidence;
using CurtainCore::ShareDetector;

const std::set<std::string> none;
const std::set<std::string> one{"us.zoom.xos"};
const std::set<std::string> eight{"a", "b", "c", "d", "e", "f", "g", "h"};

TEST(ShareDetector, AWatchedScreenIsSureWhateverRuns) {
    EXPECT_EQ(ShareDetector().evaluate(true, none), DetectionConfidence::high);
    EXPECT_EQ(ShareDetector().evaluate(true, one), DetectionConfidence::high);
    EXPECT_EQ(ShareDetector().evaluate(true, eight), DetectionConfidence::high);
}

TEST(ShareDetector, ARunningTriggerIsAHintHoweverManyThereAre) {
    EXPECT_EQ(ShareDetector().evaluate(false, one), DetectionConfidence::low);
    EXPECT_EQ(ShareDetector().evaluate(false, eight), DetectionConfidence::low);
}

TEST(ShareDetector, AnEmptyIdentifierCountsLikeAnyOther) {
    EXPECT_EQ(ShareDetector().evaluate(false, {""}), DetectionConfidence::low);
}

TEST(ShareDetector, NeitherIsNoSign) {
    EXPECT_EQ(ShareDetector().evaluate(false, none), DetectionConfidence::none);
}

TEST(ShareDetector, ConfidenceStartsAtNoneAndRises) {
    EXPECT_EQ(DetectionConfidence{}, DetectionConfidence::none);
    EXPECT_LT(DetectionConfidence::none, DetectionConfidence::low);
    EXPECT_LT(DetectionConfidence::low, DetectionConfidence::high);
}

} // namespace
