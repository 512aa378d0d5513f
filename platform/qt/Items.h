#pragma once

namespace QtPlatform {

/// Makes the items of this folder known to QML as "Curtain.Items" 1.0: Picture and VideoPreview. Calling it
/// again changes nothing.
void registerItems();

} // namespace QtPlatform
