import QtQuick

/// Makes a square picture below it look round: four corner pieces in the colour behind the picture, and a thin
/// border.
Item {
    id: frame

    property real radius: Theme.cardRadius
    property color behind: Theme.window
    property color line: Theme.pictureBorder

    Repeater {
        model: 4

        Image {
            required property int index
            readonly property bool isRight: index % 2 === 1
            readonly property bool isBottom: index > 1

            LayoutMirroring.enabled: false
            x: isRight ? frame.width - width : 0
            y: isBottom ? frame.height - height : 0
            width: frame.radius
            height: frame.radius
            sourceSize.width: frame.radius
            sourceSize.height: frame.radius
            source: "image://symbol/corner.fill/" + String(frame.behind).substring(1)
            mirror: isRight
            mirrorVertically: isBottom
        }
    }
    Rectangle {
        anchors.fill: parent
        radius: frame.radius
        color: "transparent"
        border.width: 1
        border.color: frame.line
    }
}
