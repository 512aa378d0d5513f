#pragma once

#include "Curtain/PlatformWording.h"
#include "core/LocKey.h"
#include "platform/CaptureServices.h"
#include "platform/Image.h"

#include <QString>

#include <optional>
#include <string_view>

namespace Curtain {

/// A text as views show it.
QString viewText(CurtainCore::LocKey key, std::string_view lang);
QString viewText(PlatformKey key, std::string_view lang);

/// Why a camera shows nothing; empty for no reason.
QString interruptionText(std::optional<Platform::CaptureInterruption> interruption, std::string_view lang);

/// The address under which a QML file finds an app's icon; empty for an icon without a source.
QString iconAddress(const Platform::Image& icon);

QString toQString(std::string_view text);

/// A name from outside as one short line without control characters; the identifier when nothing is left of
/// it.
QString shownName(std::string_view name, std::string_view identifier);

} // namespace Curtain
