import QtQuick

/// An app's icon, or the placeholder until there is one. `source` is the address of the image, empty for none.
Item {
    id: icon

    property string source
    property real size: 26
    /// What is not found comes as a single pixel.
    readonly property bool isFound: picture.status === Image.Ready && picture.implicitWidth > 1

    implicitWidth: size
    implicitHeight: size

    Symbol {
        anchors.centerIn: parent
        visible: !icon.isFound
        name: "app.dashed"
        color: Theme.gray
        size: icon.size
    }
    Image {
        id: picture
        anchors.fill: parent
        fillMode: Image.PreserveAspectFit
        sourceSize.width: icon.size
        sourceSize.height: icon.size
        source: icon.source
        asynchronous: true
    }
}
