import QtQuick
import Curtain
import Curtain.Controls

/// What the notice of a share has said, for those who did not see it, with its Undo.
Item {
    id: note
    objectName: "automaticNote"

    required property MeetingReadinessViewModel model

    implicitHeight: Math.max(undo.height, Math.ceil(words.implicitHeight))
    visible: model.isPrivacyModeAutomatic

    Symbol {
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        name: "eye.slash"
        size: 14
        color: Theme.accent
    }
    StyledText {
        id: words

        readonly property real room: note.width - 21 - 10 - undo.width

        anchors.left: parent.left
        anchors.leftMargin: 21
        anchors.verticalCenter: parent.verticalCenter
        // Two lines of about the same length, where one does not hold them.
        width: implicitWidth > room ? Math.min(room, Math.ceil(0.6 * implicitWidth)) : room
        text: note.model.texts.privacyOnBody
        style: Theme.small
        color: Theme.accent
        wrapMode: Text.Wrap
    }
    ChipButton {
        id: undo
        objectName: "undo"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        tonal: true
        text: note.model.texts.undo
        Accessible.description: words.text
        onClicked: note.model.undo()
    }
}
