import QtQuick

/// A card with one WizardRow below the other.
Card {
    default property alias rows: column.data

    x: 24
    width: parent.width - 48
    implicitHeight: column.implicitHeight + 2

    Column {
        id: column
        anchors.fill: parent
        anchors.margins: 1
    }
}
