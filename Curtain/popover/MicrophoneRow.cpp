#include "Curtain/popover/MicrophoneRow.h"

#include "Curtain/ViewText.h"

#include <algorithm>
#include <utility>

namespace Curtain {

using CurtainCore::LocKey;
using CurtainCore::ReadinessStatus;

MicrophoneRow::MicrophoneRow(const MicrophoneMonitor& monitor) : monitor_(monitor), last_(now()) {}

MicrophoneRow::Look MicrophoneRow::now() const {
    return {monitor_.status(), monitor_.echoPhase(), monitor_.deviceName()};
}

bool MicrophoneRow::look() {
    auto before = std::exchange(last_, now());
    return before != last_;
}

ReadinessStatus MicrophoneRow::mark() const {
    switch (last_.status) {
    case MicStatus::working:
        return ReadinessStatus::ok;
    case MicStatus::noPermission:
    case MicStatus::noInputDevice:
        return ReadinessStatus::danger;
    case MicStatus::silent:
    case MicStatus::unavailable:
    case MicStatus::unknown:
        break;
    }
    return ReadinessStatus::unknown;
}

QString MicrophoneRow::detail(const std::string& lang) const {
    switch (last_.status) {
    case MicStatus::working:
        return viewText(LocKey::micWorking, lang);
    case MicStatus::silent:
        return viewText(LocKey::micSaySomething, lang);
    case MicStatus::noPermission:
        return viewText(LocKey::micAccessDenied, lang);
    case MicStatus::noInputDevice:
        return viewText(LocKey::micNoInput, lang);
    case MicStatus::unavailable:
    case MicStatus::unknown:
        break;
    }
    return viewText(LocKey::notCheckedYet, lang);
}

QString MicrophoneRow::name() const {
    return QString::fromStdString(monitor_.deviceName());
}

QString MicrophoneRow::echoLabel(const std::string& lang) const {
    switch (last_.echoPhase) {
    case EchoPhase::recording:
        return viewText(LocKey::recordingTitle, lang);
    case EchoPhase::playing:
        return viewText(LocKey::playingTitle, lang);
    case EchoPhase::idle:
    case EchoPhase::done:
        break;
    }
    return viewText(LocKey::recordTitle, lang);
}

double MicrophoneRow::level() const {
    const auto isMetering = last_.status == MicStatus::working || last_.status == MicStatus::silent;
    return isMetering ? std::clamp(static_cast<double>(monitor_.level()), 0.0, 1.0) : 0.0;
}

} // namespace Curtain
