#!/usr/bin/python3 -W ignore
"""Shows the program on a private desktop and takes a picture of it.

    tools/show_headless.py PROGRAM PICTURE.png

The picture is taken when the tiles are there and the screen has come to rest. Then it ends, with
all that it started, unless it was started from a terminal: there the program stays until Ctrl+C.
"""

import pathlib
import subprocess
import sys

import accessible
from private_desktop import DesktopError, PrivateDesktop, wait_until


def tiles(program):
    grid = accessible.find(accessible.application(program.pid), "list", "App")
    return grid.get_child_count() if grid else 0


def settle(desktop, program):
    """Waits for the tiles, then until two pictures in a row are the same."""
    def there():
        if program.poll() is not None:
            raise DesktopError(f"the program ended with status {program.returncode}:\n" + desktop.log())
        return tiles(program)

    count = accessible.await_node(there, "the tiles")
    last = [None]

    def unchanged():
        picture = subprocess.run(["import", "-window", "root", "rgb:-"], env=desktop.environment,
                                 check=True, capture_output=True).stdout
        before, last[0] = last[0], picture
        return before == picture

    wait_until(unchanged, "the picture to come to rest", pause=0.25)
    return count


def main(path, picture):
    with PrivateDesktop(wm="openbox", tray=True) as desktop:
        accessible.connect(desktop)
        program = desktop.start([path])
        count = settle(desktop, program)
        desktop.screenshot(picture)
        print(f"{count} applications; picture in {picture}")
        if sys.stdin.isatty():
            print(f"The program runs on display {desktop.environment['DISPLAY']}; Ctrl+C ends it.")
            program.wait()
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        sys.exit(main(pathlib.Path(sys.argv[1]).absolute(), pathlib.Path(sys.argv[2]).absolute()))
    except DesktopError as error:
        sys.exit(f"Could not show the program: {error}")
    except KeyboardInterrupt:
        pass
