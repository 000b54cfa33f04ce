from harness import Atspi, DesktopTest, children, has_state, text_of
from walk import Walk


class KeyboardHand:
    """Keys as a keyboard sends them. The tree is only read."""

    def __init__(self, desktop, launcher):
        self.desktop, self.launcher = desktop, launcher

    def open_editor(self):
        self._go(("push button", "Modifica categorie"), "Tab")
        self.desktop.key("Return")
        self.launcher.await_focus("text", "Nuova categoria")

    def add_category(self, name):
        self._go(("text", "Nuova categoria"), "Tab")
        self.desktop.type(name)
        self.desktop.key("Return")
        self.launcher.await_node("text", f"Nome categoria: {name}")
        self._await_text("Nuova categoria", "")

    def set_keywords(self, category, text):
        field = f"Parole chiave automatiche, separate da virgole: {category}"
        self._go(("text", field), "shift+Tab")
        self.desktop.type(text)
        self._await_text(field, text)

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
        self.launcher.await_equal(lambda: self.launcher.node("text", f"Nome categoria: {name}"),
                                  None)

    def save(self):
        self.desktop.key("Return")
        self.launcher.await_equal(lambda: self.launcher.node("dialog"), None)

    def select(self, row):
        self._go_to_item("Categorie", row, "Down")
        self.desktop.key("Return")
        self.launcher.await_equal(self.launcher.selected_row, row)

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

    def _await_text(self, field, wanted):
        def text():
            return text_of(self.launcher.node("text", field))
        self.launcher.await_equal(text, wanted)


class KeyboardWalk(DesktopTest):
    def test_categories_and_marks_are_made_used_and_undone_by_keys_alone(self):
        walk = Walk(self, KeyboardHand)
        walk.make_nested_category_with_keywords()
        walk.see_what_the_keywords_found()
        walk.assign_by_hand()
        walk.favour()
        walk.hide()
        walk.show_again()
        walk.delete_the_category()

    def test_what_was_done_by_keys_is_there_after_a_restart_and_for_other_processes(self):
        walk = Walk(self, KeyboardHand)
        walk.make_nested_category_with_keywords()
        walk.assign_by_hand()
        walk.favour()
        walk.hide()
        walk.restart()
        walk.find_everything_as_it_was_left_hidden()
        walk.show_again()
