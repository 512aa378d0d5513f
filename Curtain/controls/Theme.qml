pragma Singleton
import QtQuick

/// Every colour, size, type style and duration of the views. Lengths are points.
QtObject {
    // Surfaces
    readonly property color window: "#F4F5F8"
    readonly property color card: "#FFFFFF"
    readonly property color well: "#ECEEF2"
    readonly property color wellHover: "#E2E5EB"
    readonly property color wellPressed: "#D6DAE2"
    readonly property color hairline: "#E2E5EB"
    readonly property color edge: "#D3D7DF"
    readonly property color edgeHover: "#B4BAC6"

    // Words and symbols
    readonly property color ink: "#1B1F2A"
    readonly property color ink2: "#565D6D"
    readonly property color ink3: "#686F80"
    readonly property color disabledInk: "#A3A9B5"

    // The one accent
    readonly property color accent: "#3B55D6"
    readonly property color accentHover: "#3049C4"
    readonly property color accentPressed: "#263CA8"
    readonly property color accentTint: "#E7EBFA"
    readonly property color accentTintHover: "#D8DFF7"
    readonly property color accentTintPressed: "#C6D0F3"
    readonly property color accentInk: "#FFFFFF"
    readonly property color disabledFill: "#E2E5EB"
    readonly property color disabledAccent: "#B9C3EE"

    // Quiet buttons: ink2 at 0.12 on whatever lies below
    readonly property color quiet: Qt.rgba(86 / 255, 93 / 255, 109 / 255, 0.12)
    readonly property color quietHover: "#D6D9E0"
    readonly property color quietPressed: "#C8CCD5"

    // Switches that are off
    readonly property color switchOff: "#8C93A2"
    readonly property color switchOffHover: "#7B8292"
    readonly property color switchOffPressed: "#6A7182"

    // On and around pictures
    readonly property color scrim: Qt.rgba(27 / 255, 31 / 255, 42 / 255, 0.4)
    readonly property color overlay: Qt.rgba(0, 0, 0, 0.45)
    readonly property color overlayHover: Qt.rgba(0, 0, 0, 0.58)
    readonly property color overlayPressed: Qt.rgba(0, 0, 0, 0.7)
    readonly property color overlayInk: "#FFFFFF"
    readonly property color stage: "#20242E"
    readonly property color stageInk: "#C9CDD6"
    readonly property color stageSymbol: Qt.rgba(1, 1, 1, 0.5)
    readonly property color pictureBorder: Qt.rgba(27 / 255, 31 / 255, 42 / 255, 0.16)
    readonly property color photoMat: "#E2E5EB"
    readonly property color photoGreen: "#5FE08F"
    readonly property color raisedText: Qt.rgba(0, 0, 0, 0.4)
    readonly property color flash: "#FFFFFF"
    readonly property color scrollThumb: Qt.rgba(27 / 255, 31 / 255, 42 / 255, 0.22)

    // Status colours: `solid` for marks, dots and fills, `text` for words
    readonly property color green: "#1E9E57"
    readonly property color orange: "#D96B00"
    readonly property color red: "#D93434"
    readonly property color gray: "#858C9B"
    readonly property color greenText: "#12703A"
    readonly property color orangeText: "#9C4700"
    readonly property color redText: "#B42424"
    readonly property color grayText: ink2

    /// "green", "orange", "red" or "gray".
    function solid(tone: string): color {
        return { "green": green, "orange": orange, "red": red }[tone] ?? gray;
    }
    function text(tone: string): color {
        return { "green": greenText, "orange": orangeText, "red": redText }[tone] ?? grayText;
    }
    /// The status colour at 0.12 on the window.
    function headerTint(tone: string): color {
        return { "green": "#DAEBE5", "orange": "#F1E4DA", "red": "#F1DEE0" }[tone] ?? "#E7E8ED";
    }
    /// The status colour at 0.15 on the risk card.
    function riskTint(tone: string): color {
        return { "green": "#DDF0E6", "orange": "#F9E5CF", "red": "#F9DADA" }[tone] ?? well;
    }
    function riskCard(tone: string): color {
        return { "orange": "#FFFAF4", "red": "#FFF7F7" }[tone] ?? card;
    }
    function riskEdge(tone: string): color {
        return { "orange": "#F1DDC8", "red": "#F2D3D3" }[tone] ?? hairline;
    }

    // Level bars, on black at 0.85; unlit at 0.18
    readonly property color levelBackdrop: Qt.rgba(0, 0, 0, 0.85)
    readonly property color levelGreen: "#34C778"
    readonly property color levelYellow: "#F2C744"
    readonly property color levelOrange: "#F58A2B"
    readonly property real levelUnlit: 0.18

    // The live areas of the wizard before there is something to see
    readonly property color placeholder: Qt.rgba(0, 0, 0, 0.06)

    // Progress dots
    readonly property color progressStart: accent
    readonly property color progressEnd: "#7C8FF0"
    readonly property color progressIdle: Qt.rgba(128 / 255, 134 / 255, 147 / 255, 0.3)

    // Type: size, line height, weight, tracking
    readonly property string fontFamily: Desktop.fontFamily
    /// The family for words of any script: the preferred one has no Indic letters.
    function familyFor(text: string): string {
        return /[\u0900-\u0DFF]/.test(text) ? Qt.application.font.family : fontFamily;
    }
    readonly property var score: ({ size: 30, line: 36, weight: Font.DemiBold, tracking: -0.6 })
    readonly property var scoreOf: ({ size: 15, line: 36, weight: Font.Medium, tracking: 0 })
    readonly property var display: ({ size: 22, line: 28, weight: Font.DemiBold, tracking: -0.2 })
    readonly property var title: ({ size: 20, line: 26, weight: Font.DemiBold, tracking: -0.2 })
    readonly property var panelTitle: ({ size: 17, line: 24, weight: Font.DemiBold, tracking: -0.1 })
    readonly property var appTitle: ({ size: 15, line: 20, weight: Font.DemiBold, tracking: -0.1 })
    readonly property var button: ({ size: 14, line: 20, weight: Font.DemiBold, tracking: 0 })
    readonly property var listLine: ({ size: 14, line: 20, weight: Font.Medium, tracking: 0 })
    readonly property var wizBody: ({ size: 14, line: 20, weight: Font.Normal, tracking: 0 })
    readonly property var body: ({ size: 13, line: 18, weight: Font.Normal, tracking: 0 })
    readonly property var bodyMedium: ({ size: 13, line: 18, weight: Font.Medium, tracking: 0 })
    readonly property var bodyStrong: ({ size: 13, line: 18, weight: Font.DemiBold, tracking: 0 })
    readonly property var small: ({ size: 12, line: 16, weight: Font.Normal, tracking: 0 })
    readonly property var smallMedium: ({ size: 12, line: 16, weight: Font.Medium, tracking: 0 })
    readonly property var smallStrong: ({ size: 12, line: 16, weight: Font.DemiBold, tracking: 0 })
    readonly property var tight: ({ size: 12, line: 14, weight: Font.Medium, tracking: 0 })

    // Shape
    readonly property real popoverRadius: 14
    readonly property real panelRadius: 14
    readonly property real liveAreaRadius: 14
    readonly property real cardRadius: 12
    readonly property real buttonRadius: 10
    readonly property real fieldRadius: 8
    readonly property real tabRadius: 7
    readonly property real segmentRadius: 6
    readonly property real menuItemRadius: 6

    // Space
    readonly property real popoverSide: 16
    readonly property real blockGap: 12
    readonly property real columnGap: 14
    readonly property real cardInset: 16
    readonly property real rowInset: 14

    // Motion, in milliseconds; always ease-out
    readonly property bool reducedMotion: Desktop.reducedMotion
    readonly property int hoverTime: reducedMotion ? 0 : 80
    readonly property int switchTime: reducedMotion ? 0 : 140
    readonly property int panelInTime: reducedMotion ? 0 : 160
    readonly property int panelOutTime: reducedMotion ? 0 : 120
    readonly property int fadeTime: reducedMotion ? 0 : 120
    readonly property int meterTime: reducedMotion ? 0 : 60
    readonly property int scoreTime: reducedMotion ? 0 : 240
    readonly property int dotTime: reducedMotion ? 0 : 180
    readonly property int flashInTime: reducedMotion ? 0 : 40
    readonly property int flashOutTime: reducedMotion ? 0 : 160
    readonly property int iconsLeaveTime: reducedMotion ? 0 : 220
    readonly property int easing: Easing.OutCubic
}
