"""Checks that a virtual desktop is complete, private, and gone afterwards."""

import os
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
# pylint: disable=wrong-import-position
from display_lock import LOCKS, SOCKETS, DisplayLock  # noqa

SCRIPT = Path(__file__).resolve().parents[2] / "scripts/virtual-desktop"
WINDOW_MANAGERS = {"x11-openbox": "openbox", "x11-xfwm4": "xfwm4", "x11-i3": "i3", "x11-bare": None, "sway": "sway",
                   "weston": "weston", "kwin": "kwin_wayland"}
WAYLAND_SESSIONS = ("sway", "weston", "kwin")
# As they call themselves, where that is another name.
DESKTOPS = {"kwin": "KDE"}
# It keeps its list of windows to itself.
SESSIONS_WITHOUT_LIST = ("x11-bare", "weston")
PARTS = {"dbus-daemon", "Xvfb", "openbox", "trayer", "dunst"}
MEDIA_PARTS = {"pipewire", "wireplumber", "pipewire-pulse"}

# Prints what the kernel tells of every process that the world consists of; one may end meanwhile.
LIST_PROCESSES = """
for pid in $(ps -o pid= --ppid $PPID); do
    { read -r line </proc/$pid/stat; } 2>/dev/null && echo "$line"
done
:
"""

TRAY_OWNER = """
import ctypes
x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x11.XOpenDisplay(None))
print(x11.XGetSelectionOwner(display, x11.XInternAtom(display, b"_NET_SYSTEM_TRAY_S0", 0)))
"""

CALL_BUS = ("gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus "
            "--method org.freedesktop.DBus.")


def wait_until(condition, what, seconds=30, seen=None):
    deadline = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds} s: {what}; seen: {seen() if seen else answer}")
        time.sleep(0.01)
    return answer


def patiently(condition):
    """A shell command that waits for another to succeed, for 20 seconds."""
    return f"for turn in $(seq 100); do {condition} && break; sleep 0.2; done"


def listed_processes(text):
    """The pid, start time and name of each process in a list that has not ended: KWin 6 leaves one behind."""
    processes = []
    for line in text.splitlines():
        pid, _, rest = line.partition(" (")
        name, _, fields = rest.rpartition(") ")
        fields = fields.split()
        if fields[0] != "Z":
            processes.append((pid, fields[19], name))
    return processes


def is_running(pid, start_time):
    try:
        fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    except OSError:
        return False
    return fields[19] == start_time and fields[0] != "Z"


def display_of(processes):
    pid = next(pid for pid, _, name in processes if name == "openbox")
    return Path(f"/proc/{pid}/environ").read_text().split("DISPLAY=")[1].split("\0")[0]


class VirtualDesktopTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="curtain-test-")
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        # Worlds make their own folders here, so that a test sees what they leave.
        self.worlds = self.scratch / "worlds"
        self.worlds.mkdir()
        self.environment = os.environ | {"TMPDIR": str(self.worlds)}

    def start(self, *command, options=(), cwd=None, **changes):
        return subprocess.Popen(
            [SCRIPT, *options, "--", *command], cwd=cwd, env=self.environment | changes, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def run_in(self, *command, **keywords):
        world = self.start(*command, **keywords)
        output, complaints = world.communicate(timeout=120)
        return world.returncode, output, complaints

    def ask(self, command, **keywords):
        """What a shell command prints in a fresh world; it must succeed without a word of complaint."""
        status, output, complaints = self.run_in("sh", "-c", command, **keywords)
        self.assertEqual((status, complaints), (0, ""))
        return output

    def start_and_list(self, path, **keywords):
        """A world that listed its processes and now waits for its standard input to end."""
        command = f"({LIST_PROCESSES}) >{path}.new; mv {path}.new {path}; read line"
        world = self.start("sh", "-c", command, **keywords)
        wait_until(path.exists, f"{path} is there", seen=lambda: sorted(path.parent.iterdir()) if path.parent.exists() else None)
        return world, listed_processes(path.read_text())

    def assert_gone(self, processes, parts=frozenset(PARTS)):
        self.assertLessEqual(parts, {name for _, _, name in processes})
        self.assertEqual([entry for entry in processes if is_running(*entry[:2])], [])
        self.assertEqual(list(self.worlds.iterdir()), [])

    def test_has_folders_of_its_own(self):
        names = ["HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                 "XDG_RUNTIME_DIR"]
        paths = self.ask("; ".join(f'echo "${name}"; test -d "${name}"' for name in names)).splitlines()
        self.assertEqual(len(set(paths)), len(names))
        for path in paths:
            self.assertTrue(Path(path).is_relative_to(self.worlds), path)

    def test_keeps_its_runtime_folder_to_itself(self):
        self.assertEqual(self.ask('stat -c %a "$XDG_RUNTIME_DIR"').strip(), "700")

    def test_drops_what_leads_to_the_callers_session(self):
        names = ["WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER", "DBUS_SYSTEM_BUS_ADDRESS", "PULSE_SERVER",
                 "XDG_CURRENT_DESKTOP"]
        foreign = {name: "foreign" for name in names}
        self.assertNotIn("foreign", self.ask("env", **foreign))

    def test_speaks_utf8_unless_told_otherwise(self):
        none = {"LANG": "", "LC_ALL": ""}
        self.assertEqual(self.ask('echo "$LANG"', **none).strip(), "C.UTF-8")
        self.assertEqual(self.ask('echo "$LANG"', **none | {"LANG": "fr_FR.UTF-8"}).strip(), "fr_FR.UTF-8")

    def test_has_a_bus_that_activates_nothing(self):
        self.assertIn("$XDG_RUNTIME_DIR/bus", self.ask(
            'echo "$DBUS_SESSION_BUS_ADDRESS" | sed "s|$XDG_RUNTIME_DIR|\\$XDG_RUNTIME_DIR|"'))
        self.assertEqual(self.ask(CALL_BUS + "ListActivatableNames").strip(), "(['org.freedesktop.DBus'],)")

    def test_has_a_notification_daemon(self):
        self.assertEqual(self.ask(CALL_BUS + "NameHasOwner org.freedesktop.Notifications").strip(), "(true,)")

    def test_has_a_window_manager_that_lists_windows(self):
        for session in WINDOW_MANAGERS:
            if session not in SESSIONS_WITHOUT_LIST:
                with self.subTest(session):
                    windows = self.ask("""
                        xterm -fa Monospace -title listed &
                        window=$(printf 0x%x "$(xdotool search --sync --onlyvisible --name '^listed$')")
                        echo "$window"
                        # It may be seen before it is listed.
                        """ + patiently('xprop -root _NET_CLIENT_LIST | grep -qw "$window"') + """
                        xprop -root _NET_CLIENT_LIST
                        # It would complain if its world ended first.
                        kill $!; wait $! || true""", options=["--session", session]).splitlines()
                    self.assertIn(windows[0], windows[1].partition("#")[2].replace(" ", "").split(","))

    def test_has_the_window_manager_of_its_session(self):
        for session, window_manager in WINDOW_MANAGERS.items():
            with self.subTest(session):
                output = self.ask(LIST_PROCESSES, options=["--session", session])
                names = [name for _, _, name in listed_processes(output)]
                expected = [window_manager] if window_manager else []
                self.assertEqual([name for name in names if name in WINDOW_MANAGERS.values()], expected)

    def test_wayland_sessions_are_an_ordinary_users(self):
        for session in WAYLAND_SESSIONS:
            with self.subTest(session):
                output = self.ask("""
                    id -u
                    id -un
                    echo "$XDG_SESSION_TYPE $XDG_CURRENT_DESKTOP"
                    test -S "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY" && echo socket
                    test "$DISPLAY" != "$VIRTUAL_DESKTOP_SCREEN" && echo two""", options=["--session", session])
                number, name, names, *facts = output.splitlines()
                self.assertNotEqual((number, name), ("0", "root"))
                self.assertNotEqual(name, "")
                self.assertEqual((names, facts), (f"wayland {DESKTOPS.get(session, session)}", ["socket", "two"]))

    def test_keys_and_pictures_of_wayland_sessions_are_those_of_the_screen(self):
        programs = {"of Wayland": "foot -o colors.background=2040a0", "of X11": "xterm -fa Monospace -bg '#2040a0' -e"}
        blue_is_shown = r"import -window root -depth 8 rgb:- | LC_ALL=C grep -qaP '(\x20\x40\xa0){9}'"
        for session in WAYLAND_SESSIONS:
            for kind, program in programs.items():
                if session == "kwin" and kind == "of Wayland":
                    continue  # foot divides by the width of its screen, which is unknown there
                with self.subTest(session + ", a program " + kind):
                    typed = self.ask(f"""
                        {program} sh -c 'read line; echo "$line" >typed.new; mv typed.new typed' 2>/dev/null &
                        export DISPLAY=$VIRTUAL_DESKTOP_SCREEN
                        {patiently(blue_is_shown)}
                        xdotool type hello
                        xdotool key Return
                        {patiently("test -e typed")}
                        cat typed; rm typed""", options=["--session", session], cwd=self.scratch)
                    self.assertEqual(typed, "hello\n")

    def test_has_a_tray_unless_told_otherwise(self):
        ask_owner = f"{sys.executable} -c '{TRAY_OWNER}'"
        self.assertNotEqual(self.ask(ask_owner).strip(), "0")
        self.assertEqual(self.ask(ask_owner, options=["--tray", "none"]).strip(), "0")

    def test_has_the_tray_of_status_notifier_items_asked_for(self):
        command = CALL_BUS + "NameHasOwner org.kde.StatusNotifierWatcher; " + f"{sys.executable} -c '{TRAY_OWNER}'"
        self.assertEqual(self.ask(command, options=["--tray", "sni"]).split(), ["(true,)", "0"])
        self.assertEqual(self.ask(command, options=["--tray", "none"]).split(), ["(false,)", "0"])

    def test_tells_what_is_in_the_tray_of_status_notifier_items(self):
        output = self.ask("""
            watcher="gdbus call --session --dest org.kde.StatusNotifierWatcher --object-path"
            method=org.kde.StatusNotifierWatcher.RegisterStatusNotifierItem
            $watcher /StatusNotifierWatcher --method $method org.freedesktop.Notifications
            $watcher /StatusNotifierWatcher --method $method /of/somebody/who/leaves
            until $watcher /Host --method com.curtain.TestHost.Items | grep -v somebody; do :; done
            $watcher /Host --method com.curtain.TestHost.Registrations""", options=["--tray", "sni"])
        items, registrations = output.splitlines()[-2:]
        item = "org.freedesktop.Notifications/StatusNotifierItem"
        self.assertEqual(items, f"(['{item}'],)")
        self.assertRegex(registrations, rf"^\(\['{item}', ':[0-9.]+/of/somebody/who/leaves'\],\)$")

    def test_has_the_bus_of_assistive_technologies_if_asked_for(self):
        ask = CALL_BUS + "NameHasOwner org.a11y.Bus"
        self.assertEqual(self.ask(ask).strip(), "(false,)")
        self.assertEqual(self.ask(ask, options=["--accessibility"]).strip(), "(true,)")

    def test_is_gone_with_the_bus_of_assistive_technologies(self):
        world, processes = self.start_and_list(self.scratch / "list", options=["--accessibility"])
        world.communicate("\n", timeout=60)
        self.assert_gone(processes, PARTS)

    def test_has_no_sound_unless_told_otherwise(self):
        status, output, _ = self.run_in("pactl", "info")
        self.assertEqual((status, output), (1, ""))

    def test_has_a_microphone_and_speakers_if_asked_for(self):
        output = self.ask("pactl get-default-source; pactl get-default-sink; pactl info", options=["--media"])
        self.assertEqual(output.splitlines()[:2], ["microphone", "speakers"])
        self.assertIn(f"Server String: {self.worlds}", output)

    def test_has_cameras_if_asked_for(self):
        nodes = self.ask("pw-cli list-objects Node", options=["--media", "--camera", os.environ["VIRTUAL_CAMERA"]])
        for name in ("front_camera", "desk_camera"):
            self.assertIn(f'node.name = "{name}"', nodes)

    def test_hears_with_the_microphone_what_is_fed_to_it(self):
        # A tone of half scale, whose root of the mean square is 0.35.
        loudness = self.ask("""
            ffmpeg -loglevel error -f lavfi -i sine=440:r=48000 -af volume=4 -t 30 -f wav tone.wav
            paplay --device=microphone_feed tone.wav & player=$!
            until pactl list short sink-inputs | grep -q .; do :; done
            parec --device=microphone --format=float32le --channels=1 --rate=48000 2>/dev/null |
                head -c 384000 >heard
            kill $player
            ffmpeg -nostats -f f32le -ar 48000 -i heard -af volumedetect -f null - 2>&1""", options=["--media"],
            cwd=self.scratch)
        self.assertRegex(loudness, r"max_volume: -6\.[01] dB")

    def test_is_gone_with_its_sound(self):
        world, processes = self.start_and_list(self.scratch / "list", options=["--media"])
        world.communicate("\n", timeout=60)
        self.assert_gone(processes, PARTS | MEDIA_PARTS)

    def test_tells_the_process_ids_of_its_parts(self):
        output = self.ask('cd "$VIRTUAL_DESKTOP_PIDS"; for name in *; do echo $name $(cat /proc/$(cat $name)/comm); done')
        self.assertEqual(output.split(), [name for part in sorted(PARTS) for name in (part, part)])

    def test_has_the_screen_size_asked_for(self):
        self.assertIn("1024x768 pixels", self.ask("xdpyinfo", options=["--size", "1024x768"]))

    def test_returns_the_commands_status(self):
        self.assertEqual(self.run_in("sh", "-c", "exit 7"), (7, "", ""))
        self.assertEqual(self.run_in("sh", "-c", "kill -KILL $$"), (128 + signal.SIGKILL, "", ""))

    def test_its_programs_do_not_ignore_what_the_caller_ignores(self):
        before = signal.signal(signal.SIGINT, signal.SIG_IGN)
        self.addCleanup(signal.signal, signal.SIGINT, before)
        self.assertEqual(self.run_in("sh", "-c", "kill -INT $$"), (128 + signal.SIGINT, "", ""))

    def test_says_that_a_command_cannot_be_run(self):
        self.assertEqual(self.run_in("no-such-command"),
                         (127, "", "virtual-desktop: no-such-command: No such file or directory\n"))

    def test_refuses_what_it_does_not_know(self):
        for options, word in [(["--session", "other"], "other"), (["--tray", "other"], "other"),
                              (["--size", "big"], "big"), (["--sound-server", "other"], "other"), (["--other"], "--other"),
                              (["--camera", "program"], "--media")]:
            status, output, complaints = self.run_in("true", options=options)
            self.assertEqual((status, output, len(complaints.splitlines())), (2, "", 1), complaints)
            self.assertIn(word, complaints)
        status, _, complaints = self.run_in()
        self.assertEqual((status, len(complaints.splitlines())), (2, 1))

    def test_runs_beside_another(self):
        first, first_processes = self.start_and_list(self.scratch / "first")
        second, second_processes = self.start_and_list(self.scratch / "second")
        self.assertNotEqual(display_of(first_processes), display_of(second_processes))
        first.communicate("\n", timeout=60)
        self.assertEqual([entry for entry in second_processes if not is_running(*entry[:2])], [])
        second.communicate("\n", timeout=60)
        self.assert_gone(first_processes + second_processes)

    def test_locks_its_display_as_long_as_it_is_there(self):
        holder, script, lock = self.ask("""
            lock="$(dirname "$X_SOCKETS")/.X${DISPLAY#:}-lock"
            cat "$lock"
            echo $PPID
            echo "$lock" """, X_SOCKETS=f"{SOCKETS}/").split()
        self.assertEqual(holder, script)
        self.assertFalse(os.path.exists(lock), lock)

    def test_its_display_is_free_after_it_was_killed(self):
        world, processes = self.start_and_list(self.scratch / "list")
        display = display_of(processes)
        world.kill()
        world.communicate(timeout=60)
        self.wait_ended(processes)
        # Every display up to that one is taken here or by others then.
        taken = []
        while not taken or int(taken[-1].display[1:]) < int(display[1:]):
            taken.append(DisplayLock())
            self.addCleanup(taken[-1].release)
        self.assertNotEqual((LOCKS / f".X{display[1:]}-lock").read_text().split(), [str(world.pid)])

    def test_takes_no_display_that_a_machine_beside_it_serves(self):
        """One that shares the network and not the files."""
        mine = DisplayLock()
        with socket.socket(socket.AF_UNIX) as server:
            server.bind(f"\0{SOCKETS}/X{mine.display[1:]}")
            server.listen()
            mine.release()
            taken = DisplayLock()
            self.addCleanup(taken.release)
            self.assertNotEqual(taken.display, mine.display)

    def test_keeps_its_socket_when_a_compositor_starts(self):
        output = self.ask("""
            "$SCRIPT" --session kwin -- true
            test -S "${X_SOCKETS}X${DISPLAY#:}" && echo there""", SCRIPT=str(SCRIPT), X_SOCKETS=f"{SOCKETS}/")
        self.assertEqual(output, "there\n")

    def test_is_gone_after_the_command(self):
        for session, window_manager in WINDOW_MANAGERS.items():
            with self.subTest(session):
                world, processes = self.start_and_list(self.scratch / session, options=["--session", session])
                self.assertEqual([entry for entry in processes if not is_running(*entry[:2])], [])
                world.communicate("\n", timeout=60)
                parts = PARTS - {"openbox"} | {window_manager} - {None}
                if session in WAYLAND_SESSIONS:
                    parts = parts - {"trayer"} | {"status-notifier"}
                self.assert_gone(processes, parts)

    def test_ends_what_the_command_left_running(self):
        pid, start_time = self.ask("setsid sleep 1000 & echo $! $(cut -d' ' -f22 /proc/$!/stat)").split()
        self.assertFalse(is_running(pid, start_time), pid)

    def test_is_gone_when_interrupted(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number.name):
                path = self.scratch / number.name
                world, processes = self.start_and_list(path)
                world.send_signal(number)
                _, complaints = world.communicate(timeout=60)
                self.assertEqual((world.returncode, complaints), (128 + number, ""))
                self.assert_gone(processes)

    def test_ends_with_its_script_even_if_that_is_killed(self):
        world, processes = self.start_and_list(self.scratch / "list")
        world.kill()
        world.communicate(timeout=60)
        self.wait_ended(processes)

    def wait_ended(self, processes):
        wait_until(lambda: not any(is_running(*entry[:2]) for entry in processes), "they have ended",
                   seen=lambda: [entry for entry in processes if is_running(*entry[:2])])

    def put_in_place_of(self, part, lines):
        stand_in = self.scratch / "bin" / part
        stand_in.parent.mkdir(exist_ok=True)
        stand_in.write_text(f"#!/bin/sh\n({LIST_PROCESSES}) >{self.scratch}/list\n{lines}\n")
        stand_in.chmod(0o755)
        return {"PATH": f"{stand_in.parent}:{os.environ['PATH']}"}

    def assert_failed_at_dunst(self, result, words):
        status, output, complaints = result
        self.assertEqual((status, output), (125, ""))
        self.assertEqual(complaints, f"virtual-desktop: dunst {words}\n")
        self.assert_gone(listed_processes((self.scratch / "list").read_text()))

    def test_is_gone_when_a_part_fails(self):
        changes = self.put_in_place_of("dunst", "echo no luck today >&2; exit 1")
        self.assert_failed_at_dunst(self.run_in("true", **changes), "ended while starting: no luck today")

    def test_is_gone_when_a_part_never_becomes_ready(self):
        changes = self.put_in_place_of("dunst", "exec sleep 1000")
        # The other parts have as long.
        self.assert_failed_at_dunst(self.run_in("true", options=["--deadline", "15"], **changes),
                                    "was not ready within 15 s")

    def test_keeps_a_folder_that_was_named(self):
        folder = self.scratch / "kept"
        self.ask("echo written >$HOME/file", options=["--dir", str(folder)])
        self.assertEqual((folder / "home/file").read_text(), "written\n")
        self.assertEqual({path.stem for path in (folder / "log").iterdir()}, PARTS)
        self.assertEqual(self.ask("cat $HOME/file", options=["--dir", str(folder)]), "written\n")


if __name__ == "__main__":
    unittest.main()
