import QtQuick

/// Shows which control has the keyboard; drawn around `parent`.
Rectangle {
    /// Of the control.
    property real controlRadius: Theme.fieldRadius

    anchors.fill: parent
    anchors.margins: -4
    radius: controlRadius + 4
    color: "transparent"
    border.width: 2
    border.color: Theme.accent
}
