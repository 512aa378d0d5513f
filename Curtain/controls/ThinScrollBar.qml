import QtQuick
import QtQuick.Templates as T

/// Shows how far a list has been scrolled, where it can be.
T.ScrollBar {
    id: bar

    implicitWidth: 8
    implicitHeight: 8
    padding: 2
    minimumSize: 0.1
    visible: size < 1
    // For the mouse; lists scroll to what has the keyboard.
    Accessible.ignored: true

    contentItem: Rectangle {
        implicitWidth: 4
        implicitHeight: 4
        radius: 2
        color: Theme.scrollThumb
    }
}
