import QtQuick

/// An icon button that switches something `on` and off. It changes nothing by itself: a click asks for it.
IconButton {
    id: control

    checkable: true
    checked: on
    onToggled: checked = Qt.binding(() => control.on)
    Accessible.onToggleAction: if (control.enabled) { control.clicked(); }
}
