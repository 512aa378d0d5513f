import QtQuick

/// A row of a card of settings: words at the start, a control at the end. The words wrap before they are cut short.
Item {
    id: row

    property string label
    property real leastHeight: 44
    /// The first row of a card has no line above it.
    property bool isFirst: false
    default property alias control: place.data

    signal tapped

    implicitHeight: Math.max(leastHeight, words.implicitHeight + 8)

    TapHandler {
        onTapped: row.tapped()
    }
    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: Theme.rowInset
        anchors.right: parent.right
        height: 1
        visible: !row.isFirst
        color: Theme.well
    }
    StyledText {
        id: words
        // The control bears them as its name.
        isSpoken: false
        anchors.left: parent.left
        anchors.leftMargin: Theme.rowInset
        anchors.right: place.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        text: row.label
        wrapMode: Text.Wrap
    }
    Item {
        id: place
        anchors.right: parent.right
        anchors.rightMargin: Theme.rowInset
        anchors.verticalCenter: parent.verticalCenter
        width: childrenRect.width
        height: childrenRect.height
    }
}
