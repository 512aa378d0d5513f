import QtQuick
import Curtain
import Curtain.Controls

/// The five checks.
Card {
    id: section

    required property MeetingReadinessViewModel model

    /// How much closer the rows stand on a short screen, from 0 to 1.
    property real closeness: 0

    readonly property real rowHeight: Math.floor(32 - 4 * closeness)
    readonly property real chipWidth: Math.max(108, cameraRow.leastChipWidth, microphoneRow.leastChipWidth,
        notificationsRow.leastChipWidth, desktopRow.leastChipWidth, privateAppsRow.leastChipWidth)

    implicitHeight: rows.y + rows.height + 7

    /// Of the button for a photo.
    function takeFocus(reason: int): void {
        cameraRow.takeFocus(reason);
    }

    StyledText {
        anchors.left: parent.left
        anchors.leftMargin: 17
        y: Math.floor(9 - 3 * section.closeness)
        height: 18
        text: section.model.texts.readinessCheck
        style: Theme.bodyStrong
        Accessible.role: Accessible.Heading
    }
    Column {
        id: rows
        x: 17
        y: Math.floor(27 - 3 * section.closeness)
        width: parent.width - 34

        CheckRow {
            id: cameraRow
            objectName: "camera"
            width: parent.width
            height: section.rowHeight
            chipWidth: section.chipWidth
            icon: "video"
            label: section.model.texts.camera
            status: section.model.cameraStatus
            readonly property bool hasNews: section.model.photoNews !== "" && !section.model.hasPhoto
            detail: hasNews ? section.model.photoNews : section.model.cameraDetail
            newsTone: hasNews ? section.model.photoNewsTone : ""
            action: section.model.texts.takePhoto
            canAct: section.model.canTakePhoto
            reason: canAct ? "" : section.model.texts.noPictureYet
            onActed: section.model.takePhoto()
        }
        CheckRow {
            id: microphoneRow
            objectName: "microphone"
            width: parent.width
            height: section.rowHeight
            chipWidth: section.chipWidth
            reserved: 90 + 14
            icon: "mic"
            label: section.model.texts.microphone
            status: section.model.microphoneStatus
            detail: section.model.microphoneDetail
            tip: section.model.microphoneName
            action: section.model.echoLabel
            onActed: section.model.startEcho()

            LevelMeter {
                objectName: "meter"
                anchors.right: parent.right
                anchors.rightMargin: section.chipWidth + 14
                anchors.verticalCenter: parent.verticalCenter
                value: section.model.microphoneLevel
                name: section.model.texts.microphone
            }
        }
        CheckRow {
            id: notificationsRow
            objectName: "notifications"
            width: parent.width
            height: section.rowHeight
            chipWidth: section.chipWidth
            icon: "bell"
            label: section.model.texts.notifications
            status: section.model.notificationsStatus
            detail: section.model.focusProblem !== "" ? section.model.focusProblem : section.model.notificationsDetail
            action: section.model.texts.openFocus
            remedies: true
            onActed: section.model.openFocus()
        }
        CheckRow {
            id: desktopRow
            objectName: "desktop"
            width: parent.width
            height: section.rowHeight
            chipWidth: section.chipWidth
            icon: "folder"
            label: section.model.texts.desktop
            status: section.model.desktopStatus
            detail: section.model.desktopDetail
            action: section.model.isDesktopHidden ? section.model.texts.showDesktop : section.model.texts.hideDesktop
            remedies: true
            onActed: section.model.toggleDesktop()
        }
        CheckRow {
            id: privateAppsRow
            objectName: "privateApps"
            width: parent.width
            height: section.rowHeight
            chipWidth: section.chipWidth
            icon: "lock"
            label: section.model.texts.privateApps
            status: section.model.privateAppsStatus
            detail: section.model.privateAppsDetail
            action: section.model.isPrivacyModeOn ? section.model.texts.restore : section.model.texts.hideApps
            remedies: true
            canAct: section.model.isPrivacyModeOn || section.model.canHideMore
            reason: canAct ? "" : section.model.hideProblem
            onActed: section.model.isPrivacyModeOn ? section.model.restore() : section.model.hidePrivateApps()
        }
    }
}
