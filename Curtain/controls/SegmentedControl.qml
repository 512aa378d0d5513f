import QtQuick
import QtQuick.Templates as T

/// A choice among words side by side; `model` is the list of words.
Rectangle {
    id: control

    property var model: []
    property int currentIndex: 0
    property string name

    signal activated(int index)

    implicitWidth: 300
    implicitHeight: 32
    radius: Theme.fieldRadius
    color: Theme.well
    Accessible.role: Accessible.PageTabList
    Accessible.name: name

    Row {
        id: row
        anchors.fill: parent
        anchors.margins: 3
        spacing: 2

        Repeater {
            model: control.model

            T.AbstractButton {
                id: segment

                required property string modelData
                required property int index
                readonly property bool isCurrent: control.currentIndex === index

                width: (row.width - (control.model.length - 1) * row.spacing) / control.model.length
                height: row.height
                text: modelData
                focusPolicy: Qt.StrongFocus
                hoverEnabled: true
                Accessible.role: Accessible.PageTab
                Accessible.name: text
                Accessible.selected: isCurrent
                Accessible.onPressAction: segment.clicked()
                Keys.onReturnPressed: segment.clicked()
                Keys.onEnterPressed: segment.clicked()
                onClicked: control.activated(index)

                contentItem: StyledText {
                    isSpoken: false
                    text: segment.text
                    style: Theme.bodyMedium
                    color: !segment.enabled ? Theme.disabledInk : segment.isCurrent ? Theme.ink : Theme.ink2
                    horizontalAlignment: Text.AlignHCenter
                }
                background: Rectangle {
                    radius: Theme.segmentRadius
                    color: segment.isCurrent ? Theme.raised : segment.hovered ? Theme.wellHover : "transparent"
                    border.width: segment.isCurrent ? 1 : 0
                    border.color: Theme.hairline

                    FocusRing {
                        visible: segment.visualFocus
                        controlRadius: Theme.segmentRadius
                    }
                }
            }
        }
    }
}
