import QtQuick

/// An app's icon, or the placeholder until there is one. `source` is the address of the image, empty for none.
Item {
    id: icon

    property string source
    property real size: 26

    implicitWidth: size
    implicitHeight: size

    Symbol {
        anchors.centerIn: parent
        visible: picture.status !== Image.Ready
        name: "app.dashed"
        color: Theme.gray
        size: icon.size
    }
    Image {
        id: picture
        anchors.fill: parent
        fillMode: Image.PreserveAspectFit
        sourceSize: Qt.size(icon.size, icon.size)
        source: icon.source
        asynchronous: true
    }
}
