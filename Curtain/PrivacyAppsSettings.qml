import QtQuick
import Curtain
import Curtain.Controls

/// Whether sharing is detected, and which apps are private.
SettingsPage {
    id: page

    required property SettingsViewModel model

    readonly property real listTop: (obstacle.visible ? obstacle.height + 10 : 0) + (switchOn.visible ? switchOn.height + 10 : 0) + options.height + 10 + segments.height + 8 + (unseen.visible ? unseen.height + 8 : 0) + search.height + 8

    WarningCaption {
        id: obstacle
        objectName: "hidingObstacle"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: text !== ""
        text: page.model.hidingObstacle
    }
    Item {
        width: 1
        height: 10
        visible: obstacle.visible
    }
    ActionButton {
        id: switchOn
        objectName: "switchOn"
        anchors.left: parent.left
        anchors.leftMargin: 1 + Theme.rowInset
        implicitHeight: 28
        kind: "tonal"
        visible: page.model.canSwitchExtensionOn
        text: page.model.texts.switchOn
        onClicked: page.model.switchExtensionOn()
    }
    Item {
        width: 1
        height: 10
        visible: switchOn.visible
    }
    Card {
        id: options
        width: parent.width
        height: captions.y + captions.height + 13

        SwitchRow {
            id: autoDetect
            x: 1
            y: 7
            width: parent.width - 2
            leastHeight: 36
            isFirst: true
            label: page.model.texts.autoDetect
            switchName: "autoDetect"
            isOn: page.model.switches.autoDetect
            onFlipped: on => page.model.switches.autoDetect = on
        }
        Column {
            id: captions
            x: 1 + Theme.rowInset
            y: autoDetect.y + autoDetect.height + 3
            width: parent.width - 2 * x
            spacing: 6

            WarningCaption {
                objectName: "restartCaption"
                width: parent.width
                visible: page.model.switches.autoDetect && page.model.hasShareDetection
                text: page.model.texts.autoDetectRestart
                action: page.model.canRestart ? page.model.texts.restartCurtain : ""
                actionName: "restart"
                onActed: page.model.restart()
            }
            WarningCaption {
                objectName: "noShareDetection"
                width: parent.width
                visible: !page.model.hasShareDetection
                text: page.model.texts.noShareDetection
            }
            WarningCaption {
                objectName: "shareDetectionUnknown"
                width: parent.width
                visible: page.model.isShareDetectionBlind
                text: page.model.texts.shareDetectionUnknown
            }
            // It says what is detected, so it would contradict the one above.
            StyledText {
                width: parent.width
                visible: page.model.hasShareDetection
                text: page.model.texts.autoDetectNote
                style: Theme.small
                color: Theme.ink2
                wrapMode: Text.Wrap
            }
        }
    }
    Item {
        width: 1
        height: 10
    }
    SegmentedControl {
        id: segments
        objectName: "source"
        width: parent.width
        name: page.model.texts.tabApps
        model: [page.model.texts.running, page.model.texts.installed, page.model.texts.privateOnly]
        currentIndex: page.model.showingPrivate ? 2 : page.model.showingInstalled ? 1 : 0
        onActivated: index => {
            page.model.showingPrivate = index === 2;
            if (index !== 2) {
                page.model.showingInstalled = index === 1;
            }
        }
    }
    Item {
        width: 1
        height: 8
    }
    WarningCaption {
        id: unseen
        objectName: "runningAppsUnseen"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: segments.currentIndex === 0 && !page.model.knowsRunningApps
        text: page.model.texts.runningAppsUnseen
    }
    Item {
        width: 1
        height: 8
        visible: unseen.visible
    }
    SearchField {
        id: search
        objectName: "search"
        width: parent.width
        placeholderText: page.model.texts.searchApps
        clearName: page.model.texts.clearSearch
        text: page.model.query
        onTextChanged: page.model.query = text

        Connections {
            target: page.model
            function onQueryChanged(): void {
                if (search.text !== page.model.query) {
                    search.text = page.model.query;
                }
            }
        }
        Keys.onDownPressed: list.go(0)
    }
    Item {
        width: 1
        height: 8
    }
    Card {
        id: frame
        objectName: "apps"
        width: parent.width
        height: Math.max(110, page.height - Theme.popoverSide - page.listTop)

        ListView {
            id: list
            anchors.fill: parent
            anchors.margins: 1
            clip: true
            model: page.model.apps
            reuseItems: true
            activeFocusOnTab: count > 0 || activeFocus
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: page.model.texts.privateApps
            Keys.onDownPressed: go(currentIndex + 1)
            Keys.onUpPressed: {
                if (currentIndex > 0) {
                    go(currentIndex - 1);
                } else {
                    search.forceActiveFocus(Qt.BacktabFocusReason);
                }
            }
            onActiveFocusChanged: {
                if (activeFocus) {
                    positionViewAtIndex(currentIndex, ListView.Contain);
                }
            }

            function go(index: int): void {
                if (index >= 0 && index < count) {
                    currentIndex = index;
                    positionViewAtIndex(index, ListView.Contain);
                    (currentItem as AppRow).focusByKey();
                }
            }

            delegate: AppRow {
                width: ListView.view.width
                onFlipped: page.model.toggleApp(index)
                onActiveFocusChanged: {
                    if (activeFocus) {
                        ListView.view.currentIndex = index;
                    }
                }
            }
            StyledText {
                objectName: "emptyList"
                anchors.centerIn: parent
                width: parent.width - 2 * Theme.rowInset
                visible: list.count === 0
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: page.model.query !== "" ? page.model.texts.noAppFound
                    : page.model.showingPrivate ? page.model.texts.noAppPrivate : page.model.texts.noAppRuns
                color: Theme.ink2
            }
            ThinScrollBar {
                id: bar
                x: list.LayoutMirroring.enabled ? 0 : parent.width - width
                y: 3
                height: parent.height - 6
                orientation: Qt.Vertical
                size: list.visibleArea.heightRatio
                position: list.visibleArea.yPosition
                onPositionChanged: {
                    if (pressed) {
                        list.contentY = list.originY + position * list.contentHeight;
                    }
                }
            }
        }
    }
}
