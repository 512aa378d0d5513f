import QtQuick
import Curtain.Controls

/// All controls side by side.
Rectangle {
    id: gallery

    required property QtObject model

    color: Theme.window
    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true

    Card {
        anchors.fill: parent
        anchors.margins: 24

        Column {
            anchors.fill: parent
            anchors.margins: 20
            spacing: 16

            Row {
                spacing: 12
                ActionButton { objectName: "primary"; text: gallery.model.word; symbol: "wand.and.stars"; onClicked: gallery.model.press("primary") }
                ActionButton { objectName: "tonal"; kind: "tonal"; text: gallery.model.word; symbol: "eye.slash"; implicitHeight: 36; onClicked: gallery.model.press("tonal") }
                ActionButton { objectName: "quiet"; kind: "quiet"; text: gallery.model.word; symbol: "arrow.uturn.backward"; onClicked: gallery.model.press("quiet") }
                ActionButton { objectName: "disabled"; text: gallery.model.word; enabled: false }
            }
            Row {
                spacing: 12
                ChipButton { objectName: "chip"; text: gallery.model.word; onClicked: gallery.model.press("chip") }
                ChipButton { objectName: "tonalChip"; text: gallery.model.word; tonal: true }
                ChipButton { text: gallery.model.word; enabled: false }
                IconButton { objectName: "icon"; symbol: "pencil"; tip: gallery.model.word; onClicked: gallery.model.press("icon") }
                IconButton { symbol: "pencil"; on: true; tip: gallery.model.word }
                IconButton { symbol: "arrow.triangle.2.circlepath.camera"; isOverPicture: true; implicitWidth: 30; tip: gallery.model.word }
                ToggleSwitch { objectName: "switch"; text: gallery.model.word; onToggled: gallery.model.press(checked ? "on" : "off") }
                ToggleSwitch { text: gallery.model.word; checked: true }
                ToggleSwitch { text: gallery.model.word; checked: true; enabled: false }
            }
            Row {
                spacing: 12
                SearchField { objectName: "search"; placeholderText: gallery.model.word; clearName: gallery.model.word; onTextEdited: gallery.model.press("search " + text) }
                Picker { objectName: "picker"; name: gallery.model.word; model: ["1", "2", "3"]; onActivated: index => gallery.model.press("picked " + index) }
                Capsule { tone: "orange"; hasDot: true; text: gallery.model.word }
            }
            SegmentedControl {
                id: segments
                objectName: "segments"
                width: parent.width
                name: gallery.model.word
                model: [gallery.model.word, "2"]
                onActivated: index => { currentIndex = index; gallery.model.press("segment " + index); }
            }
            Grid {
                columns: 16
                spacing: 10
                Repeater {
                    model: gallery.model.symbols
                    Symbol { required property string modelData; name: modelData; size: 24; color: Theme.ink }
                }
            }
            AppIcon { objectName: "appIcon"; source: gallery.model.icon }
            IconButton {
                objectName: "opensMenu"
                symbol: "ellipsis"
                tip: gallery.model.word
                onClicked: menu.openBelow(this, 4)

                PopupMenu {
                    id: menu
                    isMirrored: gallery.LayoutMirroring.enabled
                    PopupMenuItem { objectName: "first"; text: gallery.model.word; onTriggered: gallery.model.press("first") }
                    PopupMenuDivider {}
                    PopupMenuItem { objectName: "second"; text: gallery.model.word; canBeChosen: true; isChosen: true; onTriggered: gallery.model.press("second") }
                }
            }
        }
    }
}
