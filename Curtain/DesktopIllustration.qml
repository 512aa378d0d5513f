import QtQuick
import Curtain.Controls

/// A small picture of a desktop, with files on it until they are cleared away.
Item {
    id: illustration

    property bool cleared: false

    Rectangle {
        anchors.fill: parent
        color: Theme.accentTintPressed
    }
    Image {
        anchors.fill: parent
        source: "qrc:/curtain/wallpaper.svg"
        sourceSize.width: width
        fillMode: Image.PreserveAspectCrop
    }
    Repeater {
        // From the side on which desktops put their files.
        model: [Qt.point(48, 24), Qt.point(48, 74), Qt.point(48, 124), Qt.point(100, 24), Qt.point(100, 74), Qt.point(344, 24)]

        Image {
            required property point modelData
            required property int index

            objectName: "file" + index
            x: illustration.LayoutMirroring.enabled ? modelData.x - width : illustration.width - modelData.x
            y: modelData.y + (illustration.cleared ? 6 : 0)
            width: 22.4
            height: 29.12
            source: "qrc:/curtain/document.svg"
            sourceSize.width: width
            sourceSize.height: height
            opacity: illustration.cleared ? 0 : 1
            visible: opacity > 0

            Behavior on opacity { NumberAnimation { duration: Theme.iconsLeaveTime; easing.type: Theme.easing } }
            Behavior on y { NumberAnimation { duration: Theme.iconsLeaveTime; easing.type: Theme.easing } }
        }
    }
    RoundFrame {
        anchors.fill: parent
        radius: Theme.liveAreaRadius
    }
}
