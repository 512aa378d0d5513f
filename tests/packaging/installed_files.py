"""What an installation consists of, below its prefix."""

ICONS = "share/icons/hicolor"
ZSH_COMPLETIONS = "share/zsh/site-functions/_curtain"
GNOME_EXTENSION = "share/gnome-shell/extensions/curtain@com.curtain.Curtain"
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256)
SYMBOLIC_SIZES = (16, 22, 24)
INSTALLED_FILES = {
    "bin/curtain",
    "lib/systemd/user/curtain.service",
    ZSH_COMPLETIONS,
    "lib/curtain/curtain-sound.so",
    "lib/curtain/curtain-views.so",
    "share/applications/com.curtain.Curtain.desktop",
    "share/bash-completion/completions/curtain",
    "share/dbus-1/interfaces/com.curtain.Curtain.xml",
    "share/dbus-1/services/com.curtain.Curtain.service",
    "share/fish/vendor_completions.d/curtain.fish",
    *(f"{ICONS}/{size}x{size}/apps/com.curtain.Curtain.png" for size in ICON_SIZES),
    f"{ICONS}/scalable/apps/com.curtain.Curtain.svg",
    *(f"{ICONS}/{folder}/apps/com.curtain.Curtain-{name}.svg"
      for folder in ("symbolic", *(f"{size}x{size}" for size in SYMBOLIC_SIZES))
      for name in ("alert-symbolic", "alert-symbolic-rtl", "close-symbolic", "open-symbolic", "symbolic")),
    f"{GNOME_EXTENSION}/__init__.js",
    f"{GNOME_EXTENSION}/extension.js",
    f"{GNOME_EXTENSION}/metadata.json",
    "share/man/man1/curtain.1",
    "share/metainfo/com.curtain.Curtain.metainfo.xml",
}


def files_below(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}
