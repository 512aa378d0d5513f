import QtQuick
import QtQuick.Templates as T
import QtQuick.Window

/// Hands the keyboard on to what comes next where what has it is disabled or goes, so that something always has it.
/// Looks after what its parent contains. A menu or an alert above it has the keyboard to itself, and with its end what
/// had it before has it again.
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
        if (isHolding(current)) {
            hold(current);
        } else {
            Qt.callLater(handOn); // qmllint disable
        }
    }

    onCanHoldChanged: Qt.callLater(handOn) // qmllint disable

    /// What is given the keyboard now has not got it because something else has lost it.
    function forget(): void {
        holder = null;
        wasHeld = false;
    }
    function hold(item: Item): void {
        holder = item;
        wasHeld = true;
        hadRing = ringOf(item);
    }
    function isWithin(item: Item, around: Item): bool {
        let step = item;
        while (step !== null && step !== around) {
            step = step.parent;
        }
        return step !== null;
    }
    /// What has lost it leaves it with what it stands in, which Tab does not lead to.
    function isHolding(item: Item): bool {
        return isWithin(item, parent) && item.visible && item.enabled
            && (item === holder || item.activeFocusOnTab || !isWithin(holder, item));
    }
    function ringOf(item: Item): bool {
        return (item as T.Control)?.visualFocus ?? false;
    }
    function give(item: Item): void {
        item.forceActiveFocus(hadRing ? Qt.TabFocusReason : Qt.OtherFocusReason);
    }
    function handOn(): void {
        const now = Window.activeFocusItem;
        const isInside = isWithin(now, parent);
        const isElsewhere = now !== null && now !== Window.contentItem && !isInside;
        if (!wasHeld || !Window.active || isElsewhere || (now === holder && canHold)) {
            return;
        }
        const isHolderThere = isWithin(holder, parent);
        if (isHolderThere && canHold && isInside) {
            // Nothing took it from the holder.
            hold(now);
        } else if (isHolderThere && canHold && !("takesEveryKey" in holder)) {
            give(holder);
        } else {
            giveToNext(isHolderThere ? holder : isInside ? now : parent);
        }
    }
    function giveToNext(from: Item): void {
        // From what cannot be seen the first step leads to what it stands in only.
        let next = from.nextItemInFocusChain();
        if (next !== null && !next.activeFocusOnTab) {
            next = next.nextItemInFocusChain();
        }
        if (next !== null && "takesEveryKey" in next) {
            next = from.nextItemInFocusChain(false);
        }
        if (isHolding(next)) {
            give(next);
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
