import QtQuick

/// Makes a square picture below it look round: four corner pieces in the colour behind the picture, and a thin
/// border. No piece of that is high: the toolkit's painter shares a translucent surface of a hundred rows among
/// threads, and this is painted with every picture of a camera.
Item {
    id: frame

    property real radius: Theme.cardRadius
    property color behind: Theme.window
    property color line: Theme.pictureBorder

    readonly property real side: height - 2 * radius
    readonly property int piecesOfSide: Math.ceil(side * Screen.devicePixelRatio / 80)

    // In each corner one in the colour behind, and the border on it.
    Repeater {
        model: 8

        Image {
            required property int index
            readonly property bool isLine: index % 2 === 1
            readonly property bool isRight: (index & 2) !== 0
            readonly property bool isBottom: index > 3

            LayoutMirroring.enabled: false
            x: isRight ? frame.width - width : 0
            y: isBottom ? frame.height - height : 0
            width: frame.radius
            height: frame.radius
            sourceSize.width: frame.radius
            sourceSize.height: frame.radius
            source: isLine ? "image://symbol/corner.line/" + String(frame.line).substring(1)
                : "image://symbol/corner.fill/" + String(frame.behind).substring(1)
            mirror: isRight
            mirrorVertically: isBottom
        }
    }
    Repeater {
        model: 2

        Rectangle {
            required property int index

            x: frame.radius
            y: index * (frame.height - 1)
            width: frame.width - 2 * frame.radius
            height: 1
            color: frame.line
        }
    }
    Repeater {
        model: 2 * frame.piecesOfSide

        Rectangle {
            required property int index
            readonly property int place: Math.floor(index / 2)
            readonly property real begin: Math.round(frame.side * place / frame.piecesOfSide)

            x: index % 2 === 1 ? frame.width - 1 : 0
            y: frame.radius + begin
            width: 1
            height: Math.round(frame.side * (place + 1) / frame.piecesOfSide) - begin
            color: frame.line
        }
    }
}
