"""Icons, desktop entries and fonts as people have them who did not make them: faulty in every way.

What a program says about them is nothing that its user could do anything about.
"""

import os
import struct
import zlib
from pathlib import Path

# All their apps have it in their names, where they have one.
NAME = "Faulty"
# In the area for private use, so that no other font has it.
GLYPH = "\ue4a7"
GROUP = b"[Desktop Entry]\n"

UNSUPPORTED = b"""\
<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" xmlns:x="http://example.invalid/x" viewBox="0 0 16 16">
<x:namedview/>
<defs>
  <filter id="f"><feTurbulence/></filter> <linearGradient id="g" xlink:href="#nothing"/> <mask id="m"><rect/></mask>
  <linearGradient id="s"><stop offset="x" stop-color="x"/><rect/></linearGradient>
</defs>
<rect width="16" height="16" fill="url(#gone)" filter="url(#f)" mask="url(#m)"/>
<rect><circle r="2"/></rect> <use xlink:href="#nowhere"/> <path d="M 0 0 L a b c"/> <text><foreignObject/></text>
<image xlink:href="gone.png" width="4" height="4"/> <image xlink:href="data:image/png;base64,AAAA" width="4" height="4"/>
<animateColor/> <animateTransform/> <polygon points="1"/>
</svg>
"""


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, chunks=b""):
    """A gray picture, whose rows end early if it is large."""
    return (b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) + chunks +
            png_chunk(b"IDAT", zlib.compress((b"\0" + b"\x80" * width) * min(height, 64))) + png_chunk(b"IEND", b""))


