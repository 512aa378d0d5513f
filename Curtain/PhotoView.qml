import Curtain.Items
import QtQuick
import Curtain.Controls

/// The camera manager's test photo, scaled to fit.
Item {
    id: root

    property QtObject camera

    Picture {
        anchors.fill: parent
        picture: root.camera ? root.camera.capturedPhoto : undefined
    }
}
