import QtQuick
import QtQuick.Window

/// The popover's surface: rounded where the window lets what lies behind it shine through, square-edged and
/// filled to the corner elsewhere.
Rectangle {
    readonly property bool isRounded: Window.window !== null && Window.window.color.a < 1

    color: Theme.window
    radius: isRounded ? Theme.popoverRadius : 0
    border.width: 1
    border.color: Theme.edge
}
