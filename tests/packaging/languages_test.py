"""Runs scripts/languages on this tree and on copies of it that lack something."""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
FILES = ["scripts/languages", "core/Preferences.h", "Curtain/PlatformWording.cpp", "tests/support/Typography.h",
         "packaging/com.curtain.Curtain.desktop.in", "packaging/com.curtain.Curtain.metainfo.xml.in", "packaging/screenshots.xml.in"]


def languages(root, *arguments, status=0):
    done = subprocess.run([root / "scripts/languages", *arguments], text=True, capture_output=True, check=False)
    if done.returncode != status:
        raise AssertionError(f"status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout.splitlines()


class LanguagesTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        self.root = Path(scratch.name)
        for name in FILES:
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / name, self.root / name)
        shutil.copytree(SOURCE / "core/texts", self.root / "core/texts")

    def change(self, name, pattern, replacement):
        path = self.root / name
        changed, count = re.subn(pattern, replacement, path.read_text(), count=1, flags=re.MULTILINE)
        self.assertEqual(count, 1, pattern)
        path.write_text(changed)

    def test_no_language_lacks_anything(self):
        self.assertEqual(languages(SOURCE), [])

    def test_what_a_language_has_lost_is_named(self):
        for name, pattern, complaint in (
                ("core/texts/fr.txt", "^quit = .*\n", "core/texts/fr.txt: the text of quit"),
                ("core/texts/fr.txt", "^settings = .*$", "core/texts/fr.txt: the text of settings"),
                ("core/Preferences.h", ".*AppLanguage::fr, .*\n", "core/Preferences.h: the language among .*"),
                ("Curtain/PlatformWording.cpp", r"\.fr = kept", "Curtain/PlatformWording.cpp: 1 texts"),
                ("tests/support/Typography.h", ".*\"fr\".*\n", "tests/support/Typography.h: .*"),
                ("packaging/com.curtain.Curtain.desktop.in", r"^Name\[fr\]=Quitter\n", r".*desktop.in: Name in \[Desktop Action quit\]"),
                ("packaging/com.curtain.Curtain.metainfo.xml.in", ".*<p xml:lang=\"fr\">.*\n", ".*metainfo.xml.in: 1 of the elements <p>"),
                ("packaging/screenshots.xml.in", ".*<caption xml:lang=\"fr\">.*\n", ".*screenshots.xml.in: 1 of the elements <caption>")):
            with self.subTest(complaint):
                self.setUp()
                self.change(name, pattern, "settings =" if "settings" in pattern else "")
                said, = languages(self.root, status=1)
                self.assertRegex(said, f"^fr lacks, in {complaint}$")

    def test_a_new_language_begins_with_everything_to_do(self):
        said = languages(self.root, "add", "de")
        english, german = ((self.root / f"core/texts/{code}.txt").read_text() for code in ("en", "de"))
        keys = re.findall(r"^(\w+) =", english, re.MULTILINE)
        self.assertEqual(re.findall(r"^(\w+) =(.*)$", german, re.MULTILINE), [(key, "") for key in keys])
        self.assertEqual(re.findall("^#.*", german, re.MULTILINE), re.findall("^#.*", english, re.MULTILINE))
        self.assertEqual([line for line in said if "core/texts" in line], [f"de lacks, in core/texts/de.txt: the text of {key}" for key in keys])
        for name in FILES[1:]:
            self.assertTrue(any(name in line for line in said), name)

    def test_a_language_that_is_there_is_left_alone(self):
        before = (self.root / "core/texts/fr.txt").read_text()
        languages(self.root, "add", "fr", status=1)
        self.assertEqual((self.root / "core/texts/fr.txt").read_text(), before)


if __name__ == "__main__":
    unittest.main()
