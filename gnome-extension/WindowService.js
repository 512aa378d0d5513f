const BUS_NAME = 'com.curtain.Curtain.GnomeShell';
const OBJECT_PATH = '/com/curtain/Curtain/GnomeShell';
const CLIENT_NAME = 'com.curtain.Curtain';
// What both sides must know of each other; platform/linux/windows/gnome/GnomeShellProtocol.h says the same.
const PROTOCOL_VERSION = 1;
const INTERFACE_NAME = 'com.curtain.Curtain.GnomeShell';
const INTERFACE = `<node><interface name="${INTERFACE_NAME}">
<method name="Watch"><arg type="u" name="version" direction="in"/><arg type="u" name="version" direction="out"/></method>
<method name="Hide"><arg type="at" name="windows" direction="in"/></method>
<method name="Show"><arg type="at" name="windows" direction="in"/></method>
<method name="Activate"><arg type="t" name="window" direction="in"/></method>
<method name="GrabKey">
  <arg type="u" name="key" direction="in"/><arg type="u" name="modifiers" direction="in"/><arg type="b" name="granted" direction="out"/>
</method>
<method name="UngrabKey"><arg type="u" name="key" direction="in"/><arg type="u" name="modifiers" direction="in"/></method>
<signal name="Changed">
  <arg type="a(tssssubbb)" name="windows"/><arg type="at" name="closed"/><arg type="at" name="stacking"/>
  <arg type="t" name="focused"/>
</signal>
<signal name="Used"/>
<signal name="Locked"/>
<signal name="Key"><arg type="u" name="key"/><arg type="u" name="modifiers"/><arg type="b" name="pressed"/></signal>
</interface></node>`;
const ACCESS_DENIED = 'org.freedesktop.DBus.Error.AccessDenied';
const FAILED = 'org.freedesktop.DBus.Error.Failed';

/** The window, the one that it is a dialog of, and so on. */
function withParents(window) {
    const windows = [];
    for (let one = window; one; one = one.get_transient_for())
        windows.push(one);
    return windows;
}

/** The key combinations that the shell has been asked to hear: keys by the numbers and modifiers by the bits that X has for them. */
class KeyGrabs {
    /** `tell` gets the key, the modifiers and whether it is a press. */
    constructor(shell, tell) {
        this._shell = shell;
        this._tell = tell;
        this._grabs = new Map();
    }

    /** False where somebody else has the combination. */
    grab(key, modifiers) {
        const name = `${modifiers} ${key}`;
        const grab = this._grabs.get(name) ?? this._shell.grabKey(key, modifiers, isPressed => this._tell(key, modifiers, isPressed));
        if (grab)
            this._grabs.set(name, grab);
        return !!grab;
    }

    ungrab(key, modifiers) {
        const name = `${modifiers} ${key}`;
        this._grabs.get(name)?.destroy();
        this._grabs.delete(name);
    }

    ungrabAll() {
        this._grabs.forEach(grab => grab.destroy());
        this._grabs.clear();
    }
}

/**
 * Lists, hides and shows the windows of a shell for the one program on the session bus that has Curtain's name. It hides and
 * shows nothing that it was not asked to. Where that program ends, what it hid stays hidden, and the keys that it was told of
 * are free. It is told (Used) when the user turns to the shell itself, which takes the keyboard from no window, and when the
 * session is locked (Locked).
 *
 * What is told of a window: identifier, class (particular, general), application, sandboxed application, process, whether it is
 * hidden, whether it stands in the task list, whether it is on the workspace in front.
 */
