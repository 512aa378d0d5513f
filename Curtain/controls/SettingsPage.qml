import QtQuick

/// The content of one tab: a column of cards that scrolls where it is too long, and follows the keyboard.
Flickable {
    id: page

    default property alias content: column.data
    property alias spacing: column.spacing

    contentWidth: width
    contentHeight: column.implicitHeight + Theme.popoverSide
    interactive: contentHeight > height
    boundsBehavior: Flickable.StopAtBounds
    clip: true

    function reveal(item: Item): void {
        let ancestor = item;
        while (ancestor && ancestor !== column) {
            ancestor = ancestor.parent;
        }
        if (!ancestor) {
            return;
        }
        const margin = 12;
        const top = item.mapToItem(column, 0, 0).y - margin;
        const bottom = top + item.height + 2 * margin;
        if (top < contentY) {
            contentY = Math.max(0, top);
        } else if (bottom > contentY + height) {
            contentY = Math.min(contentHeight - height, bottom - height);
        }
    }

    Connections {
        target: page.visible ? page.Window.window : null
        function onActiveFocusItemChanged(): void {
            if (page.Window.activeFocusItem) {
                page.reveal(page.Window.activeFocusItem);
            }
        }
    }

    Column {
        id: column
        x: Theme.popoverSide
        width: page.width - 2 * Theme.popoverSide
    }
    ThinScrollBar {
        id: bar
        parent: page.parent
        x: page.LayoutMirroring.enabled ? page.x + 3 : page.x + page.width - width - 3
        y: page.y + 4
        height: page.height - 8
        visible: page.visible && size < 1
        orientation: Qt.Vertical
        size: page.visibleArea.heightRatio
        position: page.visibleArea.yPosition
        onPositionChanged: {
            if (pressed) {
                page.contentY = position * page.contentHeight;
            }
        }
    }
}
