// What follows here stands behind gnome-extension/WindowService.js and PanelItem.js: GNOME Shell as far as that asks it, with windows that exist only
// here, and a road by which a test acts as their user.

const CONTROL_PATH = '/org/gnome/Shell';
const WINDOW_PROCESS = 4242;
const EXTENSION_ON = 1, EXTENSION_OFF = 2;
const CONTROL = `<node>
<interface name="org.gnome.Shell.Extensions">
  <method name="GetExtensionInfo"><arg type="s" direction="in"/><arg type="a{sv}" direction="out"/></method>
  <method name="EnableExtension"><arg type="s" direction="in"/><arg type="b" direction="out"/></method>
  <signal name="ExtensionStateChanged"><arg type="s"/><arg type="a{sv}"/></signal>
</interface>
<interface name="com.curtain.Test.Shell">
  <method name="Open"><arg type="s" direction="in"/><arg type="t" direction="out"/></method>
  <method name="OpenUnnamed"><arg type="t" direction="out"/></method>
  <method name="OpenDialog"><arg type="t" direction="in"/><arg type="t" direction="out"/></method>
  <method name="Name"><arg type="t" direction="in"/><arg type="s" direction="in"/></method>
  <method name="Close"><arg type="t" direction="in"/></method>
  <method name="Minimize"><arg type="t" direction="in"/></method>
  <method name="ShowDesktop"><arg type="b" direction="in"/></method>
  <method name="IsShowing"><arg type="t" direction="in"/><arg type="b" direction="out"/></method>
  <method name="BringBack"><arg type="t" direction="in"/></method>
  <method name="Focus"><arg type="t" direction="in"/></method>
  <method name="Focused"><arg type="t" direction="out"/></method>
  <method name="MoveToSecondWorkspace"><arg type="t" direction="in"/></method>
  <method name="WorkspaceOf"><arg type="t" direction="in"/><arg type="i" direction="out"/></method>
  <method name="Workspace"><arg type="i" direction="out"/></method>
  <method name="GoToWorkspace"><arg type="i" direction="in"/></method>
  <method name="MakeFullscreen"><arg type="t" direction="in"/></method>
  <method name="IsFullscreen"><arg type="t" direction="in"/><arg type="b" direction="out"/></method>
  <method name="IsPictured"><arg type="t" direction="in"/><arg type="b" direction="out"/></method>
  <method name="IsInOverview"><arg type="t" direction="in"/><arg type="b" direction="out"/></method>
  <method name="Stacking"><arg type="at" direction="out"/></method>
  <method name="SetExtension"><arg type="i" direction="in"/></method>
  <method name="SetVersion"><arg type="u" direction="in"/></method>
  <method name="TakeKey"><arg type="u" direction="in"/><arg type="u" direction="in"/></method>
  <method name="StrikeKey"><arg type="u" direction="in"/><arg type="u" direction="in"/></method>
  <method name="GrabbedKeys"><arg type="u" direction="out"/></method>
  <method name="LoseKeys"/>
  <method name="LoseNextWatch"/>
  <method name="Use"/>
  <method name="Lock"/>
  <method name="LosePanel"/>
  <method name="Button"><arg type="as" direction="out"/></method>
  <method name="ClickButton"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="MiddleClickButton"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
  <method name="OpenMenu"/>
  <method name="Menu"><arg type="as" direction="out"/></method>
  <method name="Choose"><arg type="s" direction="in"/></method>
  <method name="BreakMinimizing"/>
</interface></node>`;

const flags = GObject.ParamFlags.READWRITE;

const FakeWindow = GObject.registerClass({
    Properties: {
        'minimized': GObject.ParamSpec.boolean('minimized', '', '', flags, false),
        'wm-class': GObject.ParamSpec.string('wm-class', '', '', flags, null),
        'gtk-application-id': GObject.ParamSpec.string('gtk-application-id', '', '', flags, null),
        'skip-taskbar': GObject.ParamSpec.boolean('skip-taskbar', '', '', flags, false),
    },
    Signals: {'unmanaged': {}, 'workspace-changed': {}},
}, class FakeWindow extends GObject.Object {
    place(sequence, shell, parent) {
        Object.assign(this, {
            _sequence: sequence, _shell: shell, _parent: parent, workspace: shell.workspace, isFullscreen: false, isPictured: true,
        });
        return this;
    }
    get_stable_sequence() { return this._sequence; }
    get_wm_class() { return this.wm_class; }
    get_wm_class_instance() { return this.wm_class; }
    get_gtk_application_id() { return this.gtk_application_id; }
    get_sandboxed_app_id() { return null; }
    get_pid() { return WINDOW_PROCESS; }
    detachFrom(parent) { this._parent = this._parent === parent ? null : this._parent; }
    get_transient_for() { return this._parent; }
    showing_on_its_workspace() { return !this._shell.showsDesktop && !this._isAway(); }
    _isAway() { return this.minimized || !!this._parent?._isAway(); }
});

