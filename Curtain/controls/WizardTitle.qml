import QtQuick

/// What a page of the wizard is about. Its lines are of about the same length: no word stands alone on the last one.
WizardText {
    id: title

    readonly property real room: parent.width - 48 - 2 * inset
    readonly property int leastLines: Math.ceil(implicitWidth / room)
    readonly property real evenWidth: Math.min(room, Math.ceil(1.15 * implicitWidth / leastLines))

    x: Math.round((parent.width - width) / 2)
    width: leastLines === 1 || probe.lineCount > leastLines ? room : evenWidth
    style: Theme.title
    color: Theme.ink
    Accessible.role: Accessible.Heading
    Accessible.name: text

    StyledText {
        id: probe
        visible: false
        width: title.evenWidth
        style: title.style
        text: title.text
        wrapMode: Text.Wrap
    }
}
