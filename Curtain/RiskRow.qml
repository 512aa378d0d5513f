import QtQuick
import Curtain
import Curtain.Controls

/// How much a shared screen would expose.
Card {
    id: row

    required property MeetingReadinessViewModel model
    property int shownScore: model.score
    /// What is said of the score waits for the number. A border that is given its colour again is painted again,
    /// though it is the same, so it hangs on this and not on the model.
    property string shownTone: model.riskTone
    property string shownLabel: model.riskLabel
    property bool isReady: false

    function follow(): void {
        if (shownScore === model.score) {
            shownTone = model.riskTone;
            shownLabel = model.riskLabel;
        }
    }

    implicitHeight: 84
    color: Theme.riskCard(shownTone)
    border.color: Theme.riskEdge(shownTone)
    Accessible.role: Accessible.Grouping
    Accessible.name: caption.text + ": " + model.score + " / 100, " + model.riskLabel
        + (gap.visible ? ", " + gap.text : "")
    Component.onCompleted: {
        follow();
        isReady = true;
    }

    Behavior on shownScore {
        enabled: row.isReady
        NumberAnimation { duration: Theme.scoreTime; easing.type: Theme.easing }
    }
    onShownScoreChanged: follow()
    onModelChanged: follow()
    Connections {
        target: row.model
        function onStateChanged(): void {
            row.follow();
        }
    }

    Symbol {
        id: shield
        objectName: "shield"
        anchors.left: parent.left
        anchors.leftMargin: 17
        anchors.verticalCenter: parent.verticalCenter
        name: "shield.lefthalf.filled"
        size: 26
        color: Theme.solid(row.shownTone)
    }
    StyledText {
        id: caption
        isSpoken: false
        anchors.left: shield.right
        anchors.leftMargin: 14
        anchors.right: parent.right
        anchors.rightMargin: 16
        y: gap.visible ? 8 : 16
        height: 16
        text: row.model.texts.screenShareRisk
        style: Theme.smallMedium
        color: Theme.ink2
    }
    ScoreText {
        id: score
        objectName: "score"
        anchors.left: shield.right
        anchors.leftMargin: 14
        y: caption.y + 16
        value: row.shownScore
        range: "/ 100"
        gap: 5
    }
    StyledText {
        id: gap
        objectName: "scoreGap"
        isSpoken: false
        anchors.left: shield.right
        anchors.leftMargin: 14
        anchors.right: parent.right
        anchors.rightMargin: 16
        y: 60
        height: 16
        visible: text !== ""
        text: row.model.scoreGap
        style: Theme.small
        color: Theme.ink2
    }
    TextMetrics {
        id: word
        text: row.shownLabel
        font.family: Theme.fontFamily
        font.pixelSize: Theme.bodyStrong.size
        font.weight: Theme.bodyStrong.weight
    }
    Capsule {
        objectName: "riskCapsule"
        Accessible.ignored: true
        anchors.right: parent.right
        anchors.rightMargin: 17
        y: score.y + 4
        implicitHeight: 28
        inset: word.advanceWidth + 26 + 12 < row.width - 34 - 26 - 14 - score.width ? 13 : 9
        tone: row.shownTone
        color: Theme.riskTint(row.shownTone)
        text: row.shownLabel
        style: Theme.bodyStrong
    }
}
