import QtQuick
import QtQuick.Templates as T
import Curtain.Controls

/// The tabs at the top of the settings window. They share the spare room evenly. Arrow keys go from one to the next.
Rectangle {
    id: tabs

    /// Each with `text`, `symbol` and `name`.
    property var model: []
    property int currentIndex: 0

    signal activated(int index)

    function step(by: int): void {
        activated((currentIndex + by + model.length) % model.length);
    }

    implicitHeight: 36
    radius: Theme.buttonRadius
    color: Theme.well
    Accessible.role: Accessible.PageTabList
    Accessible.name: model.length > 0 ? model[currentIndex].text : ""

    Row {
        id: row

        readonly property real spare: {
            let used = spacing * (repeater.count - 1);
            for (let index = 0; index < repeater.count; ++index) {
                used += repeater.itemAt(index)?.implicitWidth ?? 0;
            }
            return Math.max(0, width - used);
        }

        anchors.fill: parent
        anchors.margins: 3
        spacing: 2

        Repeater {
            id: repeater
            model: tabs.model

            T.AbstractButton {
                id: tab

                required property var modelData
                required property int index
                readonly property bool isCurrent: tabs.currentIndex === index
                readonly property color ink: isCurrent ? Theme.accent : Theme.ink2

                objectName: modelData.name
                // The strong weight decides, so that choosing a tab moves none.
                implicitWidth: 17 + 7 + strong.advanceWidth + 14
                width: implicitWidth + row.spare / repeater.count
                height: row.height
                text: modelData.text
                focusPolicy: Qt.StrongFocus
                hoverEnabled: true
                Accessible.role: Accessible.PageTab
                Accessible.name: text
                Accessible.selected: isCurrent
                Accessible.onPressAction: tab.clicked()
                Keys.onReturnPressed: tab.clicked()
                Keys.onEnterPressed: tab.clicked()
                Keys.onLeftPressed: tab.go(tab.mirrored ? 1 : -1)
                Keys.onRightPressed: tab.go(tab.mirrored ? -1 : 1)
                onClicked: tabs.activated(index)

                function go(by: int): void {
                    tabs.step(by);
                    repeater.itemAt(tabs.currentIndex).forceActiveFocus(Qt.TabFocusReason);
                }

                TextMetrics {
                    id: strong
                    text: tab.text
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.bodyStrong.size
                    font.weight: Theme.bodyStrong.weight
                }

                contentItem: Item {
                    Row {
                        anchors.centerIn: parent
                        spacing: 7

                        Symbol {
                            anchors.verticalCenter: parent.verticalCenter
                            name: tab.modelData.symbol
                            size: 17
                            color: tab.ink
                        }
                        StyledText {
                            anchors.verticalCenter: parent.verticalCenter
                            isSpoken: false
                            text: tab.text
                            style: tab.isCurrent ? Theme.bodyStrong : Theme.bodyMedium
                            color: tab.ink
                        }
                    }
                }
                background: Rectangle {
                    radius: Theme.tabRadius
                    color: tab.isCurrent ? Theme.raised : tab.hovered ? Theme.wellHover : "transparent"
                    border.width: tab.isCurrent ? 1 : 0
                    border.color: Theme.hairline

                    FocusRing {
                        visible: tab.visualFocus
                        anchors.margins: -3
                        controlRadius: Theme.tabRadius - 1
                    }
                }
            }
        }
    }
}
