"""Checks which programs count as capturing the screen: those that do, proven by their frames, and none that do not.

    screen_watch_test.py [--all] [UNITTEST OPTIONS…]

One of each kind, or with --all every program. SCREEN_WATCH in the environment is the program that asks. At the end it
prints a table of what it saw.
"""

import contextlib
import os
import shutil
import re
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

from desktop_case import DesktopCase, chromium, wait_until
from page_server import PageServer
from vnc_viewer import VncViewer

SCREEN_WATCH = os.environ["SCREEN_WATCH"]
TESTS_ALL = "--all" in sys.argv
SIZE = "1280x800"
POLL_SECONDS = 3
# After the first poll that could have seen it; frames are counted on a busy machine too.
POLLS_UNTIL_WATCHED = 2
POLLS_UNTIL_FREE = 5
SECONDS_TO_START = 60
QUIET_POLLS = 5

table = []


def only_with_all(test):
    return test if TESTS_ALL else unittest.skip("one of the long tests")(test)


class ScreenWatchCase(DesktopCase):
    def setUp(self):
        super().setUp()
        # Something that changes, for those who only read what has changed.
        self.start("xterm", "-geometry", "40x5+900+650", "-e", "sh", "-c", "while :; do date; sleep 0.2; done")
        self.watch = self.desktop.start(SCREEN_WATCH)
        self.wait_polls(1)
        self.assertFalse(self.is_watched())

    def start(self, *argv, **environment):
        return self.desktop.start(*argv, environment=environment)

    def answers(self):
        return [line.split()[0] for line in self.watch.output().splitlines(keepends=True) if line.endswith("\n")]

    def is_watched(self):
        return self.answers()[-1:] == ["watched"]

    def wait_polls(self, number):
        before = len(self.answers())
        wait_until(lambda: len(self.answers()) >= before + number, f"{number} polls", POLL_SECONDS * (number + 3),
                   seen=lambda: len(self.answers()))

    def polls_until(self, answer, limit):
        """How many polls it takes until that is the answer; more than the limit if it does not come."""
        before = len(self.answers())
        with contextlib.suppress(AssertionError):
            wait_until(lambda: answer in self.answers()[before:] or len(self.answers()) - before > limit,
                       answer, POLL_SECONDS * (limit + 3), seen=lambda: self.answers()[before:])
        answers = self.answers()[before:]
        return answers.index(answer) + 1 if answer in answers else limit + 1

    def ffmpeg(self, *options, size=SIZE, rate=15):
        return self.start("ffmpeg", "-nostdin", "-loglevel", "error", "-progress", "pipe:1", "-f", "x11grab", "-framerate",
                          str(rate), "-video_size", size, *options, "-i", os.environ["DISPLAY"], "-f", "null", "-")

    @staticmethod
    def ffmpeg_frames(program):
        return max((int(number) for number in re.findall(r"frame=(\d+)", program.output())), default=0)


