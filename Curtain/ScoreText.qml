import QtQuick

/// A score and its range: a left-to-right run in every language.
Item {
    id: score

    property int value: 0
    property string range
    property var valueStyle: Theme.score
    property real gap: 0

    implicitWidth: row.implicitWidth
    implicitHeight: valueStyle.line

    Row {
        id: row
        height: parent.height
        spacing: score.gap
        LayoutMirroring.enabled: false
        LayoutMirroring.childrenInherit: true

        StyledText {
            id: number
            property bool isLeftToRight: true
            isSpoken: false
            height: parent.height
            text: score.value
            style: score.valueStyle
        }
        StyledText {
            property bool isLeftToRight: true
            isSpoken: false
            anchors.baseline: number.baseline
            text: score.range
            style: Theme.scoreOf
            color: Theme.ink3
        }
    }
}
