import QtQuick
import Curtain
import Curtain.Controls

/// Logo, title, the state in a few words, and the menu.
Item {
    id: header

    required property MeetingReadinessViewModel model
    property bool isMirroredLayout: false

    signal testShareMode

    Image {
        id: logo
        anchors.left: parent.left
        anchors.leftMargin: -1
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        sourceSize.width: 36
        sourceSize.height: 36
        source: "qrc:/curtain/app-icon.svg"
        Accessible.ignored: true
    }
    StyledText {
        id: title
        anchors.left: parent.left
        anchors.leftMargin: 44
        height: 20
        text: "Curtain"
        style: Theme.appTitle
        Accessible.role: Accessible.Heading
    }
    Symbol {
        anchors.left: title.left
        anchors.verticalCenter: tagline.verticalCenter
        visible: header.model.isPrivacyModeOn
        name: header.model.isPrivacyModeInVain ? "exclamationmark.triangle.fill" : "eye.slash"
        size: 14
        color: header.model.isPrivacyModeInVain ? Theme.orange : Theme.accent
    }
    StyledText {
        id: tagline
        objectName: "tagline"
        // The slogan can be done without where a language leaves no room for it.
        visible: header.model.isPrivacyModeOn || implicitWidth <= header.width - 44 - 12 - capsule.width - 10 - menuButton.width
        anchors.left: title.left
        anchors.leftMargin: header.model.isPrivacyModeOn ? 19 : 0
        y: 20
        height: 16
        text: header.model.isPrivacyModeInVain ? header.model.texts.privacyModeInVain
            : header.model.isPrivacyModeOn ? header.model.texts.privacyOnTitle : header.model.texts.tagline
        style: header.model.isPrivacyModeOn ? Theme.smallMedium : Theme.small
        color: header.model.isPrivacyModeInVain ? Theme.orangeText
            : header.model.isPrivacyModeOn ? Theme.accent : Theme.ink2
    }
    Capsule {
        id: capsule
        objectName: "capsule"
        anchors.right: menuButton.left
        anchors.rightMargin: 10
        y: 5
        hasDot: true
        tone: header.model.capsuleTone
        text: header.model.capsuleText
    }
    IconButton {
        id: menuButton
        objectName: "menuButton"
        anchors.right: parent.right
        y: 2
        implicitWidth: 32
        symbol: "ellipsis"
        symbolSize: 20
        tip: header.model.texts.moreOptions
        Accessible.role: Accessible.ButtonMenu
        onClicked: menu.openBelow(menuButton, 4)

        PopupMenu {
            id: menu
            objectName: "menu"
            isMirrored: header.isMirroredLayout
            leastWidth: 208

            PopupMenuItem {
                objectName: "menuTestShareMode"
                text: header.model.texts.testShareMode
                onTriggered: header.testShareMode()
            }
            PopupMenuItem {
                objectName: "menuSettings"
                text: header.model.texts.settings
                onTriggered: header.model.openSettings()
            }
            PopupMenuDivider {}
            PopupMenuItem {
                objectName: "menuQuit"
                text: header.model.texts.quit
                onTriggered: header.model.quit()
            }
        }
    }
}
