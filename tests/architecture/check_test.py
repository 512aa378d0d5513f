"""Checks the check: every rule refuses a small bad tree at the right line, and lets a good one pass."""

import contextlib
import io
import posixpath
import tempfile
import unittest
from pathlib import Path

from check import check


class CheckTest(unittest.TestCase):
    def check(self, tree):
        """Whether a tree, given as a text for each path, passes, and the offences that are reported."""
        output = io.StringIO()
        with tempfile.TemporaryDirectory(prefix="curtain-test-") as root, contextlib.redirect_stdout(output):
            for path, text in tree.items():
                file = Path(root, path)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(text)
            passes = check(Path(root))
        return passes, output.getvalue().splitlines()[:-1]

    def assert_passes(self, tree):
        self.assertEqual(self.check(tree), (True, []))

    def assert_refused(self, place, text):
        with self.subTest(f"{place}: {text}"):
            passes, offences = self.check({place.partition(":")[0]: text})
            self.assertEqual((passes, len(offences)), (False, 1), offences)
            self.assertTrue(offences[0].startswith(place + ": "), offences)

    def assert_includes_refused(self, includes):
        for path, target in includes:
            self.assert_refused(f"{path}:2", f"#pragma once\n#include {target}\n")

    def test_lets_every_arrow_that_points_down_pass(self):
        self.assert_passes({
            "core/A.h": '#include "core/B.h"\n#include <string>\n#include <cstdint>\n',
            "core/A.cpp": '#include "A.h"\n#include <nlohmann/json.hpp>\n',
            "platform/A.h": '#include "core/A.h"\n#include "platform/B.h"\n#include <chrono>\n',
            "hotkeys/A.h": '#include "core/A.h"\n#include "platform/A.h"\n#include "hotkeys/B.h"\n',
            "Curtain/A.h": '#include "core/A.h"\n#include "platform/A.h"\n#include "hotkeys/A.h"\n'
                           '#include "Curtain/B.h"\n#include <QObject>\n',
            "Curtain/main.cpp": '#include "Curtain/A.h"\n#include "platform/linux/makeLinuxPlatform.h"\n',
            "platform/linux/makeLinuxPlatform.h": '#include "platform/A.h"\n',
            "platform/linux/makeLinuxPlatform.cpp": '#include "platform/linux/apps/A.h"\n'
                                                    '#include "platform/qt/A.h"\n',
            "platform/linux/apps/A.h": '#include "core/A.h"\n#include "platform/A.h"\n#include <xcb/xcb.h>\n'
                                       '#include "platform/linux/apps/B.h"\n#include <thread>\n',
            "platform/qt/A.h": '#include "platform/A.h"\n#include "platform/qt/B.h"\n#include <QTimer>\n',
            "tests/core/ATest.cpp": '#include "core/A.h"\n#include "platform/linux/apps/A.h"\n',
        })

    ROOMS = {
        "platform/linux/CMakeLists.txt": "linux_room(low\n    SOURCES A.cpp)\n"
                                         "linux_room(low/inner\n    ROOMS low\n    LIBRARIES X::X\n    SOURCES A.cpp)\n"
                                         "linux_room(high\n    ROOMS low low/inner\n    SOURCES A.cpp)\n",
        "platform/linux/low/A.h": '#include "platform/linux/low/B.h"\n',
        "platform/linux/low/inner/A.h": '#include "platform/linux/low/A.h"\n',
        "platform/linux/high/A.h": '#include "platform/linux/low/A.h"\n',
        "platform/linux/high/A.cpp": '#include "platform/linux/low/inner/A.h"\n',
        "platform/linux/LinuxPlatform.cpp": '#include "platform/linux/high/A.h"\n',
    }

    def assert_room_refused(self, changed, offence):
        self.assertEqual(self.check(self.ROOMS | changed), (False, [offence]))

    def test_refuses_includes_from_rooms_that_are_not_declared(self):
        self.assert_passes(self.ROOMS)
        says = "does not say in platform/linux/CMakeLists.txt that it includes from"
        for path, target in [("low/B.h", "high"), ("low/B.cpp", "low/inner"), ("low/inner/B.h", "high")]:
            self.assert_room_refused(
                {f"platform/linux/{path}": f'// above\n#include "platform/linux/{target}/A.h"\n'},
                f"platform/linux/{path}:2: {posixpath.dirname(path)} {says} {target}")

    def test_refuses_rooms_that_are_declared_and_not_included(self):
        self.assert_room_refused({"platform/linux/high/A.cpp": ""},
                                 "platform/linux/CMakeLists.txt:7: high includes nothing from low/inner")

    def test_refuses_folders_that_are_no_rooms(self):
        self.assert_room_refused({"platform/linux/side/A.h": ""},
                                 "platform/linux/side/A.h:0: platform/linux/side is no room of "
                                 "platform/linux/CMakeLists.txt")

    def test_refuses_folders_without_an_order(self):
        def files(folder, count):
            return {f"{folder}/{number}.txt": "" for number in range(count)}

        self.assert_passes(files("tests/room", 60) | files("tests/room/inner", 60))
        self.assertEqual(self.check(files("tests/room", 61)),
                         (False, ["tests/room:0: 61 files are too many for one folder; 60 may stand here"]))

    def test_refuses_answers_of_interfaces_themselves(self):
        head = "class A {\n    virtual ~A() = default;\n"
        for answer in ("virtual bool canHide() { return true; }", "virtual bool canHide();",
                       "virtual std::optional<int> why() const {\n        return {};\n    }"):
            for path in ("platform/A.h", "platform/linux/windows/WindowSystem.h"):
                self.assert_refused(f"{path}:3", f"{head}    {answer}\n}};\n")
        self.assert_passes({"platform/A.h": f"{head}    virtual bool canHide(int most = 1) const = 0;\n"
                                            "    virtual void prepare() {}\n    // virtual bool x() {\n};\n"})

    def test_refuses_colours_outside_the_theme(self):
        self.assert_refused("Curtain/A.qml:2", 'Rectangle {\ncolor: "black"\n}\n')
        self.assert_refused("Curtain/A.qml:1", 'property color line: "#D3D7DF"\n')
        self.assert_refused("Curtain/A.qml:1", 'border.color: "red"\n')
        self.assert_passes({
            "Curtain/controls/Theme.qml": 'readonly property color window: "#F4F5F8"\n',
            "Curtain/A.qml": 'color: "transparent"\nproperty color line: Theme.edge\nname: "black"\n',
        })

    def test_refuses_upward_and_sideways_includes(self):
        self.assert_includes_refused([
            ("core/A.h", '"platform/A.h"'), ("core/A.cpp", '"hotkeys/A.h"'), ("core/A.h", '"Curtain/A.h"'),
            ("core/A.h", "<platform/A.h>"), ("core/A.h", '"../platform/A.h"'),
            ("core/A.h", '"tests/support/A.h"'),
            ("platform/A.h", '"hotkeys/A.h"'), ("platform/A.h", '"Curtain/A.h"'),
            ("platform/A.h", '"platform/linux/A.h"'), ("platform/A.h", '"./linux/A.h"'),
            ("hotkeys/A.h", '"Curtain/A.h"'), ("hotkeys/A.cpp", '"platform/qt/A.h"'),
            ("hotkeys/A.cpp", '"platform/linux/hotkeys/A.h"'),
            ("Curtain/A.cpp", '"platform/qt/A.h"'), ("Curtain/A.cpp", '"platform/linux/A.h"'),
            ("Curtain/A.cpp", '"platform/linux/makeLinuxPlatform.h"'), ("Curtain/A.cpp", '"bench/A.h"'),
            ("platform/qt/A.h", '"Curtain/A.h"'), ("platform/qt/A.h", '"hotkeys/A.h"'),
            ("platform/qt/A.h", '"platform/linux/A.h"'), ("platform/linux/apps/A.cpp", '"platform/qt/A.h"'),
            ("platform/linux/apps/A.cpp", '"platform/linux/makeLinuxPlatform.h"'),
            ("platform/linux/makeLinuxPlatform.cpp", '"Curtain/A.h"'),
        ])

    def test_follows_includes_from_the_including_file(self):
        passes, offences = self.check({"Curtain/A.cpp": '#include "../platform/qt/A.h"\n', "platform/qt/A.h": ""})
        self.assertFalse(passes)
        self.assertEqual(offences, ["Curtain/A.cpp:1: app must not include platform/qt/A.h"])

    def test_refuses_foreign_headers_below_the_application(self):
        self.assert_includes_refused([
            ("core/A.h", "<QString>"), ("core/A.cpp", "<QtCore/QString>"), ("core/A.cpp", "<unistd.h>"),
            ("core/A.h", "<nlohmann/json.hpp>"), ("platform/A.h", "<QObject>"), ("platform/A.h", "<xcb/xcb.h>"),
            ("platform/A.h", "<nlohmann/json.hpp>"),
            ("hotkeys/A.h", "<QObject>"), ("hotkeys/A.cpp", "<X11/Xlib.h>"),
        ])

    def test_refuses_clocks_sleeps_and_threads_outside_the_adapters(self):
        for use in [
            "std::chrono::steady_clock::now();", "system_clock::now();", "Clock::now();", "sleep(3);",
            "std::this_thread::sleep_for(delay);", "sleep_until(then);", "usleep(1);", "nanosleep(&time, 0);",
            "gettimeofday(&time, 0);", "clock_gettime(id, &time);", "std::time(&seconds);", "time(nullptr);",
            "std::thread worker;", "std::jthread worker;", "std::async(work);", "pthread_create(&worker);",
            "#include <thread>", "QThread worker;", "QTimer::singleShot(1);", "QElapsedTimer timer;",
            "QDeadlineTimer timer;", "QtConcurrent::run(work);", "QDateTime::currentDateTime();", "startTimer(20);",
        ]:
            for path in ["core/A.cpp", "hotkeys/A.cpp", "Curtain/A.cpp", "Curtain/main.cpp"]:
                self.assert_refused(f"{path}:3", f'\nconst char* text = R"(" // )";\n{use}\n')
            self.assert_passes({"platform/qt/A.cpp": use, "platform/linux/apps/A.cpp": use, "tests/A.cpp": use})

    def test_refuses_the_sender_of_a_reply(self):
        for path in ["platform/linux/tray/A.cpp", "platform/linux/dbus/A.h", "Curtain/main.cpp"]:
            for use in ["name = reply.service();", "answer_->reply().service()", "message->service( )"]:
                self.assert_refused(f"{path}:2", f"\n{use}\n")
        self.assert_passes({"platform/linux/dbus/Caller.h": "call.service();",
                            "platform/linux/A.cpp": "// reply.service()\nservice(); a.service(name);",
                            "tests/A.cpp": "question.service();"})

    def test_reads_no_comments_for_code(self):
        self.assert_passes({"core/A.cpp": '// QTimer\n/*\n#include "Curtain/A.h"\nQThread */\nauto a = "//";\n'})
        self.assert_refused("core/A.cpp:3", '/* two\nlines */ auto a = "/*";\nQTimer timer;\n')

    def test_refuses_forbidden_words(self):
        for words in ["See the speci" + "fication.", "Speci" + "fications", "read SPEC." + "md first",
                      "as Part " + "4.2 has it", "cd /wo" + "rk/main", "rm '/tm" + "p/x'", "file:///tm" + "p/x"]:
            for path in ["README.md", "core/A.cpp", "deep/in/the/tree"]:
                self.assert_refused(f"{path}:3", f"one\ntwo\n// {words}\n")
        self.assert_refused("docs/speci" + "fication.md:0", "")

    def test_lets_words_pass_that_only_look_alike(self):
        self.assert_passes({"README.md": "specific, a part 2 of, /temporary/, build/tmp/x, $HOME/work/x\n",
                            # Where X servers listen, everywhere.
                            "tests/A.cpp": '"/tm' + 'p/.X11-unix/X0"'})

    def test_refuses_ending_processes_by_name(self):
        for path in ["scripts/run", "tests/desktop/test.sh", "tests/desktop/test.py"]:
            for command in ["pk" + "ill curtain", "kill" + "all -9 curtain"]:
                self.assert_refused(f"{path}:2", f"true\n{command}\n")
        self.assert_passes({"Curtain/A.cpp": 'auto path = "/usr/bin/kill' + 'all";\n'})

    def test_leaves_out_what_git_ignores(self):
        self.assert_passes({".gitignore": "/build/\n", "build/A.md": "/tm" + "p/x", ".git/A": "/tm" + "p/x"})

    def test_refuses_a_tree_without_files(self):
        self.assertEqual(self.check({}), (False, []))


if __name__ == "__main__":
    unittest.main()
