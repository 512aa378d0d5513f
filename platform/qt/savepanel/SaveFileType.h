#pragma once

#include "platform/qt/savepanel/SaveFileModel.h"

#include <qqmlregistration.h>

namespace QtPlatform {

/// The name by which QML knows SaveFileModel, which is the program's and knows nothing of QML itself.
struct SaveFileType {
    Q_GADGET
    QML_FOREIGN(QtPlatform::SaveFileModel)
    QML_NAMED_ELEMENT(SaveFileModel)
    QML_UNCREATABLE("The save panel makes it")
};

} // namespace QtPlatform
