import QtQuick
import QtQuick.Templates as T

/// A line to search with. Escape and the button at its end empty it.
T.TextField {
    id: field

    property string clearName
    property bool showsSymbol: true

    implicitWidth: 200
    implicitHeight: 32
    leftPadding: mirrored ? trailing : leading
    rightPadding: mirrored ? leading : trailing
    verticalAlignment: Text.AlignVCenter
    horizontalAlignment: Text.AlignLeft
    font.family: Theme.fontFamily
    font.pixelSize: Theme.body.size
    color: enabled ? Theme.ink : Theme.disabledInk
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    selectByMouse: true
    maximumLength: 200
    Accessible.role: Accessible.EditableText
    Accessible.name: placeholderText
    Keys.onEscapePressed: event => {
        event.accepted = field.text !== "";
        field.clear();
    }

    readonly property bool mirrored: LayoutMirroring.enabled
    readonly property real leading: showsSymbol ? 33 : 10
    readonly property real trailing: text !== "" ? 34 : 10

    background: Rectangle {
        radius: Theme.fieldRadius
        color: field.enabled ? Theme.card : Theme.window
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.accent : field.hovered ? Theme.fieldEdgeHover : Theme.fieldEdge
    }

    cursorDelegate: Rectangle {
        width: 1
        color: Theme.accent
        visible: field.cursorVisible
    }
    Symbol {
        anchors.left: parent.left
        anchors.leftMargin: 9
        anchors.verticalCenter: parent.verticalCenter
        visible: field.showsSymbol
        name: "magnifyingglass"
        size: 16
        color: field.enabled ? Theme.ink2 : Theme.disabledInk
    }
    StyledText {
        anchors.fill: parent
        anchors.leftMargin: field.leading
        anchors.rightMargin: 10
        visible: field.text === "" && field.preeditText === ""
        text: field.placeholderText
        color: field.enabled ? Theme.ink3 : Theme.disabledInk
        isSpoken: false
    }
    IconButton {
        anchors.right: parent.right
        anchors.rightMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        visible: field.text !== "" && field.enabled
        implicitWidth: 24
        symbol: "xmark.circle.fill"
        symbolSize: 16
        ink: Theme.gray
        inkHover: Theme.ink2
        tip: field.clearName
        // Tab leads to what was searched for; the field empties itself by its own keys.
        focusPolicy: Qt.NoFocus
        onClicked: {
            field.clear();
            field.forceActiveFocus();
        }
    }
}
