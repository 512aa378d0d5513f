#pragma once

#include "platform/SessionNote.h"
#include "platform/linux/session/EarlierValue.h"

#include <utility>

namespace LinuxPlatform {

/// A note that is kept on disk.
class RecordedNote : public Platform::SessionNote {
public:
    /// `details` are of no use without the note, and are forgotten with it.
    RecordedNote(EarlierValue record, EarlierValue details)
        : record_(std::move(record)),
          details_(std::move(details)) {}

    std::optional<std::string> text() override {
        return record_.isOfThisSession() ? record_.get() : std::nullopt;
    }
    void keep(const std::optional<std::string>& text) override {
        record_.replace(text);
        if (!text) {
            details_.forget();
        }
    }

private:
    EarlierValue record_;
    EarlierValue details_;
};

} // namespace LinuxPlatform
