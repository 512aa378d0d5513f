import QtQuick
import QtQuick.Window
import Curtain
import Curtain.Controls

/// What the camera sees, or why it sees nothing.
Item {
    id: card

    required property MeetingReadinessViewModel model
    property bool isMirroredLayout: false

    readonly property string cameraState: model.cameraState
    readonly property bool lacksPicture: preview.item !== null && !(preview.item as LiveCamera).hasPicture
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
        sourceComponent: LiveCamera {
            model: card.model
            isMirroredLayout: card.isMirroredLayout
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
            text: card.model.texts.cameraNeedsAccess
            style: Theme.bodyMedium
        }
        ActionButton {
            objectName: "cameraSettings"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: !card.model.isCameraForbidden
            kind: "tonal"
            implicitHeight: 32
            text: card.model.texts.openSystemSettings
            onClicked: card.model.openCameraSettings()
        }
        StyledText {
            width: parent.width
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: card.model.isCameraForbidden ? card.model.texts.cameraForbidden : card.model.cameraSettingsProblem
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
        text: card.model.texts.noCameraFound
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
            text: card.model.cameraProblem || card.model.texts.cameraPreview
            style: Theme.small
            color: Theme.stageInk
        }
    }
}
