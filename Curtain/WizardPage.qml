import QtQuick
import Curtain
import Curtain.Controls

/// What all pages of the wizard share: the button that leads on, which has the keyboard. A double click on it counts
/// once, so that it does not act on the next page or state as well, unseen.
FocusScope {
    id: page

    focus: true

    required property OnboardingViewModel vm
    property alias button: goOn
    property bool hasButton: true
    /// Whether the keyboard can go from the button to another control.
    property bool hasMoreControls: false

    /// A button was used, with the keyboard's ring on it or without.
    signal used(hadRing: bool)

    /// Gives the button the keyboard, as one who used the keyboard to come here expects.
    function showRing() {
        goOn.forceActiveFocus(Qt.TabFocusReason);
        goOn.focusReason = Qt.TabFocusReason;
    }

    ActionButton {
        id: goOn
        objectName: "goOn"
        x: 24
        y: 396
        z: 1
        width: parent.width - 48
        height: 40
        focus: true
        visible: page.hasButton
        // What cannot be seen would answer to the keyboard otherwise.
        enabled: page.hasButton
        Keys.onTabPressed: event => step(event)
        Keys.onBacktabPressed: event => step(event)
        onClicked: page.used(visualFocus)
        onDoubleClicked: {}

        function step(event) {
            event.accepted = !page.hasMoreControls;
            if (event.accepted) {
                page.showRing();
            }
        }
    }
}