class WindowService {
    /** `shell` is a ShellWindows, or answers as one. */
    constructor(bus, shell) {
        this._bus = bus;
        this._shell = shell;
        this._known = new Map();
        // With the windows that were below it when it was hidden, bottom to top.
        this._hidden = new Map();
        this._changed = new Set();
        this._closed = [];
        this._signals = [];
        this._client = null;
        this._watcher = null;
        this._idle = 0;
        this._keys = new KeyGrabs(shell, (...key) => this._emit(this._client, 'Key', new GLib.Variant('(uub)', key)));
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(bus, OBJECT_PATH);
        // Whoever sees the service's name can call: it comes once it is known who may.
        this._clientWatch = Gio.bus_watch_name_on_connection(
            bus, CLIENT_NAME, Gio.BusNameWatcherFlags.NONE,
            (_bus, _name, owner) => this._setClient(owner), () => this._setClient(null));
        this._use = shell.watchUse({used: () => this._tellClient('Used'), locked: () => this._tellClient('Locked')});
        this._connect(shell.display, 'window-created', (_display, window) => this._add(window));
        this._connect(shell.display, 'notify::focus-window', () => this._schedule());
        this._connect(shell.display, 'restacked', () => this._schedule());
        this._connect(shell.workspaceManager, 'active-workspace-changed', () => this._changeAll());
        for (const window of shell.windows())
            this._add(window);
    }

    destroy() {
        Gio.bus_unwatch_name(this._clientWatch);
        if (this._name)
            Gio.bus_unown_name(this._name);
        this._object.unexport();
        this._use.destroy();
        this._keys.ungrabAll();
        if (this._idle)
            GLib.source_remove(this._idle);
        for (const [object, id] of this._signals)
            object.disconnect(id);
        for (const [window, ids] of this._known)
            ids.forEach(id => window.disconnect(id));
        for (const window of this._hidden.keys())
            this._shell.setPictured(window, true);
        this._hidden.clear();
        this._known.clear();
    }

    /** Whether the window was hidden on request, or went with one that was, and has not come back. */
    hides(window) {
        return withParents(window).some(one => this._hidden.has(one));
    }

    isClient(name) {
        return name === this._client;
    }

    WatchAsync([version], invocation) {
        this._answer(invocation, () => {
            if (version === PROTOCOL_VERSION) {
                this._watcher = invocation.get_sender();
                this._changeAll();
                this._report();
            }
            return new GLib.Variant('(u)', [PROTOCOL_VERSION]);
        });
    }

    HideAsync([ids], invocation) {
        this._answer(invocation, () => {
            const stacking = this._stacking();
            this._windowsOf(ids).forEach(window => this._hide(window, stacking));
        });
    }

    ShowAsync([ids], invocation) {
        this._answer(invocation, () => this._showAll(this._windowsOf(ids)));
    }

    ActivateAsync([id], invocation) {
        this._answer(invocation, () => this._windowsOf([id]).forEach(window => this._shell.activate(window)));
    }

    GrabKeyAsync([key, modifiers], invocation) {
        this._answer(invocation, () => new GLib.Variant('(b)', [this._keys.grab(key, modifiers)]));
    }

    UngrabKeyAsync([key, modifiers], invocation) {
        this._answer(invocation, () => this._keys.ungrab(key, modifiers));
    }

    _answer(invocation, act) {
        if (!this.isClient(invocation.get_sender())) {
            invocation.return_dbus_error(ACCESS_DENIED, 'Only Curtain may ask this');
            return;
        }
        try {
            const answer = act() ?? null;
            // What was done is known before the answer is there.
            this._report();
            invocation.return_value(answer);
        } catch (error) {
            logError(error, 'Curtain');
            invocation.return_dbus_error(FAILED, `${error}`);
        }
    }

