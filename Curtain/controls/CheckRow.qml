import QtQuick

/// One row of the readiness check: mark, symbol, label, detail, and at the end a chip that acts.
Item {
    id: row

    required property string icon
    required property string label
    required property string status
    required property string detail
    required property string action
    /// That of a detail which is news and not what the status says; empty otherwise.
    property string newsTone: ""
    /// What the row is about in particular, for those who point at it.
    property string tip: ""
    /// Whether the chip remedies what is wrong.
    property bool remedies: false
    /// Whether the chip can do anything, and if not why, in a sentence.
    property bool canAct: true
    property string reason
    property real chipWidth: 108
    /// What stands between detail and chip takes this much room.
    property real reserved: 0
    /// What stands there.
    default property alias between: slot.data
    readonly property real leastChipWidth: chip.implicitWidth

    readonly property string tone: ({ "ok": "green", "warning": "orange", "danger": "red" })[status] ?? "gray"
    readonly property string detailTone: newsTone
        || (({ "ok": "green", "warning": "orange", "danger": "orange" })[status] ?? "gray")

    signal acted

    function takeFocus(reason: int): void {
        chip.forceActiveFocus(reason);
    }

    implicitHeight: 32
    Accessible.role: Accessible.Grouping
    Accessible.name: label + ": " + detail
    Accessible.description: tip

    HoverHandler {
        id: hover
    }
    Loader {
        active: row.tip !== "" && hover.hovered
        sourceComponent: Tip {
            objectName: row.objectName + ".tip"
            parent: row
            text: row.tip
            visible: hover.hovered
        }
    }
    Symbol {
        id: mark
        objectName: row.objectName + ".mark"
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        name: ({ "ok": "checkmark.circle.fill", "warning": "exclamationmark.circle.fill",
            "danger": "exclamationmark.circle.fill" })[row.status] ?? "circle"
        size: 16
        color: Theme.solid(row.tone)
    }
    Symbol {
        id: symbol
        objectName: row.objectName + ".symbol"
        anchors.left: mark.right
        anchors.leftMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        name: row.icon
        size: 18
        color: Theme.solid(row.tone)
    }
    FittingText {
        id: words
        isSpoken: false
        objectName: row.objectName + ".label"
        anchors.left: symbol.right
        anchors.leftMargin: 10
        width: 110
        height: parent.height
        text: row.label
        normalStyle: Theme.bodyMedium
    }
    FittingText {
        objectName: row.objectName + ".detail"
        isSpoken: false
        anchors.left: words.right
        anchors.leftMargin: 8
        anchors.right: chip.left
        anchors.rightMargin: 14 + row.reserved
        height: parent.height
        text: row.detail
        color: Theme.text(row.detailTone)
    }
    Item {
        id: slot
        anchors.fill: parent
    }
    ChipButton {
        id: chip
        objectName: row.objectName + ".chip"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: row.chipWidth
        text: row.action
        enabled: row.canAct
        reason: row.reason
        tonal: row.remedies && (row.status === "warning" || row.status === "danger")
        onClicked: row.acted()
        // By the second click it may do the opposite.
        onDoubleClicked: {}
    }
}
