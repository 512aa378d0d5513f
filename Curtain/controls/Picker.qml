import QtQuick
import QtQuick.Templates as T

/// A choice among a few; the list drops from the field. `name` says what is chosen.
T.ComboBox {
    id: picker

    property string name
    property real leastWidth: 150
    /// How far it may grow with its choices.
    property real mostWidth: leastWidth

    readonly property real widestChoice: {
        // Named for the binding's sake: the widths depend on them.
        const all = [count, displayText, metrics.font.family];
        let widest = 0;
        for (let index = 0; all && mostWidth > leastWidth && index < count; ++index) {
            widest = Math.max(widest, metrics.advanceWidth(textAt(index)));
        }
        return Math.ceil(widest);
    }

    FontMetrics {
        id: metrics
        font.family: Theme.fontFamily
        font.pixelSize: Theme.body.size
    }

    implicitWidth: Math.min(mostWidth, Math.max(leastWidth, widestChoice + leftPadding + rightPadding + 4))
    implicitHeight: 30
    leftPadding: LayoutMirroring.enabled ? 30 : 10
    rightPadding: LayoutMirroring.enabled ? 10 : 30
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: name
    Accessible.description: displayText
    Accessible.onPressAction: popup.open()
    Keys.onReturnPressed: popup.open()
    Keys.onEnterPressed: popup.open()

    contentItem: StyledText {
        isSpoken: false
        text: picker.displayText
        color: picker.enabled ? Theme.ink : Theme.disabledInk
        mayElide: true
    }
    indicator: Symbol {
        x: picker.mirrored ? 10 : picker.width - width - 10
        y: (picker.height - height) / 2
        name: "chevron.down"
        size: 14
        color: picker.enabled ? Theme.ink2 : Theme.disabledInk
    }
    background: Rectangle {
        radius: Theme.fieldRadius
        color: picker.enabled ? Theme.card : Theme.window
        border.width: picker.down ? 2 : 1
        border.color: picker.down ? Theme.accent : picker.hovered ? Theme.fieldEdgeHover : Theme.fieldEdge

        FocusRing { visible: picker.visualFocus }
    }
    delegate: T.ItemDelegate {
        id: choice

        required property int index

        width: ListView.view ? ListView.view.width : implicitWidth
        implicitHeight: 32
        implicitWidth: words.implicitWidth + 44
        leftPadding: 10
        rightPadding: 10
        text: picker.textAt(index)
        highlighted: picker.highlightedIndex === index
        Accessible.name: text
        Accessible.onPressAction: choice.clicked()

        contentItem: Item {
            Symbol {
                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                visible: picker.currentIndex === choice.index
                name: "checkmark"
                size: 16
                color: choice.highlighted ? Theme.accentInk : Theme.ink
            }
            StyledText {
                id: words
                isSpoken: false
                anchors.fill: parent
                anchors.leftMargin: 24
                text: choice.text
                style: Theme.bodyMedium
                color: choice.highlighted ? Theme.accentInk : Theme.ink
                mayElide: true
            }
        }
        background: Rectangle {
            radius: Theme.menuItemRadius
            color: choice.down ? Theme.accentPressed : choice.highlighted ? Theme.accent : "transparent"
        }
    }
    popup: T.Popup {
        y: picker.height + 4
        x: picker.mirrored ? 0 : picker.width - width
        width: Math.max(picker.width, Math.min(280, list.widest + 12))
        implicitHeight: Math.min(contentItem.implicitHeight + 12, 316)
        padding: 6
        margins: 8
        // What lies over all else does not follow its parent in this.
        transformOrigin: T.Popup.TopLeft
        onAboutToShow: scale = Theme.scaleOf(picker)

        contentItem: ListView {
            id: list

            property real widest: 0

            LayoutMirroring.enabled: picker.mirrored
            LayoutMirroring.childrenInherit: true
            implicitHeight: contentHeight
            model: picker.delegateModel
            currentIndex: picker.highlightedIndex
            clip: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            onContentHeightChanged: {
                for (let index = 0; index < contentItem.children.length; ++index) {
                    widest = Math.max(widest, contentItem.children[index].implicitWidth);
                }
            }
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
}
