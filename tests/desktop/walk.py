"""One walk through all that users do with categories and marks, told once for whatever means
somebody has: a "hand" knows how to do each step, with keys alone or through the accessibility tree
alone. The walk looks at the result of each step where users and other programs see it.
"""

from harness import Store, text_of

FIXED = ["Tutte", "Preferite", "Recenti", "Nascoste"]
DEFAULTS = ["Lavoro", "Creatività", "Utility"]


class Hand:
    """What both hands have: they look at what comes of each step."""

    def __init__(self, desktop, launcher):
        self.desktop, self.launcher = desktop, launcher

    def await_text(self, field, wanted):
        def text():
            return text_of(self.launcher.node("text", field))
        self.launcher.await_equal(text, wanted)

    def await_category(self, name):
        self.launcher.await_node("text", f"Nome categoria: {name}")
        self.await_text("Nuova categoria", "")

    def await_no_category(self, name):
        self.launcher.await_equal(lambda: self.launcher.node("text", f"Nome categoria: {name}"),
                                  None)

    def await_saved(self):
        self.launcher.await_equal(lambda: self.launcher.node("dialog"), None)

    def await_selected(self, row):
        self.launcher.await_equal(self.launcher.selected_row, row)


class Walk:
    """`test` is a DesktopTest, `hand` makes one's own hand for a running launcher."""

    def __init__(self, test, hand):
        self.test, self.make_hand = test, hand
        self.desktop, self.store = test.desktop, test.desktop.store
        self.paths = {name: str(self.desktop.entry(name))
                      for name in ("Ananas", "Bosco", "Cedro", "Dattero")}
        self.start()

    def start(self):
        self.launcher = self.test.launch()
        self.hand = self.make_hand(self.desktop, self.launcher)

    def restart(self):
        self.test.assertEqual(self.launcher.quit(), 0)
        self.start()

    def make_use_and_undo(self):
        self.make_nested_category_with_keywords()
        self.see_what_the_keywords_found()
        self.assign_by_hand()
        self.favour()
        self.hide()
        self.show_again()
        self.delete_the_category()

    def restart_in_the_middle(self):
        self.make_nested_category_with_keywords()
        self.assign_by_hand()
        self.favour()
        self.hide()
        self.restart()
        self.find_everything_as_it_was_left_hidden()
        self.show_again()

    def make_nested_category_with_keywords(self):
        self.hand.open_editor()
        self.hand.add_category("Frutta")
        self.hand.add_category("Agrumi")
        self.hand.set_keywords("Agrumi", "cedro, dattero")
        self.hand.nest("Agrumi", "Frutta")
        self.test.assertIsNone(self.store.read(Store.CATEGORIES), "nothing is stored unsaved")
        self.hand.save()
        self.launcher.await_equal(self.launcher.rows, [*FIXED, *DEFAULTS, "Frutta", "Agrumi"])
        self.await_tree([*DEFAULTS, "Frutta", ("Agrumi", "Frutta")])
        self.await_rules({"Agrumi": "cedro, dattero"})

    def see_what_the_keywords_found(self):
        self.hand.select("Agrumi")
        self.launcher.await_tiles(["Cedro", "Dattero"])

    def assign_by_hand(self):
        self.hand.select("Tutte")
        self.launcher.await_tiles(["Ananas", "Bosco", "Cedro", "Dattero"])
        self.choose("Ananas", ["Categorie", "Agrumi"], of=[
            "Nascondi dall’elenco", "Aggiungi ai preferiti",
            ["Categorie", *DEFAULTS, "Frutta", "Agrumi"]])
        self.await_assignments({"Agrumi": ["Ananas"]})
        self.hand.select("Agrumi")
        self.launcher.await_tiles(["Ananas", "Cedro", "Dattero"])

    def favour(self):
        self.choose("Ananas", ["Aggiungi ai preferiti"], of=[
            "Nascondi dall’elenco", "Aggiungi ai preferiti",
            ["Categorie", *DEFAULTS, "Frutta", "Agrumi ✓"]])
        self.await_stored(Store.FAVORITES, [self.paths["Ananas"]])
        self.hand.select("Preferite")
        self.launcher.await_tiles(["Ananas"])

    def hide(self):
        self.choose("Ananas", ["Nascondi dall’elenco"], of=[
            "Nascondi dall’elenco", "Rimuovi dai preferiti",
            ["Categorie", *DEFAULTS, "Frutta", "Agrumi ✓"]])
        self.await_stored(Store.HIDDEN, [self.paths["Ananas"]])
        self.launcher.await_tiles([])
        self.hand.select("Agrumi")
        self.launcher.await_tiles(["Cedro", "Dattero"])
        self.hand.select("Nascoste")
        self.launcher.await_tiles(["Ananas"])

    def show_again(self):
        # It kept its other marks.
        self.choose("Ananas", ["Mostra nell’elenco"], of=[
            "Mostra nell’elenco", "Rimuovi dai preferiti",
            ["Categorie", *DEFAULTS, "Frutta", "Agrumi ✓"]])
        self.await_stored(Store.HIDDEN, [])
        self.launcher.await_tiles([])
        self.hand.select("Agrumi")
        self.launcher.await_tiles(["Ananas", "Cedro", "Dattero"])

    def delete_the_category(self):
        self.hand.open_editor()
        self.hand.delete_category("Agrumi")
        self.hand.save()
        self.launcher.await_equal(self.launcher.rows, [*FIXED, *DEFAULTS, "Frutta"])
        # It was the one that was selected.
        self.launcher.await_equal(self.launcher.selected_row, "Tutte")
        self.launcher.await_tiles(["Ananas", "Bosco", "Cedro", "Dattero"])
        self.await_tree([*DEFAULTS, "Frutta"])
        self.await_assignments({})

    def find_everything_as_it_was_left_hidden(self):
        """What `hide` left: on the screen, and in the store while the program runs."""
        self.launcher.await_equal(self.launcher.rows, [*FIXED, *DEFAULTS, "Frutta", "Agrumi"])
        self.launcher.await_equal(self.launcher.selected_row, "Tutte")
        self.launcher.await_tiles(["Bosco", "Cedro", "Dattero"])
        for row, names in (("Agrumi", ["Cedro", "Dattero"]), ("Frutta", []), ("Preferite", []),
                           ("Nascoste", ["Ananas"])):
            self.hand.select(row)
            self.launcher.await_tiles(names)
        self.await_tree([*DEFAULTS, "Frutta", ("Agrumi", "Frutta")])
        self.await_rules({"Agrumi": "cedro, dattero"})
        self.await_assignments({"Agrumi": ["Ananas"]})
        self.await_stored(Store.FAVORITES, [self.paths["Ananas"]])
        self.await_stored(Store.HIDDEN, [self.paths["Ananas"]])

    def choose(self, application, entries, of):
        """Chooses from the application's menu, which has to offer exactly `of`."""
        self.test.assertEqual(self.hand.choose_mark(application, *entries), of)

    # What another process, this one, reads while the launcher runs.

    def await_stored(self, key, value):
        def stored():
            return self.store.read(key)
        self.launcher.await_equal(stored, value)

    def await_tree(self, wanted):
        """Names, or pairs of a name and its parent's, in stored order."""
        def stored_tree():
            names = self._names()
            return [(category["name"], names[category["parentID"]])
                    if "parentID" in category else category["name"]
                    for category in self.store.read(Store.CATEGORIES)]
        self.launcher.await_equal(stored_tree, wanted)

    def await_rules(self, wanted):
        def stored_rules():
            names = self._names()
            return {names[key]: rule for key, rule in (self.store.read(Store.RULES) or {}).items()}
        self.launcher.await_equal(stored_rules, wanted)

    def await_assignments(self, wanted):
        def stored_assignments():
            names = self._names()
            applications = {path: name for name, path in self.paths.items()}
            return {names[key]: sorted(applications[path] for path in paths)
                    for key, paths in self.store.read(Store.ASSIGNMENTS).items()}
        self.launcher.await_equal(stored_assignments, wanted)

    def _names(self):
        return {category["id"]: category["name"]
                for category in self.store.read(Store.CATEGORIES)}
