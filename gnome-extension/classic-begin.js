// For GNOME Shell up to version 44. GNOME's importer looks for names in a folder's __init__.js before it looks for files.
const {Gio, GLib, Meta, Shell} = imports.gi;
const Main = imports.ui.main;
const {Workspace} = imports.ui.workspace;
const {WorkspaceThumbnail} = imports.ui.workspaceThumbnail;

