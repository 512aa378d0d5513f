import QtQuick
import QtQuick.Templates as T
import Curtain
import Curtain.Controls

/// The private apps with their visibility, or while `editingApps` those that are private and those that could be.
Card {
    id: panel

    required property MeetingReadinessViewModel model
    /// Those that occur.
    readonly property var visibilities: model.visibilities

    function wordFor(visibility: string): string {
        switch (visibility) {
        case "visible":
            return model.texts.visible;
        case "hidden":
            return model.texts.hidden;
        case "notRunning":
            return model.texts.notRunning;
        case "notInstalled":
            return model.texts.notInstalled;
        default:
            return model.texts.cannotTell;
        }
    }

    StyledText {
        anchors.left: parent.left
        anchors.leftMargin: 17
        anchors.right: edit.left
        anchors.rightMargin: 8
        height: 44
        text: panel.model.texts.privateApps
        style: Theme.bodyStrong
        Accessible.role: Accessible.Heading
    }
    IconToggle {
        id: edit
        objectName: "edit"
        anchors.right: parent.right
        anchors.rightMargin: 12
        y: 9
        symbol: "pencil"
        on: panel.model.editingApps
        tip: panel.model.texts.editApps
        onClicked: panel.model.editingApps = !panel.model.editingApps
    }
    Loader {
        id: content

        property bool hasLoaded: false

        anchors.fill: parent
        anchors.topMargin: 45
        anchors.leftMargin: 17
        sourceComponent: panel.model.editingApps ? edited : shown
        onLoaded: {
            // The first content is there from the first frame on.
            if (hasLoaded) {
                fadeIn.restart();
            }
            hasLoaded = true;
        }

        NumberAnimation {
            id: fadeIn
            target: content
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.fadeTime
            easing.type: Theme.easing
        }
    }

    Component {
        id: shown

        Item {
            StateMetrics { id: visibleWord; text: panel.visibilities.includes("visible") ? panel.model.texts.visible : "" }
            StateMetrics { id: hiddenWord; text: panel.visibilities.includes("hidden") ? panel.model.texts.hidden : "" }
            StateMetrics { id: cannotTellWord; text: panel.visibilities.includes("cannotTell") ? panel.model.texts.cannotTell : "" }
            StateMetrics { id: notRunningWord; text: panel.visibilities.includes("notRunning") ? panel.model.texts.notRunning : "" }
            StateMetrics { id: notInstalledWord; text: panel.visibilities.includes("notInstalled") ? panel.model.texts.notInstalled : "" }

            ListView {
                id: list

                readonly property real stateWidth: 14 + Math.ceil(Math.max(visibleWord.implicitWidth,
                    hiddenWord.implicitWidth, notRunningWord.implicitWidth, notInstalledWord.implicitWidth,
                    cannotTellWord.implicitWidth))
                readonly property bool canScroll: contentHeight > height

                objectName: "privateAppsList"
                anchors.left: parent.left
                width: 303
                height: foot.height > 0 ? Math.floor((foot.y - 8) / 42) * 42 : 178
                model: panel.model.privateApps
                clip: canScroll
                interactive: canScroll
                activeFocusOnTab: canScroll
                boundsBehavior: Flickable.StopAtBounds
                Accessible.role: Accessible.List
                Accessible.name: panel.model.texts.privateApps
                Keys.onDownPressed: contentY = Math.min(contentY + 42, originY + contentHeight - height)
                Keys.onUpPressed: contentY = Math.max(contentY - 42, originY)
                T.ScrollBar.vertical: ThinScrollBar {}

                delegate: Item {
                    id: app

                    required property string name
                    required property string icon
                    required property string visibility

                    width: list.width
                    height: 42
                    Accessible.role: Accessible.ListItem
                    Accessible.name: name + ": " + panel.wordFor(visibility)
                    LayoutMirroring.enabled: list.LayoutMirroring.enabled
                    LayoutMirroring.childrenInherit: true

                    // The list is a little wider than its rows, for the scroll bar.
                    Item {
                        objectName: "privateAppRow"
                        anchors.left: parent.left
                        width: 288
                        height: parent.height

                        AppIcon {
                            id: appIcon
                            anchors.left: parent.left
                            anchors.verticalCenter: parent.verticalCenter
                            source: app.icon
                        }
                        StyledText {
                            anchors.left: appIcon.right
                            anchors.leftMargin: 10
                            anchors.right: state.left
                            anchors.rightMargin: 10
                            height: parent.height
                            isSpoken: false
                            text: app.name
                            style: Theme.bodyMedium
                            mayElide: true
                        }
                        Item {
                            id: state

                            readonly property string tone: ({ "visible": "red", "hidden": "green" })[app.visibility] ?? "gray"

                            anchors.right: parent.right
                            width: list.stateWidth
                            height: parent.height

                            StatusDot {
                                id: dot
                                anchors.left: parent.left
                                anchors.verticalCenter: parent.verticalCenter
                                tone: state.tone
                            }
                            StyledText {
                                anchors.left: dot.right
                                anchors.leftMargin: 6
                                anchors.right: parent.right
                                height: parent.height
                                isSpoken: false
                                text: panel.wordFor(app.visibility)
                                style: Theme.smallMedium
                                color: Theme.text(state.tone)
                            }
                        }
                    }
                }

                FocusRing { visible: list.activeFocus }
            }
            StyledText {
                objectName: "addPrivateAppsHint"
                anchors.left: parent.left
                width: 288
                height: list.height
                visible: !panel.model.hasPrivateApps
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                bottomPadding: 48
                wrapMode: Text.WordWrap
                text: panel.model.texts.addPrivateAppsHint
                color: Theme.ink2
            }
            Item {
                anchors.left: parent.left
                width: 288
                height: list.height
                visible: !panel.model.hasPrivateApps

                ActionButton {
                    objectName: "choosePrivateApps"
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: parent.height / 2
                    implicitHeight: 32
                    kind: "tonal"
                    symbol: "plus"
                    text: panel.model.texts.choosePrivateApps
                    onClicked: panel.model.editingApps = true
                }
            }
            // A positioner would move its items a frame later.
            Item {
                id: foot
                anchors.left: parent.left
                // A button does not stand close to another.
                y: (automatic.visible ? 174 : 178) - height
                width: 288
                height: (obstacle.visible ? obstacle.height : 0) + (automatic.visible ? automatic.height : 0)
                    + (obstacle.visible && automatic.visible ? 8 : 0)

                WarningCaption {
                    id: obstacle
                    objectName: "hidingObstacle"
                    anchors.left: parent.left
                    width: parent.width
                    visible: text !== ""
                    text: panel.model.hidingObstacle
                }
                AutomaticNote {
                    id: automatic
                    anchors.left: parent.left
                    anchors.bottom: parent.bottom
                    width: parent.width
                    model: panel.model
                }
            }
            ActionButton {
                id: hide
                objectName: "hidePrivateApps"
                anchors.left: parent.left
                y: 184
                width: 288
                implicitHeight: 36
                kind: "tonal"
                symbol: "eye.slash"
                enabled: panel.model.canHideMore
                reason: panel.model.hideProblem
                text: panel.model.texts.hidePrivateApps
                onClicked: panel.model.hidePrivateApps()
                // The second click of those who leave the list with two is meant for what stood here before.
                onDoubleClicked: {}
            }
        }
    }

    Component {
        id: edited

        FocusScope {
            focus: true

            SearchField {
                id: search
                objectName: "search"
                anchors.left: parent.left
                width: 288
                focus: true
                placeholderText: panel.model.texts.searchApps
                clearName: panel.model.texts.clearSearch
                onTextChanged: panel.model.appQuery = text
                Keys.onDownPressed: choices.forceActiveFocus(Qt.TabFocusReason)
                Component.onCompleted: forceActiveFocus()
            }
            ListView {
                id: choices

                objectName: "editedApps"
                anchors.left: parent.left
                y: 38
                width: 303
                height: 146
                model: panel.model.editedApps
                clip: true
                interactive: contentHeight > height
                activeFocusOnTab: count > 0 || activeFocus
                currentIndex: 0
                highlightFollowsCurrentItem: true
                footer: StyledText {
                    objectName: "noAppFound"
                    width: 288
                    height: visible ? 32 : 0
                    visible: panel.model.foundApp < 0 && panel.model.appQuery !== ""
                    text: panel.model.texts.noAppFound
                    style: Theme.small
                    color: Theme.ink2
                }
                boundsBehavior: Flickable.StopAtBounds
                Accessible.role: Accessible.List
                Accessible.name: panel.model.texts.editApps
                Keys.onDownPressed: step(1)
                Keys.onUpPressed: step(-1)
                // A key that is held down counts once.
                Keys.onSpacePressed: event => { if (!event.isAutoRepeat) actOnCurrent(); }
                Keys.onReturnPressed: event => { if (!event.isAutoRepeat) actOnCurrent(); }
                Keys.onEnterPressed: event => { if (!event.isAutoRepeat) actOnCurrent(); }
                T.ScrollBar.vertical: ThinScrollBar {}

                Connections {
                    target: panel.model
                    // What was searched for is in view, and the first to get the keyboard.
                    function onFoundAppChanged(): void {
                        if (panel.model.foundApp < 0) {
                            choices.positionViewAtEnd();
                        } else {
                            choices.currentIndex = panel.model.foundApp;
                            choices.positionViewAtIndex(panel.model.foundApp, ListView.Beginning);
                        }
                    }
                }

                function step(by: int): void {
                    let next = currentIndex + by;
                    if (next >= 0 && next < count && panel.model.isDivider(next)) {
                        next += by;
                    }
                    currentIndex = Math.max(0, Math.min(count - 1, next));
                }
                function actOnCurrent(): void {
                    (currentItem as EditedAppRow)?.act();
                }
                // What goes may leave the divider in its place. Above it there is always an app.
                onCurrentItemChanged: Qt.callLater(leaveDivider) // qmllint disable
                function leaveDivider(): void {
                    if (panel.model.isDivider(currentIndex)) {
                        --currentIndex;
                    }
                }

                delegate: EditedAppRow {
                    width: choices.width
                    texts: panel.model.texts
                    isCurrent: choices.activeFocus && ListView.isCurrentItem
                    onToggled: panel.model.toggleApp(bundleID)
                }
            }
            ActionButton {
                objectName: "saveApps"
                anchors.left: parent.left
                y: 188
                width: 288
                implicitHeight: 36
                kind: "tonal"
                text: panel.model.texts.saveFile
                onClicked: {
                    edit.forceActiveFocus(focusReason);
                    panel.model.editingApps = false;
                }
            }
        }
    }
}
