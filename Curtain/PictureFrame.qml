import QtQuick

/// Rounds the corners of a square picture below it, which fills the same place: the corners are painted in the
/// colour of what lies behind the picture. Covers a few points around it.
Item {
    property real radius: Theme.liveAreaRadius
    property color behind: Theme.window

    Rectangle {
        // Wide enough to reach the corner's tip across the curve.
        readonly property real reach: Math.ceil(parent.radius * 0.42)

        anchors.fill: parent
        anchors.margins: -reach
        radius: parent.radius + reach
        color: "transparent"
        border.width: reach
        border.color: parent.behind
    }
    Rectangle {
        anchors.fill: parent
        radius: parent.radius
        color: "transparent"
        border.width: 1
        border.color: Theme.pictureBorder
    }
}
