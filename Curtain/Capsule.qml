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

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 7

        StatusDot {
            anchors.verticalCenter: parent.verticalCenter
            visible: capsule.hasDot
            tone: capsule.tone
        }
        StyledText {
            anchors.verticalCenter: parent.verticalCenter
            isSpoken: false
            text: capsule.text
            style: capsule.style
            color: Theme.text(capsule.tone)
        }
    }
}
