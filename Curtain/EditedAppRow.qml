import QtQuick
import Curtain
import Curtain.Controls

/// A row of the apps that can be made private: an app with the button that changes it, or what parts the private ones
/// from the others.
Item {
    id: choice

    required property string kind
    required property string bundleID
    required property string name
    required property string icon
    readonly property bool isDivider: kind === "divider"
    readonly property bool isPrivate: kind === "privateApp"
    /// Whether the keyboard acts on it.
    property bool isCurrent: false
    required property ViewTexts texts

    signal toggled

    implicitHeight: isDivider ? 9 : 32
    Accessible.role: isDivider ? Accessible.Separator : Accessible.ListItem
    Accessible.name: name
    Accessible.focused: isCurrent
    Accessible.onPressAction: act()

    function act(): void {
        if (!isDivider) {
            toggled();
        }
    }

    Rectangle {
        anchors.left: parent.left
        width: 288
        height: 1
        anchors.verticalCenter: parent.verticalCenter
        visible: choice.isDivider
        color: Theme.hairline
    }
    Item {
        anchors.left: parent.left
        width: 288
        height: parent.height
        visible: !choice.isDivider

        Rectangle {
            anchors.fill: parent
            visible: choice.isCurrent
            radius: Theme.fieldRadius
            color: "transparent"
            border.width: 2
            border.color: Theme.accent
        }
        AppIcon {
            id: choiceIcon
            anchors.left: parent.left
            anchors.leftMargin: choice.isCurrent ? 5 : 0
            anchors.verticalCenter: parent.verticalCenter
            size: 22
            source: choice.icon
        }
        StyledText {
            anchors.left: choiceIcon.right
            anchors.leftMargin: 10
            anchors.right: toggle.left
            anchors.rightMargin: 8
            height: parent.height
            isSpoken: false
            text: choice.name
            style: Theme.bodyMedium
            mayElide: true
        }
        IconButton {
            id: toggle
            objectName: (choice.isPrivate ? "remove " : "add ") + choice.bundleID
            anchors.right: parent.right
            anchors.rightMargin: -6
            anchors.verticalCenter: parent.verticalCenter
            // The list has the keyboard; its current row acts.
            focusPolicy: Qt.NoFocus
            symbol: choice.isPrivate ? "minus.circle.fill" : "plus"
            symbolSize: choice.isPrivate ? 19 : 18
            ink: choice.isPrivate ? Theme.gray : Theme.accent
            inkHover: choice.isPrivate ? Theme.red : Theme.accentHover
            tip: choice.isPrivate ? choice.texts.remove : choice.texts.add
            Accessible.name: tip + ": " + choice.name
            onClicked: choice.act()
            // Its second click would be for the app that is there by then, and is none where this is heard.
            onDoubleClicked: {}
        }
    }
}
