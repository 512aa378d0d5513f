import Curtain.Items
import QtQuick
import Curtain
import Curtain.Controls

/// The live picture of a capture session. It fills the view and is cropped, never letterboxed; without one the
/// view is dark.
Rectangle {
    id: root

    /// The camera manager whose session is shown.
    property CameraPreviewManager camera
    property bool mirrored: false
    readonly property bool hasPicture: preview.hasPicture

    color: Theme.stage

    VideoPreview {
        id: preview
        anchors.fill: parent
        session: root.camera ? root.camera.session : undefined
        mirrored: root.mirrored
    }
}
