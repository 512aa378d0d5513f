#pragma once

#include "platform/SystemShortcuts.h"

#include <utility>
#include <vector>

namespace TestSupport {

/// Keeps the questions for the test to answer.
class FakeSystemShortcuts : public Platform::SystemShortcuts {
public:
    struct Question {
        Platform::HotKeyCombination combination;
        Answer answer;
    };

    std::vector<Question> questions;

    void isTaken(const Platform::HotKeyCombination& combination, Answer answer) override {
        questions.push_back({combination, std::move(answer)});
    }

    /// Answers the latest question.
    void answer(bool isTaken) { questions.at(questions.size() - 1).answer(isTaken); }
};

} // namespace TestSupport
