// The extension is a panel for Curtain's icon, in the protocol of StatusNotifierItems and under its own name on the bus.
const WATCHER_PATH = '/StatusNotifierWatcher';
const WATCHER = `<node><interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" name="service" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
</interface></node>`;
const ITEM_PATH = '/StatusNotifierItem';
const ITEM_INTERFACE = 'org.kde.StatusNotifierItem';
const MENU_INTERFACE = 'com.canonical.dbusmenu';
const PROPERTIES_INTERFACE = 'org.freedesktop.DBus.Properties';
const MENU_ROOT = 0;

/** An item on the bus and the button that shows it, until its connection ends. */
class PanelItem {
    /** `makeButton` gets the item and returns a PanelButton, or what answers as one. */
    constructor(bus, service, makeButton, onGone) {
        this._bus = bus;
        this._service = service;
        this._makeButton = makeButton;
        this._button = null;
        this._cancellable = new Gio.Cancellable();
        this._signals = ['NewIcon', 'NewToolTip'].map(signal => bus.signal_subscribe(
            service, ITEM_INTERFACE, signal, ITEM_PATH, null, Gio.DBusSignalFlags.NONE, () => this._act(this._read())));
        this._watch = Gio.bus_watch_name_on_connection(bus, service, Gio.BusNameWatcherFlags.NONE, null, onGone);
        this._act(this._read());
    }

    destroy() {
        this._cancellable.cancel();
        this._signals.forEach(id => this._bus.signal_unsubscribe(id));
        Gio.bus_unwatch_name(this._watch);
        this._button?.destroy();
    }

    /** A click at that pixel of the screen, as X11 programs count them. */
    activate(x, y) {
        this._click('Activate', x, y);
    }

    /** One with the middle button. */
    activateSecondarily(x, y) {
        this._click('SecondaryActivate', x, y);
    }

    /** `receive` gets what stands in the menu now, and whether that is read from right to left. */
    readMenu(receive) {
        this._act(this._readMenu().then(([entries, isRightToLeft]) => receive(entries, isRightToLeft)));
    }

    _click(method, x, y) {
        this._act(this._call(ITEM_PATH, ITEM_INTERFACE, method, new GLib.Variant('(ii)', [x, y])));
    }

    async _readMenu() {
        await this._callMenu('AboutToShow', new GLib.Variant('(i)', [MENU_ROOT]));
        const [, [, , items]] = await this._callMenu('GetLayout', new GLib.Variant('(iias)', [MENU_ROOT, -1, []]));
        const [direction] = await this._call(
            this._menu, PROPERTIES_INTERFACE, 'Get', new GLib.Variant('(ss)', [MENU_INTERFACE, 'TextDirection']));
        return [items.map(item => this._entry(item)), direction === 'rtl'];
    }

    _entry([id, properties]) {
        return {
            isSeparator: properties.type === 'separator',
            // A single underscore marks a mnemonic.
            title: (properties.label ?? '').replace(/_(.?)/g, '$1'),
            isEnabled: properties.enabled ?? true,
            choose: () => this._act(this._callMenu('Event', new GLib.Variant('(isvu)', [id, 'clicked', new GLib.Variant('s', ''), 0]))),
        };
    }

    async _read() {
        const [item] = await this._call(ITEM_PATH, PROPERTIES_INTERFACE, 'GetAll', new GLib.Variant('(s)', [ITEM_INTERFACE]));
        this._menu = item.Menu;
        this._button ??= this._makeButton(this);
        const [, , toolTip] = item.ToolTip;
        this._button.describe(item.IconName, item.IconThemePath, toolTip || item.Title);
    }

    _callMenu(method, parameters) {
        return this._call(this._menu, MENU_INTERFACE, method, parameters);
    }

    _call(path, interfaceName, method, parameters) {
        return new Promise((resolve, reject) => this._bus.call(
            this._service, path, interfaceName, method, parameters, null, Gio.DBusCallFlags.NO_AUTO_START, -1, this._cancellable,
            (bus, answer) => {
                try {
                    resolve(bus.call_finish(answer).recursiveUnpack());
                } catch (error) {
                    reject(error);
                }
            }));
    }

    _act(promise) {
        promise.catch(error => {
            // One that ends meanwhile takes its button along.
            if (!this._cancellable.is_cancelled() && !error.matches?.(Gio.DBusError, Gio.DBusError.NO_REPLY))
                logError(error, 'Curtain');
        });
    }
}

/** Takes in the item of the program for which `isClient` holds. */
class PanelService {
    constructor(bus, makeButton, isClient) {
        this._bus = bus;
        this._makeButton = makeButton;
        this._isClient = isClient;
        this._item = null;
        this._object = Gio.DBusExportedObject.wrapJSObject(WATCHER, this);
        this._object.export(bus, WATCHER_PATH);
    }

    destroy() {
        this._object.unexport();
        this._remove();
    }

    get IsStatusNotifierHostRegistered() {
        return true;
    }

    RegisterStatusNotifierItemAsync([service], invocation) {
        if (!this._isClient(invocation.get_sender())) {
            invocation.return_dbus_error(ACCESS_DENIED, 'Only Curtain may ask this');
            return;
        }
        this._remove();
        const item = new PanelItem(this._bus, service, this._makeButton, () => {
            if (item === this._item)
                this._remove();
        });
        this._item = item;
        invocation.return_value(null);
    }

    _remove() {
        this._item?.destroy();
        this._item = null;
    }
}
