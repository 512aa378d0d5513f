import QtQuick
import Curtain.Controls
import Curtain.Items

/// The wizard of the first start: where the user is, above the current page.
FocusScope {
    id: wizard

    /// An OnboardingViewModel.
    required property QtObject model

    /// Whether the last button was used with the keyboard.
    property bool usesKeyboard: false

    implicitWidth: 420
    implicitHeight: 460
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
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
                item.showRing();
            }
        }
    }
    Connections {
        target: wizard.model

        // The page is made anew with all its texts.
        function onLangChanged() {
            Desktop.language = wizard.model.lang;
            page.active = false;
            page.active = true;
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
            title: vm.text("wizPermDesktopTitle")
            body: vm.text("wizPermDesktopBody")
            validation: vm.text("wizValidDesktop")
            liveArea: DesktopIllustration {
                cleared: wizard.model.isGranted
            }
        }
    }
    Component {
        id: microphone
        PermissionStep {
            vm: wizard.model
            title: vm.text("wizPermMicTitle")
            body: vm.text("wizPermMicBody")
            validation: vm.text("wizValidMic")
            placeholder: "mic.fill"
            liveArea: AudioLevelBar {
                level: wizard.model.level
                Accessible.role: Accessible.ProgressBar
                Accessible.name: wizard.model.text("microphone")
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
            title: vm.text("wizPermCamTitle")
            body: vm.text("wizPermCamBody")
            validation: vm.text("wizValidCam")
            placeholder: "camera.fill"
            liveArea: Item {
                CameraPreviewView {
                    anchors.fill: parent
                    camera: wizard.model.camera
                    mirrored: wizard.model.isPreviewMirrored
                    Accessible.role: Accessible.Graphic
                    Accessible.name: wizard.model.text("cameraPreview")
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
