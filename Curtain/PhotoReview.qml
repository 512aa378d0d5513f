import QtQuick
import Curtain
import Curtain.Controls

/// The test photo, and what can be done with it.
Item {
    id: review

    required property MeetingReadinessViewModel model

    /// The photo is about to go, by a button that had the keyboard for this reason.
    signal leaving(reason: int)

    Rectangle {
        id: area
        objectName: "photo"
        width: parent.width
        height: 238
        color: Theme.photoMat

        PhotoView {
            anchors.fill: parent
            camera: review.model.camera
            Accessible.role: Accessible.Graphic
            Accessible.name: review.model.texts.camera
        }
        Rectangle {
            id: flash
            objectName: "flash"
            anchors.fill: parent
            color: Theme.flash
            opacity: 0
            visible: opacity > 0

            SequentialAnimation {
                id: flashing
                running: true
                NumberAnimation { target: flash; property: "opacity"; to: 1; duration: Theme.flashInTime; easing.type: Theme.easing }
                NumberAnimation { target: flash; property: "opacity"; to: 0; duration: Theme.flashOutTime; easing.type: Theme.easing }
            }
            Connections {
                target: review.model
                function onPhotoTaken() {
                    flashing.restart();
                }
            }
        }
        RoundFrame {
            anchors.fill: parent
        }
    }
    ActionButton {
        id: back
        objectName: "photoBack"
        anchors.left: parent.left
        y: 250
        width: Math.max(112, implicitWidth)
        implicitHeight: 32
        kind: "quiet"
        symbol: "chevron.backward"
        text: review.model.texts.cancel
        onClicked: {
            review.leaving(focusReason);
            review.model.discardPhoto();
        }
    }
    StyledText {
        objectName: "photoNews"
        anchors.left: back.right
        anchors.leftMargin: 14
        anchors.right: deeds.left
        anchors.rightMargin: 14
        y: 250
        height: 32
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
        text: review.model.photoNews
        style: Theme.small
        color: Theme.text(review.model.photoNewsTone)
    }
    Row {
        id: deeds
        anchors.right: parent.right
        y: 250
        spacing: 8

        ActionButton {
            objectName: "photoCopy"
            width: Math.max(112, implicitWidth)
            implicitHeight: 32
            kind: "quiet"
            symbol: "doc.on.clipboard"
            text: review.model.texts.copyClip
            onClicked: review.model.copyPhoto()
        }
        ActionButton {
            objectName: "photoSave"
            width: Math.max(112, implicitWidth)
            implicitHeight: 32
            kind: "tonal"
            symbol: "square.and.arrow.down"
            text: review.model.texts.saveFile
            onClicked: review.model.savePhoto()
        }
    }
}
