const APP_WINDOW_TYPES = [
    Meta.WindowType.NORMAL, Meta.WindowType.DIALOG, Meta.WindowType.MODAL_DIALOG, Meta.WindowType.UTILITY,
    Meta.WindowType.TOOLBAR, Meta.WindowType.MENU, Meta.WindowType.SPLASHSCREEN,
];

/** The windows of the shell in which this runs. */
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
        this._filter = new OverviewFilter(window => this._service.hides(window));
    }

    destroy() {
        this._filter.destroy();
        this._service.destroy();
    }
}
