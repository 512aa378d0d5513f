import QtQuick

/// A note in small letters that the user should not overlook.
Item {
    property alias text: words.text

    implicitHeight: Math.ceil(words.implicitHeight)

    Symbol {
        anchors.left: parent.left
        y: 1
        name: "exclamationmark.triangle.fill"
        size: 14
        color: Theme.orange
    }
    StyledText {
        id: words
        anchors.left: parent.left
        anchors.leftMargin: 21
        anchors.right: parent.right
        style: Theme.small
        color: Theme.orangeText
        wrapMode: Text.Wrap
    }
}