def icons():
    """What the files contain, by their names."""
    start = b'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16">'
    good = png(16, 16)
    return {
        "truncated.png": good[:len(good) // 2],
        "garbage.svg": b"this is no picture",
        "unsupported.svg": UNSUPPORTED,
        "truncated.svg": start + b'<rect width="16" hei',
        "mismatch.svg": start + b"<g><rect/></svg>",
        "deep.svg": start + b"<g>" * 3000 + b"</g>" * 3000 + b"</svg>",
        "entity.svg": b'<!DOCTYPE svg [<!ENTITY a "b">]>' + start + b"<text>&a;&nothing;</text></svg>",
        "page.svg": b"<html><body/></html>",
        "packed.svgz": b"\x1f\x8b\x08\0\0\0garbage",
        "sum.png": good.replace(b"IHDR\0\0\0\x10", b"IHDR\0\0\0\x11"),
        "colours.png": png(16, 16, png_chunk(b"iCCP", b"x\0\0" + zlib.compress(b"no profile"))),
        "chunks.png": png(16, 16, png_chunk(b"sRGB", b"\x09") + png_chunk(b"gAMA", bytes(4)) + png_chunk(b"pHYs", b"1")),
        "enormous.png": png(60000, 60000),
        "garbage.png": b"\x89PNG\r\n\x1a\n" + b"\xff" * 60,
        "empty.png": b"",
        "text.png": b"hello",
        "jpeg.png": b"\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0" + b"\xff\xdb\0\x05zz" + bytes(40),
        "drawing.xpm": b'/* XPM */\nstatic char * x[] = {\n"16 16 2 1",\n"a c red",\n"nothing"};\n',
        "window.ico": b"\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\xff\xff\0\0\x16\0\0\0",
        "film.gif": b"GIF89a\x10\0\x10\0\x80\0\0" + bytes(9) + b",\0\0\0\0\x10\0\x10\0\0\x0c",
    }


def entries():
    """What the files contain, by their names without ".desktop"; beside those of the icons."""
    good = GROUP + f"Type=Application\nName={NAME} ".encode()
    return {
        "latin-1": good + b"Caf\xe9\nExec=true \xe9\nIcon=caf\xe9\n",
        "utf-16": (good + b"UTF-16\nExec=true\n").decode().encode("utf-16"),
        "no-type": GROUP + f"Name={NAME} no type\nExec=true\n".encode(),
        "no-group": b"Name=No group\nExec=true\n",
        "no-name": GROUP + b"Type=Application\nExec=true\n",
        "no-exec": good + b"no Exec\n",
        "open-quote": good + b'quote\nExec=sh -c "unfinished\n',
        "no-such-code": good + b"code\nExec=true %z %\nTryExec=/nowhere/at/all\n",
        "no-such-program": good + b"program\nExec=/nowhere/at/all\nPath=/nowhere\n",
        "binary": bytes(range(256)) * 8,
        "empty": b"",
        "nul": good + b"before\0after\nExec=true\n",
        "long": good + b"x" * 70000 + b"\nExec=true\n",
        "escapes": good + b"\\q\\x\nExec=true\nHidden=perhaps\nNoDisplay=3\nTerminal=no\n",
        "twice": good + b"once\nName=Twice\n" + GROUP + b"Exec=true\n",
        "actions": good + b"actions\nExec=true\nActions=gone;;\nMimeType=;;/;x-scheme-handler/;\n[Desktop Action gone]\n",
        "link": GROUP + b"Type=Link\nName=Link\nURL=http://example.invalid\n",
        "dangling-icon": good + b"dangling\nExec=true\nIcon=dangling\n",
        "icon-outside": good + b"outside\nExec=true\nIcon=../../../outside.png\n",
        "icon-nowhere": good + b"nowhere\nExec=true\nIcon=/nowhere/at/all.png\n",
        "icon-folder": good + b"folder\nExec=true\nIcon=/usr\n",
        "no-icon": good + b"no icon\nExec=true\nIcon=\n",
        "glyph": good + b"glyph " + GLYPH.encode() + b"\nExec=true\n",
    }


def font():
    """A font whose only glyph, that of GLYPH, promises more points than it has."""
    broken_outline = struct.pack(">hhhhh", 900, 0, 0, 800, 800) + b"\0" * 8
    group = struct.pack(">III", ord(GLYPH), ord(GLYPH), 1)
    subtable = struct.pack(">HHIII", 12, 0, 16 + len(group), 0, 1) + group
    names = {1: "Faulty Glyphs", 2: "Regular", 4: "Faulty Glyphs", 6: "FaultyGlyphs"}
    strings = [text.encode("utf-16-be") for text in names.values()]
    records = b"".join(struct.pack(">HHHHHH", 3, 1, 0x409, number, len(string), sum(map(len, strings[:index])))
                       for index, (number, string) in enumerate(zip(names, strings)))
    tables = {
        b"OS/2": struct.pack(">HhHHH", 0, 800, 400, 5, 0) + bytes(22) + bytes(10) + bytes(16) + b"NONE" +
                 struct.pack(">HHHhhhHH", 0x40, 0xE4A7, 0xE4A7, 800, -200, 0, 800, 200),
        b"cmap": struct.pack(">HHHHI", 0, 1, 3, 10, 12) + subtable,
        b"glyf": broken_outline,
        b"head": struct.pack(">IIIIHHQQhhhhHHhhh", 0x10000, 0x10000, 0, 0x5F0F3CF5, 3, 1000, 0, 0, 0, 0, 800, 800, 0, 8, 2, 1, 0),
        b"hhea": struct.pack(">IhhhHhhhhhh", 0x10000, 800, -200, 0, 800, 0, 0, 800, 1, 0, 0) + struct.pack(">hhhhhH", 0, 0, 0, 0, 0, 2),
        b"hmtx": struct.pack(">HhHh", 800, 0, 800, 0),
        b"loca": struct.pack(">III", 0, 0, len(broken_outline)),
        b"maxp": struct.pack(">IHHHHHHHHHHHHHH", 0x10000, 2, 100, 10, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0),
        b"name": struct.pack(">HHH", 0, len(names), 6 + len(records)) + records + b"".join(strings),
        b"post": struct.pack(">IIhhIIIII", 0x30000, 0, 0, 0, 0, 0, 0, 0, 0),
    }
    place = 12 + 16 * len(tables)
    directory, contents = b"", b""
    for kind, table in tables.items():
        directory += struct.pack(">4sIII", kind, 0, place + len(contents), len(table))
        contents += table + bytes(-len(table) % 4)
    return struct.pack(">IHHHH", 0x10000, len(tables), 128, 3, 16 * len(tables) - 128) + directory + contents


def fonts():
    whole = font()
    return {
        "glyph.ttf": whole,
        "truncated.ttf": whole[:len(whole) // 2],
        "garbage.otf": b"no font" * 100,
        "empty.otf": b"",
        "collection.ttc": b"ttcf\0\1\0\0" + b"\xff" * 40,
        "bitmap.pcf": b"\1fcp" + b"\xff" * 100,
    }


def write_faulty_files(data):
    """Fills the folder of a user's data: icons of apps, by their names and by their paths, more apps, and fonts."""
    theme, apps = data / "icons/hicolor", data / "applications"
    pictures = data / "pictures"
    folders = {".svg": theme / "scalable/apps", ".svgz": theme / "scalable/apps"}
    for folder in (*folders.values(), theme / "48x48/apps", apps, pictures, data / "fonts"):
        folder.mkdir(parents=True, exist_ok=True)
    for name, content in icons().items():
        path = Path(name)
        by_name = f"faulty-{path.stem}-{path.suffix[1:]}"
        (folders.get(path.suffix, theme / "48x48/apps") / (by_name + path.suffix)).write_bytes(content)
        (pictures / name).write_bytes(content)
        for kind, icon in (("name", by_name), ("path", pictures / name)):
            (apps / f"{by_name}-by-{kind}.desktop").write_bytes(
                GROUP + f"Type=Application\nName={NAME} {name} by {kind}\nExec=true\nIcon={icon}\n".encode())
    (theme / "scalable/apps/dangling.svg").symlink_to("/nowhere/at/all.svg")
    for name, content in entries().items():
        (apps / f"{name}.desktop").write_bytes(content)
    (apps / "dangling.desktop").symlink_to("/nowhere/at/all.desktop")
    (apps / "folder.desktop").mkdir()
    Path(os.fsdecode(os.fsencode(apps) + b"/name-\xe9.desktop")).write_bytes(
        GROUP + f"Type=Application\nName={NAME} name of the file\nExec=true\n".encode())
    (apps / "mimeinfo.cache").write_bytes(b"\xff\xfe no group\n=\n[MIME\n")
    for name, content in fonts().items():
        (data / "fonts" / name).write_bytes(content)
