import itertools

from accessible import await_node, children, role_of, walk
from gi.repository import Atspi
from harness import DesktopTest, Store, has_state, press, wait_until

import wide_font


def find_around_lists(node, role, name):
    """Like find, but into no list: of thousands of rows, each offers thousands of positions."""
    if (role_of(node), node.get_name()) == (role, name):
        return node
    if node.get_role_name() == "list":
        return None
    return next(filter(None, (find_around_lists(child, role, name) for child in children(node))),
                None)


class Names(DesktopTest):
    NAMES = ("W" * 10_000, "parola " * 1_428 + "fine", "<b>Grassetto</b> &amp; <img src=x>",
             "👩‍👩‍👧‍👦🏳️‍🌈" * 40, "שלום עולם مرحبا بالعالم " * 20 + "x", "abc\u202Efdp.exe",
             "e" + "\u0301" * 5_000 + " fine", r"prima\nseconda\tterza", "a\x01\x1b[31mz", "a\0b",
             "a\udcffb")  # a byte that is no UTF-8

    def test_entries_of_any_name_are_listed_and_can_be_opened(self):
        mark = self.desktop.folder / "ran"
        program = self.desktop.script("ran", f"echo x >>'{mark}'")
        for number, name in enumerate(self.NAMES):
            self.desktop.entry(name, id=f"entry-{number}", Exec=program)
        launcher = self.launch()
        launcher.await_equal(launcher.footer, f"{len(self.NAMES)} app")
        for number, name in enumerate(launcher.tiles(), 1):
            with self.subTest(name=name[:40]):
                launcher.press("list item", f"Apri {name}")
                wait_until(lambda: mark.exists() and mark.read_text().count("x") == number,
                           "the application to run")
        self.assertEqual(len(self.desktop.store.read(Store.RECENTS)), len(self.NAMES))
        self.assertEqual(launcher.quit(), 0)

    def test_categories_of_any_name_are_listed_and_survive_the_editor(self):
        stored = [name.encode(errors="replace").decode() for name in self.NAMES]
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": f"id{number}", "name": name} for number, name in enumerate(stored)])
        self.desktop.store.write(Store.RULES, {"id0": "parola, " * 12_500})
        self.desktop.entry("Ananas")
        launcher = self.launch()
        self.assertEqual(len(launcher.rows()), 4 + len(stored))
        launcher.press("push button", "Modifica categorie")
        launcher.press("push button", "Salva")
        launcher.await_equal(lambda: launcher.node("dialog", "Modifica categorie"), None)
        kept = [category["name"] for category in self.desktop.store.read(Store.CATEGORIES)]
        self.assertEqual(kept, [name.strip() for name in stored])
        self.assertEqual(self.desktop.store.read(Store.RULES), {"id0": "parola, " * 12_500})
        self.assertEqual(launcher.quit(), 0)


class Trees(DesktopTest):
    def test_circles_and_orphans_are_listed_at_the_end(self):
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": "x", "name": "Uno", "parentID": "y"}, {"id": "y", "name": "Due", "parentID": "x"},
            {"id": "o", "name": "Orfana", "parentID": "nobody"}, {"id": "t", "name": "Cima"},
            {"id": "s", "name": "Doppia"}, {"id": "s2", "name": "Doppia"}])
        launcher = self.launch()
        self.assertEqual(launcher.rows()[4:], ["Cima", "Doppia", "Doppia", "Uno", "Due", "Orfana"])

    def test_five_thousand_categories_are_listed_and_can_be_edited(self):
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": f"id{number}", "name": f"Categoria {number}"} for number in range(5_000)])
        launcher = self.launch()
        self.assertEqual(launcher.node("list", "Categorie").get_child_count(), 5_004)
        press(launcher.node("push button", "Modifica categorie"))
        dialog = await_node(lambda: self.around_lists(launcher, "dialog", "Modifica categorie"),
                            "the editor")
        rows = find_around_lists(dialog, "list", "Categorie")
        self.assertEqual(rows.get_child_count(), 5_000)
        press(find_around_lists(dialog, "push button", "Salva"))
        await_node(lambda: not self.around_lists(launcher, "dialog", "Modifica categorie"),
                   "the editor to be gone")
        self.assertEqual(len(self.desktop.store.read(Store.CATEGORIES)), 5_000)

    def around_lists(self, launcher, role, name):
        return find_around_lists(launcher.root(), role, name)

    def test_the_editor_over_two_categories_of_one_id_ends_the_program_and_touches_nothing(self):
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": "same", "name": "Prima"}, {"id": "other", "name": "Altra"},
            {"id": "same", "name": "Seconda"}])
        launcher = self.launch()
        self.assertEqual(launcher.rows()[4:], ["Prima", "Altra"])
        folder = self.desktop.store.path.parent
        before = {path.name: path.read_bytes() for path in folder.iterdir()}
        button = launcher.await_node("push button", "Modifica categorie")
        said = len(self.desktop.log())
        self.desktop.click(button)
        self.assertEqual(launcher.process.wait(timeout=20), 1)
        self.assertEqual(self.desktop.log()[said:], "Duplicate values for key: 'same'\n")
        after = {path.name: path.read_bytes() for path in folder.iterdir()}
        self.assertEqual(after, before)


