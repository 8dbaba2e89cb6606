"""Tests of the scripts in tools/."""
import os
import pathlib
import pty
import shutil
import subprocess
import tempfile
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"


class BuildProgress(unittest.TestCase):
    MESSAGES = "".join(f"[{step}/40] Building part_{step}.o\n" for step in range(1, 41)) + "warning: something\n"

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.log = pathlib.Path(folder.name) / "log"

    def shown(self, messages, **output):
        return subprocess.run([TOOLS / "build_progress", self.log], input=messages, text=True, check=True, **output)

    def test_a_terminal_shows_one_line_that_is_updated(self):
        master, terminal = pty.openpty()
        self.shown(self.MESSAGES, stdout=terminal)
        os.close(terminal)
        text = os.read(master, 1 << 16).decode()
        os.close(master)
        self.assertIn("step 1 of 40", text)
        self.assertIn("step 40 of 40", text)
        self.assertNotIn("\n", text)
        self.assertNotIn("part_", text)
        self.assertTrue(text.endswith("\r\x1b[K"), "the line is cleared at the end")

    def test_a_file_gets_a_line_at_each_quarter_and_the_log_gets_everything(self):
        lines = self.shown(self.MESSAGES, stdout=subprocess.PIPE).stdout.splitlines()
        self.assertEqual([line.split(",")[0] for line in lines],
                         [f"Building: step {step} of 40" for step in (10, 20, 30, 40)])
        self.assertEqual(self.log.read_text(), self.MESSAGES)

    def test_a_short_build_says_nothing_in_a_file(self):
        self.assertEqual(self.shown("[0/1] Re-running\n[1/2] a\n[2/2] b\n", stdout=subprocess.PIPE).stdout, "")


class Layers(unittest.TestCase):
    """A small tree with one folder in each of three layers."""

    FILES = {
        "core/CMakeLists.txt": "add_subdirectory(records)\nadd_subdirectory(timeline)\n",
        "base/uuid.h": "#pragma once\nstruct Uuid {\n};\n",
        "core/records/stamp.h": '#pragma once\n#include "base/uuid.h"\nstruct Stamp {\n    Uuid id;\n};\n',
        "core/timeline/store.h": '#pragma once\n#include "core/records/stamp.h"\nstruct Store {\n    Stamp stamp;\n};\n',
        "core/timeline/store.cpp": '#include "core/timeline/store.h"\nStamp copy(const Store& s) { return s.stamp; }\n',
    }

    def check(self, changes, *options):
        """The problems of the tree with changed files; afterwards `self.files` has the texts of the files."""
        root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, root)
        for name, text in {**self.FILES, **changes}.items():
            (root / "src" / name).parent.mkdir(parents=True, exist_ok=True)
            (root / "src" / name).write_text(text)
        run = subprocess.run([TOOLS / "check_layers", root, *options], stdout=subprocess.PIPE, text=True)
        self.files = {name: (root / "src" / name).read_text() for name in {**self.FILES, **changes}}
        problems = run.stdout.splitlines()[:-1]
        self.assertEqual(run.returncode, bool(problems))
        return problems

    def test_a_sound_tree_has_no_problems(self):
        self.assertEqual(self.check({}), [])

    def test_a_file_includes_what_it_names(self):
        named = {"core/timeline/store.cpp": '#include "core/timeline/store.h"\nUuid idOf(const Store&);\n'}
        self.assertEqual(self.check(named),
                         ["src/core/timeline/store.cpp: names Uuid and does not include base/uuid.h"])
        self.assertEqual(self.check(named, "--add-includes"), [])
        self.assertIn('#include "base/uuid.h"\n', self.files["core/timeline/store.cpp"])

    def test_declared_own_and_quoted_names_need_no_include(self):
        self.assertEqual(self.check({
            "core/timeline/store.cpp": '#include "core/timeline/store.h"\n'
            "struct Uuid;\nUuid* find(const Store&);  // a Uuid\n",
            "core/timeline/query.h": "#pragma once\nclass Query {\n    struct Stamp {\n    };\n    Stamp at();\n};\n",
            "core/timeline/list.h": '#pragma once\ntemplate <class Stamp>\nStamp first(const char* = "Uuid");\n',
        }), [])

    def test_wrong_directions_and_cycles_are_found(self):
        wrong = self.check({
            "base/text.h": '#pragma once\n#include "core/records/stamp.h"\n',
            "core/records/late.h": '#pragma once\n#include "core/timeline/store.h"\n#include <QString>\n',
        })
        for part in ("base must not include core/records/stamp.h", "core must not include <QString>",
                     "core/records must not include the higher core/timeline", "cycle of folders"):
            self.assertTrue(any(part in problem for problem in wrong), part)


if __name__ == "__main__":
    unittest.main()
