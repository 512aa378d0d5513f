import QtQuick

/// One finding: its mark, what was looked for and, smaller, what was found.
Item {
    id: row

    property bool isOk: true
    property string title
    property string detail
    /// Whether the detail is one that should not be overlooked.
    property bool isWarning: false
    /// The mark in a word, for those who do not see it.
    property string finding
    /// A line parts the first row from nothing.
    property bool isFirst: false

    implicitWidth: parent.width
    implicitHeight: Math.max(detail === "" ? 46 : 56, words.implicitHeight + 20)
    Accessible.role: Accessible.ListItem
    Accessible.name: title + (detail === "" ? "" : ", " + detail) + (finding === "" ? "" : ": " + finding)

    Rectangle {
        visible: !row.isFirst
        anchors.left: parent.left
        anchors.leftMargin: Theme.rowInset
        anchors.right: parent.right
        height: 1
        color: Theme.well
    }
    Symbol {
        id: mark
        objectName: row.isOk ? "ok" : "missing"
        anchors.left: parent.left
        anchors.leftMargin: Theme.rowInset
        anchors.verticalCenter: parent.verticalCenter
        name: row.isOk ? "checkmark.circle.fill" : "minus.circle.fill"
        size: 20
        color: row.isOk ? Theme.green : Theme.gray
    }
    Column {
        id: words
        anchors.left: mark.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: Theme.rowInset
        anchors.verticalCenter: parent.verticalCenter

        StyledText {
            width: parent.width
            style: Theme.listLine
            isSpoken: false
            text: row.title
            wrapMode: Text.Wrap
        }
        StyledText {
            visible: row.detail !== ""
            width: parent.width
            style: Theme.small
            color: row.isWarning ? Theme.orangeText : Theme.ink2
            isSpoken: false
            text: row.detail
            wrapMode: Text.Wrap
        }
    }
}
