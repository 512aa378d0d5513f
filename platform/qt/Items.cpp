#include "platform/qt/Items.h"

#include "platform/qt/PictureItem.h"
#include "platform/qt/VideoPreviewItem.h"

#include <QtQml>

namespace QtPlatform {

void registerItems() {
    constexpr auto module = "Curtain.Items";
    qmlRegisterType<PictureItem>(module, 1, 0, "Picture");
    qmlRegisterType<VideoPreviewItem>(module, 1, 0, "VideoPreview");
}

} // namespace QtPlatform
