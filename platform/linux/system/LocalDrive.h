#pragma once

namespace LinuxPlatform {

/// Whether an open file or folder lies on a drive of this computer, which answers in any case.
bool isOnLocalDrive(int descriptor);

} // namespace LinuxPlatform