class Frames(DesktopTest):
    """Every size, and the widest interface font: no control overlaps another or leaves the window."""

    size = (3840, 2160)
    CONTROLS = {"push button", "text", "label", "list", "link", "combo box"}

    def resize(self, launcher, width, height):
        self.desktop.run("wmctrl", "-i", "-r", hex(int(launcher.window_id())), "-e",
                         f"0,0,0,{width},{height}")
        wait_until(lambda: launcher.size() == (width, height), f"the size {width} × {height}")

    def boxes(self, root):
        """Each control that is shown, with its place."""
        found = []
        for node in walk(root):
            if role_of(node) in self.CONTROLS and has_state(node, Atspi.StateType.SHOWING):
                box = node.get_extents(Atspi.CoordType.WINDOW)
                found.append((f"{role_of(node)} “{node.get_name()[:40]}”",
                              (box.x, box.y, box.x + box.width, box.y + box.height)))
        return found

    def assert_in_order(self, launcher, root, size):
        boxes = self.boxes(root)
        self.assertGreater(len(boxes), 3)
        for name, (left, top, right, bottom) in boxes:
            self.assertTrue(0 <= left < right <= size[0] and 0 <= top < bottom <= size[1],
                            f"{name} at {left},{top} to {right},{bottom} in {size}")
        for (name, a), (other, b) in itertools.combinations(boxes, 2):
            apart = a[2] <= b[0] or b[2] <= a[0] or a[3] <= b[1] or b[3] <= a[1]
            self.assertTrue(apart, f"{name} {a} overlaps {other} {b}")

    def width_of_credit(self, launcher):
        credit = launcher.await_node("push button", "Powered by qt.io")
        return credit.get_extents(Atspi.CoordType.WINDOW).width

    def walk_through(self, environment, *sizes):
        for number in range(60):
            self.desktop.entry(f"Applicazione dal nome lungo {number}")
        launcher = self.launch(**environment)
        for size in sizes:
            with self.subTest(size=size):
                self.resize(launcher, *size)
                launcher.await_equal(launcher.footer, "60 app")
                self.assert_in_order(launcher, launcher.node("frame", "Tavo Launcher"), size)
        width = self.width_of_credit(launcher)
        self.assertEqual(launcher.quit(), 0)
        return width

    def test_nothing_overlaps_in_the_smallest_and_in_a_very_large_window(self):
        self.walk_through({}, (760, 520), (3840, 2160), (980, 640))

    def test_nothing_overlaps_with_a_font_half_as_wide_again(self):
        usual = wide_font.configuration(self.desktop.folder / "usual", 1.0)
        wide = wide_font.configuration(self.desktop.folder / "wide", 1.5)
        before = self.walk_through(usual, (760, 520))
        after = self.walk_through(wide, (760, 520), (980, 640), (3840, 2160))
        self.assertGreater(after, 1.35 * before, "the font was not taken")

    def test_the_editor_fits_into_the_smallest_window_with_a_font_half_as_wide_again(self):
        environment = wide_font.configuration(self.desktop.folder / "wide", 1.5)
        launcher = self.launch(**environment)
        self.resize(launcher, 760, 520)
        launcher.press("push button", "Modifica categorie")
        dialog = launcher.await_node("dialog", "Modifica categorie")
        controls = [box for box in self.boxes(dialog) if not box[0].startswith("list")]
        self.assertIn("push button “Salva”", [name for name, _ in controls])
        for (name, a), (other, b) in itertools.combinations(controls, 2):
            apart = a[2] <= b[0] or b[2] <= a[0] or a[3] <= b[1] or b[3] <= a[1]
            self.assertTrue(apart, f"{name} {a} overlaps {other} {b}")
