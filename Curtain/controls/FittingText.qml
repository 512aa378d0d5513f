import QtQuick

/// Words that stay on one line where they fit, and otherwise become smaller and take two.
StyledText {
    id: words

    property var normalStyle: Theme.body
    property var tightStyle: Theme.tight

    style: metrics.advanceWidth <= width ? normalStyle : tightStyle
    wrapMode: style === tightStyle ? Text.WordWrap : Text.NoWrap

    TextMetrics {
        id: metrics
        text: words.text
        font.family: Theme.fontFamily
        font.pixelSize: words.normalStyle.size
        font.weight: words.normalStyle.weight
        font.letterSpacing: words.normalStyle.tracking
    }
}
