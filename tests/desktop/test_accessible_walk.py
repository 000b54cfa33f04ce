from harness import Atspi, DesktopTest, await_node, child_of, children, has_state, press
from walk import Hand, Walk


class AccessibleHand(Hand):
    """Actions of the accessibility tree: press, set text, choose, show menu. No key, no pointer."""

    def open_editor(self):
        self.launcher.press("push button", "Modifica categorie")
        self.launcher.await_node("dialog", "Modifica categorie")

    def add_category(self, name):
        self._set_text("Nuova categoria", name)
        self.launcher.press("push button", "Aggiungi")
        self.await_category(name)

    def set_keywords(self, category, text):
        self._set_text(f"Parole chiave automatiche, separate da virgole: {category}", text)

    def nest(self, category, parent):
        def choice():
            picker = self.launcher.node("combo box", f"Posizione: {category}")
            return child_of(picker, f"Sottocategoria di {parent}")

        press(await_node(choice, f"the choice of {parent} for {category}"))
        self.launcher.await_equal(lambda: has_state(choice(), Atspi.StateType.SELECTED), True)

    def delete_category(self, name):
        self.launcher.press("push button", f"Elimina categoria: {name}")
        self.await_no_category(name)

    def save(self):
        self.launcher.press("push button", "Salva")
        self.await_saved()

    def select(self, row):
        self.launcher.press("list item", row)
        self.await_selected(row)

    def choose_mark(self, application, *entries):
        press(self.launcher.await_node("list item", f"Apri {application}"), "ShowMenu")
        menu = self.launcher.await_menu(application)
        texts = self.launcher.menu_texts()
        for name in entries[:-1]:
            entry = child_of(menu, name)
            press(entry, "ShowMenu")
            menu = children(entry)[0]
            self.launcher.await_equal(lambda: has_state(menu, Atspi.StateType.SHOWING), True)
        press(child_of(menu, entries[-1]))
        self.launcher.await_no_menu()
        return texts

    def _set_text(self, field, text):
        node = self.launcher.await_node("text", field)
        Atspi.EditableText.set_text_contents(node, text)
        self.await_text(field, text)


class AccessibleWalk(DesktopTest):
    PARKED = (1279, 799)

    def setUp(self):
        super().setUp()
        self.desktop.move_pointer(*self.PARKED)

    def tearDown(self):
        self.assertEqual(self.desktop.pointer(), self.PARKED, "the pointer was not used")
        super().tearDown()

    def test_categories_and_marks_are_made_used_and_undone_through_the_tree_alone(self):
        Walk(self, AccessibleHand).make_use_and_undo()

    def test_what_was_done_through_the_tree_is_there_after_a_restart_and_for_other_processes(self):
        Walk(self, AccessibleHand).restart_in_the_middle()
