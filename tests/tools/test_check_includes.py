import check_includes
from planted import PlantedTree

# What a file of a folder must not contain, and the line that it is found by.
FORBIDDEN = (
    ("support/Text.h", '#include "catalogue/AppItem.h"'),
    ("support/Text.cpp", "#include <glib.h>"),
    ("support/Text.cpp", "#include <QString>"),
    ("platform/Workspace.h", '#include "catalogue/AppItem.h"'),
    ("platform/Workspace.h", '#include "platform/linux/GioWorkspace.h"'),
    ("platform/Workspace.h", "#include <unistd.h>"),
    ("platform/linux/GioWorkspace.cpp", '#include "catalogue/LauncherModel.h"'),
    ("platform/linux/GioWorkspace.cpp", '#include "ui/Texts.h"'),
    ("platform/linux/GioWorkspace.cpp", '#include "platform/macos/Workspace.h"'),
    ("platform/macos/Workspace.mm", '#import "launching/Opening.h"'),
    ("catalogue/Search.cpp", "#include <QString>"),
    ("catalogue/Search.cpp", "#include <sys/stat.h>"),
    ("catalogue/Search.cpp", "  #  include <unicode/ucol.h>"),
    ("catalogue/Search.cpp", '#include "platform/linux/PosixFileManager.h"'),
    ("catalogue/Search.cpp", '#include "ui/Texts.h"'),
    ("catalogue/Search.cpp", '#include "LauncherModel.h"'),
    ("launching/Opening.cpp", "#include <gio/gio.h>"),
    ("launching/Opening.cpp", '#include "app/TavoLauncherApp.h"'),
    ("ui/TileGrid.cpp", '#include "platform/linux/ThemeIconSource.h"'),
    ("ui/TileGrid.cpp", '#include "app/TavoLauncherApp.h"'),
    ("app/main.cpp", '#include "tests/fakes/FakeWorkspace.h"'),
    ("ui/TileGrid.cpp", "#ifdef __linux__"),
    ("app/main.cpp", "#if defined(__APPLE__) && 1"),
    ("catalogue/Search.cpp", "#ifndef _WIN32"),
    ("tests/ui/TileGridTest.cpp", "#elif defined(Q_OS_LINUX)"),
)

ALLOWED = (
    ("support/Text.cpp", "#include <unicode/ucol.h>"),
    ("support/Json.cpp", "#include <nlohmann/json.hpp>"),
    ("platform/Workspace.h", '#include "support/Result.h"'),
    ("platform/linux/GioWorkspace.cpp", "#include <gio/gio.h>"),
    ("platform/linux/GioWorkspace.cpp", "#include <QGuiApplication>"),
    ("platform/linux/GioWorkspace.cpp", "#ifdef __linux__"),
    ("catalogue/Search.cpp", "#include <string_view>"),
    ("catalogue/Search.cpp", '#include "launching/ProcessPattern.h"'),
    ("catalogue/Search.cpp", '#include "platform/Workspace.h"'),
    ("ui/TileGrid.cpp", '#include "catalogue/LauncherModel.h"'),
    ("ui/TileGrid.cpp", "#include <QWidget>"),
    ("app/main.cpp", '#include "platform/linux/GioWorkspace.h"'),
    ("tests/catalogue/SearchTest.cpp", '#include "ui/Texts.h"'),
    ("catalogue/Search.cpp", "// #include <QString>"),
    ("catalogue/Search.cpp", "#if 0"),
)


class CheckIncludes(PlantedTree):
    def test_finds_each_forbidden_line_in_a_planted_tree(self):
        for name, line in FORBIDDEN:
            with self.subTest(file=name, line=line):
                path = self.plant(name, f"// A file.\n{line}\n")
                found = check_includes.check(self.root)
                self.assertEqual(len(found), 1, found)
                self.assertTrue(found[0].startswith(f"{name}:2: "), found)
                path.unlink()

    def test_lets_pass_what_the_rules_allow(self):
        for name, line in ALLOWED:
            with self.subTest(file=name, line=line):
                path = self.plant(name, f"{line}\n")
                self.assertEqual(check_includes.check(self.root), [])
                path.unlink()

    def test_fails_on_a_bad_tree_and_passes_a_good_one(self):
        self.plant("catalogue/Search.cpp", "#include <string>\n")
        self.assertEqual(check_includes.main([str(self.root)]), 0)
        self.plant("catalogue/Marks.cpp", "#include <QString>\n")
        self.assertEqual(check_includes.main([str(self.root)]), 1)
