import QtQuick
import Curtain.Controls

/// The wizard's first page.
WizardPage {
    id: page

    button.text: vm.texts.wizWelcomeCTA
    button.y: 370
    button.onClicked: vm.advance()

    Image {
        objectName: "logo"
        anchors.horizontalCenter: parent.horizontalCenter
        y: 74
        source: Theme.isDark ? "qrc:/curtain/logo-dark.svg" : "qrc:/curtain/logo.svg"
        sourceSize.width: 200
        sourceSize.height: 52
        Accessible.role: Accessible.Graphic
        Accessible.name: "Curtain"
    }
    WizardTitle {
        id: title
        objectName: "title"
        y: 160
        style: Theme.display
        text: page.vm.texts.wizWelcomeTitle
    }
    WizardText {
        objectName: "body"
        y: title.y + title.height + 10
        inset: 12
        text: page.vm.texts.wizWelcomeBody
    }
    WizardText {
        objectName: "note"
        y: 418
        style: Theme.small
        text: page.vm.texts.wizWelcomeMicro
    }
}
