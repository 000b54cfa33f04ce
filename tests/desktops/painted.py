"""When a part of an X server's screen changes, to the millisecond."""

import ctypes
import threading
import time
from ctypes import POINTER, c_char_p, c_int, c_uint, c_ulong, c_void_p

from private_desktop import DesktopError

_ALL_PLANES, _Z_PIXMAP = c_ulong(0xffffffff), c_int(2)


class _Image(ctypes.Structure):
    """As far as it is read here."""
    _fields_ = [("width", c_int), ("height", c_int), ("xoffset", c_int), ("format", c_int),
                ("data", c_void_p), ("byte_order", c_int), ("bitmap_unit", c_int),
                ("bitmap_bit_order", c_int), ("bitmap_pad", c_int), ("depth", c_int),
                ("bytes_per_line", c_int)]


class Patch:
    """A square of the screen of that display."""

    SIDE = 32

    def __init__(self, display, x, y):
        self._x11 = x11 = ctypes.CDLL("libX11.so.6")
        x11.XOpenDisplay.restype = c_void_p
        x11.XOpenDisplay.argtypes = [c_char_p]
        x11.XDefaultRootWindow.restype = c_ulong
        x11.XDefaultRootWindow.argtypes = [c_void_p]
        place = [c_void_p, c_ulong, c_int, c_int, c_uint, c_uint, c_ulong, c_int]
        x11.XGetImage.restype = x11.XGetSubImage.restype = POINTER(_Image)
        x11.XGetImage.argtypes = place
        x11.XGetSubImage.argtypes = [*place, POINTER(_Image), c_int, c_int]
        x11.XCloseDisplay.argtypes = [c_void_p]
        self._display = x11.XOpenDisplay(display.encode())
        if not self._display:
            raise DesktopError(f"no display {display}")
        self._place = (self._display, x11.XDefaultRootWindow(self._display), x, y, self.SIDE,
                       self.SIDE, _ALL_PLANES, _Z_PIXMAP)
        self._image = x11.XGetImage(*self._place)
        if not self._image:
            raise DesktopError(f"no picture of the screen at {x}, {y}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._x11.XCloseDisplay(self._display)

    def look(self):
        """Its pixels now."""
        self._x11.XGetSubImage(*self._place, self._image, 0, 0)
        image = self._image.contents
        return ctypes.string_at(image.data, image.bytes_per_line * image.height)

    def await_rest(self, seconds=0.5):
        """Its pixels, once they have stayed the same so long."""
        pixels, since = self.look(), time.monotonic()
        while time.monotonic() - since < seconds:
            time.sleep(0.02)
            now = self.look()
            if now != pixels:
                pixels, since = now, time.monotonic()
        return pixels

    def begin(self):
        """From now on a change counts. Looked for on a thread, because whatever causes it takes its
        time too."""
        self._changed = None
        before = self.look()

        def look_for_change():
            end = time.monotonic() + 20
            while self.look() == before:
                if time.monotonic() > end:
                    return
                time.sleep(0.0005)
            self._changed = time.monotonic()
        self._looking = threading.Thread(target=look_for_change)
        self._looking.start()

    def when(self):
        """When it first had other pixels than at begin(), by the monotonic clock."""
        self._looking.join()
        if self._changed is None:
            raise DesktopError("the screen has not changed for 20 s")
        return self._changed
