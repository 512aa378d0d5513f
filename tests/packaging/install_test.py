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

from installed_files import GNOME_EXTENSION, ICONS, INSTALLED_FILES, files_below

CMAKE, BUILD, VERSION = (os.environ[name] for name in ("CMAKE", "BUILD", "VERSION"))
SOURCE = Path(__file__).resolve().parents[2]
IDENTIFIER = "com.curtain.Curtain"
ENTRY = f"share/applications/{IDENTIFIER}.desktop"
SERVICE = f"share/dbus-1/services/{IDENTIFIER}.service"
METAINFO = f"share/metainfo/{IDENTIFIER}.metainfo.xml"
LANGUAGES = {"ar", "es", "fr", "hi", "pt", "ru", "zh"}


def run(*argv, **options):
    return subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)


def validator_options():
    """Curtain has no page of its own on the web yet, of which later releases of the validator warn; earlier ones know no such tag."""
    version = re.search(r"version: (\d+)", run("appstreamcli", "--version").stdout)
    return ["--no-net", "--no-color"] + ["--override=url-homepage-missing=info"] * (int(version[1]) >= 1)


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
        self.assert_succeeds("desktop-file-validate", str(prefix / ENTRY))

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
        self.assertEqual(self.assert_succeeds("desktop-file-validate", str(prefix / ENTRY)), "")
        entry = sections(prefix / ENTRY)
        main = entry["Desktop Entry"]
        self.assertEqual(main["Actions"], "toggle-privacy;open;settings;quit;")
        for action in main["Actions"].rstrip(";").split(";"):
            command = entry[f"Desktop Action {action}"]["Exec"]
            self.assertTrue(action == "open" or f"ActivateAction {action} [] {{}}" in command, command)
        for section in entry.sections():
            for key in {"Name", "Comment"} & set(entry[section]):
                if (section, key) != ("Desktop Entry", "Name"):
                    self.assertEqual({name for name in LANGUAGES if f"{key}[{name}]" in entry[section]}, LANGUAGES)

    def test_the_metainfo_is_valid_and_says_the_same_as_the_entry(self):
        prefix = self.install(self.scratch / "prefix")
        self.assert_succeeds("appstreamcli", "validate", *validator_options(), str(prefix / METAINFO))
        self.assert_succeeds("appstreamcli", "validate-tree", *validator_options(), str(prefix))
        root = xml.parse(prefix / METAINFO).getroot()
        self.assertEqual(root.findtext("id"), IDENTIFIER)
        self.assertEqual(root.findtext("launchable"), Path(ENTRY).name)
        language = "{http://www.w3.org/XML/1998/namespace}lang"
        comments = {key[8:-1]: text for key, text in sections(prefix / ENTRY)["Desktop Entry"].items()
                    if key.startswith("Comment[")}
        self.assertEqual({element.get(language): element.text for element in root.iter("summary") if element.get(language)},
                         comments)
        self.assertIsNone(root.find("screenshots"))

    def test_every_text_has_the_same_version(self):
        prefix = self.install(self.scratch / "prefix")
        release = xml.parse(prefix / METAINFO).getroot().find("releases/release")
        self.assertEqual(release.get("version"), VERSION)
        title = (prefix / "share/man/man1/curtain.1").read_text().splitlines()[0]
        self.assertEqual(title, f'.TH CURTAIN 1 "{release.get("date")}" "Curtain {VERSION}" "User Commands"')
        changelog = (SOURCE / "packaging/debian/changelog").read_text()
        self.assertTrue(changelog.startswith(f"curtain ({VERSION}) "), changelog)

    def test_the_icons_are_scalable_and_the_symbolic_ones_can_be_painted(self):
        prefix = self.install(self.scratch / "prefix")
        for path in (prefix / ICONS).rglob("*.svg"):
            text = path.read_text()
            self.assertTrue(xml.fromstring(text).tag.endswith("}svg"), path)
            self.assertEqual("symbolic" in path.name, 'class="ColorScheme-Text"' in text, path)
        self.assertEqual(sections(prefix / ENTRY)["Desktop Entry"]["Icon"], IDENTIFIER)

    def test_the_extension_is_one_for_every_version_of_gnome(self):
        """Earlier ones take the script, later ones the module; a syntax error in either shows only there."""
        folder = self.install(self.scratch / "prefix") / GNOME_EXTENSION
        metadata = json.loads((folder / "metadata.json").read_text())
        self.assertEqual(metadata["uuid"], folder.name)
        self.assertEqual([int(version) for version in metadata["shell-version"]], list(range(43, 49)))
        # What is missing outside of the shell is looked for once the text has been understood.
        script = run("gjs", str(folder / "__init__.js")).stdout
        self.assertIn("Typelib file for namespace 'Meta'", script)
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


if __name__ == "__main__":
    unittest.main()
