#pragma once

#include "platform/SessionNote.h"
#include "platform/linux/session/EarlierValue.h"

#include <utility>

namespace LinuxPlatform {

/// A note that is kept on disk.
class RecordedNote : public Platform::SessionNote {
public:
    explicit RecordedNote(EarlierValue record) : record_(std::move(record)) {}

    std::optional<std::string> text() override {
        return record_.isOfThisSession() ? record_.get() : std::nullopt;
    }
    void keep(const std::optional<std::string>& text) override { record_.replace(text); }

private:
    EarlierValue record_;
};

} // namespace LinuxPlatform
