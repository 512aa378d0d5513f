"""Installs the build into folders of its own and checks every file.

CMAKE in the environment is the program, BUILD the build's folder and VERSION Curtain's version.
"""

import configparser
import json
import os
import re
import stat
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

from installed_files import GNOME_EXTENSION, ICON_SIZES, ICONS, INSTALLED_FILES, files_below

CMAKE, BUILD, VERSION = (os.environ[name] for name in ("CMAKE", "BUILD", "VERSION"))
SOURCE = Path(__file__).resolve().parents[2]
IDENTIFIER = "com.curtain.Curtain"
ENTRY = f"share/applications/{IDENTIFIER}.desktop"
SERVICE = f"share/dbus-1/services/{IDENTIFIER}.service"
METAINFO = f"share/metainfo/{IDENTIFIER}.metainfo.xml"
UNIT = "lib/systemd/user/curtain.service"
LANGUAGES = {"ar", "es", "fr", "hi", "pt", "ru", "zh"}
XML_LANGUAGE = "{http://www.w3.org/XML/1998/namespace}lang"


def run(*argv, **options):
    return subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)


def validator_options():
    """Curtain has no page of its own on the web yet, of which later releases of the validator warn; earlier ones do not know the
    developer's identifier, which later ones want."""
    version = re.search(r"version: (\d+)", run("appstreamcli", "--version").stdout)
    accepted = "url-homepage-missing" if int(version[1]) >= 1 else "unknown-tag"
    return ["--no-net", "--no-color", "--strict", f"--override={accepted}=pedantic"]


def texts_by_language(elements):
    """What each language says, in order; English under None."""
    texts = {}
    for element in elements:
        texts.setdefault(element.get(XML_LANGUAGE), []).append(element.text)
    return texts


def sections(path):
    """Of a desktop entry or a D-Bus service."""
    parser = configparser.ConfigParser(interpolation=None, delimiters="=", comment_prefixes="#")
    parser.optionxform = str
    parser.read(path, encoding="utf-8")
    return parser


class InstallTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)

    def install(self, prefix, destination="", folder=None):
        """Returns the folder that stands for the prefix."""
        done = run(CMAKE, "--install", BUILD, "--prefix", prefix, cwd=folder,
                   env=os.environ | {"DESTDIR": str(destination)})
        self.assertEqual(done.returncode, 0, done.stdout)
        return Path(f"{destination}{prefix}")

    def assert_succeeds(self, *argv):
        done = run(*argv)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def assert_names(self, prefix, program, command):
        """The entry and the service in an installation name the program."""
        entry = sections(prefix / ENTRY)
        own = [section for section in entry.sections() if not entry[section]["Exec"].startswith("gdbus call --session")]
        self.assertEqual(own, ["Desktop Entry", "Desktop Action open"])
        self.assertEqual({entry[section]["Exec"] for section in own}, {command})
        self.assertEqual(entry["Desktop Entry"]["TryExec"], program)
        self.assertEqual(dict(sections(prefix / SERVICE)["D-BUS Service"]), {"Name": IDENTIFIER, "Exec": command})
        self.assertEqual(sections(prefix / UNIT)["Service"]["ExecStart"], command)

    def assert_entry_is_valid(self, prefix):
        """To the validator, but that its earlier releases do not know a key of the standard yet, which desktops do."""
        said = run("desktop-file-validate", str(prefix / ENTRY)).stdout.splitlines()
        self.assertEqual([line for line in said if 'key "SingleMainWindow"' not in line or "should start with" not in line], [])

    def assert_unit_is_valid(self, prefix):
        """Of this machine's other units, which are looked at too, nothing is asked."""
        said = run("systemd-analyze", "--user", "verify", str(prefix / UNIT),
                   env=os.environ | {"XDG_RUNTIME_DIR": str(self.scratch), "MANPATH": str(prefix / "share/man")})
        about_it = [line for line in said.stdout.splitlines() if Path(UNIT).name in line]
        self.assertEqual((said.returncode, about_it), (0, []))

    def test_every_file_is_there_and_can_be_read_by_everyone(self):
        self.addCleanup(os.umask, os.umask(0o022))
        prefix = self.install(self.scratch / "prefix")
        self.assertEqual(files_below(prefix), INSTALLED_FILES)
        for name in INSTALLED_FILES:
            mode = stat.S_IMODE((prefix / name).stat().st_mode)
            self.assertEqual(oct(mode), "0o755" if name.startswith("bin/") else "0o644", name)

    def test_a_private_umask_does_not_keep_others_from_the_files(self):
        self.addCleanup(os.umask, os.umask(0o077))
        prefix = self.install(self.scratch / "prefix")
        for name in INSTALLED_FILES:
            self.assertEqual((prefix / name).stat().st_mode & 0o044, 0o044, name)

    def test_the_program_is_named_where_it_is_installed(self):
        program = self.scratch / "prefix/bin/curtain"
        self.assert_names(self.install(self.scratch / "prefix"), str(program), str(program))

    def test_a_prefix_with_a_space_is_quoted(self):
        program = self.scratch / "my programs/bin/curtain"
        prefix = self.install(self.scratch / "my programs")
        self.assert_names(prefix, str(program), f'"{program}"')
        self.assert_entry_is_valid(prefix)
        self.assert_unit_is_valid(prefix)

    def test_a_staged_installation_names_the_place_to_which_it_is_moved(self):
        root = self.scratch / "root"
        self.assert_names(self.install("/usr", root), "/usr/bin/curtain", "/usr/bin/curtain")
        self.assertEqual(files_below(root), {f"usr/{name}" for name in INSTALLED_FILES})

    def test_a_relative_prefix_counts_from_the_working_folder(self):
        self.install("stage", folder=self.scratch)
        program = str(self.scratch.resolve() / "stage/bin/curtain")
        self.assert_names(self.scratch / "stage", program, program)

    def test_a_second_installation_elsewhere_leaves_the_first_alone(self):
        first, second = (self.install(self.scratch / name) for name in ("first", "second"))
        for prefix in (first, second):
            self.assert_names(prefix, str(prefix / "bin/curtain"), str(prefix / "bin/curtain"))

    def test_a_prefix_that_launchers_cannot_name_is_refused(self):
        for character in '"`$%':
            with self.subTest(character):
                done = run(CMAKE, "--install", BUILD, "--prefix", str(self.scratch / f"a{character}b"))
                self.assertNotEqual(done.returncode, 0)
                self.assertIn("a launcher cannot name it", " ".join(done.stdout.split()))

    def test_the_desktop_entry_is_valid(self):
        prefix = self.install(self.scratch / "prefix")
        self.assert_entry_is_valid(prefix)
        entry = sections(prefix / ENTRY)
        main = entry["Desktop Entry"]
        self.assertEqual(main["Actions"], "toggle-privacy;open;settings;quit;")
        for action in main["Actions"].rstrip(";").split(";"):
            command = entry[f"Desktop Action {action}"]["Exec"]
            self.assertTrue(action == "open" or f"ActivateAction {action} [] {{}}" in command, command)
        for key in ("DBusActivatable", "SingleMainWindow", "X-GNOME-UsesNotifications"):
            self.assertEqual(main[key], "true", key)

    def test_every_text_of_the_desktop_entry_is_there_in_every_language(self):
        entry = sections(self.install(self.scratch / "prefix") / ENTRY)
        for section in entry.sections():
            for key in {"Name", "GenericName", "Comment", "Keywords"} & set(entry[section]):
                if (section, key) != ("Desktop Entry", "Name"):
                    self.assertEqual({name for name in LANGUAGES if f"{key}[{name}]" in entry[section]}, LANGUAGES, (section, key))
        for key, words in entry["Desktop Entry"].items():
            if key.startswith("Keywords"):
                self.assertRegex(words, "^([^; ][^;]*;){4,}$", key)

    def test_the_metainfo_is_valid_and_says_the_same_as_the_entry(self):
        prefix = self.install(self.scratch / "prefix")
        self.assert_succeeds("appstreamcli", "validate", *validator_options(), str(prefix / METAINFO))
        self.assert_succeeds("appstreamcli", "validate-tree", *validator_options(), str(prefix))
        root = xml.parse(prefix / METAINFO).getroot()
        self.assertEqual(root.findtext("id"), IDENTIFIER)
        self.assertEqual(root.findtext("launchable"), Path(ENTRY).name)
        entry = sections(prefix / ENTRY)["Desktop Entry"]
        for language in {None, *LANGUAGES}:
            suffix = f"[{language}]" if language else ""
            self.assertEqual(texts_by_language(root.iter("summary"))[language], [entry[f"Comment{suffix}"]])
            self.assertEqual(texts_by_language(root.iter("keyword"))[language], entry[f"Keywords{suffix}"].rstrip(";").split(";"))
        self.assertIsNone(root.find("screenshots"))

    def test_the_metainfo_describes_curtain_in_every_language(self):
        root = xml.parse(self.install(self.scratch / "prefix") / METAINFO).getroot()
        paragraphs = texts_by_language(root.findall("description/p"))
        self.assertEqual(set(paragraphs), {None, *LANGUAGES})
        self.assertEqual({len(texts) for texts in paragraphs.values()}, {3})
        every = [text for texts in paragraphs.values() for text in texts]
        self.assertEqual(len(set(every)), len(every))
        self.assertRegex(root.find("developer").get("id"), r"^[a-z]+(\.[a-z]+)+$")
        self.assertEqual({color.get("scheme_preference") for color in root.findall("branding/color")}, {"light", "dark"})

    def test_the_metainfo_tells_what_is_new_as_the_changelog_does(self):
        root = xml.parse(self.install(self.scratch / "prefix") / METAINFO).getroot()
        releases = [(release.get("version"), release.get("date"), [item.text for item in release.iter("li")])
                    for release in root.iter("release")]
        changelog = (SOURCE / "CHANGELOG.md").read_text()
        expected = [(version, date, [" ".join(item.split()) for item in news.split("\n- ")[1:]])
                    for version, date, news in re.findall(r"^## (\S+) \((\S+)\)\n(.*?)(?=^## |\Z)", changelog, re.MULTILINE | re.DOTALL)]
        self.assertTrue(all(news for _, _, news in expected))
        self.assertEqual(releases, expected)

    def test_every_text_has_the_same_version(self):
        prefix = self.install(self.scratch / "prefix")
        release = xml.parse(prefix / METAINFO).getroot().find("releases/release")
        self.assertEqual(release.get("version"), VERSION)
        self.assertEqual(self.assert_succeeds(str(prefix / "bin/curtain"), "--version"), f"curtain {VERSION}\n")
        title = (prefix / "share/man/man1/curtain.1").read_text().splitlines()[0]
        self.assertEqual(title, f'.TH CURTAIN 1 "{release.get("date")}" "Curtain {VERSION}" "User Commands"')
        changelog = (SOURCE / "debian/changelog").read_text()
        self.assertTrue(changelog.startswith(f"curtain ({VERSION}) "), changelog)

    def test_the_unit_starts_curtain_with_the_graphical_session(self):
        prefix = self.install(self.scratch / "prefix")
        self.assert_unit_is_valid(prefix)
        unit = sections(prefix / UNIT)
        for section, key in (("Unit", "PartOf"), ("Unit", "After"), ("Install", "WantedBy")):
            self.assertEqual(unit[section][key], "graphical-session.target", key)

    def test_the_icons_are_scalable_and_the_symbolic_ones_can_be_painted(self):
        prefix = self.install(self.scratch / "prefix")
        for path in (prefix / ICONS).rglob("*.svg"):
            text = path.read_text()
            self.assertTrue(xml.fromstring(text).tag.endswith("}svg"), path)
            self.assertEqual("symbolic" in path.name, 'class="ColorScheme-Text"' in text, path)
        self.assertEqual(sections(prefix / ENTRY)["Desktop Entry"]["Icon"], IDENTIFIER)

    def test_the_icon_is_drawn_at_every_size(self):
        prefix = self.install(self.scratch / "prefix")
        for size in ICON_SIZES:
            picture = prefix / ICONS / f"{size}x{size}/apps/{IDENTIFIER}.png"
            # Corners are round, and what is between the curtains is light.
            found = self.assert_succeeds("convert", str(picture), "-format",
                                         f"%w %h %[fx:p{{0,0}}.a<0.5] %[fx:p{{w/2,h*0.8}}.r>0.9] %[fx:p{{w/2,h*0.8}}.a]", "info:")
            self.assertEqual(found.split(), [str(size), str(size), "1", "1", "1"], size)

    def test_a_symbolic_icon_that_is_not_the_same_from_right_to_left_has_a_mirrored_one(self):
        icons = self.install(self.scratch / "prefix") / ICONS
        checked = 0
        for path in icons.rglob("*-symbolic.svg"):
            drawn, mirrored, other = self.scratch / "drawn.png", self.scratch / "mirrored.png", path.with_name(f"{path.stem}-rtl.svg")
            # Qt draws it as the program does.
            self.draw(path, drawn)
            self.assert_succeeds("convert", str(drawn), "-flop", str(mirrored))
            self.assertEqual(self.differing_pixels(drawn, mirrored) > 200, other.exists(), path.name)
            if other.exists():
                self.draw(other, drawn)
                self.assertLess(self.differing_pixels(drawn, mirrored), 200, path.name)
                checked += 1
        self.assertTrue(checked)

    def draw(self, drawing, picture):
        self.assert_succeeds(f"{BUILD}/packaging/IconRenderer", str(drawing), "180", str(picture))

    def differing_pixels(self, first, second):
        return float(run("compare", "-metric", "AE", "-fuzz", "20%", str(first), str(second), "null:").stdout)

    def test_the_extension_is_one_for_every_version_of_gnome(self):
        """Earlier ones take the script, later ones the module; a syntax error in either shows only there."""
        folder = self.install(self.scratch / "prefix") / GNOME_EXTENSION
        metadata = json.loads((folder / "metadata.json").read_text())
        self.assertEqual(metadata["uuid"], folder.name)
        self.assertEqual([int(version) for version in metadata["shell-version"]], list(range(43, 49)))
        # What is missing outside of the shell is looked for once the text has been understood.
        script = run("gjs", str(folder / "__init__.js")).stdout
        self.assertRegex(script, "Typelib file for namespace '(Clutter|Meta)'")
        module = run("gjs", "-m", str(folder / "extension.js")).stdout
        self.assertIn("Unable to load file from: resource:///org/gnome/shell", module)

    def test_screenshots_are_named_where_they_are_published(self):
        build = self.scratch / "build"
        address = "https://example.org/screenshots"
        self.assert_succeeds(CMAKE, "-S", str(SOURCE), "-B", str(build), "-G", "Ninja", "-DCURTAIN_BUILD_TESTS=OFF",
                             f"-DCURTAIN_SCREENSHOTS_URL={address}")
        metainfo = build / f"packaging/{IDENTIFIER}.metainfo.xml"
        self.assert_succeeds("appstreamcli", "validate", *validator_options(), str(metainfo))
        images = [image.text for image in xml.parse(metainfo).getroot().iter("image")]
        self.assertTrue(images)
        for image in images:
            folder, _, name = image.rpartition("/")
            self.assertEqual(folder, address)
            self.assertTrue((SOURCE / "docs/screenshots" / name).is_file(), name)
        captions = texts_by_language(xml.parse(metainfo).getroot().iter("caption"))
        self.assertEqual(set(captions), {None, *LANGUAGES})
        self.assertEqual({len(texts) for texts in captions.values()}, {len(images)})


if __name__ == "__main__":
    unittest.main()
