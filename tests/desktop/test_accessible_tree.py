"""What a screen reader is told of the window: a promise to its users, so all of it is written out.

A line is a thing with its role and name, a list item's description in parentheses, then what it holds
or is ("= text", "selected", "ticked", "modal", "expandable", "disabled", "keyboard"), then in brackets
what can be done with it. What is nested stands below it, indented. Nameless containers are left out: nobody is told of them.
"""

import pathlib
import textwrap

from harness import (Atspi, DesktopError, DesktopTest, Store, actions, await_node, children,
                      has_state, press, role_of, text_of)

STATES = ((Atspi.StateType.SELECTED, "selected"), (Atspi.StateType.CHECKED, "ticked"),
          (Atspi.StateType.MODAL, "modal"), (Atspi.StateType.EXPANDABLE, "expandable"),
          (Atspi.StateType.FOCUSED, "keyboard"))
CONTAINERS = ("filler", "panel")


def tree_text(node, depth=0):
    """The tree below a node, as the module says."""
    role, name = role_of(node), node.get_name()
    if role in CONTAINERS and not name:
        return "".join(tree_text(child, depth) for child in children(node))
    line = f'{role} "{name}"'
    if role == "text":
        line += f' = "{text_of(node)}"'
    if role in ("list item", "combo box") and node.get_description():
        line += f" ({node.get_description()})"
    line += "".join(f", {word}" for state, word in STATES if has_state(node, state))
    if not has_state(node, Atspi.StateType.SENSITIVE) and role != "separator":
        line += ", disabled"
    # Whatever takes the keyboard can be given it.
    possible = [action for action in actions(node) if action != "SetFocus"]
    if possible:
        line += f" [{', '.join(possible)}]"
    return ("    " * depth + line + "\n"
            + "".join(tree_text(child, depth + 1) for child in children(node)))


