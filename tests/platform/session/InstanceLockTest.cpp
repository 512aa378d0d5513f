#include "platform/linux/session/InstanceLock.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using LinuxPlatform::InstanceLock;

TEST(InstanceLockTest, BelongsToTheFirstUntilItEnds) {
    const TestSupport::TemporaryFolder folder;
    std::optional<InstanceLock> first(folder.path() / "lock");
    EXPECT_FALSE(first->isTaken());
    EXPECT_TRUE(InstanceLock(folder.path() / "lock").isTaken());
    EXPECT_TRUE(InstanceLock(folder.path() / "lock").isTaken()) << "one that was refused takes nothing away";
    first.reset();
    EXPECT_FALSE(InstanceLock(folder.path() / "lock").isTaken());
}

TEST(InstanceLockTest, IsOneForEachDisplay) {
    EXPECT_EQ(InstanceLock::fileFor(":1").filename(), "curtain:1.lock");
    EXPECT_EQ(InstanceLock::fileFor("host/unix:0").filename(), "curtainhost_unix:0.lock");
}

TEST(InstanceLockTest, RefusesNobodyWhereThereCanBeNoFile) {
    const TestSupport::TemporaryFolder folder;
    const auto file = folder.path() / "missing/lock";
    const InstanceLock first(file);
    EXPECT_FALSE(first.isTaken());
    EXPECT_FALSE(InstanceLock(file).isTaken());
}

} // namespace
