import QtQuick

/// A symbol to click on: 28 points unless told otherwise, tinted while `on`, round and dark on a picture, light there while `on`. `tip` is
/// its name.
ButtonBase {
    id: control

    required property string symbol
    property real symbolSize: 17
    property bool on: false
    property bool isOverPicture: false
    property color ink: Theme.ink2
    property color inkHover: ink

    implicitWidth: 28
    implicitHeight: implicitWidth
    padding: 0

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: control.symbol
            size: control.symbolSize
            color: !control.enabled ? Theme.disabledInk
                : control.isOverPicture ? (control.on ? Theme.overlayOnInk : Theme.overlayInk)
                : control.on ? (control.down ? Theme.accentPressed : control.hovered ? Theme.accentHover : Theme.accent)
                : control.hovered || control.down ? control.inkHover : control.ink
        }
    }
    background: Rectangle {
        radius: control.isOverPicture ? width / 2 : Theme.fieldRadius
        color: control.isOverPicture && control.on
            ? (control.down ? Theme.overlayOnPressed : control.hovered ? Theme.overlayOnHover : Theme.overlayOn)
            : control.isOverPicture
            ? (control.down ? Theme.overlayPressed : control.hovered ? Theme.overlayHover : Theme.overlay)
            : control.on
            ? (control.down ? Theme.accentTintPressed : control.hovered ? Theme.accentTintHover : Theme.accentTint)
            : !control.enabled ? "transparent"
            : control.down ? Theme.wellPressed : control.hovered ? Theme.wellHover : "transparent"

        FocusRing {
            visible: control.visualFocus
            controlRadius: parent.radius
            border.color: control.isOverPicture ? Theme.overlayInk : Theme.accent
        }
    }
}
