import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import Curtain
import Curtain.Controls

/// The popover: the one screen before a call.
VisualEffectBackground {
    id: root

    required property MeetingReadinessViewModel model

    /// How much closer all stands where that saves the scrolling, from 0 to 1.
    readonly property real closeness: height >= 569 && height < 618 ? (618 - height) / 49 : 0
    readonly property real actionsMargin: between(16, 8)

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
            keeper.forget();
        }
    }

    FocusKeeper { id: keeper }

    /// A measure that is `roomy` as a rule and `close` at the least.
    function between(roomy: real, close: real): real {
        return Math.floor(roomy - (roomy - close) * closeness);
    }

    ReadinessHeader {
        id: header
        anchors.left: parent.left
        anchors.leftMargin: 16
        y: root.between(14, 8)
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
        y: header.y + header.height + root.between(12, 8)
        width: parent.width
        height: fix.y - root.between(12, 8) - y
        contentWidth: width
        contentHeight: readiness.y + readiness.height
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
                sourceComponent: PhotoReview {
                    model: root.model
                    onLeaving: reason => readiness.takeFocus(reason)
                }
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
            id: readiness
            objectName: "readinessCheck"
            x: 16
            y: 282 + root.between(12, 8)
            width: 668
            closeness: root.closeness
            model: root.model
        }
    }
    Rectangle {
        width: parent.width
        height: 1
        y: middle.y + middle.height - 1
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
        y: parent.height - height - root.actionsMargin
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
        y: parent.height - height - root.actionsMargin
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
