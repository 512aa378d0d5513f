import QtQuick
import QtQuick.Templates as T

/// A switch without words; `text` is its name for assistive technology.
T.Switch {
    id: control

    implicitWidth: 36
    implicitHeight: 20
    padding: 0
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: text
    Accessible.onPressAction: flip()
    Accessible.onToggleAction: flip()
    // A key that is held down counts once.
    Keys.onSpacePressed: event => event.accepted = event.isAutoRepeat
    Keys.onReleased: event => event.accepted = event.isAutoRepeat
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) flip(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) flip(); }

    function flip(): void {
        toggle();
        toggled();
    }

    contentItem: null
    indicator: Rectangle {
        implicitWidth: 36
        implicitHeight: 20
        radius: 10
        color: control.checked
            ? (!control.enabled ? Theme.disabledAccent
                : control.down ? Theme.accentPressed : control.hovered ? Theme.accentHover : Theme.accent)
            : (!control.enabled ? Theme.disabledFill
                : control.down ? Theme.switchOffPressed : control.hovered ? Theme.switchOffHover : Theme.switchOff)

        Behavior on color { ColorAnimation { duration: Theme.hoverTime; easing.type: Theme.easing } }

        Rectangle {
            readonly property real start: control.visualPosition * (parent.width - width - 4) + 2
            x: start
            y: 2
            width: 16
            height: 16
            radius: 8
            color: Theme.accentInk

            Behavior on x {
                enabled: !control.down
                NumberAnimation { duration: Theme.switchTime; easing.type: Theme.easing }
            }
        }
        FocusRing {
            visible: control.visualFocus
            controlRadius: 10
        }
    }
}
