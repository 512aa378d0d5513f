import QtQuick

/// A card of settings under a header, with a note below.
Column {
    id: section

    property string header
    property string note
    default property alias rows: rows.data

    StyledText {
        x: 15
        width: parent.width - 30
        bottomPadding: Math.max(0, 22 - contentHeight)
        text: section.header
        style: Theme.smallStrong
        verticalAlignment: Text.AlignTop
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Card {
        width: parent.width
        height: rows.height + 2

        Column {
            id: rows
            x: 1
            y: 1
            width: parent.width - 2
        }
    }
    StyledText {
        x: 15
        width: parent.width - 30
        // Whole points: the fonts of some scripts have heights in between.
        height: Math.ceil(implicitHeight)
        topPadding: 6
        bottomPadding: 16
        text: section.note
        style: Theme.small
        color: Theme.ink2
        wrapMode: Text.Wrap
    }
}
