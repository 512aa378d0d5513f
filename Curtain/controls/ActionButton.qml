import QtQuick

/// A button with words: `kind` is "primary", "tonal" or "quiet". 40 points high unless told otherwise; lower ones
/// are set a size smaller. Grows with its text.
ButtonBase {
    id: control

    property string kind: "primary"
    property string symbol
    property real symbolSize: isLarge ? 19 : 17

    readonly property bool isLarge: implicitHeight >= 40
    readonly property real radius: isLarge ? Theme.buttonRadius : Theme.fieldRadius
    readonly property color ink: !enabled ? Theme.disabledInk
        : kind === "primary" ? Theme.accentInk
        : kind === "quiet" ? Theme.ink
        : down ? Theme.accentPressed : hovered ? Theme.accentHover : Theme.accent
    readonly property color fill: !enabled ? (kind === "primary" ? Theme.disabledFill : Theme.well)
        : kind === "primary" ? (down ? Theme.accentPressed : hovered ? Theme.accentHover : Theme.accent)
        : kind === "quiet" ? (down ? Theme.quietPressed : hovered ? Theme.quietHover : Theme.quiet)
        : down ? Theme.accentTintPressed : hovered ? Theme.accentTintHover : Theme.accentTint

    implicitHeight: 40
    leftPadding: isLarge ? 18 : 14
    rightPadding: leftPadding

    contentItem: Item {
        implicitWidth: row.implicitWidth
        implicitHeight: row.implicitHeight

        Row {
            id: row
            anchors.centerIn: parent
            spacing: control.isLarge ? 8 : 7

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.symbol !== ""
                name: control.symbol
                size: control.symbolSize
                color: control.ink
            }
            StyledText {
                anchors.verticalCenter: parent.verticalCenter
                isSpoken: false
                text: control.text
                style: control.isLarge ? Theme.button : Theme.bodyStrong
                color: control.ink
            }
        }
    }
    background: Rectangle {
        radius: control.radius
        color: control.fill

        Behavior on color { ColorAnimation { duration: Theme.hoverTime; easing.type: Theme.easing } }

        FocusRing {
            visible: control.visualFocus
            controlRadius: control.radius
        }
    }
}
