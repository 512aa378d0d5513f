import QtQuick
import QtQuick.Window
import Curtain.Controls

/// What the camera sees, or why it sees nothing.
Item {
    id: card

    required property QtObject model
    property bool isMirroredLayout: false

    readonly property string cameraState: model.cameraState
    readonly property bool lacksPicture: preview.item !== null && !preview.item.hasPicture
        && Window.window !== null && Window.window.visible
    /// A camera that has just been opened may take a moment; one that stays dark has gone.
    property bool isDark: false
    readonly property bool isExplained: cameraState === "noPermission" || cameraState === "noCameraFound"

    onLacksPictureChanged: isDark = false

    Timer {
        interval: 1500
        running: card.lacksPicture
        onTriggered: card.isDark = true
    }
    Rectangle {
        anchors.fill: parent
        radius: Theme.cardRadius
        color: card.isExplained ? Theme.card : Theme.stage
        border.width: card.isExplained ? 1 : 0
        border.color: Theme.hairline
    }

    Loader {
        id: preview
        anchors.fill: parent
        active: card.cameraState === "available"
        sourceComponent: Item {
            readonly property alias hasPicture: picture.hasPicture

            CameraPreviewView {
                id: picture
                objectName: "preview"
                anchors.fill: parent
                camera: card.model.camera
                mirrored: card.model.isMirrored
                Accessible.role: Accessible.Graphic
                Accessible.name: card.model.text("cameraPreview")
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
                visible: card.model.isReady && picture.hasPicture
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
                        text: card.model.text("youAreReady")
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
                    on: card.model.isMirrored
                    tip: card.model.text("mirrorPicture")
                    onClicked: card.model.toggleMirrored()
                }
                IconButton {
                    id: cameraButton
                    objectName: "cameraMenu"
                    implicitWidth: 30
                    isOverPicture: true
                    symbol: "arrow.triangle.2.circlepath.camera"
                    symbolSize: 18
                    tip: card.model.text("camera")
                    Accessible.role: Accessible.ButtonMenu
                    onClicked: {
                        choices.model = card.model.cameras();
                        menu.openBelow(cameraButton, 6);
                    }

                    PopupMenu {
                        id: menu
                        isMirrored: card.isMirroredLayout

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
                                onTriggered: card.model.selectCamera(modelData.id)
                            }
                            onObjectAdded: (index, object) => menu.insertItem(index, object)
                            onObjectRemoved: (index, object) => menu.removeItem(object)
                        }
                    }
                }
            }
        }
    }

    Column {
        anchors.centerIn: parent
        width: parent.width - 32
        visible: card.cameraState === "noPermission"
        spacing: 10

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "video.slash"
            size: 30
            color: Theme.ink2
        }
        StyledText {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: card.model.text("cameraNeedsAccess")
            style: Theme.bodyMedium
        }
        ActionButton {
            objectName: "cameraSettings"
            anchors.horizontalCenter: parent.horizontalCenter
            kind: "tonal"
            implicitHeight: 32
            text: card.model.text("openSystemSettings")
            onClicked: card.model.openCameraSettings()
        }
        StyledText {
            width: parent.width
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: card.model.cameraSettingsProblem
            style: Theme.small
            color: Theme.ink2
        }
    }
    StyledText {
        anchors.centerIn: parent
        width: parent.width - 32
        visible: card.cameraState === "noCameraFound"
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: card.model.text("noCameraFound")
        color: Theme.ink2
    }
    Column {
        anchors.centerIn: parent
        width: parent.width - 32
        objectName: "noPicture"
        visible: card.cameraState === "unavailable" || card.isDark || card.model.cameraProblem !== ""
        spacing: 8

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "video"
            size: 34
            color: Theme.stageSymbol
        }
        StyledText {
            objectName: "cameraProblem"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: card.model.cameraProblem || card.model.text("cameraPreview")
            style: Theme.small
            color: Theme.stageInk
        }
    }
}
