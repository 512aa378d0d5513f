import QtQuick
import QtQuick.Templates as T

/// What all buttons share: keyboard, focus, names for assistive technology, the tip of those without words.
T.Button {
    id: control

    /// Said where the button shows no words.
    property string tip
    /// Why a press has no effect, or less than usual, in a sentence; shown beside the words.
    property string reason
    /// A tip waits for its time, and the window may be without the button by then.
    readonly property bool isInWindow: Window.window !== null

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: text !== "" ? text : tip
    Accessible.description: reason
    Accessible.onPressAction: if (control.enabled) { control.clicked(); }
    // A key that is held down counts once, also where it leads to another button.
    Keys.onSpacePressed: event => event.accepted = event.isAutoRepeat
    Keys.onReleased: event => event.accepted = event.isAutoRepeat
    Keys.onReturnPressed: event => { if (!event.isAutoRepeat) control.clicked(); }
    Keys.onEnterPressed: event => { if (!event.isAutoRepeat) control.clicked(); }

    // The mouse takes the ring away, also from a button that has the keyboard already.
    PointHandler {
        target: null
        onActiveChanged: {
            if (active && control.visualFocus) {
                control.focusReason = Qt.MouseFocusReason;
            }
        }
    }
    // A control that is disabled does not say that it is hovered.
    HoverHandler {
        id: pointer
        target: null
        enabled: control.reason !== ""
    }
    Loader {
        active: control.tip !== "" && control.hovered
        sourceComponent: Tip {
            parent: control
            text: control.tip
            visible: control.hovered && !control.down && control.isInWindow
        }
    }
    Loader {
        active: control.reason !== "" && pointer.hovered
        sourceComponent: Tip {
            objectName: "reason"
            parent: control
            isSentence: true
            text: control.reason
            visible: pointer.hovered && !control.down && control.isInWindow
        }
    }
}
