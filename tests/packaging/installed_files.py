"""What an installation consists of, below its prefix."""

ICONS = "share/icons/hicolor"
GNOME_EXTENSION = "share/gnome-shell/extensions/curtain@com.curtain.Curtain"
INSTALLED_FILES = {
    "bin/curtain",
    "share/applications/com.curtain.Curtain.desktop",
    "share/dbus-1/services/com.curtain.Curtain.service",
    f"{ICONS}/16x16/apps/com.curtain.Curtain.svg",
    f"{ICONS}/22x22/apps/com.curtain.Curtain.svg",
    f"{ICONS}/scalable/apps/com.curtain.Curtain.svg",
    f"{ICONS}/symbolic/apps/com.curtain.Curtain-alert-symbolic.svg",
    f"{ICONS}/symbolic/apps/com.curtain.Curtain-close-symbolic.svg",
    f"{ICONS}/symbolic/apps/com.curtain.Curtain-open-symbolic.svg",
    f"{ICONS}/symbolic/apps/com.curtain.Curtain-symbolic.svg",
    f"{GNOME_EXTENSION}/__init__.js",
    f"{GNOME_EXTENSION}/extension.js",
    f"{GNOME_EXTENSION}/metadata.json",
    "share/man/man1/curtain.1",
    "share/metainfo/com.curtain.Curtain.metainfo.xml",
}


def files_below(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}
