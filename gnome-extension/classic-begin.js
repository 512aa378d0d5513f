// For GNOME Shell up to version 44. GNOME's importer looks for names in a folder's __init__.js before it looks for files.
const {Clutter, Gio, GLib, GObject, Meta, Shell, St} = imports.gi;
const Main = imports.ui.main;
const PanelMenu = imports.ui.panelMenu;
const PopupMenu = imports.ui.popupMenu;
const {Workspace} = imports.ui.workspace;
const {WorkspaceThumbnail} = imports.ui.workspaceThumbnail;

