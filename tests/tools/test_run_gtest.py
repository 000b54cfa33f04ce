import pathlib
import re
import stat
import subprocess
import sys

from planted import PlantedTree

RUNNER = pathlib.Path(__file__).resolve().parents[2] / "tools/run_gtest.py"

# Speaks as a GoogleTest program does: lists its tests, runs those that the flag file names.
PROGRAM = """#!/usr/bin/python3
import os, sys, time
TESTS = {tests}
if "--gtest_list_tests" in sys.argv:
    print("Running main() from gtest_main.cc\\nSuite.")
    for name in TESTS:
        print("  " + name)
    sys.exit(0)
flags = open(sys.argv[-1].partition("=")[2]).read().strip()
failed = 0
for full in flags.partition("=")[2].split(":"):
    name = full.partition(".")[2]
    print(f"[ RUN      ] {{full}}", flush=True)
    outcome = TESTS[name]
    if outcome == "crash":
        os.abort()
    if outcome == "hang":
        time.sleep(600)
    if outcome == "skip":
        print("A.cpp:3: Skipped\\nno display here")
    if outcome == "fail":
        print("A.cpp:4: Failure")
        failed = 1
    word = {{"pass": "[       OK ]", "fail": "[  FAILED  ]", "skip": "[  SKIPPED ]"}}[outcome]
    print(f"{{word}} {{full}} (1 ms)", flush=True)
sys.exit({status} or failed)
"""


class RunGTest(PlantedTree):
    def ran(self, tests, *options, status=0, only=""):
        """Status and lines of the run, without how long each test took."""
        path = self.plant("program", PROGRAM.format(tests=tests, status=status))
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        done = subprocess.run([sys.executable, "-B", RUNNER, *options, path],
                              env={"TAVO_ONLY": only}, capture_output=True, text=True, timeout=60,
                              check=False)
        said = re.sub(r" \(\d+\.\d\d s\)$", "", done.stdout, flags=re.MULTILINE)
        return done.returncode, [line for line in said.splitlines() if line.startswith("[")], said

    def test_says_what_came_of_each_test_and_why(self):
        status, outcomes, said = self.ran({"good": "pass", "bad": "fail", "late": "skip"})
        self.assertEqual((status, outcomes), (1, ["[3 tests]", "[passed] Suite.good",
                                                  "[failed] Suite.bad",
                                                  "[skipped] Suite.late: no display here"]))
        self.assertIn("A.cpp:4: Failure", said)

    def test_succeeds_when_all_passed(self):
        self.assertEqual(self.ran({"good": "pass"})[0], 0)

    def test_is_skipped_when_all_tests_were(self):
        self.assertEqual(self.ran({"late": "skip"})[0], 77)

    def test_a_test_that_ends_the_process_has_failed_and_the_others_run(self):
        status, outcomes, _ = self.ran({"good": "pass", "bad": "crash", "other": "pass"})
        self.assertEqual((status, outcomes), (1, ["[3 tests]", "[passed] Suite.good",
                                                  "[failed] Suite.bad", "[passed] Suite.other"]))

    def test_a_test_that_takes_too_long_has_failed_and_the_others_run(self):
        status, outcomes, _ = self.ran({"bad": "hang", "other": "pass"}, "--seconds=1")
        self.assertEqual((status, outcomes),
                         (1, ["[2 tests]", "[failed] Suite.bad", "[passed] Suite.other"]))

    def test_a_process_that_fails_after_its_tests_has_failed(self):
        self.assertEqual(self.ran({"good": "pass"}, status=23)[:2],
                         (1, ["[1 tests]", "[passed] Suite.good"]))

    def test_a_program_without_tests_has_failed(self):
        self.assertEqual(self.ran({})[:2], (1, ["[0 tests]"]))

    def test_parts_run_each_test_once(self):
        tests = {name: "pass" for name in "abcde"}
        found = [line for part in (1, 2) for line in self.ran(tests, f"--part={part}/2")[1][1:]]
        self.assertEqual(sorted(found), [f"[passed] Suite.{name}" for name in "abcde"])

    def test_one_test_alone_is_run_by_its_name(self):
        self.assertEqual(self.ran({"a": "pass", "b": "fail"}, only="a$")[:2],
                         (0, ["[1 tests]", "[passed] Suite.a"]))