const FakeDisplay = GObject.registerClass({
    Properties: {'focus-window': GObject.ParamSpec.object('focus-window', '', '', flags, FakeWindow)},
    Signals: {'window-created': {param_types: [FakeWindow]}, 'restacked': {}},
}, class FakeDisplay extends GObject.Object {});

const FakeWorkspaceManager = GObject.registerClass({
    Signals: {'active-workspace-changed': {}},
}, class FakeWorkspaceManager extends GObject.Object {});

/** Answers as ShellWindows does; new windows and those that are activated get the focus, as they do in the shell. */
class FakeShell {
    constructor() {
        this.display = new FakeDisplay();
        this.workspaceManager = new FakeWorkspaceManager();
        this.workspace = 0;
        // Bottom to top.
        this.stacking = [];
        this.refuses = false;
        this.showsDesktop = false;
        this._lastSequence = 0;
        this.keys = new Map();
    }

    grabKey(key, modifiers, tell) {
        const name = `${modifiers} ${key}`;
        if (this.keys.has(name))
            return null;
        this.keys.set(name, tell);
        return {destroy: () => this.keys.delete(name)};
    }

    watchUse(listener) {
        this.use = listener;
        return {destroy: () => this.use = null};
    }

    windows() { return [...this.stacking]; }
    isAppWindow() { return true; }
    nativeIdOf() { return null; }
    isHere(window) { return window.workspace === this.workspace; }
    sortedByStacking(windows) { return this.stacking.filter(window => windows.includes(window)); }
    setPictured(window, isPictured) { window.isPictured = isPictured; }
    find(sequence) { return this.stacking.find(window => window.get_stable_sequence() === sequence); }

    open(name, parent = null) {
        const window = new FakeWindow({wm_class: name}).place(++this._lastSequence, this, parent);
        this.stacking.push(window);
        this.display.emit('window-created', window);
        this.display.focus_window = window;
        return window.get_stable_sequence();
    }

    close(window) {
        this.stacking = this.stacking.filter(other => other !== window);
        this.stacking.forEach(other => other.detachFrom(window));
        window.emit('unmanaged');
        this._passFocusOnFrom(window);
    }

    raise(window) {
        this.stacking = [...this.stacking.filter(other => other !== window), window];
        this.display.emit('restacked');
    }

    activate(window) {
        this.goTo(window.workspace);
        window.minimized = false;
        this.raise(window);
        this.display.focus_window = window;
    }

    goTo(workspace) {
        if (workspace === this.workspace)
            return;
        this.workspace = workspace;
        this._focusTopmost();
        this.workspaceManager.emit('active-workspace-changed');
    }

    minimize(window) {
        if (this.refuses)
            throw new Error('it does not');
        window.minimized = true;
        this._passFocusOnFrom(window);
    }

    unminimize(windows) {
        for (const window of windows) {
            window.minimized = false;
            // As the shell does.
            this.stacking = [window, ...this.stacking.filter(other => other !== window)];
        }
    }

    moveTo(window, workspace) {
        window.workspace = workspace;
        window.emit('workspace-changed');
        this._passFocusOnFrom(window);
    }

    _passFocusOnFrom(window) {
        if (this.display.focus_window === window)
            this._focusTopmost();
    }

    _focusTopmost() {
        const visible = this.stacking.filter(window => window.showing_on_its_workspace() && this.isHere(window));
        const next = visible.pop() ?? null;
        if (next)
            this.raise(next);
        this.display.focus_window = next;
    }
}

/** The button in the panel, as its user sees it. */
class FakeButton {
    constructor(item) {
        this.item = item;
        this.described = [];
        this.menu = [];
        this.direction = '';
    }

    describe(...description) { this.described = description; }
    destroy() { this.described = []; }
    openMenu() {
        this.item.readMenu((entries, isRightToLeft) => {
            this.menu = entries;
            this.direction = isRightToLeft ? 'rtl' : 'ltr';
        });
    }
}

/** What the test asks for, and what the shell says of the extension. */
class Control {
    constructor(bus) {
        this._bus = bus;
        this._shell = new FakeShell();
        this._service = null;
        this._state = 0;
        for (const name of ['org.gnome.Shell.Extensions', 'com.curtain.Test.Shell']) {
            const info = Gio.DBusNodeInfo.new_for_xml(CONTROL).lookup_interface(name);
            const object = Gio.DBusExportedObject.wrapJSObject(info, this);
            object.export(bus, CONTROL_PATH);
            this._objects = [...this._objects ?? [], object];
        }
        Gio.bus_own_name_on_connection(bus, 'org.gnome.Shell', Gio.BusNameOwnerFlags.NONE, null, null);
    }

