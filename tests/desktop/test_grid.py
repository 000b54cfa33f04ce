import time

from harness import Atspi, DesktopTest, Store, has_state, press, wait_until
from accessible import children, role_of
from gi.repository import GLib

ADD, REMOVE = "Aggiungi ai preferiti", "Rimuovi dai preferiti"
NAMES = [f"App {number:02}" for number in range(60)]


class Heard:
    """What a screen reader is told while it listens: (what happened, role and name of whom)."""

    KINDS = ("object:children-changed", "object:state-changed:focused",
             "object:state-changed:selected", "object:property-change:accessible-name")

    def __init__(self):
        self._events = []
        self._listener = Atspi.EventListener.new(self._hear)
        for kind in self.KINDS:
            self._listener.register(kind)

    def _hear(self, event):
        try:
            source = f"{role_of(event.source)} {event.source.get_name()}"
        except GLib.Error:  # gone before it could be asked
            source = "gone"
        self._events.append((event.type, event.detail1, source))

    def take(self):
        """What was told since it was last asked."""
        context = GLib.MainContext.default()
        while context.pending():
            context.iteration(False)
        taken, self._events[:] = list(self._events), []
        return taken

    def end(self):
        for kind in self.KINDS:
            self._listener.deregister(kind)


class Grid(DesktopTest):
    def setUp(self):
        super().setUp()
        self.paths = {name: str(self.desktop.entry(name)) for name in NAMES}

    def launch_full(self, names=NAMES):
        launcher = self.launch()
        launcher.await_tiles(names)
        return launcher

    def item(self, launcher, name) -> Atspi.Accessible:
        return launcher.await_node("list item", f"Apri {name}")

    def stars(self, launcher):
        """The applications whose star is in the tree, with what it offers."""
        return {item.get_name().removeprefix("Apri "): [star.get_name() for star in children(item)]
                for item in children(launcher.node("list", "App")) if item.get_child_count() > 0}

    def focused(self, launcher):
        return [item.get_name().removeprefix("Apri ")
                for item in children(launcher.node("list", "App"))
                if has_state(item, Atspi.StateType.FOCUSED)]

    def await_focused(self, launcher, name):
        launcher.await_equal(lambda: self.focused(launcher), [name])

    def await_stars(self, launcher, wanted):
        launcher.await_equal(lambda: self.stars(launcher), wanted)

    def enter(self, launcher):
        """The keyboard goes to the first tile."""
        self.desktop.key("ctrl+f", "Down")
        self.await_focused(launcher, launcher.tiles()[0])

    def point_at(self, node):
        box = node.get_extents(Atspi.CoordType.SCREEN)
        self.desktop.move_pointer(box.x + box.width // 2, box.y + 30)

    def point_nowhere(self):
        self.desktop.move_pointer(2, 2)

    def act(self, node, action):
        names = [node.get_action_name(index) for index in range(node.get_n_actions())]
        node.do_action(names.index(action))

    def in_view(self, launcher, name):
        box = self.item(launcher, name).get_extents(Atspi.CoordType.SCREEN)
        whole = launcher.node("list", "App").get_extents(Atspi.CoordType.SCREEN)
        return whole.y <= box.y and box.y + box.height <= whole.y + whole.height


class GridForScreenReaders(Grid):
    def test_every_application_is_an_item_with_its_actions_in_view_or_not(self):
        launcher = self.launch_full()
        for name in (NAMES[0], NAMES[-1]):
            with self.subTest(name=name):
                item = self.item(launcher, name)
                self.assertEqual([item.get_action_name(i) for i in range(item.get_n_actions())],
                                 ["Press", "SetFocus", "ShowMenu"])
                self.assertEqual(has_state(item, Atspi.StateType.SHOWING),
                                 self.in_view(launcher, name))
        self.assertFalse(self.in_view(launcher, NAMES[-1]))

    def test_an_item_given_the_keyboard_comes_into_view(self):
        launcher = self.launch_full()
        for ask in (lambda item: self.act(item, "SetFocus"),
                    lambda item: item.get_component_iface().grab_focus()):
            self.desktop.key("ctrl+f", "Down")
            ask(self.item(launcher, NAMES[50]))
            self.await_focused(launcher, NAMES[50])
            self.assertTrue(self.in_view(launcher, NAMES[50]))
            self.assertTrue(has_state(self.item(launcher, NAMES[50]), Atspi.StateType.SELECTED))

    def test_the_last_word_on_focus_is_the_item(self):
        launcher = self.launch_full()
        heard = Heard()
        self.addCleanup(heard.end)
        self.enter(launcher)
        launcher.await_equal(lambda: [who for kind, on, who in heard.take()
                                      if kind.endswith("focused") and on][-1:],
                             [f"list item Apri {NAMES[0]}"])
        self.desktop.key("Right")
        self.await_focused(launcher, NAMES[1])
        told = heard.take()
        self.assertIn(("object:state-changed:focused", 1, f"list item Apri {NAMES[1]}"), told)
        self.assertIn(("object:state-changed:selected", 1, f"list item Apri {NAMES[1]}"), told)
        self.assertIn(("object:state-changed:selected", 0, f"list item Apri {NAMES[0]}"), told)

    def test_a_star_comes_with_the_pointer_and_is_told(self):
        launcher = self.launch_full()
        self.point_nowhere()
        self.await_stars(launcher, {})
        heard = Heard()
        self.addCleanup(heard.end)
        self.point_at(self.item(launcher, NAMES[3]))
        self.await_stars(launcher, {NAMES[3]: [ADD]})
        self.assertIn(f"list item Apri {NAMES[3]}",
                      [who for kind, _, who in heard.take() if kind.endswith("changed:add")])
        self.point_at(self.item(launcher, NAMES[4]))
        self.await_stars(launcher, {NAMES[4]: [ADD]})
        self.assertIn(f"list item Apri {NAMES[3]}",
                      [who for kind, _, who in heard.take() if kind.endswith("changed:remove")])
        self.point_nowhere()
        self.await_stars(launcher, {})

    def test_pressing_the_star_marks_and_the_star_stays_the_same_object(self):
        launcher = self.launch_full()
        self.point_at(self.item(launcher, NAMES[3]))
        self.await_stars(launcher, {NAMES[3]: [ADD]})
        heard = Heard()
        self.addCleanup(heard.end)
        item = self.item(launcher, NAMES[3])
        star = children(item)[0]
        self.assertEqual(role_of(star), "push button")
        press(star)
        self.await_stars(launcher, {NAMES[3]: [REMOVE]})
        self.assertEqual(self.desktop.store.read(Store.FAVORITES), [self.paths[NAMES[3]]])
        self.assertEqual(children(item)[0], star)
        told = heard.take()
        self.assertIn(("object:property-change:accessible-name", 0, f"push button {REMOVE}"), told)
        self.assertEqual([event for event in told if "children-changed" in event[0]], [])
        self.point_nowhere()
        self.await_stars(launcher, {NAMES[3]: [REMOVE]})
        press(children(self.item(launcher, NAMES[3]))[0])
        self.await_stars(launcher, {})
        self.assertEqual(self.desktop.store.read(Store.FAVORITES), [])

    def test_items_that_stay_keep_their_place_while_the_list_narrows(self):
        launcher = self.launch_full()
        before = {item.get_name(): item for item in children(launcher.node("list", "App"))}
        self.desktop.type("app 5")
        launcher.await_tiles([name for name in NAMES if name.startswith("App 5")])
        for item in children(launcher.node("list", "App")):
            self.assertEqual(item, before[item.get_name()])
        self.desktop.key("Escape")
        launcher.await_tiles(NAMES)

    def test_the_menu_opens_at_the_tile_from_the_tree(self):
        launcher = self.launch_full()
        self.point_nowhere()
        self.act(self.item(launcher, NAMES[50]), "ShowMenu")
        wait_until(lambda: self.in_view(launcher, NAMES[50]), "the tile to come into view")
        menu = launcher.await_menu(NAMES[50]).get_extents(Atspi.CoordType.SCREEN)
        box = self.item(launcher, NAMES[50]).get_extents(Atspi.CoordType.SCREEN)
        self.assertTrue(box.x <= menu.x <= box.x + box.width, (menu.x, box.x))
        self.assertTrue(box.y <= menu.y <= box.y + box.height, (menu.y, box.y))
        self.desktop.key("Escape")
        launcher.await_no_menu()

    def test_the_rows_of_the_sidebar_say_their_level_and_who_is_selected(self):
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": "parent", "name": "Madre"}, {"id": "child", "name": "Figlia",
                                                "parentID": "parent"}])
        launcher = self.launch_full()
        self.assertEqual(launcher.node("list item", "Madre").get_description(), "")
        self.assertEqual(launcher.node("list item", "Figlia").get_description(), "Livello 2")
        heard = Heard()
        self.addCleanup(heard.end)
        launcher.press("list item", "Figlia")
        launcher.await_equal(launcher.selected_row, "Figlia")
        told = heard.take()
        self.assertIn(("object:state-changed:selected", 1, "list item Figlia"), told)
        self.assertIn(("object:state-changed:selected", 0, "list item Tutte"), told)
        self.assertEqual([who for kind, _, who in told
                          if "children-changed" in kind and "Categorie" in who], [])


