import QtQuick
import Curtain.Controls
import Curtain.Items

/// The menu of the icon, where the panel draws none. Fills its window.
FocusScope {
    id: view

    required property MenuModel model
    property real widest: 160

    readonly property real inset: 4

    implicitWidth: widest + 2 * inset
    implicitHeight: rows.implicitHeight + 2 * inset
    focus: true
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.PopupMenu
    Accessible.name: "Curtain"
    Keys.onEscapePressed: model.close()
    Keys.onUpPressed: step(-1)
    Keys.onDownPressed: step(1)
    Keys.onBacktabPressed: step(-1)
    Keys.onTabPressed: step(1)

    /// To the next one that can be chosen; from outside, to the first or the last.
    function step(by: int): void {
        const entries = [];
        let current = by > 0 ? -1 : 0;
        for (let index = 0; index < list.count; ++index) {
            const entry = list.itemAt(index);
            if (entry.canBeChosen) { // qmllint disable
                current = entry.isCurrent ? entries.length : current;
                entries.push(entry);
            }
        }
        entries[(current + by + entries.length) % entries.length].makeCurrent();
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.card
        border.width: 1
        border.color: Theme.edge
    }
    Column {
        id: rows
        x: view.inset
        y: view.inset
        width: view.width - 2 * view.inset

        Repeater {
            id: list
            model: view.model.entries
            onItemAdded: (index, entry) => { view.widest = Math.max(view.widest, entry.implicitWidth); }

            Item {
                id: entry

                required property int index
                required property var modelData
                readonly property bool isSeparator: modelData.title === ""
                readonly property bool canBeChosen: modelData.canBeChosen
                readonly property bool isCurrent: words.activeFocus

                function makeCurrent(): void {
                    words.forceActiveFocus(Qt.TabFocusReason);
                }

                width: rows.width
                implicitWidth: words.implicitWidth
                implicitHeight: isSeparator ? divider.implicitHeight : words.implicitHeight

                PopupMenuDivider {
                    id: divider
                    width: parent.width
                    visible: entry.isSeparator
                }
                PopupMenuItem {
                    id: words
                    width: parent.width
                    visible: !entry.isSeparator
                    enabled: entry.canBeChosen
                    text: entry.modelData.title
                    highlighted: activeFocus
                    onHoveredChanged: {
                        if (hovered) {
                            entry.makeCurrent();
                        }
                    }
                    onTriggered: view.model.choose(entry.index)
                }
            }
        }
    }
}
