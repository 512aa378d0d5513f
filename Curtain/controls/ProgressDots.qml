import QtQuick

/// Where in a row of steps the user is: a dot for each, a capsule for the current one.
Item {
    id: dots

    property int index: 0
    property int total: 0

    implicitWidth: row.implicitWidth
    implicitHeight: 7
    Accessible.role: Accessible.ProgressBar
    Accessible.name: (index + 1) + " / " + total

    Row {
        id: row
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 6

        Repeater {
            model: dots.total

            Item {
                id: dot

                required property int index
                readonly property bool isCurrent: index === dots.index

                objectName: "dot" + index
                width: isCurrent ? 20 : 7
                height: 7

                Behavior on width { NumberAnimation { duration: Theme.dotTime; easing.type: Theme.easing } }

                Rectangle {
                    anchors.fill: parent
                    radius: height / 2
                    color: Theme.progressIdle
                    opacity: dot.isCurrent ? 0 : 1

                    Behavior on opacity { NumberAnimation { duration: Theme.dotTime; easing.type: Theme.easing } }
                }
                Rectangle {
                    anchors.fill: parent
                    radius: height / 2
                    opacity: dot.isCurrent ? 1 : 0
                    gradient: Gradient {
                        orientation: Gradient.Horizontal
                        GradientStop { position: 0; color: dots.LayoutMirroring.enabled ? Theme.progressEnd : Theme.progressStart }
                        GradientStop { position: 1; color: dots.LayoutMirroring.enabled ? Theme.progressStart : Theme.progressEnd }
                    }

                    Behavior on opacity { NumberAnimation { duration: Theme.dotTime; easing.type: Theme.easing } }
                }
            }
        }
    }
}
