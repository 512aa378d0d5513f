import QtQuick
import QtQuick.Window
import QtQuick.Templates as T
import Curtain
import Curtain.Controls

/// A field that records a key combination while it has the focus, and says why one cannot be had.
FocusScope {
    id: recorder

    required property ShortcutField shortcut
    required property bool isMirrored
    property string name

    readonly property bool isEmpty: shortcut.combination === ""

    implicitWidth: Math.min(230, Math.max(170, words.implicitWidth + 19 + (clear.visible ? 26 : 0)))
    implicitHeight: 30
    width: implicitWidth
    height: implicitHeight

    Connections {
        target: recorder.shortcut
        function onChanged(): void {
            if (!recorder.shortcut.isRecording && field.activeFocus) {
                afterwards.forceActiveFocus();
            }
        }
        function onAlertChanged(): void {
            if (recorder.shortcut.hasAlert) {
                alert.open();
            } else {
                alert.close();
            }
        }
    }

    Rectangle {
        id: field
        /// Whoever gets here without meaning to would record what is pressed next.
        readonly property bool takesEveryKey: true
        anchors.fill: parent
        radius: Theme.fieldRadius
        color: recorder.enabled ? Theme.card : Theme.window
        border.width: activeFocus ? 2 : 1
        border.color: activeFocus ? Theme.accent : hover.hovered ? Theme.fieldEdgeHover : Theme.fieldEdge
        activeFocusOnTab: true
        Accessible.role: Accessible.HotkeyField
        Accessible.name: recorder.name
        Accessible.description: words.text
        Accessible.focusable: true
        Accessible.focused: activeFocus
        Accessible.onPressAction: forceActiveFocus()
        onActiveFocusChanged: {
            if (activeFocus) {
                recorder.shortcut.begin(Window.window);
            } else {
                recorder.shortcut.end();
            }
        }

        HoverHandler { id: hover }
        TapHandler {
            onTapped: field.forceActiveFocus()
        }
        StyledText {
            id: words
            isSpoken: false
            anchors.left: parent.left
            anchors.leftMargin: 10
            anchors.right: clear.visible ? clear.left : parent.right
            anchors.rightMargin: clear.visible ? 2 : 9
            anchors.verticalCenter: parent.verticalCenter
            text: recorder.shortcut.isRecording ? recorder.shortcut.pressText
                : recorder.isEmpty ? recorder.shortcut.recordText : recorder.shortcut.combination
            style: recorder.isEmpty || recorder.shortcut.isRecording ? Theme.body : Theme.bodyMedium
            color: recorder.isEmpty || recorder.shortcut.isRecording ? Theme.ink3 : Theme.ink
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 10
        }
        IconButton {
            id: clear
            objectName: "clearShortcut"
            anchors.right: parent.right
            anchors.rightMargin: 3
            anchors.verticalCenter: parent.verticalCenter
            visible: !recorder.isEmpty && !recorder.shortcut.isRecording
            implicitWidth: 24
            symbol: "xmark.circle.fill"
            symbolSize: 15
            ink: Theme.gray
            inkHover: Theme.ink2
            tip: recorder.shortcut.clearText
            onClicked: {
                recorder.shortcut.clear();
                afterwards.forceActiveFocus();
            }
        }
    }
    // Has the focus once a recording has ended: the next key goes on from here.
    Item {
        id: afterwards
    }

    T.Popup {
        id: alert

        parent: T.Overlay.overlay
        x: Math.round((parent.width - width) / 2)
        y: Math.round((parent.height - height) / 2)
        width: 340
        height: contentItem.implicitHeight + 2 * padding
        // The window may be narrower where it is drawn smaller.
        scale: Math.min(1, (parent.width - 16) / width)
        padding: 20
        modal: true
        focus: true
        closePolicy: T.Popup.CloseOnEscape
        onClosed: recorder.shortcut.dismissAlert()
        onOpened: ok.forceActiveFocus(Qt.PopupFocusReason)

        enter: Transition {
            NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.panelInTime; easing.type: Theme.easing }
        }
        exit: Transition {
            NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.panelOutTime; easing.type: Theme.easing }
        }
        T.Overlay.modal: Rectangle {
            color: Theme.scrim
        }
        background: Item {
            Shadow {}
            Rectangle {
                anchors.fill: parent
                radius: Theme.panelRadius
                color: Theme.card
                border.width: 1
                border.color: Theme.edge
            }
        }
        contentItem: Column {
            objectName: "shortcutAlert"
            spacing: 8
            LayoutMirroring.enabled: recorder.isMirrored
            LayoutMirroring.childrenInherit: true
            Accessible.role: Accessible.AlertMessage
            Accessible.name: recorder.shortcut.alertMessage
            Accessible.description: recorder.shortcut.alertExplanation

            StyledText {
                width: parent.width
                text: recorder.shortcut.alertCombination
                style: Theme.panelTitle
                wrapMode: Text.Wrap
            }
            StyledText {
                width: parent.width
                isSpoken: false
                text: recorder.shortcut.alertMessage
                wrapMode: Text.Wrap
            }
            StyledText {
                width: parent.width
                visible: text !== ""
                isSpoken: false
                text: recorder.shortcut.alertExplanation
                style: Theme.small
                color: Theme.ink2
                wrapMode: Text.Wrap
            }
            Item {
                width: 1
                height: 4
            }
            Row {
                id: buttons

                anchors.right: parent.right
                spacing: 8

                ActionButton {
                    id: force
                    objectName: "forceUse"
                    visible: recorder.shortcut.canForceUse
                    implicitHeight: 32
                    kind: "quiet"
                    text: recorder.shortcut.forceUseText
                    onClicked: recorder.shortcut.forceUse()
                }
                ActionButton {
                    id: ok
                    objectName: "alertOk"
                    implicitHeight: 32
                    width: Math.max(88, implicitWidth)
                    text: recorder.shortcut.dismissText
                    onClicked: {
                        alert.close();
                        field.forceActiveFocus();
                    }
                }
            }
        }
    }
}
