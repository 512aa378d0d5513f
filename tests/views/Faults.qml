import QtQuick
import QtQuick.Templates as T
import Curtain.Controls

/// One fault at a time, by its name.
Item {
    id: root

    required property QtObject model

    LayoutMirroring.enabled: model.isRightToLeft
    LayoutMirroring.childrenInherit: true

    StyledText { x: 10; y: 10; text: "All is well" }
    StyledText { visible: root.model.word === "narrow"; y: 40; width: 20; text: "Wider than its place" }
    StyledText { visible: root.model.word === "elided"; y: 40; width: 60; elide: Text.ElideRight; text: "Cut short for want of room" }
    StyledText { visible: root.model.word === "mayElide"; y: 40; width: 60; mayElide: true; text: "An app with a long name" }
    StyledText { visible: root.model.word === "overlapping"; x: 14; y: 12; text: "On top" }
    StyledText { visible: root.model.word === "outside"; x: 380; y: 40; text: "Beyond the edge" }
    Item {
        visible: root.model.word === "clipped"
        y: 40
        width: 30
        height: 20
        clip: true
        StyledText { text: "Clipped by what holds it" }
    }
    StyledText { visible: root.model.word === "wrongSide"; y: 40; width: 300; LayoutMirroring.enabled: false; text: "Start" }
    StyledText { visible: root.model.word === "noFont"; y: 40; text: "\u{10FFFD}" }
    ChipButton { visible: root.model.word === "noName"; y: 40 }
    ChipButton { visible: root.model.word === "outOfControl"; y: 40; width: 30; text: "Too long for it" }
}
