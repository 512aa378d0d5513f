import QtQuick
import QtQuick.Templates as T
import QtQuick.Window

/// A menu of `PopupMenuItem`s and `PopupMenuDivider`s. Its width grows with its texts.
T.Menu {
    id: menu

    property bool isMirrored: false
    property real leastWidth: 160
    readonly property bool isWindowShown: parent?.Window.window?.visible ?? false

    // A window that is kept would show it again with the next opening.
    onIsWindowShownChanged: {
        if (!isWindowShown) {
            close();
        }
    }

    /// Puts the menu's end below the end of the control.
    function openBelow(control: Item, gap: real): void {
        parent = control;
        x = isMirrored ? 0 : control.width - implicitWidth;
        y = control.height + gap;
        open();
    }

    margins: 8
    padding: 6
    overlap: 0
    implicitWidth: Math.max(leastWidth, widest + leftPadding + rightPadding)
    implicitHeight: contentHeight + topPadding + bottomPadding
    focus: true
    // What lies over all else does not follow its parent in this.
    transformOrigin: T.Popup.TopLeft
    onAboutToShow: scale = Theme.scaleOf(parent)

    readonly property real widest: {
        let width = 0;
        for (let index = 0; index < count; ++index) {
            width = Math.max(width, itemAt(index).implicitWidth);
        }
        return Math.ceil(width);
    }

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.hoverTime; easing.type: Theme.easing }
    }

    contentItem: ListView {
        LayoutMirroring.enabled: menu.isMirrored
        LayoutMirroring.childrenInherit: true
        implicitHeight: contentHeight
        model: menu.contentModel
        currentIndex: menu.currentIndex
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds
    }
    background: Item {
        Shadow {}
        Rectangle {
            anchors.fill: parent
            radius: Theme.buttonRadius
            color: Theme.card
            border.width: 1
            border.color: Theme.edge
        }
    }
}
