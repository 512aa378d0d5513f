import QtQuick

/// A small capsule. It turns `tonal` where it remedies a warning.
ButtonBase {
    id: control

    property bool tonal: false

    readonly property color ink: !enabled ? Theme.disabledInk
        : !tonal ? Theme.ink
        : down ? Theme.accentPressed : hovered ? Theme.accentHover : Theme.accent
    readonly property color fill: !enabled ? Theme.window
        : tonal ? (down ? Theme.accentTintPressed : hovered ? Theme.accentTintHover : Theme.accentTint)
        : down ? Theme.wellPressed : hovered ? Theme.wellHover : Theme.well

    implicitHeight: 24
    leftPadding: 12
    rightPadding: 12

    contentItem: StyledText {
        isSpoken: false
        text: control.text
        style: Theme.smallMedium
        color: control.ink
        horizontalAlignment: Text.AlignHCenter
    }
    background: Rectangle {
        radius: height / 2
        color: control.fill

        Behavior on color { ColorAnimation { duration: Theme.hoverTime; easing.type: Theme.easing } }

        FocusRing {
            visible: control.visualFocus
            controlRadius: parent.radius
        }
    }
}
