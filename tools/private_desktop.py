"""A private X desktop without a screen: server, session bus, window manager, perhaps a tray.

    with PrivateDesktop(wm="openbox", tray=True) as desktop:
        program = desktop.start(["tavolauncher"])

Nothing of the user's is touched: HOME and the XDG folders lie in a temporary folder. Whatever was
started on the desktop, by whomever, ends with it, each process by its id; also when the test that
uses it fails, is interrupted or is killed.
"""

import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

_PR_SET_PDEATHSIG = 1
_PR_SET_CHILD_SUBREAPER = 36
_libc = ctypes.CDLL(None, use_errno=True)

# Kept from the environment that we are started in; everything else is the desktop's own.
_KEPT = ("PATH", "TMPDIR", "USER", "LOGNAME", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS",
         "TSAN_OPTIONS")

_TINT2 = """panel_items = TSC
panel_size = 100% 32
panel_position = top center horizontal
systray_icon_size = 24
time1_format = %H:%M
"""


class DesktopError(Exception):
    """The desktop, or something awaited on it, did not come up."""


def wait_until(condition, what, seconds=60.0, pause=0.02):
    """The first true answer of `condition`, asked again until there is one."""
    end = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise DesktopError(f"waited {seconds:.0f} s in vain for {what}")
        time.sleep(pause)