class AccessibleTree(DesktopTest):
    maxDiff = None

    def setUp(self):
        super().setUp()
        # Away from all tiles: the pointer shows the star of the one it is over.
        self.desktop.move_pointer(1279, 799)
        self.paths = {name: str(self.desktop.entry(name)) for name in ("Ananas", "Bosco", "Cedro")}
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": "fruit", "name": "Frutta"},
            {"id": "citrus", "name": "Agrumi", "parentID": "fruit"}])
        self.desktop.store.write(Store.RULES, {"citrus": "cedro"})
        self.desktop.store.write(Store.ASSIGNMENTS, {"fruit": [self.paths["Ananas"]]})

    def await_text(self, node, wanted):
        """`node` answers what to read, anew each time."""
        wanted = textwrap.dedent(wanted).lstrip("\n")
        last = [""]

        def same():
            last[:] = [tree_text(node())]
            return last[0] == wanted
        try:
            await_node(same, "the tree")
        except DesktopError:
            self.assertMultiLineEqual(last[0], wanted)
            raise

    def window(self):
        return self.launchers[-1].node("frame")

    def dialog(self):
        return self.launchers[-1].node("dialog")

    def test_a_window_with_a_few_applications(self):
        self.launch()
        self.await_text(self.window, """
            frame "Tavo Launcher"
                push button "Chiudi" [Press]
                label "Tavo Launcher"
                list "Categorie"
                    list item "Tutte", selected [Press]
                    list item "Preferite" [Press]
                    list item "Recenti" [Press]
                    list item "Nascoste" [Press]
                    list item "Frutta" [Press]
                    list item "Agrumi" (Livello 2) [Press]
                push button "Modifica categorie" [Press]
                text "Cerca app o categoria…" = "", keyboard
                push button "Suggerimenti di ricerca" [Press]
                push button "Aggiorna app" [Press]
                list "App"
                    list item "Apri Ananas" [Press, ShowMenu]
                    list item "Apri Bosco" [Press, ShowMenu]
                    list item "Apri Cedro" [Press, ShowMenu]
                status bar ""
                    label "3 app"
                    push button "Powered by qt.io" [Press]
            """)

    def test_a_favorite_found_by_a_search_with_the_keyboard_on_it(self):
        self.desktop.store.write(Store.FAVORITES, [self.paths["Bosco"]])
        launcher = self.launch()
        launcher.press("list item", "Preferite")
        self.desktop.type("bo")
        self.desktop.key("Down")
        self.await_text(self.window, """
            frame "Tavo Launcher"
                push button "Chiudi" [Press]
                label "Tavo Launcher"
                list "Categorie"
                    list item "Tutte" [Press]
                    list item "Preferite", selected [Press]
                    list item "Recenti" [Press]
                    list item "Nascoste" [Press]
                    list item "Frutta" [Press]
                    list item "Agrumi" (Livello 2) [Press]
                push button "Modifica categorie" [Press]
                text "Cerca app o categoria…" = "bo"
                push button "Suggerimenti di ricerca" [Press]
                push button "Aggiorna app" [Press]
                list "App", keyboard
                    list item "Apri Bosco" (Preferita), selected, keyboard [Press, ShowMenu]
                        push button "Rimuovi dai preferiti" [Press]
                status bar ""
                    label "1 app"
                    push button "Powered by qt.io" [Press]
            """)

    def test_a_window_with_the_editor_open(self):
        self.desktop.store.write(Store.FAVORITES, [self.paths["Bosco"]])
        self.launch().press("push button", "Modifica categorie")
        self.await_text(self.window, """
            frame "Tavo Launcher"
                push button "Chiudi", disabled
                label "Tavo Launcher", disabled
                list "Categorie", disabled
                    list item "Tutte", selected, disabled [Press]
                    list item "Preferite", disabled [Press]
                    list item "Recenti", disabled [Press]
                    list item "Nascoste", disabled [Press]
                    list item "Frutta", disabled [Press]
                    list item "Agrumi" (Livello 2), disabled [Press]
                push button "Modifica categorie", disabled
                text "Cerca app o categoria…" = "", disabled
                push button "Suggerimenti di ricerca", disabled
                push button "Aggiorna app", disabled
                list "App", disabled
                    list item "Apri Ananas", disabled [Press, ShowMenu]
                    list item "Apri Bosco" (Preferita), disabled [Press, ShowMenu]
                        push button "Rimuovi dai preferiti", disabled [Press]
                    list item "Apri Cedro", disabled [Press, ShowMenu]
                status bar "", disabled
                    label "3 app", disabled
                    push button "Powered by qt.io", disabled
                dialog "Modifica categorie", modal
                    label "Modifica categorie"
                    label "Aggiungi parole chiave separate da virgole per assegnare le app in automatico; puoi anche usare il clic destro."
                    list "Categorie"
                        list item "Frutta"
                            text "Nome categoria: Frutta" = "Frutta"
                            combo box "Posizione: Frutta" (Categoria principale), expandable [ShowMenu]
                                list item "Categoria principale", selected [Press]
                            text "Parole chiave automatiche, separate da virgole: Frutta" = ""
                            push button "Elimina categoria: Frutta" [Press]
                        list item "Agrumi"
                            text "Nome categoria: Agrumi" = "Agrumi"
                            combo box "Posizione: Agrumi" (Sottocategoria di Frutta), expandable [ShowMenu]
                                list item "Categoria principale" [Press]
                                list item "Sottocategoria di Frutta", selected [Press]
                            text "Parole chiave automatiche, separate da virgole: Agrumi" = "cedro"
                            push button "Elimina categoria: Agrumi" [Press]
                    text "Nuova categoria" = "", keyboard
                    push button "Aggiungi", disabled
                    push button "Annulla" [Press]
                    push button "Salva" [Press]
            """)

    def test_an_alert(self):
        launcher = self.launch()
        pathlib.Path(self.paths["Ananas"]).unlink()
        launcher.press("list item", "Apri Ananas")
        launcher.await_node("dialog")
        message = self.dialog().get_description()
        self.assertTrue(message)
        self.await_text(self.dialog, f"""
            dialog "Impossibile aprire l’app", modal
                label "Impossibile aprire l’app"
                label "{message}"
                push button "OK", keyboard [Press]
            """)
        self.assertIn('list item "Apri Ananas", disabled', tree_text(self.window()))

    def test_the_menu_of_an_application(self):
        self.desktop.store.write(Store.FAVORITES, [self.paths["Ananas"]])
        launcher = self.launch()
        press(launcher.await_node("list item", "Apri Ananas"), "ShowMenu")
        launcher.await_menu("Ananas")
        self.await_text(launcher.menu, """
            popup menu "Ananas"
                menu item "Nascondi dall’elenco", keyboard [Press]
                menu item "Rimuovi dai preferiti" [Press]
                menu item "Categorie" [ShowMenu]
                    popup menu "Categorie"
                        menu item "Frutta", ticked [Press]
                        menu item "Agrumi" [Press]
            """)

    def test_the_menu_of_suggestions(self):
        launcher = self.launch()
        launcher.press("push button", "Suggerimenti di ricerca")
        launcher.await_menu("Suggerimenti di ricerca")
        self.await_text(launcher.menu, """
            popup menu "Suggerimenti di ricerca"
                menu item "Recenti", keyboard [Press]
                menu item "Preferite" [Press]
                separator ""
                menu item "Categoria: Frutta" [Press]
                menu item "Categoria: Agrumi" [Press]
            """)

    def test_every_application_found_is_an_item_in_view_or_not(self):
        for number in range(200):
            self.desktop.entry(f"Programma {number:03}")
        launcher = self.launch()
        names = [f"Programma {number:03}" for number in range(200)]
        launcher.await_tiles(["Ananas", "Bosco", "Cedro", *names])
        self.desktop.type("programma 1")
        launcher.await_tiles(names[100:])
        last = launcher.node("list item", "Apri Programma 199")
        self.assertEqual(actions(last), ["Press", "SetFocus", "ShowMenu"])

    def test_an_item_far_out_of_view_opens_when_pressed(self):
        for number in range(200):
            self.desktop.entry(f"Programma {number:03}")
        _, mark = self.desktop.marking_entry("Zeppelin")
        self.launch().press("list item", "Apri Zeppelin")
        self.await_file(mark)

    def test_a_star_is_a_button_only_while_it_is_shown(self):
        launcher = self.launch()

        def stars():
            return [(item.get_name(), star.get_name())
                    for item in children(launcher.node("list", "App")) for star in children(item)]
        launcher.await_equal(stars, [])
        tile = launcher.await_node("list item", "Apri Bosco")
        self.desktop.point_at(tile)
        launcher.await_equal(stars, [("Apri Bosco", "Aggiungi ai preferiti")])
        press(children(launcher.node("list item", "Apri Bosco"))[0])
        launcher.await_equal(stars, [("Apri Bosco", "Rimuovi dai preferiti")])
        self.desktop.move_pointer(1279, 799)
        self.desktop.point_at(launcher.node("list item", "Apri Cedro"))
        launcher.await_equal(stars, [("Apri Bosco", "Rimuovi dai preferiti"),
                                     ("Apri Cedro", "Aggiungi ai preferiti")])
        self.desktop.move_pointer(1279, 799)
        launcher.await_equal(stars, [("Apri Bosco", "Rimuovi dai preferiti")])
        press(children(launcher.node("list item", "Apri Bosco"))[0])
        launcher.await_equal(stars, [])
        self.assertEqual(self.desktop.store.read(Store.FAVORITES), [])
        self.assertIsNone(self.desktop.store.read(Store.RECENTS), "marking opens nothing")

    def test_nothing_behind_a_sheet_can_be_pressed(self):
        _, behind = self.desktop.marking_entry("Dietro")
        _, after = self.desktop.marking_entry("Dopo")
        launcher = self.launch()
        item = launcher.await_node("list item", "Apri Dietro")
        row = launcher.await_node("list item", "Nascoste")
        launcher.press("push button", "Modifica categorie")
        launcher.await_focus("text", "Nuova categoria")
        for node in (item, row):
            press(node)
        press(item, "ShowMenu")
        self.assertIsNone(launcher.menu())
        launcher.press("push button", "Annulla")
        launcher.await_equal(self.dialog, None)
        self.assertEqual(launcher.selected_row(), "Tutte")
        launcher.press("list item", "Apri Dopo")
        self.await_file(after)
        self.assertFalse(behind.exists())

    def test_text_put_into_the_search_filters(self):
        launcher = self.launch()
        launcher.await_tiles(["Ananas", "Bosco", "Cedro"])
        field = launcher.await_node("text", "Cerca app o categoria…")
        Atspi.EditableText.set_text_contents(field, "os")
        launcher.await_tiles(["Bosco"])
        Atspi.EditableText.set_text_contents(field, "")
        launcher.await_tiles(["Ananas", "Bosco", "Cedro"])
