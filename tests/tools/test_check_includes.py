import check_includes
from planted import PlantedTree

# What a file of a folder must not contain, and the line that it is found by.
FORBIDDEN = (
    ("support/Text.h", '#include "catalogue/AppItem.h"'),
    ("support/Text.cpp", "#include <glib.h>"),
    ("support/Text.cpp", "#include <QString>"),
    ("platform/Workspace.h", '#include "catalogue/AppItem.h"'),
    ("platform/Workspace.h", '#include "platform/linux/opening/LinuxWorkspace.h"'),
    ("platform/Workspace.h", "#include <unistd.h>"),
    ("platform/linux/opening/LinuxWorkspace.cpp", '#include "catalogue/LauncherModel.h"'),
    ("platform/linux/opening/LinuxWorkspace.cpp", '#include "ui/look/Texts.h"'),
    ("platform/linux/opening/LinuxWorkspace.cpp", '#include "platform/macos/Workspace.h"'),
    ("platform/posix/PosixSpawn.cpp", '#include "platform/linux/system/Pidfd.h"'),
    ("platform/qt/QtMainQueue.cpp", '#include "platform/linux/dbus/SessionBus.h"'),
    ("platform/linux/x11/XcbWindows.cpp", '#include "platform/linux/wayland/WaylandSession.h"'),
    ("platform/linux/wayland/WaylandSession.cpp", '#include "platform/linux/x11/XSettings.h"'),
    ("platform/linux/opening/LinuxWorkspace.cpp", '#include "platform/linux/x11/XcbWindows.h"'),
    ("platform/linux/icons/IconTheme.cpp", '#include "platform/linux/x11/XcbWindows.h"'),
    ("platform/linux/store/SqliteDatabase.cpp", '#include "platform/linux/dbus/SessionBus.h"'),
    ("platform/linux/tray/DBusMenu.cpp", '#include "platform/linux/session/WindowListing.h"'),
    ("ui/grid/TileGrid.cpp", '#include "ui/sidebar/SidebarList.h"'),
    ("ui/look/Symbols.cpp", '#include "ui/controls/Sheet.h"'),
    ("ui/editor/CategoryEditor.cpp", '#include "ui/window/LauncherView.h"'),
    ("platform/macos/Workspace.mm", '#import "launching/Opening.h"'),
    ("catalogue/Search.cpp", "#include <QString>"),
    ("catalogue/Search.cpp", "#include <sys/stat.h>"),
    ("catalogue/Search.cpp", "  #  include <unicode/ucol.h>"),
    ("catalogue/Search.cpp", '#include "platform/posix/PosixFileManager.h"'),
    ("catalogue/Search.cpp", '#include "ui/look/Texts.h"'),
    ("catalogue/Search.cpp", '#include "LauncherModel.h"'),
    ("launching/Opening.cpp", "#include <gio/gio.h>"),
    ("launching/Opening.cpp", '#include "app/linux/TavoLauncherApp.h"'),
    ("ui/grid/TileGrid.cpp", '#include "platform/linux/icons/XdgIconSource.h"'),
    ("ui/grid/TileGrid.cpp", '#include "app/linux/TavoLauncherApp.h"'),
    ("app/linux/main.cpp", '#include "tests/fakes/FakeWorkspace.h"'),
    ("ui/grid/TileGrid.cpp", "#ifdef __linux__"),
    ("app/linux/main.cpp", "#if defined(__APPLE__) && 1"),
    ("catalogue/Search.cpp", "#ifndef _WIN32"),
    ("tests/ui/grid/TileGridTest.cpp", "#elif defined(Q_OS_LINUX)"),
)

ALLOWED = (
    ("support/Text.cpp", "#include <unicode/ucol.h>"),
    ("support/Json.cpp", "#include <nlohmann/json.hpp>"),
    ("platform/Workspace.h", '#include "support/Result.h"'),
    ("platform/linux/opening/LinuxWorkspace.cpp", "#include <gio/gio.h>"),
    ("platform/linux/opening/LinuxWorkspace.cpp", "#include <QGuiApplication>"),
    ("platform/linux/opening/LinuxWorkspace.cpp", "#ifdef __linux__"),
    ("platform/linux/opening/LinuxWorkspace.cpp", '#include "platform/posix/PosixSpawn.h"'),
    ("platform/linux/opening/EntryOpening.cpp",
     '#include "platform/linux/x11/StartupNotification.h"'),
    ("platform/linux/session/WindowListing.cpp", '#include "platform/linux/x11/XcbConnection.h"'),
    ("ui/window/LauncherView.cpp", '#include "ui/grid/TileGrid.h"'),
    ("catalogue/Search.cpp", "#include <string_view>"),
    ("catalogue/Search.cpp", '#include "launching/ProcessPattern.h"'),
    ("catalogue/Search.cpp", '#include "platform/Workspace.h"'),
    ("ui/grid/TileGrid.cpp", '#include "catalogue/LauncherModel.h"'),
    ("ui/grid/TileGrid.cpp", "#include <QWidget>"),
    ("app/linux/main.cpp", '#include "platform/linux/opening/LinuxWorkspace.h"'),
    ("tests/catalogue/SearchTest.cpp", '#include "ui/look/Texts.h"'),
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

    def test_finds_a_source_that_does_not_include_its_own_header_first(self):
        self.plant("ui/look/Symbols.h", "#pragma once\n")
        self.plant("ui/look/Symbols.cpp", '#include <QString>\n#include "ui/look/Symbols.h"\n')
        found = check_includes.check(self.root)
        self.assertEqual(len(found), 1, found)
        self.assertTrue(found[0].startswith("ui/look/Symbols.cpp:1: "), found)

    def test_finds_a_file_outside_the_rooms(self):
        self.plant("platform/linux/Hall.h", "#pragma once\n")
        found = check_includes.check(self.root)
        self.assertEqual(len(found), 1, found)
        self.assertTrue(found[0].startswith("platform/linux/Hall.h:1: "), found)

    def test_finds_a_room_of_too_many_files_or_lines(self):
        for number in range(check_includes.MOST_FILES):
            self.plant(f"ui/look/Look{number}.h", "#pragma once\n")
        self.assertEqual(check_includes.check(self.root), [])
        path = self.plant("ui/look/OneMore.h", "#pragma once\n")
        self.assertEqual(len(check_includes.check(self.root)), 1)
        path.unlink()
        self.plant("ui/look/Look0.h", "#pragma once\n" * check_includes.MOST_LINES)
        self.assertEqual(len(check_includes.check(self.root)), 1)

    def test_fails_on_a_bad_tree_and_passes_a_good_one(self):
        self.plant("catalogue/Search.cpp", "#include <string>\n")
        self.assertEqual(check_includes.main([str(self.root)]), 0)
        self.plant("catalogue/Marks.cpp", "#include <QString>\n")
        self.assertEqual(check_includes.main([str(self.root)]), 1)
