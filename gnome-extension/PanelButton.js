const PANEL_ROLE = 'curtain';
// With both, the stage counts in units of which X11 programs see several pixels each.
const PIXEL_FEATURES = ['scale-monitor-framebuffer', 'xwayland-native-scaling'];

/** How many pixels of X11's lie along a unit of the stage: those of the sharpest monitor. */
function pixelsPerUnit() {
    const features = new Gio.Settings({schema_id: 'org.gnome.mutter'}).get_strv('experimental-features');
    if (!PIXEL_FEATURES.every(feature => features.includes(feature)))
        return 1;
    return Math.ceil(Math.max(...Main.layoutManager.monitors.map(monitor => global.display.get_monitor_scale(monitor.index))));
}

/** The button in the panel of an item: clicks are the item's, but for the one that opens its menu. */
const PanelButton = GObject.registerClass(class CurtainPanelButton extends PanelMenu.Button {
    _init(item) {
        super._init(0.5, 'Curtain');
        this._item = item;
        this._icon = new St.Icon({style_class: 'system-status-icon'});
        this.add_child(this._icon);
        // Before the menu takes the keys that open it.
        this.connect('captured-event', (_button, event) => this._takeKey(event));
        // Extensions' buttons would stay on the lock screen.
        this._mode = Main.sessionMode.connect('updated', () => this._followMode());
        this.connect('destroy', () => Main.sessionMode.disconnect(this._mode));
        Main.panel.addToStatusArea(PANEL_ROLE, this);
        // The panel shows whatever it is given.
        this._followMode();
    }

    describe(iconName, themePath, name) {
        const file = Gio.File.new_for_path(`${themePath}/hicolor/symbolic/apps/${iconName}.svg`);
        this._icon.gicon = themePath ? new Gio.FileIcon({file}) : new Gio.ThemedIcon({name: iconName});
        this.accessible_name = name;
    }

    vfunc_event(event) {
        const isTouch = event.type() === Clutter.EventType.TOUCH_BEGIN;
        if (isTouch || event.type() === Clutter.EventType.BUTTON_PRESS)
            this._press(isTouch ? Clutter.BUTTON_PRIMARY : event.get_button());
        return Clutter.EVENT_PROPAGATE;
    }

    _press(button) {
        if (Main.sessionMode.isLocked)
            return;
        if (this.menu.isOpen)
            this.menu.close();
        else if (button === Clutter.BUTTON_PRIMARY)
            this._activate();
        else if (button === Clutter.BUTTON_MIDDLE)
            this._item.activateSecondarily(...this._place());
        else if (button === Clutter.BUTTON_SECONDARY)
            this._item.readMenu((entries, isRightToLeft) => this._openMenu(entries, isRightToLeft));
    }

    _takeKey(event) {
        const activating = [Clutter.KEY_Return, Clutter.KEY_KP_Enter, Clutter.KEY_space];
        if (event.type() !== Clutter.EventType.KEY_PRESS || !activating.includes(event.get_key_symbol()))
            return Clutter.EVENT_PROPAGATE;
        if (!Main.sessionMode.isLocked)
            this._activate();
        return Clutter.EVENT_STOP;
    }

    _activate() {
        this._item.activate(...this._place());
    }

    /** The pixel in the middle of its lower edge. */
    _place() {
        const [x, y] = this.get_transformed_position();
        const [width, height] = this.get_transformed_size();
        const pixels = pixelsPerUnit();
        return [Math.round((x + width / 2) * pixels), Math.round((y + height) * pixels) - 1];
    }

    _openMenu(entries, isRightToLeft) {
        this.menu.removeAll();
        // The answer may be late.
        if (Main.sessionMode.isLocked)
            return;
        this.menu.box.text_direction = isRightToLeft ? Clutter.TextDirection.RTL : Clutter.TextDirection.LTR;
        for (const entry of entries) {
            const shown = entry.isSeparator ? new PopupMenu.PopupSeparatorMenuItem() : new PopupMenu.PopupMenuItem(entry.title);
            if (!entry.isSeparator) {
                shown.setSensitive(entry.isEnabled);
                shown.connect('activate', entry.choose);
            }
            this.menu.addMenuItem(shown);
        }
        this.menu.open();
    }

    _followMode() {
        const {isLocked} = Main.sessionMode;
        this.container.visible = !isLocked;
        if (isLocked) {
            this.menu.close();
            this.menu.removeAll();
        }
    }
});
