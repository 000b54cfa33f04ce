import pathlib
import subprocess

from planted import PlantedTree

LINTER = pathlib.Path(__file__).resolve().parents[2] / "tools/lint_commit.sh"

GOOD = ("catalogue: Keep the selection when its category is renamed", "ui, app: Show the window once",
        "platform/linux/x11: Ask the server once", ".ci: Build the package too",
        "README: Say what is not built yet", "Merge branch 'main'")

BAD = (("Keep the selection", "no folder"), ("catalogue: keep it", "no capital letter"),
       ("catalogue: Keeps the selection.", "a full stop"), ("catalogue: Fixed it", "not imperative"),
       ("catalogue: Keep " + "x" * 60, "longer than 72 columns"))


class LintCommit(PlantedTree):
    def status_of(self, subject):
        path = self.plant("message", f"{subject}\n\nWhy.\n")
        return subprocess.run(["bash", LINTER, "--message", path], capture_output=True,
                              check=False).returncode

    def test_lets_good_subjects_pass(self):
        for subject in GOOD:
            with self.subTest(subject):
                self.assertEqual(self.status_of(subject), 0)

    def test_finds_each_fault_of_a_subject(self):
        for subject, fault in BAD:
            with self.subTest(fault):
                self.assertEqual(self.status_of(subject), 1)
