import QtQuick
import Curtain.Controls

/// A page of the wizard that asks for one permission and then shows live what it is for.
WizardPage {
    id: page

    property string title
    /// Why the permission is asked for.
    property string body
    /// What is said once it is granted.
    property string validation
    /// Shown instead of the live area until the permission is granted; empty for a live area that is always shown.
    property string placeholder
    property Component liveArea

    readonly property bool isLive: placeholder === "" || vm.isGranted
    /// Whether the settings can mend it.
    readonly property bool isMendable: vm.isDenied && !vm.isForbidden

    hasMoreControls: isMendable
    button.text: isMendable ? vm.texts.wizPermOpenSettings
        : vm.isGranted || vm.isForbidden ? vm.texts.wizPermContinue : vm.texts.wizPermAllow
    button.y: isMendable ? 350 : 396
    button.height: isMendable ? 38 : 40
    button.onClicked: {
        if (vm.isGranted || vm.isForbidden) {
            vm.advance();
        } else if (vm.isDenied) {
            vm.openSystemSettings();
        } else {
            vm.requestCurrentPermission();
        }
    }

    Item {
        objectName: "liveArea"
        x: 24
        y: 51
        width: parent.width - 48
        height: 180

        Rectangle {
            objectName: "placeholder"
            anchors.fill: parent
            visible: !page.isLive
            radius: Theme.liveAreaRadius
            color: Theme.placeholder

            Symbol {
                anchors.centerIn: parent
                name: page.placeholder
                size: 38
            }
        }
        Loader {
            anchors.fill: parent
            active: page.isLive
            sourceComponent: page.liveArea
        }
    }
    WizardTitle {
        id: heading
        objectName: "title"
        y: 250
        text: page.title
    }
    WizardText {
        objectName: "body"
        y: heading.y + heading.height + 7
        inset: page.vm.isDenied ? 2 : 12
        visible: !page.vm.isGranted
        color: page.vm.isDenied ? Theme.orangeText : Theme.ink2
        text: !page.vm.isDenied ? page.body
            : page.vm.isForbidden ? page.vm.texts.cameraForbidden
            : page.vm.settingsProblem !== "" ? page.vm.settingsProblem : page.vm.texts.wizPermDeniedHint
    }
    Row {
        objectName: "validation"
        anchors.horizontalCenter: parent.horizontalCenter
        y: heading.y + heading.height + 7
        spacing: 8
        // What the live area says instead would contradict it.
        visible: page.vm.isGranted && page.vm.deviceProblem === ""

        Symbol {
            y: 1
            name: "checkmark.circle.fill"
            color: Theme.green
        }
        StyledText {
            width: Math.min(implicitWidth, page.width - 48 - 24 - 26)
            style: Theme.listLine
            color: Theme.greenText
            text: page.validation
            wrapMode: Text.Wrap
        }
    }
    ActionButton {
        objectName: "goOnWithout"
        x: 24
        y: 396
        width: parent.width - 48
        height: 40
        visible: page.isMendable
        kind: "quiet"
        text: page.vm.texts.wizPermContinue
        onClicked: {
            page.used(visualFocus);
            page.vm.advance();
        }
        onDoubleClicked: {}
    }
}
