import os
import pathlib

from harness import (Atspi, DesktopTest, Store, await_node, children, has_state, press, wait_until,
                     walk)


class Launching(DesktopTest):
    def test_return_opens_the_first_application_found(self):
        self.desktop.entry("Ananas")
        _, mark = self.desktop.marking_entry("Zeppelin")
        launcher = self.launch()
        self.desktop.type("zep")
        launcher.await_tiles(["Zeppelin"])
        self.desktop.key("Return")
        self.await_file(mark)

    def test_pressing_a_tile_opens_its_application_and_no_other(self):
        _, mark = self.desktop.marking_entry("Ananas")
        _, other = self.desktop.marking_entry("Zeppelin")
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_file(mark)
        self.assertFalse(other.exists())

    def test_clicking_a_tile_opens_its_application(self):
        _, mark = self.desktop.marking_entry("Ananas")
        launcher = self.launch()
        self.desktop.click(launcher.await_node("list item", "Apri Ananas"))
        self.await_file(mark)

    def test_a_start_tells_the_desktop_which_of_the_users_clicks_or_keys_it_answers(self):
        """By the server's time, at the end of its startup id."""
        said = self.desktop.folder / "startup-id"
        program = self.desktop.script("telling", f"echo \"$DESKTOP_STARTUP_ID\" >'{said}.new'\n"
                                                 f"mv '{said}.new' '{said}'")
        self.desktop.entry("Ananas", Exec=f'"{program}"', StartupNotify="true")
        launcher = self.launch()

        def key():
            self.desktop.type("ana")
            self.desktop.key("Return")
        times = []
        for do in (lambda: self.desktop.click(launcher.await_node("list item", "Apri Ananas")), key):
            do()
            self.await_file(said)
            self.assertRegex(said.read_text(), r"_TIME[1-9]\d*$")
            times.append(int(said.read_text().rpartition("_TIME")[2]))
            said.unlink()
        self.assertGreater(times[1], times[0])

    def test_opening_leaves_window_search_and_selection_as_they_are(self):
        _, mark = self.desktop.marking_entry("Ananas")
        self.desktop.entry("Zeppelin")
        launcher = self.launch()
        self.desktop.type("ana")
        launcher.await_tiles(["Ananas"])
        self.desktop.key("Return")
        self.await_file(mark)
        self.assertTrue(launcher.is_shown())
        self.assertEqual(launcher.search_text(), "ana")
        self.assertEqual(launcher.selected_row(), "Tutte")

    def test_what_was_opened_is_first_among_the_recent_ones_also_after_a_restart(self):
        first, first_mark = self.desktop.marking_entry("Ananas")
        second, second_mark = self.desktop.marking_entry("Zeppelin")
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_file(first_mark)
        launcher.press("list item", "Apri Zeppelin")
        self.await_file(second_mark)
        self.assertEqual(self.desktop.store.read(Store.RECENTS), [str(second), str(first)])
        launcher.press("list item", "Recenti")
        launcher.await_tiles(["Zeppelin", "Ananas"])
        self.assertEqual(launcher.quit(), 0)

        again = self.launch()
        again.press("list item", "Recenti")
        again.await_tiles(["Zeppelin", "Ananas"])

    def test_recents_survive_a_killed_program(self):
        entry, mark = self.desktop.marking_entry("Ananas")
        self.desktop.entry("Zeppelin")
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_file(mark)
        launcher.kill()
        self.assertEqual(self.desktop.store.read(Store.RECENTS), [str(entry)])
        again = self.launch()
        again.press("list item", "Recenti")
        again.await_tiles(["Ananas"])

    def lasting_entry(self, name):
        """An entry whose program writes its process id, then what it is told; then it ends."""
        pid_file = self.desktop.folder / f"{name}.pid"
        go_on = self.desktop.folder / f"{name}.go-on"
        os.mkfifo(go_on)
        program = self.desktop.script(
            name, f"echo $$ >'{pid_file}.new'; mv '{pid_file}.new' '{pid_file}'\n"
                  f"read line <'{go_on}'; echo \"$line\" >'{pid_file}.heard'")
        self.desktop.entry(name, Exec=f'"{program}"')
        return pid_file, go_on

    def test_an_application_outlives_the_launcher(self):
        pid_file, go_on = self.lasting_entry("Longer")
        launcher = self.launch()
        launcher.press("list item", "Apri Longer")
        self.await_file(pid_file)
        self.assertEqual(launcher.quit(), 0)
        go_on.write_text("still here\n")
        self.await_file(pathlib.Path(f"{pid_file}.heard"))

    def test_finished_applications_leave_no_zombies_below_the_launcher(self):
        started = {name: self.lasting_entry(name) for name in ("Ananas", "Bosco", "Cedro")}
        launcher = self.launch()
        for name, (pid_file, _) in started.items():
            launcher.press("list item", f"Apri {name}")
            self.await_file(pid_file)
        # Neither by what it takes to start them...
        wait_until(lambda: not zombies_below(launcher.process.pid), "the starts to be reaped")
        for pid_file, go_on in started.values():
            pid = int(pid_file.read_text())
            self.assertNotIn(state_of(pid), (None, "Z"))
            go_on.write_text("enough\n")
            wait_until(lambda: state_of(pid) in (None, "Z"), "the application to end")
        # ... nor by their end.
        wait_until(lambda: not zombies_below(launcher.process.pid), "the ended to be reaped")

    def test_the_count_of_zombies_finds_one(self):
        # What the test above relies on, shown on a parent that reaps nothing.
        parent = self.desktop.start(["python3", "-c", "import os, time\n"
                                     "os.fork() or os._exit(0)\ntime.sleep(600)"])
        wait_until(lambda: len(zombies_below(parent.pid)) == 1, "the zombie")

    def test_a_bundle_of_the_users_application_folder_opens(self):
        mark = self.desktop.folder / "bundle.ran"
        self.desktop.bundle("Fagotto", f"echo x >'{mark}'")
        launcher = self.launch()
        launcher.press("list item", "Apri Fagotto")
        self.await_file(mark)

    def test_a_program_gone_since_the_scan_is_told_by_name_and_the_alert_goes_away(self):
        program = self.desktop.script("vanishing-program", "true")
        self.desktop.entry("Fantasma", Exec=str(program))
        launcher = self.launch()
        launcher.await_tiles(["Fantasma"])
        program.unlink()
        launcher.press("list item", "Apri Fantasma")
        alert = await_node(lambda: alert_of(launcher), "the alert")
        self.assertTrue(any("vanishing-program" in text for text in texts_of(alert)),
                        texts_of(alert))
        press(next(node for node in children_deep(alert) if node.get_name() == "OK"))
        launcher.await_equal(lambda: alert_of(launcher), None)
        launcher.await_tiles(["Fantasma"])

    def test_an_entry_gone_since_the_scan_is_told(self):
        entry = self.desktop.entry("Fantasma")
        launcher = self.launch()
        launcher.await_tiles(["Fantasma"])
        entry.unlink()
        launcher.press("list item", "Apri Fantasma")
        alert = await_node(lambda: alert_of(launcher), "the alert")
        message = [text for text in texts_of(alert)
                   if text not in ("", "OK", "Impossibile aprire l’app")]
        self.assertTrue(message)
        self.desktop.key("Return")
        launcher.await_equal(lambda: alert_of(launcher), None)


def children_deep(node):
    for child in children(node):
        yield child
        yield from children_deep(child)


def alert_of(launcher):
    """What holds the alert's title and is no label, as long as it is shown."""
    return next((node for node in walk(launcher.root()) if node.get_name() == "Impossibile aprire l’app"
                 and node.get_role_name() != "label"
                 and has_state(node, Atspi.StateType.SHOWING)), None)


def texts_of(node):
    return [child.get_name() for child in children_deep(node)]


def stat_of(pid):
    """State and parent of a process, or None when there is none."""
    try:
        stat = pathlib.Path(f"/proc/{pid}/stat").read_text(errors="replace")
    except OSError:
        return None
    state, parent = stat.rpartition(")")[2].split()[:2]
    return state, int(parent)


def state_of(pid):
    stat = stat_of(pid)
    return stat and stat[0]


def zombies_below(pid):
    """The processes that descend from `pid`, ended and reaped by nobody."""
    stats = {int(entry.name): stat for entry in pathlib.Path("/proc").glob("[0-9]*")
             if (stat := stat_of(entry.name))}

    def descends(each):
        while each in stats and each != pid:
            each = stats[each][1]
        return each == pid
    return [each for each, (state, parent) in stats.items() if state == "Z" and descends(parent)]
