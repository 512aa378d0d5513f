import QtQuick

/// A note in small letters that the user should not overlook, with a button after it where `action` says what it does.
Item {
    id: caption

    property alias text: words.text
    property string action
    /// The name of the button's object.
    property string actionName

    /// Why the button has the keyboard.
    signal acted(reason: int)

    implicitHeight: Math.ceil(Math.max(words.implicitHeight, remedy.active ? remedy.implicitHeight : 0))

    Symbol {
        anchors.left: parent.left
        y: words.y + 1
        name: "exclamationmark.triangle.fill"
        size: 14
        color: Theme.orange
    }
    StyledText {
        id: words
        anchors.left: parent.left
        anchors.leftMargin: 21
        anchors.right: remedy.left
        anchors.rightMargin: remedy.active ? 12 : 0
        anchors.verticalCenter: parent.verticalCenter
        style: Theme.small
        color: Theme.orangeText
        wrapMode: Text.Wrap
    }
    Loader {
        id: remedy
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: active ? implicitWidth : 0
        active: caption.action !== ""
        sourceComponent: ChipButton {
            objectName: caption.actionName
            text: caption.action
            Accessible.description: caption.text
            onClicked: caption.acted(focusReason)
        }
    }
}
