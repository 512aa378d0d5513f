#pragma once

#include "platform/AudioFormat.h"

namespace Curtain {

/// How loud the first channel of a buffer is: twenty times the root of the mean square, at most 1. A buffer
/// with samples that are not numbers counts as silent. Safe to call on a real-time thread.
float audioLevel(const Platform::AudioPCMBuffer& buffer);

} // namespace Curtain
