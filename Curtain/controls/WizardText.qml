import QtQuick

/// Centred words across a page of the wizard, in as many lines as they need.
StyledText {
    /// What stays free on both sides.
    property real inset: 0

    x: 24 + inset
    width: parent.width - 2 * x
    style: Theme.wizBody
    color: Theme.ink2
    horizontalAlignment: Text.AlignHCenter
    wrapMode: Text.Wrap
}
