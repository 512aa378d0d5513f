import QtQuick
import Curtain
import Curtain.Controls

/// What is checked of the camera, the microphone and the notifications.
SettingsPage {
    id: page

    required property SettingsViewModel model

    SettingsSection {
        width: parent.width
        header: page.model.texts.camera
        note: page.model.texts.cameraNote

        SwitchRow {
            width: parent.width
            leastHeight: 40
            isFirst: true
            label: page.model.texts.showCameraPreview
            switchName: "showCameraPreview"
            isOn: page.model.switches.showCameraPreview
            onFlipped: on => page.model.switches.showCameraPreview = on
        }
        SettingsRow {
            width: parent.width
            leastHeight: 40
            label: page.model.texts.camera

            Picker {
                objectName: "camera"
                leastWidth: 180
                mostWidth: 230
                name: page.model.texts.camera
                model: page.model.cameras
                currentIndex: page.model.cameraIndex
                onActivated: index => {
                    currentIndex = Qt.binding(() => page.model.cameraIndex);
                    page.model.cameraIndex = index;
                }
            }
        }
    }
    SettingsSection {
        width: parent.width
        header: page.model.texts.microphone
        note: page.model.texts.micNote

        SwitchRow {
            width: parent.width
            leastHeight: 40
            isFirst: true
            label: page.model.texts.showMicCheck
            switchName: "showMicCheck"
            isOn: page.model.switches.showMicCheck
            onFlipped: on => page.model.switches.showMicCheck = on
        }
        SettingsRow {
            width: parent.width
            leastHeight: 40
            label: page.model.texts.micTestMode

            Picker {
                objectName: "micTestMode"
                leastWidth: 180
                mostWidth: 260
                name: page.model.texts.micTestMode
                model: page.model.micTestModes
                currentIndex: page.model.micTestModeIndex
                onActivated: index => {
                    currentIndex = Qt.binding(() => page.model.micTestModeIndex);
                    page.model.micTestModeIndex = index;
                }
            }
        }
    }
    SettingsSection {
        width: parent.width
        header: page.model.texts.notifications
        note: page.model.texts.notifNote

        Item {
            width: parent.width
            implicitHeight: focusSettings.height + 12 + (missing.visible ? missing.height + 6 : 0)

            ButtonBase {
                id: focusSettings
                objectName: "openFocusSettings"
                anchors.left: parent.left
                anchors.leftMargin: Theme.rowInset
                y: 6
                height: 28
                leftPadding: 12
                rightPadding: 12
                text: page.model.texts.openFocusSettings
                onClicked: page.model.openFocusSettings()

                contentItem: StyledText {
                    isSpoken: false
                    text: focusSettings.text
                    style: Theme.bodyMedium
                    horizontalAlignment: Text.AlignHCenter
                }
                background: Rectangle {
                    radius: Theme.fieldRadius
                    color: focusSettings.down ? Theme.wellPressed
                        : focusSettings.hovered ? Theme.wellHover : Theme.well

                    Behavior on color { ColorAnimation { duration: Theme.hoverTime; easing.type: Theme.easing } }

                    FocusRing { visible: focusSettings.visualFocus }
                }
            }
            StyledText {
                id: missing
                objectName: "lacksFocusSettings"
                x: Theme.rowInset
                y: 40
                width: parent.width - 2 * Theme.rowInset
                visible: page.model.lacksFocusSettings
                text: page.model.texts.noSettingsPage
                style: Theme.small
                color: Theme.orangeText
                wrapMode: Text.Wrap
                onVisibleChanged: {
                    if (visible) {
                        Qt.callLater(page.reveal, missing); // qmllint disable
                    }
                }
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }
        }
        SwitchRow {
            width: parent.width
            leastHeight: 40
            label: page.model.texts.checkNotifications
            switchName: "checkNotifications"
            isOn: page.model.switches.checkNotifications
            onFlipped: on => page.model.switches.checkNotifications = on
        }
        SwitchRow {
            width: parent.width
            leastHeight: 40
            label: page.model.texts.notifHandled
            switchName: "notifHandled"
            isOn: page.model.switches.notifHandled
            onFlipped: on => page.model.switches.notifHandled = on
        }
    }
}
