#pragma once

#include "core/HideEngine.h"
#include "platform/SessionNote.h"

#include <optional>
#include <string>

namespace Curtain {

/// What privacy mode is doing, written down while it is on, so that a run that ended in the midst of it can
/// be taken up by the next one. Main thread only.
class PrivacyJournal {
public:
    struct Entry {
        CurtainCore::HideEngine::State privacy;
        /// Switched on by detection, not by the user.
        bool wasAutomatic = false;
        /// Notices were to be kept from the screen.
        bool isQuiet = false;

        bool operator==(const Entry&) const = default;
    };

    /// `note` outlives the journal.
    explicit PrivacyJournal(Platform::SessionNote& note);

    /// What an earlier run had left when this object was made; absent where it was off or ended in good
    /// order, and where what was there is not whole or of another version.
    const std::optional<Entry>& earlier() const { return earlier_; }
    /// How many starts in a row took that up and ended before `didTakeUp`.
    int failedStarts() const { return failedStarts_; }
    /// To be called, where there is something, before it is taken up.
    void willTakeUp();
    /// Whether hiding may be what ended the starts before: in a start that leaves it off as well.
    bool isOnTrial() const { return startsUnderWay_ > 0; }
    /// To be called once that is over and done with.
    void didTakeUp() { startsUnderWay_ = 0; }
    void write(const Entry& entry);
    /// Privacy mode is off.
    void clear();

private:
    void keep(const std::optional<std::string>& text);

    Platform::SessionNote& note_;
    std::optional<Entry> earlier_;
    int failedStarts_ = 0;
    /// This one among them, as long as it takes something up.
    int startsUnderWay_ = 0;
    /// Writing costs more than comparing.
    std::optional<std::string> kept_;
};

} // namespace Curtain