class GridWithThousands(DesktopTest):
    def test_walking_five_thousand_items_freezes_nothing(self):
        names = [f"App {number:04}" for number in range(5000)]
        for name in names:
            self.desktop.entry(name)
        launcher = self.launch()
        launcher.await_equal(launcher.footer, "5000 app")
        start = time.monotonic()
        items = children(launcher.node("list", "App"))
        self.assertEqual([item.get_name() for item in items], [f"Apri {name}" for name in names])
        print(f"5,000 items read in {time.monotonic() - start:.2f} s")
        # With everything known to the screen reader, typing is still quick.
        start = time.monotonic()
        self.desktop.type("4999")
        launcher.await_tiles(["App 4999"])
        self.desktop.key("Escape")
        launcher.await_equal(launcher.footer, "5000 app")
        print(f"searched and back in {time.monotonic() - start:.2f} s")
        self.assertEqual(launcher.node("list", "App").get_child_count(), 5000)


class GridByKeyboard(Grid):
    def test_the_keyboard_walks_the_grid_by_where_the_tiles_stand(self):
        launcher = self.launch_full()
        self.enter(launcher)
        for key, index in (("Right", 1), ("Down", 7), ("Left", 6), ("Up", 0), ("End", 59),
                           ("Home", 0)):
            with self.subTest(key=key):
                self.desktop.key(key)
                self.await_focused(launcher, NAMES[index])
                self.assertTrue(self.in_view(launcher, NAMES[index]))
        self.desktop.key("Next", "Prior")
        self.await_focused(launcher, NAMES[0])

    def test_up_from_the_first_row_goes_back_to_the_search(self):
        launcher = self.launch_full()
        self.enter(launcher)
        self.desktop.key("Right", "Up")
        launcher.await_equal(lambda: self.focused(launcher), [])
        self.desktop.type("app 07")
        launcher.await_equal(launcher.search_text, "app 07")

    def test_a_resting_pointer_steals_nothing_while_the_keyboard_scrolls(self):
        launcher = self.launch_full()
        self.point_at(self.item(launcher, NAMES[14]))
        self.enter(launcher)
        self.desktop.key("End")
        self.await_focused(launcher, NAMES[59])
        # The star is that of whatever tile came under the pointer.
        launcher.await_equal(lambda: len(self.stars(launcher)), 1)
        self.assertNotEqual(list(self.stars(launcher)), [NAMES[14]])
        self.desktop.key("Left")
        self.await_focused(launcher, NAMES[58])

    def test_a_pointer_that_moves_takes_the_keyboard_along(self):
        launcher = self.launch_full()
        self.point_at(self.item(launcher, NAMES[14]))
        self.enter(launcher)
        self.point_at(self.item(launcher, NAMES[9]))
        self.await_focused(launcher, NAMES[9])

    def test_return_and_space_open_the_keyboards_tile(self):
        marks = [self.desktop.marking_entry(name)[1] for name in ("Aaa", "Aab")]
        launcher = self.launch_full(["Aaa", "Aab", *NAMES])
        self.enter(launcher)
        self.desktop.key("Return")
        self.await_file(marks[0])
        self.desktop.key("Right", "space")
        self.await_file(marks[1])

    def test_the_menu_key_and_shift_f10_open_the_tiles_menu(self):
        launcher = self.launch_full()
        self.enter(launcher)
        for key in ("Menu", "shift+F10"):
            with self.subTest(key=key):
                self.desktop.key(key)
                launcher.await_menu(NAMES[0])
                # The first entry is chosen; the second is the favourite mark.
                self.desktop.key("Down", "Return")
                launcher.await_equal(lambda: NAMES[0] in self.stars(launcher), key == "Menu")
                self.await_focused(launcher, NAMES[0])


