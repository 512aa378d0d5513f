pragma Singleton
import Curtain.Items
import QtQuick

/// Every colour, size, type style and duration of the views. Lengths are points. Colours come in a light and a dark
/// form, each of them also for those who ask for high contrast.
QtObject {
    readonly property bool isDark: Desktop.isDark
    readonly property bool isContrastHigh: Desktop.isContrastHigh
    function pick(light: string, dark: string, lightHigh: string, darkHigh: string): color {
        return isContrastHigh ? (isDark ? darkHigh : lightHigh) : isDark ? dark : light;
    }
    /// How large what an item shows is drawn, where 1 is as it is meant: whole views are drawn smaller on small screens.
    function scaleOf(item: Item): real {
        return item ? item.mapToItem(null, 0, 1).y - item.mapToItem(null, 0, 0).y : 1;
    }
    /// A colour at this opacity over another one, as a colour that lets nothing through.
    function mix(top: color, bottom: color, opacity: real): color {
        return Qt.tint(bottom, Qt.rgba(top.r, top.g, top.b, opacity));
    }

    // Surfaces
    readonly property color window: pick("#F4F5F8", "#1A1D24", "#FFFFFF", "#000000")
    readonly property color card: pick("#FFFFFF", "#23272F", "#FFFFFF", "#0B0D12")
    readonly property color well: pick("#ECEEF2", "#2D323C", "#E2E5EB", "#232730")
    readonly property color wellHover: pick("#E2E5EB", "#373D49", "#D6DAE2", "#2F3541")
    readonly property color wellPressed: pick("#D6DAE2", "#424957", "#C8CCD5", "#3C4352")
    readonly property color hairline: pick("#E2E5EB", "#343A46", "#858C9B", "#9BA2B1")
    readonly property color edge: pick("#D3D7DF", "#434A58", "#3F4552", "#C8CCD5")
    /// Of fields and pickers, which are found by it.
    readonly property color fieldEdge: pick("#858C9B", "#7C8494", "#3F4552", "#C8CCD5")
    readonly property color fieldEdgeHover: pick("#6A7182", "#9BA2B1", "#000000", "#FFFFFF")

    /// What lies on a well as on a track.
    readonly property color raised: pick("#FFFFFF", "#424957", "#FFFFFF", "#3C4352")

    // Words and symbols
    readonly property color ink: pick("#1B1F2A", "#F1F3F7", "#000000", "#FFFFFF")
    readonly property color ink2: pick("#565D6D", "#B6BCC9", "#2B303B", "#E2E5EB")
    readonly property color ink3: pick("#686F80", "#9BA2B1", "#3F4552", "#C8CCD5")
    readonly property color disabledInk: pick("#A3A9B5", "#656C7B", "#858C9B", "#7C8494")

    // The one accent
    readonly property color accent: pick("#3B55D6", "#93A5FF", "#2136A0", "#B8C5FF")
    readonly property color accentHover: pick("#3049C4", "#A6B5FF", "#182A85", "#CBD4FF")
    readonly property color accentPressed: pick("#263CA8", "#BAC6FF", "#101F69", "#DEE4FF")
    readonly property color accentTint: pick("#E7EBFA", "#2C345A", "#E7EBFA", "#232B4E")
    readonly property color accentTintHover: pick("#D8DFF7", "#353F6C", "#D8DFF7", "#2C3560")
    readonly property color accentTintPressed: pick("#C6D0F3", "#3F4A7E", "#C6D0F3", "#364072")
    readonly property color accentInk: pick("#FFFFFF", "#10131C", "#FFFFFF", "#000000")
    readonly property color disabledFill: pick("#E2E5EB", "#343A46", "#D6DAE2", "#2F3541")
    readonly property color disabledAccent: pick("#B9C3EE", "#47527F", "#B9C3EE", "#47527F")

    // Quiet buttons: ink2 at 0.12 on whatever lies below
    readonly property color quiet: Qt.rgba(ink2.r, ink2.g, ink2.b, 0.12)
    readonly property color quietHover: pick("#D6D9E0", "#3A404C", "#D6D9E0", "#2F3541")
    readonly property color quietPressed: pick("#C8CCD5", "#464D5B", "#C8CCD5", "#3C4352")

    // Switches that are off
    readonly property color switchOff: pick("#8C93A2", "#7C8494", "#565D6D", "#9BA2B1")
    readonly property color switchOffHover: pick("#7B8292", "#8C93A2", "#3F4552", "#B6BCC9")
    readonly property color switchOffPressed: pick("#6A7182", "#9BA2B1", "#2B303B", "#C8CCD5")

    // On and around pictures
    readonly property color scrim: Qt.rgba(27 / 255, 31 / 255, 42 / 255, 0.4)
    readonly property color overlay: Qt.rgba(0, 0, 0, 0.45)
    readonly property color overlayHover: Qt.rgba(0, 0, 0, 0.58)
    readonly property color overlayPressed: Qt.rgba(0, 0, 0, 0.7)
    readonly property color overlayInk: "#FFFFFF"
    readonly property color overlayOn: Qt.rgba(1, 1, 1, 0.9)
    readonly property color overlayOnHover: "#FFFFFF"
    readonly property color overlayOnPressed: Qt.rgba(1, 1, 1, 0.8)
    readonly property color overlayOnInk: stage
    readonly property color stage: "#20242E"
    readonly property color stageInk: "#C9CDD6"
    readonly property color stageSymbol: Qt.rgba(1, 1, 1, 0.5)
    readonly property color pictureBorder: Qt.rgba(ink.r, ink.g, ink.b, 0.16)
    readonly property color photoMat: "#E2E5EB"
    readonly property color photoGreen: "#5FE08F"
    readonly property color raisedText: Qt.rgba(0, 0, 0, 0.4)
    readonly property color flash: "#FFFFFF"
    readonly property color scrollThumb: Qt.rgba(ink.r, ink.g, ink.b, isContrastHigh ? 0.6 : 0.22)

    // Status colours: `solid` for marks, dots and fills, `text` for words
    readonly property color green: pick("#1E9E57", "#3DBE78", "#0E6B35", "#62D699")
    readonly property color orange: pick("#D96B00", "#EB8A33", "#8F4100", "#F5AA62")
    readonly property color red: pick("#D93434", "#F0706C", "#A81E1E", "#FF9A97")
    readonly property color gray: pick("#858C9B", "#8A91A0", "#565D6D", "#B6BCC9")
    readonly property color greenText: pick("#12703A", "#62D699", "#0A5429", "#8DEBB8")
    readonly property color orangeText: pick("#9C4700", "#F5AA62", "#7A3700", "#FFC894")
    readonly property color redText: pick("#B42424", "#FF9A97", "#8E1616", "#FFBDBB")
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
        return mix(solid(tone), window, 0.12);
    }
    /// The status colour at 0.15 on the risk card.
    function riskTint(tone: string): color {
        return tone === "gray" ? well : mix(solid(tone), riskCard(tone), 0.15);
    }
    function riskCard(tone: string): color {
        return tone === "orange" || tone === "red" ? mix(solid(tone), card, 0.04) : card;
    }
    function riskEdge(tone: string): color {
        return tone === "orange" || tone === "red" ? mix(solid(tone), card, 0.22) : hairline;
    }

    // Level bars, on black at 0.85; unlit at 0.18
    readonly property color levelBackdrop: Qt.rgba(0, 0, 0, 0.85)
    readonly property color levelGreen: "#34C778"
    readonly property color levelYellow: "#F2C744"
    readonly property color levelOrange: "#F58A2B"
    readonly property real levelUnlit: 0.18

    // The live areas of the wizard before there is something to see
    readonly property color placeholder: isDark ? Qt.rgba(1, 1, 1, 0.08) : Qt.rgba(0, 0, 0, 0.06)

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
