"""Goes the road of a new user, from the empty library to the exported film, by keyboard alone, and counts the keys.

keyboard_road.py PROGRAM VIDEO_MAKER; needs a display. The window manager is started here.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from desktop import Desktop, wait_for

MOST_KEYS = 35
MARKS = 10


class KeyboardRoad(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        self.documents = self.home / "Documents"
        self.documents.mkdir()
        (self.home / "Videos").mkdir()
        # Below the user's folders, so that nothing of the person at this machine is touched.
        folders = {f"XDG_{name}_HOME": str(self.home / name.lower()) for name in ("DATA", "STATE", "CACHE", "CONFIG")}
        self.environment = {
            **os.environ, **folders, "HOME": folder.name, "XDG_DOCUMENTS_DIR": str(self.documents),
            "XDG_RUNTIME_DIR": folder.name, "LANGUAGE": "en", "QT_QPA_PLATFORM": "xcb"}
        subprocess.run([MAKER, self.home / "Videos/match.mp4", "--size", "640x360", "--seconds", "60"], check=True)
        self.start("openbox")
        self.desktop = Desktop()

    def start(self, *command):
        process = subprocess.Popen(command, env=self.environment, cwd=self.documents,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def press(self, *keys):
        for key in keys:
            self.desktop.press(key)

    def await_window(self, start):
        return wait_for(f"the window '{start}'", lambda: self.desktop.active_title().startswith(start))

    def await_other_window(self, before):
        wait_for("another window", lambda: self.desktop.active() not in (0, before))
        return self.desktop.settled()

    def test_ten_marks_become_a_film(self):
        program = self.start(PROGRAM)
        self.await_window("Tembrix Stat")
        list_window = self.desktop.active()

        self.press("ctrl+o")
        self.await_window("Add video")
        self.press("m")
        wait_for("the completions of the name", self.desktop.popup_is_open)
        self.press("Down", "Return")
        self.await_window("Match information")
        self.press("Return")
        wait_for("the list", lambda: self.desktop.settled() == list_window)

        self.press("Return")
        wait_for("the project's windows", lambda: len(self.desktop.open_windows()) >= 4)
        project_window = self.await_other_window(list_window)
        self.press("ctrl+t")
        sheet = self.await_other_window(project_window)
        self.press("a", "Return")
        self.await_other_window(sheet)

        for number in range(MARKS):
            before = self.desktop.active()
            self.press(str(number % 5 + 1))
            labels = self.await_other_window(before)
            self.press("Return")
            self.await_other_window(labels)

        self.press("ctrl+shift+e")
        self.await_window("Export as")
        self.press("Return")
        self.await_window("Save the film")
        self.press("Return")
        film = wait_for("the film", lambda: next(
            (file for file in self.home.rglob("*.mp4") if file.name != "match.mp4" and "cache" not in file.parts), None))

        print(f"From the empty list to the film of {MARKS} marks: {self.desktop.keys} keys (limit {MOST_KEYS})")
        self.assertLessEqual(self.desktop.keys, MOST_KEYS)
        wait_for("the message about the film", lambda: self.desktop.active() != project_window)
        self.press("ctrl+q")
        self.assertEqual(program.wait(timeout=20), 0)
        length = subprocess.run(
            ["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", film],
            check=True, text=True, stdout=subprocess.PIPE).stdout
        self.assertGreater(float(length), MARKS)
        (document,) = (self.documents / "Tembrix-Stat/Timelines").glob("*.json")
        lines = json.loads(document.read_text())
        self.assertEqual(sum(len(line["stamps"]) for line in lines), MARKS)


if __name__ == "__main__":
    PROGRAM, MAKER = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
