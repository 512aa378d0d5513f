#include "platform/linux/windows/FocusMemory.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using LinuxPlatform::FocusMemory;
using LinuxPlatform::WindowId;

bool isAny(WindowId /*window*/) {
    return true;
}

TEST(FocusMemoryTest, WindowThatHadTheFocusWhenItWasHiddenIsRemembered) {
    FocusMemory memory;
    memory.noteHiding(std::array<WindowId, 2>{1, 2}, 2);
    EXPECT_EQ(memory.first(isAny), 2U);
}

TEST(FocusMemoryTest, FocusThatStaysWhereItIsIsNotRemembered) {
    FocusMemory memory;
    memory.noteHiding(std::array<WindowId, 2>{1, 2}, 3);
    memory.noteHiding(std::array<WindowId, 2>{1, 2}, std::nullopt);
    EXPECT_EQ(memory.first(isAny), std::nullopt);
}

TEST(FocusMemoryTest, TheOneThatWasHiddenFirstComesBeforeThoseToWhichTheFocusWasPassed) {
    FocusMemory memory;
    memory.noteHiding(std::array<WindowId, 1>{3}, 3);
    memory.noteHiding(std::array<WindowId, 1>{1}, 1);
    memory.noteHiding(std::array<WindowId, 1>{3}, 3);
    EXPECT_EQ(memory.first(isAny), 3U);
    EXPECT_EQ(memory.first([](WindowId window) { return window != 3; }), 1U);
}

TEST(FocusMemoryTest, ForgottenWindowsAreNotRemembered) {
    FocusMemory memory;
    memory.noteHiding(std::array<WindowId, 1>{1}, 1);
    memory.noteHiding(std::array<WindowId, 1>{2}, 2);
    memory.forget([](WindowId window) { return window == 1; });
    EXPECT_EQ(memory.first(isAny), 2U);
}

} // namespace
