import QtQuick
import Curtain.Controls
import Curtain.Items

/// Where to save a file: its name, and the folder with those beside it.
FocusScope {
    id: view

    required property SaveFileModel model

    implicitWidth: 480
    implicitHeight: 400
    focus: true
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true

    // Its ending stays when the user types over it.
    function proposeName(): void {
        name.text = view.model.proposedName;
        const ending = name.text.lastIndexOf(".");
        name.select(0, ending > 0 ? ending : name.text.length);
        name.forceActiveFocus();
    }

    Component.onCompleted: proposeName()
    Connections {
        target: view.model
        function onProposedNameChanged(): void {
            view.proposeName();
        }
    }
    Shortcut {
        sequences: view.model.cancelKeys
        onActivated: view.model.cancel()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
    NameField {
        id: name
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
        focus: true
        Accessible.name: view.model.saveTitle
        onTextEdited: view.model.forgetProblem()
        onAccepted: view.model.save(text)
    }
    StyledText {
        id: place
        anchors { left: name.left; right: name.right; top: name.bottom; topMargin: 12 }
        text: view.model.folder
        style: Theme.bodyStrong
        elide: Text.ElideLeft
    }
    Rectangle {
        anchors { left: name.left; right: name.right; top: place.bottom; bottom: buttons.top; topMargin: 8; bottomMargin: 16 }
        radius: Theme.fieldRadius
        color: Theme.card
        border.width: 1
        border.color: Theme.edge

        ListView {
            id: folders
            anchors.fill: parent
            anchors.margins: 5
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            activeFocusOnTab: true
            keyNavigationEnabled: true
            model: view.model.folders
            Accessible.role: Accessible.List
            Accessible.name: view.model.folder

            delegate: PopupMenuItem {
                required property string modelData

                // The list is one stop of the Tab key as a whole.
                focusPolicy: Qt.NoFocus
                width: folders.width
                text: modelData
                mayElide: true
                highlighted: hovered || (folders.activeFocus && ListView.isCurrentItem)
                onTriggered: view.model.enter(modelData)
            }
        }
    }
    StyledText {
        anchors { left: name.left; right: buttons.left; rightMargin: 12; verticalCenter: buttons.verticalCenter }
        visible: text !== ""
        text: view.model.problem
        color: Theme.orangeText
        wrapMode: Text.Wrap
    }
    Row {
        id: buttons
        anchors { right: name.right; bottom: parent.bottom; bottomMargin: 16 }
        spacing: 8

        ActionButton {
            kind: "quiet"
            implicitHeight: 32
            text: view.model.cancelTitle
            onClicked: view.model.cancel()
        }
        ActionButton {
            implicitHeight: 32
            enabled: name.text.trim() !== ""
            text: view.model.saveTitle
            onClicked: view.model.save(name.text)
        }
    }
}
