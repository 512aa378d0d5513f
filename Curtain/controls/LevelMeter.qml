import QtQuick

/// A live level from 0 to 1.
Rectangle {
    id: meter

    property real value: 0
    property string name
    property string tone: "green"

    implicitWidth: 90
    implicitHeight: 7
    radius: height / 2
    color: Theme.well
    Accessible.role: Accessible.ProgressBar
    Accessible.name: name
    Accessible.description: Math.round(value * 100) + "%"

    Rectangle {
        anchors.left: parent.left
        height: parent.height
        width: meter.value > 0.01 ? Math.max(height, parent.width * meter.value) : 0
        radius: height / 2
        color: Theme.solid(meter.tone)

        Behavior on width { NumberAnimation { duration: Theme.meterTime; easing.type: Theme.easing } }
    }
}
