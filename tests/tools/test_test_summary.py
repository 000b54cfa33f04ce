import contextlib
import io

import test_summary
from planted import PlantedTree

PASSED = '<testcase name="a" status="run"><system-out>fine</system-out></testcase>'
FAILED = '<testcase name="b" status="fail"><failure message=""/></testcase>'
SKIPPED = ('<testcase name="c" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/>'
           "<system-out>SKIPPED: no tray here</system-out></testcase>")
SKIPPED_BY_GTEST = ('<testcase name="d" status="notrun">'
                    '<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>'
                    "<system-out>A.cpp:3: Skipped\nroot reads everything\n</system-out></testcase>")
WITHOUT_PROGRAM = ('<testcase name="e" status="notrun">'
                   '<skipped message="Unable to find executable"/></testcase>')
DISABLED = '<testcase name="f" status="disabled"/>'


def of_class(said, status="run"):
    return f'<testcase name="k/C" status="{status}"><system-out>{said}</system-out></testcase>'


class TestSummary(PlantedTree):
    def summed(self, *cases):
        path = self.plant("results.xml", f"<testsuite>{''.join(cases)}</testsuite>")
        said = io.StringIO()
        with contextlib.redirect_stdout(said):
            status = test_summary.main([f"dev={path}"])
        return status, said.getvalue().splitlines()

    def test_counts_what_passed_and_what_failed(self):
        status, lines = self.summed(PASSED, PASSED, FAILED)
        self.assertEqual((status, lines[-1]), (1, "2 passed, 1 failed"))
        self.assertIn("dev: FAILED b", lines)

    def test_shows_the_end_of_what_a_failed_test_printed(self):
        said = "\n\n".join(f"line {number}" for number in range(100))
        _, lines = self.summed(FAILED.replace("<failure", f"<system-out>{said}</system-out><failure"))
        shown = lines[lines.index("dev: FAILED b") + 1:-1]
        self.assertEqual((shown[0], shown[-1]), ("    line 60", "    line 99"))

    def test_succeeds_when_all_passed(self):
        self.assertEqual(self.summed(PASSED), (0, ["1 passed, 0 failed"]))

    def test_names_each_skipped_test_with_its_reason(self):
        status, lines = self.summed(PASSED, SKIPPED, SKIPPED_BY_GTEST, DISABLED)
        self.assertEqual((status, lines[-1]), (0, "1 passed, 0 failed, 3 skipped"))
        self.assertIn("dev: skipped c: no tray here", lines)
        self.assertIn("dev: skipped d: root reads everything", lines)
        self.assertIn("dev: skipped f: disabled", lines)

    def test_a_test_without_its_program_has_failed(self):
        status, lines = self.summed(PASSED, WITHOUT_PROGRAM)
        self.assertEqual((status, lines[-1]), (1, "1 passed, 1 failed"))

    def test_fails_when_no_test_ran(self):
        self.assertEqual(self.summed()[0], 1)
        self.assertEqual(self.summed(SKIPPED)[0], 1)

    def test_counts_each_test_of_a_program(self):
        status, lines = self.summed(of_class(
            "[3 tests]\n[passed] Suite.a (0.01 s)\nA.cpp:4: Failure\n[failed] Rows/Suite.b/row (0.01 s)"
            "\n[skipped] Suite.c: no display here", "fail"))
        self.assertEqual((status, lines[-1]), (1, "1 passed, 1 failed, 1 skipped"))
        self.assertIn("dev: FAILED k/C.Rows/Suite.b/row", lines)
        self.assertIn("    A.cpp:4: Failure", lines)
        self.assertIn("dev: skipped k/C.Suite.c: no display here", lines)

    def test_counts_each_test_of_a_class(self):
        status, lines = self.summed(PASSED, of_class(
            "CTEST_FULL_OUTPUT\n[3 tests]\n[passed] one (0.61 s)\nwords\n[passed] two (1.00 s)\n"
            "[skipped] three: no tray: none\n"))
        self.assertEqual((status, lines[-1]), (0, "3 passed, 0 failed, 1 skipped"))
        self.assertIn("dev: skipped k/C.three: no tray: none", lines)

    def test_shows_of_a_class_what_its_failed_tests_printed(self):
        status, lines = self.summed(of_class(
            "[3 tests]\nof one\n[failed] one (0.61 s)\nof two\n[passed] two (1.00 s)\nof three\n"
            "[failed] three\nof none\n", "fail"))
        self.assertEqual((status, lines[1:]), (1, [
            "dev: FAILED k/C.one", "    of one", "dev: FAILED k/C.three", "    of three",
            "1 passed, 2 failed"]))

    def test_a_class_whose_tests_were_all_skipped_is_no_success(self):
        status, lines = self.summed(of_class("[1 tests]\n[skipped] one: root\n", "notrun"))
        self.assertEqual((status, lines[-1]), (1, "0 passed, 0 failed, 1 skipped"))

    def test_a_class_that_was_left_before_its_end_has_failed(self):
        for result in ("fail", "run"):
            with self.subTest(result):
                status, lines = self.summed(of_class(
                    "[3 tests]\n[passed] one (0.61 s)\nof two\n", result))
                self.assertEqual((status, lines[1:]), (1, [
                    "dev: FAILED k/C: 1 of 3 tests ended", "    of two", "1 passed, 1 failed"]))

    def test_a_class_without_tests_has_failed(self):
        status, lines = self.summed(PASSED, of_class("[0 tests]\nC has no test\n", "fail"))
        self.assertEqual((status, lines[-1]), (1, "1 passed, 1 failed"))

    def test_a_class_that_failed_in_none_of_its_tests_has_failed(self):
        status, lines = self.summed(of_class("[1 tests]\n[passed] one (0.61 s)\nits end\n", "fail"))
        self.assertEqual((status, lines[1:]), (1, ["dev: FAILED k/C", "    its end",
                                                   "1 passed, 1 failed"]))

    def test_results_that_are_not_there_are_a_failure(self):
        with contextlib.redirect_stdout(io.StringIO()):
            self.assertEqual(test_summary.main([f"dev={self.root}/none.xml"]), 1)
