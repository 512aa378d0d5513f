import QtQuick
import QtQuick.Templates as T

/// The words for a control that shows only a symbol.
T.ToolTip {
    id: tip

    x: parent ? Math.round((parent.width - implicitWidth) / 2) : 0
    y: parent ? parent.height + 6 : 0
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    margins: 6
    horizontalPadding: 8
    verticalPadding: 4
    delay: 600
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: StyledText {
        isSpoken: false
        text: tip.text
        style: Theme.small
        color: Theme.accentInk
    }
    background: Rectangle {
        color: Theme.ink
        radius: 6
    }
}
