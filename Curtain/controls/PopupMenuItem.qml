import QtQuick
import QtQuick.Templates as T

T.MenuItem {
    id: item

    /// Leaves room for a check mark in front.
    property bool canBeChosen: false
    property bool isChosen: false
    property bool mayElide: false

    readonly property color ink: !enabled ? Theme.disabledInk : highlighted || down ? Theme.accentInk : Theme.ink

    implicitWidth: Math.min(words.implicitWidth, 280) + leftPadding + rightPadding + (canBeChosen ? 24 : 0)
    implicitHeight: 32
    leftPadding: 10
    rightPadding: 10
    hoverEnabled: true
    focusPolicy: Qt.TabFocus
    Accessible.name: text
    Accessible.onPressAction: item.triggered()
    checkable: canBeChosen
    checked: isChosen
    onToggled: checked = Qt.binding(() => item.isChosen)
    Keys.onReturnPressed: item.triggered()
    Keys.onEnterPressed: item.triggered()

    contentItem: Item {
        Symbol {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            visible: item.isChosen
            name: "checkmark"
            size: 16
            color: item.ink
        }
        StyledText {
            id: words
            isSpoken: false
            anchors.fill: parent
            anchors.leftMargin: item.canBeChosen ? 24 : 0
            text: item.text
            style: Theme.bodyMedium
            color: item.ink
            mayElide: item.mayElide
        }
    }
    background: Rectangle {
        radius: Theme.menuItemRadius
        color: item.down ? Theme.accentPressed : item.highlighted ? Theme.accent : "transparent"
    }
}
