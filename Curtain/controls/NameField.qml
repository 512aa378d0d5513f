import QtQuick
import QtQuick.Templates as T

/// A line for a name. What it is for is its `Accessible.name`.
T.TextField {
    id: field

    implicitWidth: 200
    implicitHeight: 32
    leftPadding: 10
    rightPadding: 10
    verticalAlignment: Text.AlignVCenter
    horizontalAlignment: Text.AlignLeft
    font.family: Theme.fontFamily
    font.pixelSize: Theme.body.size
    color: Theme.ink
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    selectByMouse: true
    Accessible.role: Accessible.EditableText

    background: Rectangle {
        radius: Theme.fieldRadius
        color: Theme.card
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.accent : field.hovered ? Theme.fieldEdgeHover : Theme.fieldEdge
    }

    cursorDelegate: Rectangle {
        width: 1
        color: Theme.accent
        visible: field.cursorVisible
    }
}