class GridUnderThePointer(Grid):
    def test_scrolling_brings_another_tile_under_the_pointer(self):
        launcher = self.launch_full()
        self.point_at(self.item(launcher, NAMES[14]))
        self.await_stars(launcher, {NAMES[14]: [ADD]})
        self.desktop.xdo("click", 5)
        self.await_stars(launcher, {NAMES[20]: [ADD]})
        self.desktop.xdo("click", 4)
        self.await_stars(launcher, {NAMES[14]: [ADD]})

    def test_a_narrower_list_brings_another_tile_under_the_pointer(self):
        launcher = self.launch_full()
        self.point_at(self.item(launcher, NAMES[3]))
        self.desktop.type("app 1")
        self.await_stars(launcher, {"App 13": [ADD]})
        self.desktop.key("Escape")
        self.await_stars(launcher, {NAMES[3]: [ADD]})

    def test_after_a_menu_the_star_is_where_the_pointer_is(self):
        launcher = self.launch_full()
        self.desktop.click(self.item(launcher, NAMES[3]), button=3)
        launcher.await_menu(NAMES[3])
        self.point_at(self.item(launcher, NAMES[14]))
        self.desktop.key("Escape")
        launcher.await_no_menu()
        self.await_stars(launcher, {NAMES[14]: [ADD]})
        # A click beside a menu closes it, and does no more.
        self.desktop.click(self.item(launcher, NAMES[3]), button=3)
        launcher.await_menu(NAMES[3])
        self.desktop.click(self.item(launcher, NAMES[8]))
        launcher.await_no_menu()
        self.await_stars(launcher, {NAMES[8]: [ADD]})
        self.assertIsNone(self.desktop.store.read(Store.RECENTS))

    def test_after_the_suggestions_the_star_is_where_the_pointer_is(self):
        launcher = self.launch_full()
        self.point_at(self.item(launcher, NAMES[3]))
        self.await_stars(launcher, {NAMES[3]: [ADD]})
        launcher.press("push button", "Suggerimenti di ricerca")
        launcher.await_menu("Suggerimenti di ricerca")
        self.point_at(self.item(launcher, NAMES[14]))
        self.desktop.key("Escape")
        launcher.await_no_menu()
        self.await_stars(launcher, {NAMES[14]: [ADD]})

    def test_leaving_the_window_takes_the_star_and_coming_back_brings_it(self):
        launcher = self.launch_full()
        for _ in range(2):
            self.point_at(self.item(launcher, NAMES[3]))
            self.await_stars(launcher, {NAMES[3]: [ADD]})
            self.point_nowhere()
            self.await_stars(launcher, {})


