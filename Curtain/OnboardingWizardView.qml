import QtQuick
import QtQuick.Window
import Curtain
import Curtain.Controls
import Curtain.Items

/// The wizard of the first start: where the user is, above the current page.
FocusScope {
    id: wizard

    required property OnboardingViewModel model

    /// Whether the last button was used with the keyboard.
    property bool usesKeyboard: false
    readonly property bool isActive: Window.active

    implicitWidth: 420
    implicitHeight: 460
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true

    onIsActiveChanged: {
        if (isActive) {
            model.lookAgain();
        }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
    FocusKeeper {}
    ProgressDots {
        objectName: "dots"
        anchors.horizontalCenter: parent.horizontalCenter
        y: 24
        index: wizard.model.stepIndex
        total: wizard.model.stepCount
    }
    Loader {
        id: page
        anchors.fill: parent
        focus: true
        sourceComponent: pages[wizard.model.page] ?? null

        readonly property var pages: ({
            "welcome": welcome,
            "compatibility": compatibility,
            "desktop": desktop,
            "microphone": microphone,
            "camera": camera,
            "summary": summary
        })

        onLoaded: {
            if (wizard.usesKeyboard) {
                (item as WizardPage).showRing();
            }
        }
    }
    Connections {
        target: wizard.model

        function onLangChanged() {
            Desktop.language = wizard.model.lang;
        }
    }
    Connections {
        target: page.item

        function onUsed(hadRing) {
            wizard.usesKeyboard = hadRing;
        }
    }

    Component {
        id: welcome
        WelcomeStep {
            vm: wizard.model
        }
    }
    Component {
        id: compatibility
        CompatibilityStep {
            vm: wizard.model
        }
    }
    Component {
        id: desktop
        PermissionStep {
            vm: wizard.model
            title: vm.texts.wizPermDesktopTitle
            body: vm.texts.wizPermDesktopBody
            validation: vm.texts.wizValidDesktop
            liveArea: DesktopIllustration {
                cleared: wizard.model.isGranted
            }
        }
    }
    Component {
        id: microphone
        PermissionStep {
            vm: wizard.model
            title: vm.texts.wizPermMicTitle
            body: vm.texts.wizPermMicBody
            validation: vm.texts.wizValidMic
            placeholder: "mic.fill"
            liveArea: AudioLevelBar {
                level: wizard.model.level
                Accessible.role: Accessible.ProgressBar
                Accessible.name: wizard.model.texts.microphone
                Accessible.description: Math.round(level * 100) + "%"

                StyledText {
                    objectName: "deviceProblem"
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: parent.height - 36
                    color: Theme.stageInk
                    text: wizard.model.deviceProblem
                }
            }
        }
    }
    Component {
        id: camera
        PermissionStep {
            vm: wizard.model
            title: vm.texts.wizPermCamTitle
            body: vm.texts.wizPermCamBody
            validation: vm.texts.wizValidCam
            placeholder: "camera.fill"
            liveArea: Item {
                CameraPreviewView {
                    anchors.fill: parent
                    camera: wizard.model.camera
                    mirrored: wizard.model.isPreviewMirrored
                    Accessible.role: Accessible.Graphic
                    Accessible.name: wizard.model.texts.cameraPreview
                }
                Rectangle {
                    objectName: "noPicture"
                    anchors.fill: parent
                    visible: !wizard.model.hasPreview
                    color: Theme.stage

                    Symbol {
                        anchors.horizontalCenter: parent.horizontalCenter
                        y: 60
                        name: "video.slash"
                        size: 34
                        color: Theme.stageInk
                    }
                    StyledText {
                        objectName: "deviceProblem"
                        anchors.horizontalCenter: parent.horizontalCenter
                        y: 104
                        color: Theme.stageInk
                        text: wizard.model.deviceProblem
                    }
                }
                RoundFrame {
                    anchors.fill: parent
                    radius: Theme.liveAreaRadius
                }
            }
        }
    }
    Component {
        id: summary
        SummaryStep {
            vm: wizard.model
        }
    }
}