    GetExtensionInfo() {
        return this._information();
    }

    EnableExtension(uuid) {
        const isKnown = uuid === 'curtain@com.curtain.Curtain' && this._state !== 0;
        if (isKnown)
            this.SetExtension(EXTENSION_ON);
        return isKnown;
    }

    _information() {
        return this._state ? {state: new GLib.Variant('d', this._state)} : {};
    }

    SetExtension(state) {
        this._service?.destroy();
        this._panel?.destroy();
        const isOn = state === EXTENSION_ON;
        this._service = isOn ? new WindowService(this._bus, this._shell) : null;
        this._panel = isOn ? new PanelService(this._bus, item => this._button = new FakeButton(item), name => this._service.isClient(name)) : null;
        this._state = state;
        this._objects[0].emit_signal('ExtensionStateChanged', new GLib.Variant('(sa{sv})', [
            'curtain@com.curtain.Curtain', this._information()]));
    }

    SetVersion(version) {
        this._service.WatchAsync = (_arguments, invocation) => invocation.return_value(new GLib.Variant('(u)', [version]));
    }

    LoseNextWatch() {
        this._service.WatchAsync = (_arguments, invocation) => {
            delete this._service.WatchAsync;
            invocation.return_dbus_error('org.freedesktop.DBus.Error.NoReply', 'Too late');
        };
    }

    TakeKey(key, modifiers) { this._shell.grabKey(key, modifiers, () => {}); }
    GrabbedKeys() { return this._shell.keys.size; }
    StrikeKey(key, modifiers) {
        const tell = this._shell.keys.get(`${modifiers} ${key}`);
        tell?.(true);
        tell?.(false);
    }

    /** As an extension without such requests. */
    LoseKeys() {
        this._service.GrabKeyAsync = (_arguments, invocation) =>
            invocation.return_dbus_error('org.freedesktop.DBus.Error.UnknownMethod', 'No such method');
    }

    Use() { this._shell.use.used(); }
    Lock() { this._shell.use.locked(); }

    /** As an extension without a button. */
    LosePanel() {
        this._panel.destroy();
        this._panel = null;
    }

    Button() { return this._button?.described ?? []; }
    ClickButton(x, y) { this._button.item.activate(x, y); }
    MiddleClickButton(x, y) { this._button.item.activateSecondarily(x, y); }
    OpenMenu() { this._button.openMenu(); }
    Menu() {
        const texts = (this._button?.menu ?? []).map(entry => entry.isSeparator ? '-' : entry.isEnabled ? entry.title : `(${entry.title})`);
        return [this._button?.direction ?? '', ...texts];
    }
    Choose(title) { this._button.menu.find(entry => entry.title === title).choose(); }

    BreakMinimizing() {
        this._shell.refuses = true;
    }

    Open(name) { return this._shell.open(name); }
    OpenUnnamed() { return this._shell.open(null); }
    OpenDialog(id) {
        const parent = this._shell.find(id);
        return this._shell.open(parent.wm_class, parent);
    }
    Name(id, name) { this._shell.find(id).wm_class = name; }
    Close(id) { this._shell.close(this._shell.find(id)); }
    Minimize(id) { this._shell.find(id).minimized = true; }
    ShowDesktop(isShown) { this._shell.showsDesktop = isShown; }
    IsShowing(id) { return this._shell.find(id).showing_on_its_workspace(); }
    BringBack(id) { this._shell.activate(this._shell.find(id)); }
    Focus(id) { this._shell.activate(this._shell.find(id)); }
    Focused() { return this._shell.display.focus_window?.get_stable_sequence() ?? 0; }
    MoveToSecondWorkspace(id) { this._shell.moveTo(this._shell.find(id), 1); }
    WorkspaceOf(id) { return this._shell.find(id).workspace; }
    Workspace() { return this._shell.workspace; }
    GoToWorkspace(number) { this._shell.goTo(number); }
    MakeFullscreen(id) { this._shell.find(id).isFullscreen = true; }
    IsFullscreen(id) { return this._shell.find(id).isFullscreen; }
    IsPictured(id) { return this._shell.find(id).isPictured; }
    IsInOverview(id) { return !this._service.hides(this._shell.find(id)); }
    Stacking() { return this._shell.stacking.map(window => window.get_stable_sequence()); }
}

const control = new Control(Gio.DBus.session);
GLib.MainLoop.new(null, false).run();
control;
