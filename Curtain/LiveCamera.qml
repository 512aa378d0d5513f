import QtQuick
import Curtain
import Curtain.Controls

/// What the camera sees, with what can be done with it.
Item {
    id: live

    required property MeetingReadinessViewModel model
    property bool isMirroredLayout: false
    readonly property alias hasPicture: picture.hasPicture

    CameraPreviewView {
        id: picture
        objectName: "preview"
        anchors.fill: parent
        camera: live.model.camera
        mirrored: live.model.isMirrored
        Accessible.role: Accessible.Graphic
        Accessible.name: live.model.texts.cameraPreview
    }
    RoundFrame {
        anchors.fill: parent
    }
    Rectangle {
        objectName: "readyBadge"
        anchors.left: parent.left
        anchors.leftMargin: 10
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 10
        width: badge.implicitWidth + 22
        height: 26
        radius: 13
        color: Theme.overlay
        visible: live.model.isReady && picture.hasPicture
        Accessible.role: Accessible.StaticText
        Accessible.name: words.text

        Row {
            id: badge
            anchors.centerIn: parent
            spacing: 7

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                name: "checkmark.seal.fill"
                size: 16
                color: Theme.photoGreen
            }
            // Raised, to be read on a very bright picture too.
            Text {
                id: words
                anchors.verticalCenter: parent.verticalCenter
                textFormat: Text.PlainText
                text: live.model.texts.youAreReady
                font.family: Theme.fontFamily
                font.pixelSize: Theme.smallStrong.size
                font.weight: Theme.smallStrong.weight
                color: Theme.overlayInk
                style: Text.Raised
                styleColor: Theme.raisedText
                Accessible.ignored: true
            }
        }
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: 10
        y: 10
        spacing: 8

        IconToggle {
            objectName: "mirror"
            implicitWidth: 30
            isOverPicture: true
            symbol: "arrow.left.and.right.righttriangle.left.righttriangle.right"
            on: live.model.isMirrored
            tip: live.model.texts.mirrorPicture
            onClicked: live.model.toggleMirrored()
        }
        IconButton {
            id: cameraButton
            objectName: "cameraMenu"
            implicitWidth: 30
            isOverPicture: true
            symbol: "arrow.triangle.2.circlepath.camera"
            symbolSize: 18
            tip: live.model.texts.camera
            Accessible.role: Accessible.ButtonMenu
            onClicked: {
                choices.model = live.model.cameras();
                menu.openBelow(cameraButton, 6);
            }

            PopupMenu {
                id: menu
                isMirrored: live.isMirroredLayout

                Instantiator {
                    id: choices
                    model: []
                    delegate: PopupMenuItem {
                        required property var modelData

                        objectName: "camera " + modelData.id
                        text: modelData.name
                        canBeChosen: true
                        isChosen: modelData.isActive
                        mayElide: true
                        onTriggered: live.model.selectCamera(modelData.id)
                    }
                    onObjectAdded: (index, object) => menu.insertItem(index, object)
                    onObjectRemoved: (index, object) => menu.removeItem(object)
                }
            }
        }
    }
}
