import Curtain.Items 1.0
import QtQuick
import "controls"

/// The camera manager's test photo, scaled to fit.
Item {
    id: root

    property QtObject camera

    Picture {
        anchors.fill: parent
        picture: root.camera ? root.camera.capturedPhoto : undefined
    }
}
