import QtQuick

/// The shadow around a popover's window, which is larger than its content.
BorderImage {
    property var model

    source: "qrc:/curtain/shadow.png"
    border.left: 54
    border.right: 54
    border.top: 46
    border.bottom: 62
}