def processes_below(pid):
    """The ids of all processes that descend from `pid`, the nearest first."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                stat = pathlib.Path("/proc", entry, "stat").read_text(errors="replace")
            except OSError:
                continue
            state, parent = stat.rpartition(")")[2].split()[:2]
            if state != "Z":
                children.setdefault(int(parent), []).append(int(entry))
    found, open_ = [], [pid]
    while open_:
        below = children.get(open_.pop(0), [])
        found += below
        open_ += below
    return found


class PrivateDesktop:
    """See the module. `environment` is what programs on it are given. With `guarded`, xfwm4 keeps
    the focus from windows that the user did not act in last (its prevent_focus_stealing)."""

    def __init__(self, size=(1280, 800), wm="openbox", tray=False, bus=True, dpi=96,
                 guarded=False):
        self.size, self.wm, self.tray, self.bus, self.dpi = size, wm, tray, bus, dpi
        self.guarded = guarded
        self.folder = None
        self.environment = {}

    def __enter__(self):
        # What is orphaned on the desktop becomes our child, so that it can be ended with it.
        _libc.prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        self._handlers = {number: signal.signal(number, self._interrupted)
                          for number in (signal.SIGTERM, signal.SIGHUP)}
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tavo-"))
        try:
            self._bring_up()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, *_):
        for number, handler in self._handlers.items():
            signal.signal(number, handler)
        self._end_everything()
        shutil.rmtree(self.folder, ignore_errors=True)

    @property
    def home(self):
        return self.folder / "home"

    def start(self, command, environment=None, log="program.log", **options):
        """Starts a program on the desktop. It ends when this process does."""
        return subprocess.Popen(
            [str(word) for word in command], env={**self.environment, **(environment or {})},
            stdin=subprocess.DEVNULL, stdout=open(self.folder / log, "ab"),
            stderr=subprocess.STDOUT, preexec_fn=_end_with_parent, **options)

    def run(self, *command):
        """The output of a program that ends by itself."""
        return subprocess.run([str(word) for word in command], env=self.environment, check=True,
                              capture_output=True, text=True, timeout=30).stdout

    def screenshot(self, path):
        path = pathlib.Path(path)
        path.parent.mkdir(parents=True, exist_ok=True)
        self.run("import", "-window", "root", f"png:{path}")
        return path

    def log(self, name="program.log"):
        try:
            return (self.folder / name).read_text(errors="replace")
        except OSError:
            return ""

    def _bring_up(self):
        folders = {"HOME": self.home, "XDG_RUNTIME_DIR": self.folder / "run",
                   "XDG_DATA_HOME": self.home / ".local/share",
                   "XDG_CONFIG_HOME": self.home / ".config",
                   "XDG_CACHE_HOME": self.home / ".cache"}
        for folder in folders.values():
            folder.mkdir(mode=0o700, parents=True, exist_ok=True)
        kept = {name: os.environ[name] for name in _KEPT if name in os.environ}
        self.environment = {**kept, **{name: str(path) for name, path in folders.items()},
                            "LANG": "C.UTF-8", "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
                            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                            # No bus, rather than one that a library starts and leaves behind.
                            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
        self._start_server()
        if self.bus:
            self._start_bus()
        if self.guarded:
            self._guard_focus()
        if self.wm:
            self.manager = self.start(self.wm.split(), log="wm.log")
            wait_until(self._manages_windows, f"the window manager {self.wm}", pause=0)
        if self.tray:
            (self.folder / "tint2rc").write_text(_TINT2)
            self.start(["tint2", "-c", self.folder / "tint2rc"], log="tray.log")
            wait_until(lambda: "tint2" in self.run("xwininfo", "-root", "-tree"), "the tray")

    def _start_server(self):
        width, height = self.size
        read, write = os.pipe()
        self.start(["Xvfb", "-displayfd", write, "-screen", "0", f"{width}x{height}x24",
                    "-dpi", self.dpi, "-nolisten", "tcp", "-noreset"],
                   log="server.log", pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as pipe:  # ends without a number when the server does
            number = pipe.readline().strip()
        if not number:
            raise DesktopError("no X server: " + self.log("server.log"))
        self.environment["DISPLAY"] = f":{number}"

    def _start_bus(self):
        read, write = os.pipe()
        self.start(["dbus-daemon", "--session", "--nofork", "--nopidfile",
                    f"--print-address={write}"], log="bus.log", pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as pipe:
            address = pipe.readline().strip()
        if not address:
            raise DesktopError("no session bus: " + self.log("bus.log"))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address

    def _guard_focus(self):
        folder = self.home / ".config/xfce4/xfconf/xfce-perchannel-xml"
        folder.mkdir(parents=True)
        (folder / "xfwm4.xml").write_text(
            '<?xml version="1.0" encoding="UTF-8"?>\n<channel name="xfwm4" version="1.0">'
            '<property name="general" type="empty">'
            '<property name="prevent_focus_stealing" type="bool" value="true"/>'
            "</property></channel>\n")

    def _root_property(self, name):
        return subprocess.run(["xprop", "-root", name], env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def _manages_windows(self):
        """Whether a window that is shown now is managed. A manager announces itself before it
        listens; what is shown in between stays unseen."""
        def windows():
            return self._root_property("_NET_CLIENT_LIST").count("0x")
        if "#" not in self._root_property("_NET_SUPPORTING_WM_CHECK"):
            time.sleep(0.02)
            return False
        probe = self.start(["xev"], log="probe.log")
        try:
            wait_until(windows, "a managed window", seconds=1.0)
        except DesktopError:
            return False
        finally:
            probe.kill()
            probe.wait()
        wait_until(lambda: not windows(), "the end of the probe")
        return True

    def _end_everything(self):
        """First asks, then does not ask any more; the newest first, the server last."""
        for number, patience in ((signal.SIGTERM, 3.0), (signal.SIGKILL, 3.0)):
            for pid in reversed(processes_below(os.getpid())):
                try:
                    os.kill(pid, number)
                except ProcessLookupError:
                    pass
            end = time.monotonic() + patience
            while processes_below(os.getpid()) and time.monotonic() < end:
                self._reap()
                time.sleep(0.01)
            self._reap()
            if not processes_below(os.getpid()):
                return

    @staticmethod
    def _reap():
        try:
            while os.waitpid(-1, os.WNOHANG)[0] != 0:
                pass
        except ChildProcessError:
            pass

    @staticmethod
    def _interrupted(number, _frame):
        raise SystemExit(128 + number)


def _end_with_parent():
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)
