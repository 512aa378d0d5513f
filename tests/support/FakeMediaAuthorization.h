#pragma once

#include "platform/MediaAuthorization.h"

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace TestSupport {

/// An authorization whose user answers when the test says so.
class FakeMediaAuthorization : public Platform::MediaAuthorization {
public:
    std::map<Platform::MediaType, Platform::AuthorizationStatus> statuses{
        {Platform::MediaType::audio, Platform::AuthorizationStatus::authorized},
        {Platform::MediaType::video, Platform::AuthorizationStatus::authorized}};
    /// The media of the questions that wait for an answer, oldest first.
    std::vector<Platform::MediaType> asked;

    Platform::AuthorizationStatus status(Platform::MediaType type) override { return statuses[type]; }

    void requestAccess(Platform::MediaType type, std::function<void(bool)> completion) override {
        asked.push_back(type);
        completions_.push_back(std::move(completion));
    }

    /// Answers every question that waits, on the caller's thread.
    void answer(bool isGranted) {
        const auto media = std::exchange(asked, {});
        for (const auto type : media) {
            statuses[type] =
                isGranted ? Platform::AuthorizationStatus::authorized : Platform::AuthorizationStatus::denied;
        }
        for (const auto& completion : std::exchange(completions_, {})) {
            completion(isGranted);
        }
    }

private:
    std::vector<std::function<void(bool)>> completions_;
};

} // namespace TestSupport