class GridAtBrokenScales(Grid):
    size = (1500, 1000)

    def test_hovering_leaves_no_trace_in_the_picture(self):
        for scale in ("1.25", "1.5"):
            with self.subTest(scale=scale):
                launcher = self.launch(QT_SCALE_FACTOR=scale)
                launcher.await_tiles(NAMES)
                self.point_nowhere()
                before = self.settled_picture()
                for name in (NAMES[0], NAMES[1], NAMES[6]):
                    box = self.item(launcher, name).get_extents(Atspi.CoordType.SCREEN)
                    # The tree speaks of logical pixels, the server of its own.
                    self.desktop.move_pointer(round((box.x + box.width / 2) * float(scale)),
                                              round((box.y + box.height / 2) * float(scale)))
                    self.await_stars(launcher, {name: [ADD]})
                self.assertNotEqual(self.settled_picture(), before)
                self.point_nowhere()
                self.await_stars(launcher, {})
                wait_until(lambda: self.settled_picture() == before, "the picture as before")
                launcher.kill()

    def settled_picture(self):
        """The screen once two pictures in a row are the same."""
        last = [None]

        def same():
            before, last[0] = last[0], self.desktop.pixels().content
            return before == last[0]

        wait_until(same, "the picture to come to rest", pause=0.15)
        return last[0]


