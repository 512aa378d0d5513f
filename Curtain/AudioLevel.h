#pragma once

#include "platform/AudioFormat.h"

namespace Curtain {

/// How loud the first channel of a buffer is, from 0 to 1: twenty times the root of the mean square, cut off
/// at
/// 1. A buffer with samples that are not numbers counts as silent. Safe to call on a real-time thread.
float audioLevel(const Platform::AudioPCMBuffer& buffer);

} // namespace Curtain
