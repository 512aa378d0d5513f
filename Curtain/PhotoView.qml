import Curtain.Items
import QtQuick
import Curtain

/// The camera manager's test photo, scaled to fit.
Item {
    id: root

    property CameraPreviewManager camera

    Picture {
        anchors.fill: parent
        picture: root.camera ? root.camera.capturedPhoto : undefined
    }
}
