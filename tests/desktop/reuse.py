"""Brings a desktop back to what it was before a test had it, so that another one can have it.

What can be undone is undone; then all that a test could have changed is looked at. A desktop that
is not as it was says so, and is not used again.
"""

import ctypes
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

from private_desktop import DesktopError, processes_below, wait_until

# What its processes write is theirs as long as they run.
_LOGS = "*.log"


class Changed(DesktopError):
    """The desktop is not as it was."""


class Origin:
    """What a desktop is like that has just come up."""

    # In seconds: how long a window manager, for one, may take to do its part.
    patience = 3.0

    def __init__(self, desktop):
        self._desktop = desktop
        self._environment = dict(desktop.environment)
        self._hermetic = dict(desktop.hermetic)
        self._processes = set(processes_below(os.getpid()))
        self._pointer = desktop.pointer()
        self._folders, self._files = {}, {}
        for path in sorted(desktop.folder.rglob("*")):
            if path.is_relative_to(desktop.font_cache):
                continue
            if path.is_dir():
                self._folders[path] = path.stat().st_mode & 0o7777
            else:
                kept = path.is_file() and not path.match(_LOGS)
                self._files[path] = path.read_bytes() if kept else None
        self._clients = {_client(window) for window in self._windows()}
        self._forget_active_window()
        self._properties = self._root_properties()
        self._seen = self._look()

    def restore(self):
        """Raises Changed when that is not possible."""
        self._end_processes()
        self._desktop.environment = dict(self._environment)
        self._desktop.hermetic = dict(self._hermetic)
        self._restore_screen()
        self._restore_folders()
        self._dbus("ReloadConfig")
        end = time.monotonic() + self.patience
        while differences := self._differences():
            if time.monotonic() > end:
                raise Changed(f"the desktop is not as it was: {differences}")
            time.sleep(0.01)

    def _differences(self):
        """What is other than it was, as it was and as it is."""
        seen = self._look()
        return {what: (self._seen.get(what), seen.get(what))
                for what in self._seen.keys() | seen.keys()
                if self._seen.get(what) != seen.get(what)}

    def _look(self):
        """All that is compared, each thing by its name."""
        return {
            **self._root_properties(),
            "foreign windows": [window for window in self._windows()
                                if _client(window) not in self._clients],
            "names on the bus": sorted(name for name in self._dbus("ListNames")
                                       if not name.startswith(":")),
            "services": sorted(self._dbus("ListActivatableNames")),
            "pointer": self._desktop.pointer(),
            **_input_state(self._environment["DISPLAY"]),
        }

    def _end_processes(self):
        """All but those that the desktop had at first, which have to be there still, and to run."""
        def others():
            now = set(processes_below(os.getpid()))
            if not self._processes <= now:
                raise Changed("a process of the desktop has ended")
            return now - self._processes

        def ended():
            for pid in (left := others()):
                try:
                    os.kill(pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
            self._desktop._reap()
            return not left
        wait_until(ended, "the end of the test's processes", seconds=10, pause=0.005)
        for pid in self._processes:
            if _is_stopped(pid):
                raise Changed("a process of the desktop was stopped")

    def _restore_screen(self):
        for name in self._root_properties().keys() - self._properties.keys():
            self._desktop.run("xprop", "-root", "-remove", name)
        if "_NET_CURRENT_DESKTOP" in self._properties:
            self._desktop.xdo("set_desktop", 0)
        self._forget_active_window()
        self._desktop.move_pointer(*self._pointer)

    def _forget_active_window(self):
        """Window managers go on to name one that has gone, when no other one took its place."""
        self._desktop.run("xprop", "-root", "-remove", "_NET_ACTIVE_WINDOW")

    def _restore_folders(self):
        """As they were; nothing is left in them but what was there."""
        for folder in (self._desktop.folder, *self._folders):
            self._empty(folder)
        for folder, mode in self._folders.items():
            folder.mkdir(exist_ok=True)
            folder.chmod(mode)
        for path, content in self._files.items():
            if content is not None and not (path.is_file() and path.read_bytes() == content):
                path.write_bytes(content)
            elif path.match(_LOGS):
                os.truncate(path, 0)
            elif not path.exists():
                raise Changed(f"{path} is gone")

    def _empty(self, folder):
        if folder.is_symlink() or not folder.is_dir():
            folder.unlink(missing_ok=True)
            return
        folder.chmod(0o700)
        for path in folder.iterdir():
            if path in self._folders or path in self._files or path == self._desktop.font_cache:
                continue
            if path.is_dir() and not path.is_symlink():
                shutil.rmtree(path, onerror=_open_and_try_again)
            else:
                path.unlink(missing_ok=True)

    def _windows(self):
        """The ids of the screen's own windows."""
        def tree():
            done = subprocess.run(["xwininfo", "-root", "-children"], env=self._environment,
                                  capture_output=True, text=True)
            return done.returncode == 0 and done.stdout  # it fails when a window goes meanwhile
        lines = wait_until(tree, "the windows").splitlines()
        return [int(found[1], 16) for line in lines
                if (found := re.match(r"\s+(0x[0-9a-f]+) ", line))]

    def _root_properties(self):
        said = self._desktop.run("xprop", "-root")
        return {line.partition("(")[0]: line for line in said.splitlines() if "(" in line}

    def _dbus(self, method):
        """What the session's bus answers: the strings in it."""
        try:
            said = subprocess.run(
                ["dbus-send", "--session", "--print-reply", "--reply-timeout=5000",
                 "--dest=org.freedesktop.DBus", "/", f"org.freedesktop.DBus.{method}"],
                env=self._environment, check=True, capture_output=True, text=True, timeout=10).stdout
        except subprocess.SubprocessError as error:
            raise Changed(f"the session's bus does not answer: {error}") from error
        return re.findall(r'string "(.*)"', said)


def _client(window):
    """Whose window it is: the server gives each client a range of ids."""
    return window >> 21


def _is_stopped(pid):
    stat = pathlib.Path(f"/proc/{pid}/stat").read_text(errors="replace")
    return stat.rpartition(")")[2].split()[0] in "Tt"


def _open_and_try_again(remove, path, _):
    """A test may have closed a folder."""
    os.chmod(os.path.dirname(path), 0o700)
    if os.path.isdir(path):
        os.chmod(path, 0o700)
        shutil.rmtree(path)
    else:
        remove(path)


def _input_state(name):
    """Which keys and buttons are held, which modifiers are locked, and what the keys mean."""
    x11 = ctypes.CDLL("libX11.so.6")
    for function in ("XOpenDisplay", "XGetKeyboardMapping"):
        getattr(x11, function).restype = ctypes.c_void_p
    x11.XDefaultRootWindow.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x11.XOpenDisplay(name.encode()))
    if not display:
        raise Changed("the X server takes no connection")
    try:
        keys = ctypes.create_string_buffer(32)
        x11.XQueryKeymap(display, keys)
        mask, ignored = ctypes.c_uint(), ctypes.create_string_buffer(64)
        at = [ctypes.byref(ignored, 8 * number) for number in range(6)]
        x11.XQueryPointer(display, ctypes.c_ulong(x11.XDefaultRootWindow(display)), *at,
                          ctypes.byref(mask))
        first, last, width = ctypes.c_int(), ctypes.c_int(), ctypes.c_int()
        x11.XDisplayKeycodes(display, ctypes.byref(first), ctypes.byref(last))
        count = last.value - first.value + 1
        meanings = ctypes.c_void_p(x11.XGetKeyboardMapping(
            display, ctypes.c_ubyte(first.value), count, ctypes.byref(width)))
        size = count * width.value * ctypes.sizeof(ctypes.c_ulong)
        symbols = hash((width.value, ctypes.string_at(meanings, size)))
        x11.XFree(meanings)
        return {"held keys": keys.raw, "modifiers and buttons": mask.value,
                "meaning of the keys": symbols}
    finally:
        x11.XCloseDisplay(display)