class HostileNames(DesktopTest):
    NAMES = {
        "long": "W" * 10_000, "markup": "<b>Grassetto</b> & <img src=x>",
        "emoji": "😀 Risate 👨‍👩‍👧", "arabic": "مرحبا بالعالم", "marks": "Z" + "\u0301\u0323" * 500,
        "turned": "abc\u202egnp.exe", "lines": "uno\\ndue",
    }

    def test_hostile_names_are_single_lines_of_plain_text_to_a_screen_reader(self):
        for id_, name in self.NAMES.items():
            self.desktop.entry(name, id=id_)
        launcher = self.launch()
        launcher.await_equal(launcher.footer, f"{len(self.NAMES)} app")
        shown = launcher.tiles()
        for name in shown:
            self.assertNotRegex(name, "[\\x00-\\x1f\u202a-\u202e]")
            self.assertLessEqual(len(name), 10_010)
        for wanted in (self.NAMES["long"], self.NAMES["markup"], self.NAMES["emoji"],
                       self.NAMES["arabic"], self.NAMES["marks"], "abcgnp.exe", "uno due"):
            self.assertIn(wanted, shown)
        # Each is looked at, and pointed at, without harm.
        for item in children(launcher.node("list", "App")):
            box = item.get_extents(Atspi.CoordType.SCREEN)
            self.desktop.move_pointer(box.x + box.width // 2, box.y + 30)
        launcher.await_equal(launcher.footer, f"{len(self.NAMES)} app")


class LargeScreen(DesktopTest):
    size = (3840, 2160)

    def test_maximised_on_a_large_screen_the_columns_stay_columns(self):
        for number in range(900):
            self.desktop.entry(f"App {number:03}")
        launcher = self.launch()
        launcher.await_equal(launcher.footer, "900 app")
        self.desktop.run("wmctrl", "-i", "-r", hex(int(launcher.window_id())), "-b",
                         "add,maximized_vert,maximized_horz")
        wait_until(lambda: launcher.size()[0] >= 3800, "the window to fill the screen")

        def columns():
            boxes = [item.get_extents(Atspi.CoordType.SCREEN)
                     for item in children(launcher.node("list", "App"))[:60]]
            first_row = [box for box in boxes if box.y == boxes[0].y]
            return len(first_row), {100 <= box.width <= 130 for box in first_row}

        launcher.await_equal(columns, (30, {True}))
