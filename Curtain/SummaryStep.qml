import QtQuick
import Curtain.Controls

/// The wizard's last page.
WizardPage {
    id: page

    button.text: vm.texts.wizSummaryStart
    button.onClicked: vm.finish()

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
        y: 140
        text: page.vm.texts.wizSummaryTitle
    }
    WizardCard {
        objectName: "rows"
        y: Math.max(192, title.y + title.height + 16)

        WizardRow {
            objectName: "desktop"
            isFirst: true
            title: page.vm.desktopSummary
        }
        WizardRow {
            objectName: "microphone"
            title: page.vm.texts.wizSummaryMic
            detail: page.vm.microphoneGap
            isWarning: true
        }
        WizardRow {
            objectName: "camera"
            title: page.vm.texts.wizSummaryCam
            detail: page.vm.cameraGap
            isWarning: true
        }
    }
}
