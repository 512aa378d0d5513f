import QtQuick
import QtQuick.Templates as T

T.MenuSeparator {
    implicitHeight: 11
    padding: 0
    contentItem: Item {
        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: 8
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            height: 1
            color: Theme.hairline
        }
    }
}
