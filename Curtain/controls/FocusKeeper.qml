import QtQuick
import QtQuick.Templates as T
import QtQuick.Window

/// Hands the keyboard on to what comes next where what has it is disabled or goes, so that something always has it.
Item {
    id: keeper

    /// What had it last.
    property Item holder: null
    /// Whether it wore the ring of those who use the keyboard.
    property bool hadRing: false
    /// What had it may be gone altogether by now.
    property bool wasHeld: false
    readonly property Item current: Window.activeFocusItem
    readonly property bool canHold: holder !== null && holder.visible && holder.enabled

    visible: false

    onCurrentChanged: {
        if (isKept(current)) {
            holder = current;
            wasHeld = true;
            hadRing = ringOf(current);
        } else {
            Qt.callLater(handOn); // qmllint disable
        }
    }

    onCanHoldChanged: Qt.callLater(handOn) // qmllint disable

    /// What has lost it leaves it with what it stands in.
    function isKept(item: Item): bool {
        return item !== null && item !== Window.contentItem && !(item instanceof Loader) && item.visible && item.enabled;
    }
    function ringOf(item: Item): bool {
        return (item as T.Control)?.visualFocus ?? false;
    }
    function handOn(): void {
        if (!wasHeld || !Window.active || isKept(Window.activeFocusItem)) {
            return;
        }
        // From what cannot be seen the first step leads to what it stands in only.
        let next = (holder ?? parent).nextItemInFocusChain();
        if (!next.activeFocusOnTab) {
            next = next.nextItemInFocusChain();
        }
        if ("takesEveryKey" in next) {
            next = (holder ?? parent).nextItemInFocusChain(false);
        }
        if (isKept(next)) {
            next.forceActiveFocus(hadRing ? Qt.TabFocusReason : Qt.OtherFocusReason);
        }
    }

    Connections {
        target: keeper.holder
        ignoreUnknownSignals: true

        // The mouse takes the ring away from what keeps the keyboard.
        function onVisualFocusChanged(): void {
            if (keeper.holder.activeFocus) {
                keeper.hadRing = keeper.ringOf(keeper.holder);
            }
        }
    }
}
