import QtQuick

/// Where in a row of steps the user is: a dot for each, a capsule for the current one.
Item {
    id: dots

    property int index: 0
    property int total: 0

    readonly property color leftColor: LayoutMirroring.enabled ? Theme.progressEnd : Theme.progressStart
    readonly property color rightColor: LayoutMirroring.enabled ? Theme.progressStart : Theme.progressEnd

    implicitWidth: row.implicitWidth
    implicitHeight: 7
    Accessible.role: Accessible.ProgressBar
    Accessible.name: (index + 1) + " / " + total

    Row {
        id: row
        x: Math.round((parent.width - width) / 2)
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
                // Ends of their own: a gradient is drawn without smooth corners.
                Item {
                    anchors.fill: parent
                    opacity: dot.isCurrent ? 1 : 0

                    Behavior on opacity { NumberAnimation { duration: Theme.dotTime; easing.type: Theme.easing } }

                    Rectangle {
                        width: 7
                        height: 7
                        radius: 3.5
                        color: dots.leftColor
                    }
                    Rectangle {
                        x: parent.width - 7
                        width: 7
                        height: 7
                        radius: 3.5
                        color: dots.rightColor
                    }
                    Rectangle {
                        x: 3
                        width: Math.max(0, parent.width - 6)
                        height: 7
                        gradient: Gradient {
                            orientation: Gradient.Horizontal
                            GradientStop { position: 0; color: dots.leftColor }
                            GradientStop { position: 1; color: dots.rightColor }
                        }
                    }
                }
            }
        }
    }
}
