import QtQuick
import QtQuick.Templates as T
import Curtain
import Curtain.Controls

/// What the other side would see if the screen were shared now.
T.Dialog {
    id: panel

    required property MeetingReadinessViewModel model
    /// Each with its `key`, `text` and `tone`.
    readonly property var issues: model.issues
    readonly property var lines: model.shareLines
    property bool isMirrored: false
    /// Whether it fades when it closes.
    property bool fadesOut: true

    signal fixEverything
    signal done

    title: model.texts.ifYouSharedNow
    modal: true
    focus: true
    // What lies over all else does not follow its parent in this.
    scale: parent ? parent.scale : 1
    transformOrigin: T.Popup.TopLeft
    width: 440
    height: Math.min(content.implicitHeight + topPadding + bottomPadding, parent ? parent.height - 16 : 600)
    x: parent ? Math.round((parent.width - width) / 2) : 0
    // A little above the middle, where the eye rests.
    y: parent ? Math.max(8, Math.round((parent.height - height) * 0.466)) : 0
    leftPadding: 25
    rightPadding: 25
    topPadding: 21
    bottomPadding: 25
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    onClosed: done()

    // The window is larger than what it shows, since its shadow lies around it.
    T.Overlay.modal: Item {
        Rectangle {
            objectName: "testShareScrim"
            x: panel.parent ? panel.parent.x : 0
            y: panel.parent ? panel.parent.y : 0
            width: panel.parent ? panel.parent.width : 0
            height: panel.parent ? panel.parent.height : 0
            scale: panel.scale
            transformOrigin: Item.TopLeft
            color: Theme.scrim
            radius: (panel.parent as VisualEffectBackground)?.isRounded ? Theme.popoverRadius : 0
        }
    }
    enter: Transition {
        ParallelAnimation {
            NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.panelInTime; easing.type: Theme.easing }
            NumberAnimation { property: "rise"; target: content; from: 8; to: 0; duration: Theme.panelInTime; easing.type: Theme.easing }
        }
    }
    exit: fadesOut ? fadeOut : null

    readonly property Transition fadeOut: Transition {
        NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.panelOutTime; easing.type: Theme.easing }
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
    contentItem: Flickable {
        id: scroller
        contentWidth: width
        contentHeight: content.implicitHeight
        clip: contentHeight > height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        LayoutMirroring.enabled: panel.isMirrored
        LayoutMirroring.childrenInherit: true

        Item {
            id: content

            property real rise: 0

            y: rise
            width: scroller.width
            implicitHeight: heading.height + picture.height + lines.height + 10 + 19 + 36 + 14 + 40 + 12

            StyledText {
                id: heading
                anchors.left: parent.left
                anchors.right: close.left
                anchors.rightMargin: 4
                height: Math.max(32, implicitHeight)
                wrapMode: Text.WordWrap
                text: panel.title
                style: Theme.panelTitle
                Accessible.role: Accessible.Heading
            }
            Item {
                id: picture
                anchors.top: heading.bottom
                anchors.topMargin: 12
                width: 390
                height: 150
                Accessible.ignored: true

                function has(key: string): bool {
                    return panel.issues.some(issue => issue.key === key);
                }

                Image {
                    anchors.fill: parent
                    fillMode: Image.PreserveAspectCrop
                    sourceSize.width: 390
                    source: "qrc:/curtain/wallpaper.svg"
                    clip: true
                }
                Image {
                    objectName: "shareFiles"
                    anchors.fill: parent
                    sourceSize.width: 390
                    sourceSize.height: 150
                    visible: picture.has("desktop")
                    source: "qrc:/curtain/share-files.svg"
                }
                Image {
                    objectName: "shareUnknown"
                    anchors.fill: parent
                    sourceSize.width: 390
                    sourceSize.height: 150
                    visible: panel.lines.some(line => line.key === "cannotTell")
                        && !picture.has("privateApps")
                    source: "qrc:/curtain/share-unknown.svg"
                }
                Image {
                    objectName: "shareWindows"
                    anchors.fill: parent
                    sourceSize.width: 390
                    sourceSize.height: 150
                    visible: picture.has("privateApps")
                    source: "qrc:/curtain/share-windows.svg"
                }
                Image {
                    objectName: "shareNotice"
                    anchors.fill: parent
                    sourceSize.width: 390
                    sourceSize.height: 150
                    visible: picture.has("notifications")
                    source: "qrc:/curtain/share-notice.svg"
                }
                RoundFrame {
                    anchors.fill: parent
                    radius: Theme.buttonRadius
                    behind: Theme.card
                }
            }
            Column {
                id: lines
                anchors.top: picture.bottom
                anchors.topMargin: 10
                width: parent.width

                Repeater {
                    model: panel.lines

                    Item {
                        id: line

                        required property var modelData

                        objectName: "issue " + modelData.key
                        width: lines.width
                        height: Math.max(32, words.implicitHeight + 8)

                        Symbol {
                            id: mark
                            anchors.left: parent.left
                            anchors.verticalCenter: parent.verticalCenter
                            name: ({ "green": "checkmark.circle.fill", "gray": "circle" })[line.modelData.tone]
                                ?? "exclamationmark.triangle"
                            size: 19
                            color: Theme.solid(line.modelData.tone)
                        }
                        StyledText {
                            id: words
                            anchors.left: mark.right
                            anchors.leftMargin: 10
                            anchors.right: parent.right
                            height: parent.height
                            wrapMode: Text.WordWrap
                            text: line.modelData.text
                            style: Theme.listLine
                            color: line.modelData.key === "" ? Theme.greenText : Theme.ink
                        }
                    }
                }
            }
            Rectangle {
                id: rule
                anchors.top: lines.bottom
                anchors.topMargin: 10
                width: parent.width
                height: 1
                color: Theme.hairline
            }
            Item {
                id: scoreLine
                anchors.top: rule.bottom
                anchors.topMargin: 8
                width: parent.width
                height: 36

                StyledText {
                    id: caption
                    isSpoken: false
                    anchors.left: parent.left
                    anchors.right: score.left
                    anchors.rightMargin: 12
                    height: gap.visible ? 18 : parent.height
                    wrapMode: Text.WordWrap
                    text: panel.model.texts.embarrassmentScore
                    style: Theme.bodyMedium
                    color: Theme.ink2
                }
                StyledText {
                    id: gap
                    objectName: "testShareScoreGap"
                    isSpoken: false
                    anchors.left: parent.left
                    anchors.right: score.left
                    anchors.rightMargin: 12
                    y: 19
                    height: 16
                    visible: text !== ""
                    text: panel.model.scoreGap
                    style: Theme.small
                    color: Theme.ink2
                }
                ScoreText {
                    id: score
                    objectName: "testShareScore"
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    value: panel.model.score
                    range: "/100"
                    valueStyle: Theme.display
                    Accessible.role: Accessible.StaticText
                    Accessible.name: caption.text + ": " + value + range + (gap.visible ? ", " + gap.text : "")
                }
            }
            ActionButton {
                objectName: "testShareFix"
                anchors.top: scoreLine.bottom
                anchors.topMargin: 14
                width: parent.width
                kind: panel.model.hasIssues ? "primary" : "tonal"
                symbol: "wand.and.stars"
                text: panel.model.texts.fixEverything
                enabled: panel.model.canFix
                reason: panel.model.canHideApps ? "" : panel.model.hidingObstacle
                onClicked: panel.fixEverything()
            }
            // The last in the order of the keyboard, though it stands at the top.
            IconButton {
                id: close
                objectName: "testShareClose"
                anchors.right: parent.right
                anchors.rightMargin: -8
                implicitWidth: 32
                symbol: "xmark"
                symbolSize: 18
                tip: panel.model.texts.cancel
                onClicked: panel.close()
            }
        }
    }
}
