import pathlib
import re
import subprocess
import sys

from planted import PlantedTree

RUNNER = pathlib.Path(__file__).resolve().parents[2] / "tools/run_python_test.py"


class RunPythonTest(PlantedTree):
    def ran(self, text, *arguments, only=""):
        """Status and lines of the run of class C, without how long each test took."""
        path = self.plant("test_planted.py", "import os, signal, sys, time, unittest\n" + text)
        done = subprocess.run([sys.executable, "-B", RUNNER, path, "C", *arguments],
                              env={"TAVO_ONLY": only}, capture_output=True, text=True, timeout=60)
        lines = re.sub(r" \(\d+\.\d\d s\)$", "", done.stdout, flags=re.MULTILINE).splitlines()
        return done.returncode, [line for line in lines if line.startswith("[")], lines

    def test_says_what_came_of_each_test_and_why(self):
        status, outcomes, lines = self.ran(
            "class C(unittest.TestCase):\n"
            "    def test_good(self): print('said by good')\n"
            "    def test_bad(self): self.fail('the reason')\n"
            "    def test_skipped(self): self.skipTest('no\\n tray')\n")
        self.assertEqual((status, outcomes), (1, ["[3 tests]", "[passed] good", "[failed] bad",
                                                  "[skipped] skipped: no tray"]))
        self.assertLess(lines.index("said by good"), lines.index("[passed] good"))
        self.assertLess(lines.index("AssertionError: the reason"), lines.index("[failed] bad"))

    def test_a_failed_sub_test_fails_its_test_alone(self):
        status, outcomes, _ = self.ran(
            "class C(unittest.TestCase):\n"
            "    def test_bad(self):\n"
            "        with self.subTest(1): self.fail()\n"
            "    def test_good(self): pass\n")
        self.assertEqual((status, outcomes), (1, ["[2 tests]", "[failed] bad", "[passed] good"]))

    def test_succeeds_when_some_passed_and_the_others_were_skipped(self):
        body = ("class C(unittest.TestCase):\n"
                "    def test_skipped(self): self.skipTest('why')\n")
        self.assertEqual(self.ran(body)[0], 77)
        self.assertEqual(self.ran(body + "    def test_good(self): pass\n")[0], 0)

    def test_a_class_without_a_test_has_failed(self):
        self.assertEqual(self.ran("class C(unittest.TestCase): pass\n")[:2], (1, ["[0 tests]"]))

    def test_tests_of_a_class_of_the_same_file_are_run_too_and_of_no_other(self):
        self.plant("another.py", "import unittest\n"
                                 "class Another(unittest.TestCase):\n"
                                 "    def test_another(self): pass\n")
        status, outcomes, _ = self.ran(
            "from another import Another\n"
            "class B(Another):\n    def test_base(self): pass\n"
            "class C(B):\n    def test_own(self): pass\n")
        self.assertEqual((status, outcomes), (0, ["[2 tests]", "[passed] base", "[passed] own"]))

    def test_one_test_alone_is_run_by_its_name(self):
        body = "class C(unittest.TestCase):\n    def test_a(self): pass\n    def test_b(self): pass\n"
        self.assertEqual(self.ran(body, only="^b")[:2], (0, ["[1 tests]", "[passed] b"]))
        self.assertEqual(self.ran(body, only="x")[:2], (1, ["[0 tests]"]))

    def test_a_test_that_ends_the_process_has_failed_and_the_others_run(self):
        status, outcomes, lines = self.ran(
            "class C(unittest.TestCase):\n"
            "    def test_a(self): pass\n"
            "    def test_b(self): os.kill(os.getpid(), signal.SIGKILL)\n"
            "    def test_c(self): os._exit(0)\n"
            "    def test_d(self): pass\n")
        self.assertEqual((status, outcomes), (1, ["[4 tests]", "[passed] a", "[failed] b",
                                                  "[failed] c", "[passed] d"]))
        self.assertIn("the process of this test ended with signal 9", lines)

    def test_a_test_that_takes_too_long_has_failed_and_the_others_run(self):
        status, outcomes, lines = self.ran(
            "class C(unittest.TestCase):\n"
            "    def test_a(self): time.sleep(60)\n"
            "    def test_b(self): pass\n", "1")
        self.assertEqual((status, outcomes), (1, ["[2 tests]", "[failed] a", "[passed] b"]))
        self.assertIn("test_a took longer than 1 s: interrupted", lines)

    def test_a_class_whose_end_fails_has_failed(self):
        status, outcomes, lines = self.ran(
            "class C(unittest.TestCase):\n"
            "    @classmethod\n    def tearDownClass(cls): raise ValueError('at the end')\n"
            "    def test_a(self): pass\n")
        self.assertEqual((status, outcomes), (1, ["[1 tests]", "[passed] a"]))
        self.assertIn("ValueError: at the end", lines)

    def test_a_class_whose_beginning_fails_has_failed(self):
        status, outcomes, lines = self.ran(
            "class C(unittest.TestCase):\n"
            "    @classmethod\n    def setUpClass(cls): raise ValueError('at the start')\n"
            "    def test_a(self): pass\n    def test_b(self): pass\n")
        self.assertEqual((status, outcomes), (1, ["[2 tests]", "[failed] a", "[failed] b"]))
        self.assertIn("ValueError: at the start", lines)

    def test_a_used_up_process_is_followed_by_another(self):
        status, outcomes, lines = self.ran(
            "class C(unittest.TestCase):\n"
            "    def process_is_used_up(self): return self.id().endswith('b')\n"
            "    def test_a(self): print('in', os.getpid())\n"
            "    def test_b(self): print('in', os.getpid())\n"
            "    def test_c(self): print('in', os.getpid())\n")
        self.assertEqual((status, outcomes), (0, ["[3 tests]", "[passed] a", "[passed] b",
                                                  "[passed] c"]))
        first, second, third = [line for line in lines if line.startswith("in ")]
        self.assertEqual(first, second)
        self.assertNotEqual(second, third)
