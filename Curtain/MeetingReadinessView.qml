import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import Curtain
import Curtain.Controls

/// The popover: the one screen before a call.
VisualEffectBackground {
    id: root

    required property MeetingReadinessViewModel model

    readonly property bool isShown: Window.window !== null && Window.window.visible

    implicitWidth: 700
    implicitHeight: 618
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: "Curtain"

    onIsShownChanged: {
        if (isShown) {
            middle.contentY = 0;
            model.didOpen();
        } else {
            // Nobody would see it fade, and the next opening begins anew.
            testShare.fadesOut = false;
            model.showingTestShare = false;
            testShare.fadesOut = true;
            root.forceActiveFocus();
        }
    }

    ReadinessHeader {
        anchors.left: parent.left
        anchors.leftMargin: 16
        y: 14
        width: 668
        height: 36
        model: root.model
        isMirroredLayout: root.LayoutMirroring.enabled
        onTestShareMode: root.model.showingTestShare = true
    }
    Flickable {
        id: middle

        readonly property bool canScroll: contentHeight > height

        objectName: "middle"
        y: 62
        width: parent.width
        height: parent.height - 62 - 68
        contentWidth: width
        contentHeight: 488
        clip: canScroll
        interactive: canScroll
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: ThinScrollBar { rightPadding: 5; leftPadding: 5; implicitWidth: 14 }

        /// Scrolls until all of an item inside can be seen.
        function reveal(item: Item): void {
            for (let parent = item; parent; parent = parent.parent) {
                if (parent === contentItem) {
                    const top = item.mapToItem(contentItem, 0, 0).y;
                    contentY = Math.max(Math.min(contentY, top - 8), top + item.height + 8 - height);
                    returnToBounds();
                    return;
                }
            }
        }

        Connections {
            target: root.Window.window
            enabled: middle.canScroll
            function onActiveFocusItemChanged() {
                middle.reveal(root.Window.window.activeFocusItem);
            }
        }

        Item {
            id: columns
            x: 16
            width: 668
            height: 282

            Loader {
                anchors.fill: parent
                active: root.model.hasPhoto
                sourceComponent: PhotoReview { model: root.model }
            }
            Item {
                anchors.fill: parent
                visible: !root.model.hasPhoto

                CameraCard {
                    objectName: "cameraCard"
                    anchors.left: parent.left
                    width: 332
                    height: root.model.showsRisk ? 186 : 282
                    model: root.model
                    isMirroredLayout: root.LayoutMirroring.enabled
                }
                RiskRow {
                    objectName: "riskRow"
                    anchors.left: parent.left
                    y: 198
                    width: 332
                    height: 84
                    visible: root.model.showsRisk
                    model: root.model
                }
                PrivateAppsPanel {
                    objectName: "privateAppsPanel"
                    anchors.right: parent.right
                    width: 322
                    height: 282
                    model: root.model
                }
            }
        }
        ReadinessCheck {
            objectName: "readinessCheck"
            x: 16
            y: 294
            width: 668
            height: 194
            model: root.model
        }
    }
    Rectangle {
        width: parent.width
        height: 1
        y: parent.height - 69
        visible: middle.canScroll
        color: Theme.hairline
    }
    ActionButton {
        id: fix
        objectName: "fixEverything"
        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.right: restore.left
        anchors.rightMargin: 12
        y: parent.height - 56
        kind: root.model.hasIssues ? "primary" : "tonal"
        symbol: "wand.and.stars"
        text: root.model.texts.fixEverything
        enabled: root.model.canFix
        reason: root.model.canHideApps ? "" : root.model.hidingObstacle
        onClicked: root.model.fixEverything()
    }
    ActionButton {
        id: restore
        objectName: "restore"
        anchors.right: parent.right
        anchors.rightMargin: 16
        y: parent.height - 56
        width: Math.max(190, implicitWidth)
        kind: "quiet"
        symbol: "arrow.uturn.backward"
        symbolSize: 18
        text: root.model.texts.restore
        onClicked: root.model.restore()
    }

    TestShareView {
        id: testShare
        parent: root
        model: root.model
        isMirrored: root.LayoutMirroring.enabled
        visible: root.model.showingTestShare
        onFixEverything: root.model.fixEverything()
        onDone: root.model.showingTestShare = false
    }
}
