const APP_WINDOW_TYPES = [
    Meta.WindowType.NORMAL, Meta.WindowType.DIALOG, Meta.WindowType.MODAL_DIALOG, Meta.WindowType.UTILITY,
    Meta.WindowType.TOOLBAR, Meta.WindowType.MENU, Meta.WindowType.SPLASHSCREEN,
];

// The bits that X has for modifiers, with their names in accelerators.
const MODIFIERS = [[1, '<Shift>'], [4, '<Control>'], [8, '<Alt>'], [64, '<Super>']];
const HELD_MODIFIERS_INTERVAL_MS = 20;

/** A key combination that the shell hears whatever window has the focus. */
class KeyGrab {
    /** Null where somebody else has the combination; `tell` gets whether it is a press. */
    static make(key, modifiers, tell) {
        const names = MODIFIERS.filter(([bit]) => modifiers & bit).map(([, name]) => name);
        const accelerator = `${names.join('')}0x${key.toString(16).padStart(2, '0')}`;
        const action = global.display.grab_accelerator(accelerator, Meta.KeyBindingFlags.IGNORE_AUTOREPEAT);
        return action === Meta.KeyBindingAction.NONE ? null : new KeyGrab(action, modifiers, tell);
    }

    constructor(action, modifiers, tell) {
        this._action = action;
        this._modifiers = modifiers;
        this._tell = tell;
        this._name = Meta.external_binding_name_for_action(action);
        Main.wm.allowKeybinding(this._name, Shell.ActionMode.NORMAL | Shell.ActionMode.OVERVIEW | Shell.ActionMode.POPUP);
        this._signal = global.display.connect('accelerator-activated', (_display, activated) => {
            if (activated === action)
                this._press();
        });
    }

    destroy() {
        global.display.disconnect(this._signal);
        if (this._waiting)
            GLib.source_remove(this._waiting);
        global.display.ungrab_accelerator(this._action);
        Main.wm.allowKeybinding(this._name, Shell.ActionMode.NONE);
    }

    _press() {
        if (this._waiting)
            return;
        this._tell(true);
        // No version tells of a key that goes up after one of its modifiers: the first of them stands for it.
        this._waiting = GLib.timeout_add(GLib.PRIORITY_DEFAULT, HELD_MODIFIERS_INTERVAL_MS, () => {
            if (this._isHeld())
                return GLib.SOURCE_CONTINUE;
            this._waiting = 0;
            this._tell(false);
            return GLib.SOURCE_REMOVE;
        });
    }

    _isHeld() {
        const [, , held] = global.get_pointer();
        return this._modifiers !== 0 && (held & this._modifiers) === this._modifiers;
    }
}

// Keys on the screen and what they offer belong to the window that is written in.
const TYPING_STYLES = ['candidate-popup-boxpointer', 'keyboard-subkeys-boxpointer', 'keyboard-subkeys'];

function isForTyping(actor) {
    for (let one = actor; one; one = one.get_parent()) {
        if (one === Main.layoutManager.keyboardBox || TYPING_STYLES.some(style => one.has_style_class_name?.(style)))
            return true;
    }
    return false;
}

/**
 * Tells (`used`) when the user turns to the shell itself: clicks on it or opens the overview; and when the session is
 * locked (`locked`).
 */
class ShellUse {
    constructor({used, locked}) {
        this._signals = [
            // Presses on windows do not come this way.
            [global.stage, global.stage.connect('captured-event', (_stage, event) => {
                const presses = [Clutter.EventType.BUTTON_PRESS, Clutter.EventType.TOUCH_BEGIN];
                if (presses.includes(event.type()) && !this._isForAWindow(event))
                    used();
                return Clutter.EVENT_PROPAGATE;
            })],
            [Main.overview, Main.overview.connect('showing', used)],
            [Main.sessionMode, Main.sessionMode.connect('updated', () => {
                if (Main.sessionMode.isLocked)
                    locked();
            })],
        ];
    }

    destroy() {
        this._signals.forEach(([object, id]) => object.disconnect(id));
    }

    /** Curtain's own button opens and closes its popover itself. */
    _isForAWindow(event) {
        const actor = global.stage.get_event_actor?.(event) ?? event.get_source();
        return !!actor && (!!Main.panel.statusArea[PANEL_ROLE]?.contains(actor) || isForTyping(actor));
    }
}

/** The windows and the keys of the shell in which this runs. */
class ShellWindows {
    get display() {
        return global.display;
    }

    get workspaceManager() {
        return global.workspace_manager;
    }

    windows() {
        return global.get_window_actors().map(actor => actor.meta_window);
    }

    isAppWindow(window) {
        return !window.is_override_redirect() && APP_WINDOW_TYPES.includes(window.get_window_type());
    }

    /** What a Wayland client calls itself, which may be the name of its desktop entry; null for X11 clients. */
    nativeIdOf(window) {
        return window.get_client_type() === Meta.WindowClientType.WAYLAND ? window.get_wm_class() : null;
    }

    isHere(window) {
        return window.located_on_workspace(global.workspace_manager.get_active_workspace());
    }

    sortedByStacking(windows) {
        return global.display.sort_windows_by_stacking(windows);
    }

    activate(window) {
        window.activate(global.display.get_current_time_roundtrip());
    }

    raise(window) {
        window.raise();
    }

    minimize(window) {
        if (window.showing_on_its_workspace())
            this._skipEffect(window);
        window.minimize();
    }

    unminimize(windows) {
        for (const window of windows) {
            this._skipEffect(window);
            window.unminimize();
        }
    }

    /**
     * Whether previews show what is in the window. They draw the window's actor with an opacity of their own, but its
     * children as they are.
     */
    setPictured(window, isPictured) {
        const actor = window.get_compositor_private();
        actor?.get_children().forEach(child => child.set_opacity(isPictured ? 255 : 0));
    }

    watchUse(listener) {
        return new ShellUse(listener);
    }

    grabKey(key, modifiers, tell) {
        return KeyGrab.make(key, modifiers, tell);
    }

    _skipEffect(window) {
        const actor = window.get_compositor_private();
        // Where no effect follows, the next one would be left out.
        if (actor && this.isHere(window) && !Main.overview.visible)
            Main.wm.skipNextEffect(actor);
    }
}

/** Keeps windows that are hidden on request out of the overview while it lives. */
class OverviewFilter {
    constructor(hides) {
        this._originals = [];
        for (const overview of [Workspace.prototype, WorkspaceThumbnail.prototype]) {
            const original = overview._isOverviewWindow;
            if (!original)
                continue;
            overview._isOverviewWindow = function (window) {
                return !hides(window.get_meta_window?.() ?? window) && original.call(this, window);
            };
            this._originals.push([overview, original]);
        }
    }

    destroy() {
        for (const [overview, original] of this._originals)
            overview._isOverviewWindow = original;
    }
}

/** The parts of the extension while it is switched on. */
class Parts {
    constructor() {
        this._service = new WindowService(Gio.DBus.session, new ShellWindows());
        this._panel = new PanelService(Gio.DBus.session, item => new PanelButton(item), name => this._service.isClient(name));
        this._filter = new OverviewFilter(window => this._service.hides(window));
    }

    destroy() {
        this._filter.destroy();
        this._panel.destroy();
        this._service.destroy();
    }
}
