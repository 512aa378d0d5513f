import QtQuick
import Curtain.Controls

/// A microphone's level as a row of bars that rise with the voice.
Item {
    id: bar

    /// 0 to 1.
    property real level: 0
    /// What is drawn; it follows the level smoothly.
    property real shownLevel: level

    readonly property int segments: 8
    readonly property real innerHeight: height - 48

    Behavior on shownLevel { NumberAnimation { duration: Theme.meterTime; easing.type: Theme.easing } }

    Rectangle {
        anchors.fill: parent
        radius: Theme.liveAreaRadius
        color: Theme.levelBackdrop
    }
    Row {
        anchors.centerIn: parent
        height: bar.innerHeight
        spacing: 18

        Repeater {
            model: bar.segments

            Rectangle {
                required property int index

                objectName: "segment" + index
                // Anchors would put it on whole points.
                y: (bar.innerHeight - height) / 2
                width: 18
                height: Math.max(8, bar.innerHeight * Math.min((0.4 + 0.1 * index) * bar.shownLevel, 1))
                radius: Math.min(width, height) / 2
                color: index < 3 ? Theme.levelGreen : index < 6 ? Theme.levelYellow : Theme.levelOrange
                opacity: index / 8 < bar.shownLevel ? 1 : Theme.levelUnlit
            }
        }
    }
}
