#!/usr/bin/env python3
"""qml_lint.py QMLLINT MODULES (SOURCES MODULE)...: reads every QML file of the folders SOURCES beside the description of the types
of its MODULE, a folder in MODULES, and fails on a single warning. With --mistakes it fails unless the same command finds each of
the mistakes that it writes into a file."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

QMLLINT, MODULES, SOURCES = "", pathlib.Path(), []
# The parts of a control bear names and are made with it, for nothing takes their place later; only Qt 6.4 complains of that. An
# import that later releases do without is needed by others.
ACCEPTED = ["--deferred-property-id", "--unused-imports"]
# So that names from around a component are followed into it. The views themselves cannot say so as long as they run with
# Qt 6.4, whose Loader makes no component that is bound.
BOUND = "pragma ComponentBehavior: Bound; "


class Linted(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.modules = pathlib.Path(folder.name)
        for described in MODULES.rglob("*"):
            if described.name == "qmldir" or described.suffix in (".qmltypes", ".qml"):
                copy = self.modules / described.relative_to(MODULES)
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(described, copy)
        self.files = {}
        for sources, module in SOURCES:
            for source in sorted(pathlib.Path(sources).glob("*.qml")):
                self.files[source.name] = self.modules / module / source.name
                self.write(source.name, source.read_text(encoding="utf-8"))

    def write(self, name, text):
        # In the first line, whose number stays.
        self.files[name].write_text(BOUND + text.removeprefix(BOUND), encoding="utf-8")

    def lint(self, *arguments):
        return subprocess.run([QMLLINT, *arguments], cwd=self.modules, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False)

    def complaints(self, files):
        known = self.lint("--help").stdout
        options = [word for option in ACCEPTED if option in known for word in (option, "disable")]
        done = self.lint(*options, "-I", self.modules, *files)
        if done.returncode != 0 and not done.stdout:
            raise RuntimeError(f"{QMLLINT} ended with {done.returncode}")
        return done.stdout


class QmlLint(Linted):
    maxDiff = None

    def test_no_view_has_a_warning(self):
        self.assertGreater(len(self.files), 60)
        self.assertEqual(self.complaints(self.files.values()), "")


class Mistakes(Linted):
    def found_in(self, name, right, wrong):
        """What is said of a view in which a mistake stands in the place of what is right."""
        text = self.files[name].read_text(encoding="utf-8")
        self.assertIn(right, text)
        self.write(name, text.replace(right, wrong))
        return self.complaints([self.files[name]])

    def test_a_text_that_does_not_exist(self):
        self.assertIn("fixEverithing",
                      self.found_in("MeetingReadinessView.qml", "texts.fixEverything", "texts.fixEverithing"))

    def test_a_text_that_does_not_exist_in_a_component(self):
        self.assertIn("hidePrivatApps",
                      self.found_in("PrivateAppsPanel.qml", "texts.hidePrivateApps", "texts.hidePrivatApps"))

    def test_a_property_that_the_model_has_not(self):
        self.assertIn("riskTown", self.found_in("RiskRow.qml", "model.riskTone", "model.riskTown"))

    def test_a_function_that_the_model_has_not(self):
        self.assertIn("takeFoto", self.found_in("ReadinessCheck.qml", "model.takePhoto()", "model.takeFoto()"))

    def test_a_switch_that_does_not_exist(self):
        self.assertIn("showScoore", self.found_in("GeneralSettings.qml", "switches.showScore", "switches.showScoore"))

    def test_a_colour_that_the_theme_has_not(self):
        self.assertIn("inkk", self.found_in("Card.qml", "Theme.card", "Theme.inkk"))

    def test_a_control_that_does_not_exist(self):
        self.assertIn("WizardTitel", self.found_in("SummaryStep.qml", "WizardTitle {", "WizardTitel {"))


if __name__ == "__main__":
    arguments = sys.argv[1:]
    suite = QmlLint
    if arguments[0] == "--mistakes":
        suite = Mistakes
        arguments = arguments[1:]
    QMLLINT, MODULES = arguments[0], pathlib.Path(arguments[1])
    SOURCES = list(zip(arguments[2::2], arguments[3::2]))
    result = unittest.TextTestRunner(verbosity=2).run(unittest.defaultTestLoader.loadTestsFromTestCase(suite))
    sys.exit(not result.wasSuccessful())
