import QtQuick

/// Words in one of the theme's type styles. Plain text only: names from outside may hold anything. Aligned to
/// the start of the line, whatever the script of the text.
Text {
    id: words

    property var style: Theme.body
    /// Only names of apps and devices may be cut short.
    property bool mayElide: false
    /// Whether assistive technology reads it by itself. Words that are the name of a control or a row are not said twice.
    property bool isSpoken: true

    readonly property real sunkBy: Math.max(0, Math.round(baselineOffset - (height - contentHeight) / 2 - own.ascent))

    FontMetrics {
        id: own
        font: words.font
    }

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: !isSpoken || text === ""
    color: Theme.ink
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignLeft
    verticalAlignment: Text.AlignVCenter
    font.family: Theme.familyFor(text)
    font.pixelSize: style.size
    font.weight: style.weight
    font.letterSpacing: style.tracking
    // A fixed height would put a single line at the bottom of its box.
    lineHeightMode: wrapMode === Text.NoWrap ? Text.ProportionalHeight : Text.FixedHeight
    lineHeight: wrapMode === Text.NoWrap ? 1 : style.line
    // In a line of fixed height, the letters of another font stand as much lower as that font is higher.
    transform: Translate { y: words.wrapMode === Text.NoWrap ? 0 : -words.sunkBy }
    elide: mayElide ? Text.ElideRight : Text.ElideNone
    maximumLineCount: mayElide ? 1 : 1000
}
