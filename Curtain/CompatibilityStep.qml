import QtQuick

/// The wizard's page on whether Curtain can work here. Where it cannot, the page leads nowhere.
WizardPage {
    id: page

    readonly property bool isCompatible: vm.isCompatibilityKnown && vm.isCompatible

    hasButton: isCompatible
    button.text: vm.text("wizCompatContinue")
    button.onClicked: vm.advance()
    Component.onCompleted: vm.checkCompatibility()

    Spinner {
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
            text: page.vm.text("wizCompatTitle")
        }
        WizardText {
            id: body
            objectName: "body"
            y: title.y + title.height + 4
            inset: 12
            text: page.vm.text("wizCompatBelong")
        }
        WizardCard {
            objectName: "rows"
            y: Math.max(208, body.y + body.height + 16)

            WizardRow {
                objectName: "system"
                isFirst: true
                isOk: page.isCompatible
                title: page.vm.text("wizCompatCheckOS")
            }
            WizardRow {
                objectName: "devices"
                isOk: page.vm.hasCameraOrMicrophone
                title: page.vm.text("wizCompatCheckCamMic")
            }
            WizardRow {
                objectName: "apps"
                isOk: page.vm.hasVideoApps
                title: page.vm.text("wizCompatCheckApps")
                detail: page.vm.videoApps
            }
        }
    }
    Item {
        anchors.fill: parent
        visible: page.vm.isCompatibilityKnown && !page.vm.isCompatible

        Symbol {
            objectName: "warning"
            anchors.horizontalCenter: parent.horizontalCenter
            y: 150
            name: "exclamationmark.circle.fill"
            size: 56
            color: Theme.orange
        }
        WizardTitle {
            id: verdict
            objectName: "verdict"
            y: 226
            style: Theme.panelTitle
            text: page.vm.text("wizCompatOSFail")
        }
        WizardText {
            objectName: "obstacle"
            y: verdict.y + verdict.height + 10
            inset: 12
            visible: text !== ""
            text: page.vm.hidingObstacle
        }
    }
}
