import QtQuick

/// A word in a status colour on its tint, with a dot before it where `hasDot`. `tone` is a status colour's name.
Rectangle {
    id: capsule

    property string tone: "gray"
    property string text
    property bool hasDot: false
    property var style: Theme.smallMedium
    property real inset: 11

    implicitWidth: row.implicitWidth + 2 * inset
    implicitHeight: 26
    radius: height / 2
    color: Theme.headerTint(tone)
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Behavior on color { ColorAnimation { duration: Theme.switchTime; easing.type: Theme.easing } }

    // A positioner would move its items a frame later.
    Item {
        id: row
        anchors.centerIn: parent
        implicitWidth: words.implicitWidth + (capsule.hasDot ? dot.width + 7 : 0)
        width: implicitWidth
        height: words.height

        StatusDot {
            id: dot
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            visible: capsule.hasDot
            tone: capsule.tone
        }
        StyledText {
            id: words
            anchors.right: parent.right
            isSpoken: false
            text: capsule.text
            style: capsule.style
            color: Theme.text(capsule.tone)
        }
    }
}
