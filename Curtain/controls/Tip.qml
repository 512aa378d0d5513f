import QtQuick
import QtQuick.Templates as T

/// The words for a control that shows only a symbol, below it; or a sentence about a control, above it.
T.ToolTip {
    id: tip

    property bool isSentence: false

    x: !parent ? 0
        : !isSentence || implicitWidth < parent.width ? Math.round((parent.width - implicitWidth) / 2)
        : (parent as T.Control)?.mirrored ? 0 : parent.width - implicitWidth
    y: !parent ? 0 : isSentence ? -implicitHeight - 6 : parent.height + 6
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    margins: 6
    horizontalPadding: 8
    verticalPadding: 4
    delay: 600
    // What lies over all else does not follow its parent in this.
    transformOrigin: T.Popup.TopLeft
    onAboutToShow: scale = Theme.scaleOf(parent)
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: StyledText {
        isSpoken: false
        text: tip.text
        style: Theme.small
        color: Theme.accentInk
    }
    background: Rectangle {
        objectName: "tip"
        color: Theme.ink
        radius: 6
    }
}
