#!/usr/bin/python3 -W ignore
"""Looks at the program that packaging/fresh_install.sh starts inside a bare system.

    packaging/see_installed.py STAGE HOME

Brings up a private desktop and writes its environment to STAGE/environment, each variable ended by
a zero byte; then waits for the process id in STAGE/process. The window has to show the tiles of the
launcher itself and of "Prova", with the launcher's own icon; pressing "Prova" has to run it inside
and to be remembered in HOME, the user's home as seen from here; Ctrl+Q has to end the program.
Leaves STAGE/picture.png.
"""

import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tools"))

import accessible  # noqa: E402
from accessible import await_node, children, find  # noqa: E402
from gi.repository import Atspi  # noqa: E402
from private_desktop import DesktopError, PrivateDesktop, wait_until  # noqa: E402

WANTED = ["Apri Prova", "Apri Tavo Launcher"]
# The launcher's own icon goes from light blue to violet blue.
BLUE_PIXELS = 800


def is_blue(red, green, blue):
    return blue > 180 and blue > red + 60 and blue > green + 20


def blue_pixels(desktop, box):
    pixels = subprocess.run(
        ["import", "-window", "root", "-crop", f"{box.width}x{box.height}+{box.x}+{box.y}",
         "-depth", "8", "rgb:-"], env=desktop.environment, check=True, capture_output=True).stdout
    return sum(is_blue(*pixels[at:at + 3]) for at in range(0, len(pixels) - 2, 3))


def look(desktop, stage, home, pid):
    def tile_names():
        grid = find(accessible.application(pid), "list", "App")
        return grid and [tile.get_name() for tile in children(grid)]

    def tile(name):
        return find(accessible.application(pid), "list item", name)

    try:
        await_node(lambda: tile_names() == WANTED, f"the tiles {WANTED}")
        # Icons arrive after their tiles.
        await_node(lambda: blue_pixels(desktop, tile(WANTED[1]).get_extents(
            Atspi.CoordType.SCREEN)) > BLUE_PIXELS, "the launcher's own icon in its tile")
    finally:
        desktop.screenshot(stage / "picture.png")
    print(f"The window shows {' and '.join(WANTED)}, with icon")

    tile(WANTED[0]).do_action(0)
    wait_until((home / "opened").exists, "the application to run")
    store = home / ".local/share/tavolauncher/defaults.sqlite"
    wait_until(store.exists, "the user's data")
    print("It opens an application and remembers it")
    desktop.run("xdotool", "key", "ctrl+q")
    wait_until(lambda: ended(pid), "the program to end on Ctrl+Q")


def ended(pid):
    try:
        stat = pathlib.Path("/proc", str(pid), "stat").read_text()
    except OSError:
        return True
    return stat.rpartition(")")[2].split()[0] == "Z"


def main(stage, home):
    with PrivateDesktop(wm="openbox") as desktop:
        accessible.connect(desktop)
        # The user's folders are the system's inside, below the home that it is given there.
        given = {name: value for name, value in desktop.environment.items()
                 if not name.startswith("XDG_") and name not in ("HOME", "PATH")}
        given["XDG_RUNTIME_DIR"] = desktop.environment["XDG_RUNTIME_DIR"]
        new = stage / "environment.new"
        new.write_bytes(b"".join(f"{name}={value}\0".encode() for name, value in given.items()))
        new.rename(stage / "environment")
        process = stage / "process"
        wait_until(process.exists, "the process id")
        look(desktop, stage, home, int(process.read_text()))
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        sys.exit(main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
    except DesktopError as error:
        sys.exit(f"FAILED: {error}")
