import QtQuick
import QtQuick.Window

/// One of the program's symbols in one colour, on whole pixels at every scale.
Item {
    id: symbol

    property string name
    property color color: Theme.ink2
    property real size: 18

    readonly property bool isFlipped: LayoutMirroring.enabled
        && (name === "chevron.backward" || name === "arrow.uturn.backward")
    readonly property real pixels: Math.round(size * Screen.devicePixelRatio)

    implicitWidth: size
    implicitHeight: size

    Image {
        anchors.centerIn: parent
        width: symbol.pixels / Screen.devicePixelRatio
        height: width
        sourceSize.width: symbol.size
        sourceSize.height: symbol.size
        source: symbol.name === "" ? "" : "image://symbol/" + symbol.name + "/" + String(symbol.color).substring(1)
        mirror: symbol.isFlipped
    }
}
