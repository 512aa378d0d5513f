#pragma once

#include "Curtain/MicrophoneMonitor.h"
#include "core/ReadinessChecklist.h"

#include <QString>

#include <string>

namespace Curtain {

/// What the popover shows of the microphone, as of the last look. Main thread only.
class MicrophoneRow {
public:
    /// `monitor` outlives the row.
    explicit MicrophoneRow(const MicrophoneMonitor& monitor);

    /// Returns whether anything but the level has changed.
    bool look();

    CurtainCore::ReadinessStatus mark() const;
    QString detail(const std::string& lang) const;
    QString name() const;
    QString echoLabel(const std::string& lang) const;
    /// Of this moment, from 0 to 1.
    double level() const;

private:
    struct Look {
        MicStatus status;
        EchoPhase echoPhase;
        std::string name;

        bool operator==(const Look&) const = default;
    };

    Look now() const;

    const MicrophoneMonitor& monitor_;
    Look last_;
};

} // namespace Curtain
