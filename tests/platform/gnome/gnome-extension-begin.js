// What stands before gnome-extension/PanelButton.js and ShellWindows.js: as much of GNOME Shell as their buttons and their
// watch over its use ask for.

const system = imports.system;

class Emitter {
    constructor() {
        this._handlers = new Map();
        this._lastId = 0;
    }

    connect(signal, handler) {
        this._handlers.set(++this._lastId, [signal, handler]);
        return this._lastId;
    }

    disconnect(id) {
        this._handlers.delete(id);
    }

    /** What the last handler returns. */
    emit(signal, ...values) {
        return [...this._handlers.values()].filter(([name]) => name === signal).map(([, handler]) => handler(this, ...values)).pop();
    }
}

class Actor extends Emitter {
    constructor(styleClass = '', parent = null) {
        super();
        this._styleClass = styleClass;
        this._parent = parent;
    }

    get_parent() { return this._parent; }
    has_style_class_name(name) { return this._styleClass === name; }
    contains(other) { return !!other && (other === this || this.contains(other.get_parent())); }
}

class Menu {
    constructor() {
        this.isOpen = false;
        this.entries = [];
        this.box = {};
    }

    open() { this.isOpen = true; }
    close() { this.isOpen = false; }
    removeAll() { this.entries = []; }
    addMenuItem(entry) { this.entries.push(entry); }
}

class Button extends Actor {
    constructor(...values) {
        super();
        this._init(...values);
    }

    _init() {
        this.container = {visible: true, show() { this.visible = true; }};
        this.menu = new Menu();
    }

    add_child() {}
    destroy() { this.emit('destroy'); }
    get_transformed_position() { return [100, 0]; }
    get_transformed_size() { return [20, 32]; }
}

class MenuItem extends Emitter {
    setSensitive() {}
}

const Clutter = {
    EventType: {BUTTON_PRESS: 1, TOUCH_BEGIN: 2, KEY_PRESS: 3}, EVENT_PROPAGATE: false, EVENT_STOP: true,
    BUTTON_PRIMARY: 1, BUTTON_MIDDLE: 2, BUTTON_SECONDARY: 3, KEY_Return: 4, KEY_KP_Enter: 5, KEY_space: 6, KEY_Tab: 7, TextDirection: {},
};
const Gio = {Settings: class { get_strv() { return []; } }};
const GObject = {registerClass: aClass => aClass};
const St = {Icon: class {}};
const Meta = {WindowType: {}};
const PanelMenu = {Button};
const PopupMenu = {PopupMenuItem: MenuItem, PopupSeparatorMenuItem: MenuItem};
const Main = {
    sessionMode: Object.assign(new Emitter(), {isLocked: false}),
    overview: new Emitter(),
    layoutManager: {keyboardBox: new Actor()},
    panel: {
        statusArea: {},
        // Shows whatever it is given.
        addToStatusArea(role, button) {
            button.container.show();
            this.statusArea[role] = button;
        },
    },
};
globalThis.global = {stage: Object.assign(new Actor(), {get_event_actor: event => event.actor})};
