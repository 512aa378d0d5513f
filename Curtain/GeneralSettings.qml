import QtQuick
import Curtain
import Curtain.Controls

/// The language, what happens on opening and at login, and the global shortcut.
SettingsPage {
    id: page

    required property SettingsViewModel model

    spacing: 12

    Card {
        width: parent.width
        height: languageRow.height + 2

        SettingsRow {
            id: languageRow
            x: 1
            y: 1
            width: parent.width - 2
            isFirst: true
            label: page.model.texts.language

            Picker {
                objectName: "language"
                name: page.model.texts.language
                model: page.model.languages
                currentIndex: page.model.languageIndex
                onActivated: index => {
                    currentIndex = Qt.binding(() => page.model.languageIndex);
                    page.model.languageIndex = index;
                }
            }
        }
    }
    Card {
        width: parent.width
        height: switches.height + 2

        Column {
            id: switches
            x: 1
            y: 1
            width: parent.width - 2

            SwitchRow {
                width: parent.width
                isFirst: true
                label: page.model.texts.showScore
                switchName: "showScore"
                isOn: page.model.switches.showScore
                onFlipped: on => page.model.switches.showScore = on
            }
            SwitchRow {
                width: parent.width
                label: page.model.texts.runTestOnOpen
                switchName: "runTestOnOpen"
                isOn: page.model.switches.runTestOnOpen
                onFlipped: on => page.model.switches.runTestOnOpen = on
            }
            SwitchRow {
                width: parent.width
                label: page.model.texts.launchAtLogin
                switchName: "launchAtLogin"
                isOn: page.model.switches.launchAtLogin
                onFlipped: on => page.model.switches.launchAtLogin = on
            }
        }
    }
    WarningCaption {
        objectName: "launchSwitchedOff"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: page.model.isLaunchSwitchedOff
        text: page.model.texts.launchSwitchedOff
        action: page.model.texts.switchOn
        actionName: "launchAllTheSame"
        onActed: reason => {
            // What comes next records whatever is pressed.
            nextItemInFocusChain(false).forceActiveFocus(reason);
            page.model.launchAllTheSame();
        }
    }
    Card {
        width: parent.width
        height: shortcutRow.height + 2

        SettingsRow {
            id: shortcutRow
            x: 1
            y: 1
            width: parent.width - 2
            isFirst: true
            label: page.model.texts.globalShortcut

            ShortcutRecorder {
                objectName: "shortcut"
                shortcut: page.model.shortcut
                isMirrored: page.model.isRightToLeft
                name: page.model.texts.globalShortcut
            }
        }
    }
    WarningCaption {
        objectName: "shortcutInUse"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: page.model.shortcut.isRefused
        text: page.model.texts.shortcutInUse
    }
    Row {
        anchors.left: parent.left
        anchors.leftMargin: 1 + Theme.rowInset
        visible: page.model.shortcut.isRefused
        spacing: 8

        ChipButton {
            objectName: "defaultShortcut"
            visible: !page.model.shortcut.isDefault
            text: page.model.texts.defaultOption
            onClicked: page.model.shortcut.useDefault()
        }
        ChipButton {
            objectName: "clearRefusedShortcut"
            text: page.model.shortcut.clearText
            onClicked: page.model.shortcut.clear()
        }
    }
    WarningCaption {
        objectName: "settingsLoss"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: page.model.settingsLoss !== ""
        text: page.model.settingsLoss
    }
    WarningCaption {
        objectName: "noGlobalShortcuts"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: page.model.shortcutReach === "nowhere"
        text: page.model.texts.noGlobalShortcuts
    }
    WarningCaption {
        objectName: "shortcutInX11WindowsOnly"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: page.model.shortcutReach === "inX11WindowsOnly"
        text: page.model.texts.shortcutInX11WindowsOnly
    }
    WarningCaption {
        objectName: "noTray"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: !page.model.hasTray
        text: page.model.texts.noTray
    }
    WarningCaption {
        objectName: "generalHidingObstacle"
        x: 1 + Theme.rowInset
        width: parent.width - 2 * x
        visible: text !== ""
        text: page.model.hidingObstacle
    }
}
