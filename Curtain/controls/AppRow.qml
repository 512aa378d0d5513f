import QtQuick

/// An app of the list in the settings, with a switch. A click anywhere in the row flips it.
FocusScope {
    id: row

    required property string name
    required property bool isSelected
    required property string icon
    required property int index

    signal flipped

    function focusByKey(): void {
        toggle.forceActiveFocus(Qt.TabFocusReason);
        // It may have had the focus before the key came.
        toggle.focusReason = Qt.TabFocusReason;
    }

    implicitHeight: 36

    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: Theme.rowInset
        anchors.right: parent.right
        height: 1
        visible: row.index > 0
        color: Theme.well
    }
    TapHandler {
        onTapped: toggle.flip()
    }
    AppIcon {
        id: picture
        anchors.left: parent.left
        anchors.leftMargin: Theme.rowInset
        anchors.verticalCenter: parent.verticalCenter
        size: 22
        source: row.icon
    }
    StyledText {
        anchors.left: picture.right
        anchors.leftMargin: 10
        anchors.right: toggle.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        isSpoken: false
        text: row.name
        mayElide: true
    }
    ToggleSwitch {
        id: toggle
        objectName: "app " + row.name
        anchors.right: parent.right
        anchors.rightMargin: Theme.rowInset
        anchors.verticalCenter: parent.verticalCenter
        focus: true
        // The list is one stop on the way of Tab; arrows go from row to row.
        focusPolicy: Qt.ClickFocus
        text: row.name
        checked: row.isSelected
        onToggled: {
            checked = Qt.binding(() => row.isSelected);
            row.flipped();
        }
    }
}
