import QtQuick

/// The shadow of a raised surface; fill the surface's parent with it, below the surface.
BorderImage {
    anchors.fill: parent
    anchors.leftMargin: -40
    anchors.rightMargin: -40
    anchors.topMargin: -32
    anchors.bottomMargin: -48
    source: "qrc:/curtain/shadow.png"
    border.left: 54
    border.right: 54
    border.top: 46
    border.bottom: 62
}
