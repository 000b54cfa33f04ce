from harness import Atspi, DesktopTest, children, has_state
from walk import Hand, Walk


class KeyboardHand(Hand):
    """Keys as a keyboard sends them. The tree is only read."""

    def open_editor(self):
        self._go(("push button", "Modifica categorie"), "Tab")
        self.desktop.key("Return")
        self.launcher.await_focus("text", "Nuova categoria")

    def add_category(self, name):
        self._go(("text", "Nuova categoria"), "Tab")
        self.desktop.type(name)
        self.desktop.key("Return")
        self.await_category(name)

    def set_keywords(self, category, text):
        field = f"Parole chiave automatiche, separate da virgole: {category}"
        self._go(("text", field), "shift+Tab")
        self.desktop.type(text)
        self.await_text(field, text)

    def nest(self, category, parent):
        picker = ("combo box", f"Posizione: {category}")

        def choice():
            return next(entry.get_name() for entry in children(self.launcher.node(*picker))
                        if has_state(entry, Atspi.StateType.SELECTED))

        self._go(picker, "shift+Tab")
        now = choice()
        while now != f"Sottocategoria di {parent}":
            self.desktop.key("Down")
            now = self.launcher.await_change(choice, now)

    def delete_category(self, name):
        self._go(("push button", f"Elimina categoria: {name}"), "shift+Tab")
        self.desktop.key("space")
        self.await_no_category(name)

    def save(self):
        self.desktop.key("Return")
        self.await_saved()

    def select(self, row):
        self._go_to_item("Categorie", row, "Down")
        self.desktop.key("Return")
        self.await_selected(row)

    def choose_mark(self, application, *entries):
        self._go_to_item("App", f"Apri {application}", "Right")
        self.desktop.key("Menu")
        self.launcher.await_menu(application)
        texts = self.launcher.menu_texts()
        for depth, entry in enumerate(entries):
            if depth:
                self.desktop.key("Right")
                self.launcher.await_change(self.launcher.focused, ("menu item", entries[depth - 1]))
            self._go(("menu item", entry), "Down")
        self.desktop.key("Return")
        self.launcher.await_no_menu()
        return texts

    def _go_to_item(self, list_name, item, key):
        self._go(("list", list_name), "Tab")
        first = children(self.launcher.node("list", list_name))[0].get_name()
        self.desktop.key("Home")
        self.launcher.await_focus("list item", first)
        self._go(("list item", item), key)

    def _go(self, wanted, key, most=40):
        """Presses the key until what has that role and name has the keyboard."""
        path = self.launcher.focus_path()
        for _ in range(most):
            if wanted in path:
                return
            self.desktop.key(key)
            path = self.launcher.await_change(self.launcher.focus_path, path)
        raise AssertionError(f"{key}, pressed {most} times, leads to {path}, not to {wanted}")


class KeyboardWalk(DesktopTest):
    def test_categories_and_marks_are_made_used_and_undone_by_keys_alone(self):
        Walk(self, KeyboardHand).make_use_and_undo()

    def test_what_was_done_by_keys_is_there_after_a_restart_and_for_other_processes(self):
        Walk(self, KeyboardHand).restart_in_the_middle()
