import QtQuick
import Curtain.Controls

/// The wizard's page on whether Curtain can work here. Where it cannot, the page leads nowhere.
WizardPage {
    id: page

    readonly property bool isCompatible: vm.isCompatibilityKnown && vm.isCompatible
    function findingOf(isOk: bool): string {
        return isOk ? vm.texts.looksGood : vm.texts.attentionNeeded;
    }
    readonly property bool isUnsupported: vm.isCompatibilityKnown && !vm.isCompatible

    hasButton: isCompatible
    button.text: vm.texts.wizCompatContinue
    button.onClicked: vm.advance()
    // The answer may come after the button to close the window has had the keyboard.
    onIsCompatibleChanged: {
        if (isCompatible) {
            button.forceActiveFocus();
        }
    }
    Component.onCompleted: vm.checkCompatibility()

    Spinner {
        id: spinner
        objectName: "spinner"
        anchors.centerIn: parent
        visible: !page.vm.isCompatibilityKnown
    }
    Item {
        anchors.fill: parent
        visible: page.isCompatible

        Symbol {
            objectName: "seal"
            anchors.horizontalCenter: parent.horizontalCenter
            y: 64
            name: "checkmark.seal.fill"
            size: 56
            color: Theme.green
        }
        WizardTitle {
            id: title
            objectName: "title"
            y: 136
            text: page.vm.texts.wizCompatTitle
        }
        WizardText {
            id: body
            objectName: "body"
            y: title.y + title.height + 4
            inset: 12
            text: page.vm.texts.wizCompatBelong
        }
        WizardCard {
            objectName: "rows"
            y: Math.max(208, body.y + body.height + 16)

            WizardRow {
                objectName: "system"
                finding: page.findingOf(isOk)
                isFirst: true
                isOk: page.isCompatible
                title: page.vm.texts.wizCompatCheckOS
            }
            WizardRow {
                objectName: "devices"
                finding: page.findingOf(isOk)
                isOk: page.vm.hasCameraOrMicrophone
                title: page.vm.texts.wizCompatCheckCamMic
            }
            WizardRow {
                objectName: "apps"
                finding: page.findingOf(isOk)
                isOk: page.vm.hasVideoApps
                title: page.vm.texts.wizCompatCheckApps
                detail: page.vm.videoApps
            }
        }
    }
    WizardText {
        objectName: "waiting"
        y: spinner.y + spinner.height + 16
        inset: 12
        visible: !page.vm.isCompatibilityKnown && text !== ""
        text: page.vm.hidingObstacle
    }
    Item {
        id: unsupported

        readonly property real contentHeight: 56 + 20 + verdict.height
            + (obstacle.visible ? 10 + obstacle.height : 0) + (remedy.visible ? 10 + remedy.height : 0)

        x: 0
        y: 51 + Math.max(0, Math.round(((switchOn.visible ? switchOn.y : close.y) - 51 - contentHeight) / 2))
        width: parent.width
        height: contentHeight
        visible: page.isUnsupported

        Symbol {
            objectName: "warning"
            anchors.horizontalCenter: parent.horizontalCenter
            name: "exclamationmark.circle.fill"
            size: 56
            color: Theme.orange
        }
        WizardTitle {
            id: verdict
            objectName: "verdict"
            y: 76
            style: Theme.panelTitle
            // Another session is not what is needed.
            text: page.vm.canSwitchExtensionOn ? page.vm.hidingObstacle : page.vm.texts.wizCompatOSFail
        }
        WizardText {
            id: obstacle
            objectName: "obstacle"
            y: verdict.y + verdict.height + 10
            inset: 12
            visible: text !== "" && !page.vm.canSwitchExtensionOn
            text: page.vm.hidingObstacle
        }
        WizardText {
            id: remedy
            objectName: "remedy"
            y: (obstacle.visible ? obstacle.y + obstacle.height : verdict.y + verdict.height) + 10
            inset: 12
            color: Theme.ink
            visible: text !== ""
            text: page.vm.hidingRemedy
        }
    }
    ActionButton {
        id: switchOn
        objectName: "switchOn"
        x: 24
        y: close.y - 50
        width: parent.width - 48
        height: 40
        visible: page.isUnsupported && page.vm.canSwitchExtensionOn
        enabled: visible
        text: page.vm.texts.switchOn
        onVisibleChanged: takeKeyboard()
        Component.onCompleted: takeKeyboard()
        onClicked: page.vm.switchExtensionOn()

        function takeKeyboard() {
            if (visible) {
                forceActiveFocus();
            }
        }
    }
    ActionButton {
        id: close
        objectName: "close"
        x: 24
        y: 396
        width: parent.width - 48
        height: 40
        kind: "quiet"
        visible: page.isUnsupported || page.vm.hidingObstacle !== ""
        enabled: visible
        text: page.vm.texts.close
        onVisibleChanged: takeKeyboard()
        Component.onCompleted: takeKeyboard()
        onClicked: page.vm.close()

        function takeKeyboard() {
            if (visible && !switchOn.visible) {
                forceActiveFocus();
            }
        }
    }
}