    _setClient(owner) {
        if (owner !== this._client)
            this._keys.ungrabAll();
        this._client = owner;
        this._watcher = this._watcher === owner ? owner : null;
        this._name ??= Gio.bus_own_name_on_connection(this._bus, BUS_NAME, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    _tellClient(signal) {
        if (this._client)
            this._emit(this._client, signal, null);
    }

    _connect(object, signal, handler) {
        this._signals.push([object, object.connect(signal, handler)]);
    }

    _add(window) {
        if (this._known.has(window) || !this._shell.isAppWindow(window))
            return;
        const change = () => this._change(window);
        const signals = ['notify::wm-class', 'notify::gtk-application-id', 'notify::skip-taskbar', 'workspace-changed'];
        this._known.set(window, [
            window.connect('unmanaged', () => this._remove(window)),
            window.connect('notify::minimized', () => this._noteMinimized()),
            ...signals.map(signal => window.connect(signal, change)),
        ]);
        this._change(window);
    }

    _remove(window) {
        this._known.get(window)?.forEach(id => window.disconnect(id));
        this._known.delete(window);
        this._hidden.delete(window);
        this._changed.delete(window);
        this._closed.push(window.get_stable_sequence());
        // Dialogs that went with it may come back.
        this._changeAll();
    }

    _noteMinimized() {
        this._forgetReturned();
        // A window's dialogs go and come with it.
        this._changeAll();
    }

    _forgetReturned() {
        for (const window of this._hidden.keys()) {
            if (!this._isAway(window)) {
                this._hidden.delete(window);
                this._shell.setPictured(window, true);
            }
        }
    }

    /** Not so where only the desktop is shown instead: the window comes back with all others. */
    _isAway(window) {
        return withParents(window).some(one => one.minimized);
    }

    _hide(window, stacking) {
        if (window.minimized || this._hidden.has(window))
            return;
        if (!this._isAway(window))
            this._shell.minimize(window);
        this._hidden.set(window, stacking.slice(0, stacking.indexOf(window)));
        this._shell.setPictured(window, false);
    }

    _showAll(windows) {
        const belows = new Map(windows.map(window => [window, this._hidden.get(window)]).filter(([, below]) => below));
        for (const window of belows.keys()) {
            this._hidden.delete(window);
            this._shell.setPictured(window, true);
        }
        this._shell.unminimize(windows.filter(window => window.minimized));
        this._restack(belows);
    }

    /** Puts each window above the nearest of those that it stood on, since the others have been raised in the meantime. */
    _restack(belows) {
        const stacking = this._stacking();
        const wanted = stacking.filter(window => !belows.has(window));
        const byHeight = [...belows].sort(([, below], [, other]) => below.length - other.length);
        for (const [window, below] of byHeight) {
            const nearest = below.filter(lower => wanted.includes(lower)).pop();
            wanted.splice(wanted.indexOf(nearest) + 1, 0, window);
        }
        // The shell draws a window that comes back in another place than its list says, so all from there on are raised.
        const lowest = Math.min(...[...belows.keys()].map(window => wanted.indexOf(window)));
        wanted.slice(lowest).forEach(window => this._shell.raise(window));
    }

    _stacking() {
        return this._shell.sortedByStacking([...this._known.keys()]);
    }

    _windowsOf(ids) {
        const wanted = new Set(ids);
        return [...this._known.keys()].filter(window => wanted.has(window.get_stable_sequence()));
    }

    _change(window) {
        this._changed.add(window);
        this._schedule();
    }

    _changeAll() {
        for (const window of this._known.keys())
            this._changed.add(window);
        this._schedule();
    }

    _schedule() {
        if (!this._idle) {
            this._idle = GLib.idle_add(GLib.PRIORITY_DEFAULT, () => {
                this._idle = 0;
                this._report();
                return GLib.SOURCE_REMOVE;
            });
        }
    }

    _report() {
        this._forgetReturned();
        const windows = [...this._changed].map(window => this._describe(window));
        const closed = this._closed;
        this._changed.clear();
        this._closed = [];
        if (!this._watcher)
            return;
        const stacking = this._stacking().map(window => window.get_stable_sequence());
        const focused = this._shell.display.focus_window;
        const isKnown = focused && this._known.has(focused);
        this._emit(this._watcher, 'Changed', new GLib.Variant(
            '(a(tssssubbb)atatt)', [windows, closed, stacking, isKnown ? focused.get_stable_sequence() : 0]));
    }

    _emit(listener, name, values) {
        this._bus.emit_signal(listener, OBJECT_PATH, INTERFACE_NAME, name, values);
    }

    _describe(window) {
        return [
            window.get_stable_sequence(),
            window.get_wm_class_instance() ?? '',
            window.get_wm_class() ?? '',
            window.get_gtk_application_id() ?? this._shell.nativeIdOf(window) ?? '',
            window.get_sandboxed_app_id() ?? '',
            Math.max(0, window.get_pid()),
            this._isAway(window),
            !window.skip_taskbar,
            this._shell.isHere(window),
        ];
    }
}