class CaptureTest(ScreenWatchCase):
    """Each test starts a capture, proves that it captures, sees it found, ends it, and sees that found too."""

    def check(self, name, captures, end, is_over=None):
        wait_until(captures, f"{name} captures the screen", SECONDS_TO_START)
        start = time.monotonic()
        polls = self.polls_until("watched", POLLS_UNTIL_WATCHED)
        seconds = time.monotonic() - start
        self.assertLessEqual(polls, POLLS_UNTIL_WATCHED, f"{name} was not found: {self.answers()}")
        end()
        if is_over:
            wait_until(is_over, f"{name} is over")
        over = self.polls_until("free", POLLS_UNTIL_FREE)
        self.assertLessEqual(over, POLLS_UNTIL_FREE, f"{name} is still found: {self.answers()}")
        table.append(f"capture   {name:32} found after {polls} poll(s), {seconds:4.1f} s; over after {over} poll(s)")

    def check_program(self, name, program, captures, ending=signal.SIGINT):
        def end():
            program.send_signal(ending)
            # Some clean up in their signal handlers and now and then get stuck there.
            with contextlib.suppress(subprocess.TimeoutExpired):
                program.wait(5)
            program.kill()

        def is_capturing():
            self.assertIsNone(program.poll(), program.complaints())
            return captures()
        self.check(name, is_capturing, end)

    def test_ffmpeg(self):
        program = self.ffmpeg()
        self.check_program("ffmpeg, 15 frames a second", program, lambda: self.ffmpeg_frames(program) > 1)

    def test_ffmpeg_killed(self):
        program = self.ffmpeg()
        self.check_program("ffmpeg, ended by kill -9", program, lambda: self.ffmpeg_frames(program) > 1, signal.SIGKILL)

    @only_with_all
    def test_ffmpeg_slow(self):
        program = self.ffmpeg(rate=1)
        self.check_program("ffmpeg, 1 frame a second", program, lambda: self.ffmpeg_frames(program) > 1)

    @only_with_all
    def test_ffmpeg_region(self):
        program = self.ffmpeg(size="640x480")
        self.check_program("ffmpeg, a part of the screen", program, lambda: self.ffmpeg_frames(program) > 1)

    @only_with_all
    def test_ffmpeg_without_shared_memory(self):
        # In a namespace of its own the server cannot attach its segments.
        program = self.start("unshare", "--ipc", "ffmpeg", "-nostdin", "-loglevel", "error", "-progress", "pipe:1", "-f",
                             "x11grab", "-draw_mouse", "0", "-framerate", "15", "-video_size", SIZE, "-i",
                             os.environ["DISPLAY"], "-f", "null", "-")
        self.check_program("ffmpeg without shared memory", program, lambda: self.ffmpeg_frames(program) > 1)

    def gstreamer(self, name, *options):
        program = self.start("gst-launch-1.0", "-v", "ximagesrc", *options, "!", "video/x-raw,framerate=15/1", "!",
                             "fakesink", "silent=false", "sync=true",
                             GST_REGISTRY=str(self.scratch / "registry"))
        self.check_program(name, program, lambda: program.output().count("chain") > 2)

    @only_with_all
    def test_gstreamer(self):
        self.gstreamer("GStreamer, the whole screen", "use-damage=false")

    @only_with_all
    def test_gstreamer_changes(self):
        self.gstreamer("GStreamer, what has changed", "use-damage=true", "show-pointer=false")

    def test_vnc_server_with_a_viewer(self):
        port = 5900 + os.getpid() % 1000
        server = self.start("x11vnc", "-localhost", "-rfbport", str(port), "-nopw", "-forever", "-quiet")
        viewers = []

        def is_listening():
            self.assertIsNone(server.poll(), server.complaints())
            with contextlib.suppress(ConnectionRefusedError):
                viewers.append(VncViewer(port))
            return viewers
        wait_until(is_listening, "the server listens", SECONDS_TO_START)
        viewer, = viewers
        self.addCleanup(viewer.close)
        self.check_program("x11vnc with a viewer", server, lambda: viewer.pixels >= 1280 * 800, signal.SIGTERM)

    @only_with_all
    def test_byzanz(self):
        recording = self.scratch / "recording.gif"
        program = self.start("byzanz-record", "--duration=9", "--delay=0", str(recording))
        time_of_start = time.monotonic()
        self.check("byzanz", lambda: program.poll() is None and time.monotonic() > time_of_start + 1, lambda: None,
                   lambda: program.poll() == 0)
        self.assertGreater(recording.stat().st_size, 10_000)

    @only_with_all
    def test_simplescreenrecorder(self):
        recording, figures = self.scratch / "recording.mkv", self.scratch / "figures"
        settings = self.scratch / "ssr.conf"
        settings.write_text(f"""[input]
audio_enabled=false
video_area=screen
video_frame_rate=15
video_record_cursor=true
[output]
container=mkv
file={recording}
add_timestamp=false
video_allow_frame_skipping=true
video_codec=h264
video_h264_crf=23
video_h264_preset=0
[record]
hotkey_enable=false
[welcome]
skip_page=true
""")
        program = self.start("simplescreenrecorder", f"--settingsfile={settings}", f"--statsfile={figures}",
                             "--start-recording")

        def is_recording():
            words = figures.read_text().split() if figures.exists() else []
            return "frame_rate_in" in words and float(words[words.index("frame_rate_in") + 1]) > 1
        self.check_program("SimpleScreenRecorder", program, is_recording, signal.SIGKILL)

    def share_in(self, name, browser, page):
        window = self.desktop.window_of(browser)
        wait_until(lambda: "loaded" in page.said, "the page is there", SECONDS_TO_START, seen=lambda: page.said)
        x, y, width, height = window.geometry
        place = ["xdotool", "mousemove", str(x + width // 2), str(y + height - 40), "click", "1"]

        def click():
            """A window that has just appeared does not take the first click."""
            clicks = page.said.count("clicked")
            for _ in range(5):
                subprocess.run(place, check=True)
                with contextlib.suppress(AssertionError):
                    return wait_until(lambda: page.said.count("clicked") > clicks, "the page is clicked", 4,
                                      seen=lambda: page.said.count("clicked"))
            self.fail("the page takes no click")
        click()

        def is_shared():
            self.assertFalse([words for words in page.said if words.startswith("error")])
            return page.frames() > 3
        self.check(name, is_shared, click, lambda: "stopped" in page.said)

    def test_chromium(self):
        page = PageServer()
        self.addCleanup(page.close)
        browser = self.start(*chromium(self.scratch / "chromium", "--window-position=100,60", "--window-size=700,500",
                                       "--auto-select-desktop-capture-source=Entire screen",
                                       page.address("share.html")))
        self.share_in("Chromium, a page that shares", browser, page)

    @only_with_all
    def test_firefox(self):
        page = PageServer()
        self.addCleanup(page.close)
        profile = self.scratch / "firefox"
        profile.mkdir()
        (profile / "user.js").write_text("""
user_pref("media.navigator.permission.disabled", true);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("browser.aboutwelcome.enabled", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("toolkit.telemetry.enabled", false);
user_pref("browser.startup.homepage_override.mstone", "ignore");
user_pref("trailhead.firstrun.didSeeAboutWelcome", true);
""")
        browser = self.start("firefox-esr", "--no-remote", "--profile", str(profile), page.address("share.html"))
        self.share_in("Firefox, a page that shares", browser, page)


class InnocentTest(ScreenWatchCase):
    """All at once, each proven to be at work: none may count."""

    def setUp(self):
        super().setUp()
        self.proofs = {}
        self.magnifier = None

    def add(self, name, proof):
        self.proofs[name] = proof

    def add_window(self, name, *argv, **environment):
        program = self.start(*argv, **environment)
        self.desktop.window_of(program)
        self.add(name, lambda: program.poll() is None)

    def add_animated_chromium(self):
        page = PageServer()
        self.addCleanup(page.close)
        self.start(*chromium(self.scratch / "animated", "--window-position=0,0", "--window-size=1280,800",
                             page.address("animation.html")))
        wait_until(page.frames, "the animation moves", SECONDS_TO_START)
        before = page.frames()
        self.add("Chromium, animated", lambda: page.frames() > before)

    def add_compositor(self):
        picom = self.start("picom", "--backend", "xrender", "--config", "/dev/null")
        wait_until(lambda: self.display.selection_owner("_NET_WM_CM_S0"), "there is a compositor", SECONDS_TO_START)
        self.add("picom", lambda: picom.poll() is None and self.display.selection_owner("_NET_WM_CM_S0"))

    def add_terminal(self):
        terminal = self.start("xterm", "-geometry", "80x40+20+20", "-e", "sh", "-c", "while :; do date; done")
        self.desktop.window_of(terminal)
        self.add("xterm, scrolling", lambda: terminal.poll() is None)

    def add_magnifier(self):
        if not shutil.which("xzoom"):
            # Debian 13 does not have it.
            return
        magnifier = self.start("xzoom", "-mag", "2", "-geometry", "300x200+20+560")
        def window():
            """It says only in its title whose it is."""
            return next((window for window in self.desktop.windows()
                         if (self.display.property(window.id, "WM_NAME") or b"").startswith(b"xzoom")), None)
        self.magnifier = wait_until(window, "xzoom shows a window", SECONDS_TO_START)
        self.add("xzoom, moving", lambda: magnifier.poll() is None)

    def take_screenshots(self):
        pictures = [self.scratch / f"{name}.png" for name in ("import", "scrot")] + [self.scratch / "xwd.xwd"]
        subprocess.run(["import", "-window", "root", pictures[0]], check=True)
        if TESTS_ALL:
            subprocess.run(["scrot", "--overwrite", pictures[1]], check=True)
            subprocess.run(["xwd", "-root", "-silent", "-out", pictures[2]], check=True)
        for picture in pictures[:3 if TESTS_ALL else 1]:
            self.add(picture.stem, lambda path=picture: path.stat().st_size > 1000)

    def move_pointer(self, step):
        subprocess.run(["xdotool", "mousemove", str(step * 97 % 1280), str(step * 53 % 800)], check=True)
        if self.magnifier:
            # Its keys move what it shows.
            self.magnifier.raise_from_task_list()
            subprocess.run(["xdotool", "key", "Right" if step % 60 < 30 else "Left", "Down"], check=True)

    def check(self):
        before = len(self.answers())
        step = 0
        while len(self.answers()) < before + QUIET_POLLS:
            step += 1
            self.move_pointer(step)
            if step % 10 == 0:
                self.take_screenshots()
            self.assertNotIn("watched", self.answers(), list(self.proofs))
            time.sleep(0.05)
        for name, proof in self.proofs.items():
            self.assertTrue(proof(), name)
            table.append(f"innocent  {name:32} never found in {QUIET_POLLS} polls")
        # They do not hide one that does.
        capture = self.ffmpeg()
        wait_until(lambda: self.ffmpeg_frames(capture) > 1, "ffmpeg captures the screen", SECONDS_TO_START,
                   seen=capture.complaints)
        self.assertLessEqual(self.polls_until("watched", POLLS_UNTIL_WATCHED + 1), POLLS_UNTIL_WATCHED + 1)
        self.assertIsNone(capture.poll(), capture.complaints())

    def test_innocent_programs(self):
        self.add_compositor()
        self.add_terminal()
        self.add_animated_chromium()
        self.add_magnifier()
        self.check()

    @only_with_all
    def test_more_innocent_programs(self):
        self.add_window("gpick", "gpick")
        self.add_window("mpv", "mpv", "--no-config", "--vo=x11", "--ao=null", "--no-terminal",
                        "av://lavfi:testsrc=size=320x240:rate=25")
        port = 7900 + os.getpid() % 1000
        server = self.start("x11vnc", "-localhost", "-rfbport", str(port), "-nopw", "-forever", "-quiet")
        wait_until(lambda: f":{port:04X}" in Path("/proc/net/tcp").read_text(encoding="ascii"), "the server listens",
                   SECONDS_TO_START, seen=lambda: Path("/proc/net/tcp").read_text(encoding="ascii"))
        self.add("x11vnc without a viewer", lambda: server.poll() is None)
        self.check()


class WithoutRecordTest(DesktopCase):
    def test_server_without_the_extension_leaves_nothing_known(self):
        _, display = self.start_x_server("-screen", "0", "640x480x24", "-extension", "RECORD")
        watch = self.desktop.start(SCREEN_WATCH, environment={"DISPLAY": display})
        capture = self.desktop.start("ffmpeg", "-nostdin", "-loglevel", "error", "-f", "x11grab", "-video_size", "640x480",
                                     "-i", display, "-f", "null", "-")
        wait_until(lambda: watch.output().count("\n") >= 3, "three polls", 5 * POLL_SECONDS,
                   seen=lambda: watch.output().count("\n"))
        self.assertEqual({line.split()[0] for line in watch.output().splitlines()}, {"unknown"})
        self.assertEqual(len(watch.complaints().splitlines()), 1, watch.complaints())
        self.assertIsNone(watch.poll())
        self.assertIsNone(capture.poll(), capture.complaints())


if __name__ == "__main__":
    try:
        unittest.main(argv=[word for word in sys.argv if word != "--all"])
    finally:
        print("\n".join(table))
