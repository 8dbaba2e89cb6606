"""Makes the Debian package, unpacks it into an empty folder, and starts and closes the program there.

package_test.py BUILD_FOLDER SOURCE_FOLDER; needs a display.
"""
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from Xlib import X, Xatom, display
from Xlib.protocol import event

PATIENCE = 30  # seconds


def run(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout


class Desktop:
    """The windows of the display."""

    def __init__(self):
        self.display = display.Display()
        self.root = self.display.screen().root

    def window(self, title):
        """The visible window of the title, or None."""
        pending = [self.root]
        while pending:
            window = pending.pop()
            name = window.get_full_property(self.display.get_atom("_NET_WM_NAME"), X.AnyPropertyType)
            if name and name.value.decode() == title and window.get_attributes().map_state == X.IsViewable:
                return window
            pending += window.query_tree().children
        return None

    def has_icon(self, window):
        return bool(window.get_full_property(self.display.get_atom("_NET_WM_ICON"), Xatom.CARDINAL))

    def close(self, window):
        """Asks for the end of the window as its close button does."""
        data = (32, [self.display.get_atom("WM_DELETE_WINDOW"), X.CurrentTime, 0, 0, 0])
        window.send_event(event.ClientMessage(
            window=window, client_type=self.display.get_atom("WM_PROTOCOLS"), data=data))
        self.display.flush()


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        target = BUILD / "package"
        shutil.rmtree(target, ignore_errors=True)
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", target)
        (cls.package,) = target.glob("*.deb")
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.usr = cls.folder / "root/usr"
        run("dpkg", "-x", cls.package, cls.folder / "root")

    def test_it_depends_on_the_libraries_and_programs_in_use(self):
        depends = run("dpkg-deb", "-f", self.package, "Depends")
        for needed in ("libmpv2", "libavformat59", "libqt6widgets6", "libsqlite3-0", "libplist3", "zip",
                       "breeze-icon-theme", "fonts-inter"):
            self.assertIn(needed, depends)

    def test_the_desktop_can_show_it(self):
        share = self.usr / "share"
        entry = share / "applications/tembrix-stat.desktop"
        self.assertEqual(run("desktop-file-validate", entry), "")
        run("appstreamcli", "validate", "--no-net", share / "metainfo/org.tembrix.stat.metainfo.xml")
        keys = dict(line.split("=", 1) for line in entry.read_text().splitlines() if "=" in line)
        self.assertTrue(os.access(self.usr / "bin" / keys["Exec"], os.X_OK))
        self.assertTrue((share / f"icons/hicolor/scalable/apps/{keys['Icon']}.svg").exists())
        run("update-mime-database", share / "mime")
        globs = (share / "mime/globs").read_text()
        self.assertIn("application/vnd.tembrix.project+json:*.tembrix\n", globs)
        self.assertIn("application/vnd.tembrix.collection+json:*.quorvanecollection\n", globs)

    def test_it_names_no_folder_of_the_machine_that_built_it(self):
        self.assertNotIn(os.fsencode(SOURCE), (self.usr / "bin/tembrix-stat").read_bytes())

    def test_it_starts_finds_its_resources_and_ends_when_its_window_is_closed(self):
        home = self.folder / "home"
        home.mkdir(mode=0o700)
        places = {f"XDG_{name}_HOME": str(home / name.lower()) for name in ("DATA", "STATE", "CACHE", "CONFIG")}
        environment = {**os.environ, **places, "HOME": str(home), "XDG_RUNTIME_DIR": str(home),
                       "QT_QPA_PLATFORM": "xcb", "LANGUAGE": "en"}
        with open(self.folder / "messages", "w+") as messages:
            program = subprocess.Popen([self.usr / "bin/tembrix-stat"], env=environment, stdout=messages,
                                       stderr=messages)
            self.addCleanup(lambda: program.poll() is None and program.send_signal(signal.SIGKILL))
            desktop = Desktop()
            end = time.monotonic() + PATIENCE
            while not (window := desktop.window("Tembrix Stat")):
                self.assertIsNone(program.poll(), "the program ended before its window appeared")
                self.assertLess(time.monotonic(), end, "no window appeared")
                time.sleep(0.1)
            self.assertTrue(desktop.has_icon(window))
            desktop.close(window)
            self.assertEqual(program.wait(PATIENCE), 0)
            messages.seek(0)
            self.assertNotIn("❌", messages.read())


if __name__ == "__main__":
    BUILD, SOURCE = (pathlib.Path(argument) for argument in (sys.argv.pop(1), sys.argv.pop(1)))
    unittest.main()
