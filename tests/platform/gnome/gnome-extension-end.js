
// What follows here stands behind them.

function expectEqual(actual, expected, what) {
    const [one, other] = [actual, expected].map(value => JSON.stringify(value));
    if (one !== other)
        throw new Error(`${what}: ${one}, not ${other}`);
}

function setLocked(isLocked) {
    Main.sessionMode.isLocked = isLocked;
    Main.sessionMode.emit('updated');
}

/** Notes what it is asked, and answers a question for the menu when it is told to. */
class RecordingItem {
    constructor() {
        this.asked = [];
    }

    activate(...place) { this.asked.push(['activate', ...place]); }
    activateSecondarily(...place) { this.asked.push(['activateSecondarily', ...place]); }
    readMenu(receive) {
        this.asked.push(['readMenu']);
        this.answer = () => receive([{title: 'Quit', isEnabled: true, choose() {}}], false);
    }
}

function press(button, number) {
    button.vfunc_event({type: () => Clutter.EventType.BUTTON_PRESS, get_button: () => number});
}

function touch(button) {
    button.vfunc_event({type: () => Clutter.EventType.TOUCH_BEGIN});
}

function strike(button, key) {
    return button.emit('captured-event', {type: () => Clutter.EventType.KEY_PRESS, get_key_symbol: () => key});
}

function useEverything(button) {
    [Clutter.BUTTON_PRIMARY, Clutter.BUTTON_MIDDLE, Clutter.BUTTON_SECONDARY].forEach(number => press(button, number));
    touch(button);
    return strike(button, Clutter.KEY_Return);
}

const everything = [
    ['activate', 110, 31], ['activateSecondarily', 110, 31], ['readMenu'], ['activate', 110, 31], ['activate', 110, 31]];

const tests = {
    buttonThatIsMadeWhileTheSessionIsLockedComesWithTheSession() {
        setLocked(true);
        const button = new PanelButton(new RecordingItem());
        expectEqual(button.container.visible, false, 'it is on the lock screen');
        setLocked(false);
        expectEqual(button.container.visible, true, 'it is in the panel');
        setLocked(true);
        expectEqual(button.container.visible, false, 'it is on the lock screen');
    },

    nothingIsReachedByTheButtonWhileTheSessionIsLocked() {
        const item = new RecordingItem();
        const button = new PanelButton(item);
        setLocked(true);
        expectEqual(useEverything(button), Clutter.EVENT_STOP, 'the panel gets the key');
        expectEqual(item.asked, [], 'what it was asked');
        setLocked(false);
        expectEqual(useEverything(button), Clutter.EVENT_STOP, 'the panel gets the key');
        expectEqual(item.asked, everything, 'what it was asked');
        expectEqual(strike(button, Clutter.KEY_Tab), Clutter.EVENT_PROPAGATE, 'it keeps another key');
    },

    menuGoesWithTheLock() {
        const item = new RecordingItem();
        const button = new PanelButton(item);
        press(button, Clutter.BUTTON_SECONDARY);
        item.answer();
        expectEqual([button.menu.isOpen, button.menu.entries.length], [true, 1], 'the menu');
        setLocked(true);
        expectEqual([button.menu.isOpen, button.menu.entries.length], [false, 0], 'the menu');
        item.answer();
        expectEqual(button.menu.isOpen, false, 'a late answer opens the menu');
    },

    useOfTheShellIsToldOfAndSoIsALock() {
        const told = [];
        const use = new ShellUse({used: () => told.push('used'), locked: () => told.push('locked')});
        const pressOn = actor => global.stage.emit('captured-event', {type: () => Clutter.EventType.BUTTON_PRESS, get_source: () => null, actor});
        pressOn(new Actor());
        Main.overview.emit('showing');
        expectEqual(told, ['used', 'used'], 'what is told');
        setLocked(true);
        setLocked(false);
        expectEqual(told, ['used', 'used', 'locked'], 'what is told');
        use.destroy();
        pressOn(new Actor());
        setLocked(true);
        expectEqual(told.length, 3, 'what is told');
    },

    pressesOnTheButtonAndOnKeysOfTheShellAreNoUseOfTheShell() {
        let uses = 0;
        const use = new ShellUse({used: () => ++uses, locked() {}});
        const pressOn = actor => global.stage.emit('captured-event', {type: () => Clutter.EventType.TOUCH_BEGIN, get_source: () => null, actor});
        const button = new PanelButton(new RecordingItem());
        const keyboard = Main.layoutManager.keyboardBox;
        const popUps = ['candidate-popup-boxpointer', 'keyboard-subkeys-boxpointer', 'keyboard-subkeys'].map(name => new Actor(name));
        for (const actor of [button, keyboard, ...popUps])
            [actor, new Actor('', new Actor('', actor))].forEach(pressOn);
        expectEqual(uses, 0, 'uses');
        pressOn(new Actor('popup-menu', new Actor()));
        pressOn(null);
        expectEqual(uses, 2, 'uses');
        use.destroy();
    },
};

let failures = 0;
for (const [name, test] of Object.entries(tests)) {
    setLocked(false);
    try {
        test();
    } catch (error) {
        ++failures;
        print(`${name}: ${error}\n${error.stack}`);
    }
}
system.exit(failures ? 1 : 0);
