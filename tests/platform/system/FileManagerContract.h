#pragma once

#include "platform/FileManager.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

namespace TestSupport {

/// What every file manager does. A world has `manager`, and `folder`, the path of a folder that holds the
/// files "one" and ".hidden".
template <class World>
struct FileManagerContract : testing::Test {
    World world;
    Platform::FileManager& manager = world.manager;

    std::string path(const std::string& name) const { return world.folder + "/" + name; }

    static std::vector<std::byte> bytes(const std::string& text) {
        std::vector<std::byte> result;
        for (const char character : text) {
            result.push_back(static_cast<std::byte>(character));
        }
        return result;
    }
};

TYPED_TEST_SUITE_P(FileManagerContract);

TYPED_TEST_P(FileManagerContract, EverythingInAFolderIsListedByItsPath) {
    EXPECT_THAT(this->manager.contentsOfDirectory(this->world.folder),
                testing::Optional(testing::UnorderedElementsAre(this->path("one"), this->path(".hidden"))));
}

TYPED_TEST_P(FileManagerContract, AFolderThatIsNotThereHasNoContents) {
    EXPECT_EQ(this->manager.contentsOfDirectory(this->path("missing")), std::nullopt);
}

TYPED_TEST_P(FileManagerContract, AFileThatWasWrittenIsThereUntilItIsRemoved) {
    const auto listed = testing::Contains(this->path("new"));
    EXPECT_EQ(this->manager.write(this->bytes("text"), this->path("new")), Platform::WriteOutcome::written);
    EXPECT_EQ(this->manager.write(this->bytes(""), this->path("new")), Platform::WriteOutcome::written);
    EXPECT_THAT(*this->manager.contentsOfDirectory(this->world.folder), listed);
    EXPECT_TRUE(this->manager.removeItem(this->path("new")));
    EXPECT_THAT(*this->manager.contentsOfDirectory(this->world.folder), testing::Not(listed));
}

TYPED_TEST_P(FileManagerContract, AFileThatWasNeverThereIsGone) {
    EXPECT_TRUE(this->manager.removeItem(this->path("missing")));
}

REGISTER_TYPED_TEST_SUITE_P(FileManagerContract, EverythingInAFolderIsListedByItsPath,
                            AFolderThatIsNotThereHasNoContents, AFileThatWasWrittenIsThereUntilItIsRemoved,
                            AFileThatWasNeverThereIsGone);

} // namespace TestSupport
