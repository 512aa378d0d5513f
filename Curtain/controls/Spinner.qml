import QtQuick

/// Says that something is on its way.
Item {
    id: spinner

    implicitWidth: 24
    implicitHeight: 24
    Accessible.role: Accessible.Animation
    Accessible.name: "…"

    Repeater {
        model: 8

        Rectangle {
            required property int index

            x: 10 + 9 * Math.cos(index * Math.PI / 4)
            y: 10 + 9 * Math.sin(index * Math.PI / 4)
            width: 4
            height: 4
            radius: 2
            color: Theme.ink2
            opacity: 0.2 + 0.1 * index
        }
    }
    RotationAnimation on rotation {
        running: spinner.visible && !Theme.reducedMotion
        from: 0
        to: 360
        duration: 900
        loops: Animation.Infinite
    }
}
