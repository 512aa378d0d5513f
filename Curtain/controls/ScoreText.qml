import QtQuick

/// A score and its range: a left-to-right run in every language.
Item {
    id: score

    property int value: 0
    property string range
    property var valueStyle: Theme.score
    property real gap: 0

    implicitWidth: number.width + gap + words.width
    implicitHeight: valueStyle.line

    // Not a positioner, which would move its items a frame later.
    StyledText {
        id: number
        property bool isLeftToRight: true
        isSpoken: false
        height: parent.height
        text: score.value
        style: score.valueStyle
        LayoutMirroring.enabled: false
    }
    StyledText {
        id: words
        property bool isLeftToRight: true
        isSpoken: false
        x: number.width + score.gap
        anchors.baseline: number.baseline
        text: score.range
        style: Theme.scoreOf
        color: Theme.ink3
        LayoutMirroring.enabled: false
    }
}
