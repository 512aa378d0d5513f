#pragma once

namespace LinuxPlatform {

enum class ColorScheme { light, dark };

} // namespace LinuxPlatform
