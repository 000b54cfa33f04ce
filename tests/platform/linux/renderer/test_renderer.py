import gzip
import os
import pathlib
import re
import socket
import struct
import subprocess
import tempfile
import unittest
import zlib

RENDERER = os.environ.get("TAVO_ICON_RENDERER", "")
HICOLOR = pathlib.Path("/usr/share/icons/hicolor")


class Renderer:
    """The icon renderer, spoken to as the launcher does."""

    def __init__(self, *before):
        self._ours, theirs = socket.socketpair()
        self._process = subprocess.Popen([*before, RENDERER], stdout=theirs,
                                         stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        theirs.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._ours.close()
        self._process.wait(timeout=20)

    def draw(self, path, side):
        """The pixels of the icon, four bytes each; None where there is no picture, or where the
        renderer ended over it."""
        name = os.fsencode(path)
        self._ours.sendall(struct.pack("=II", side, len(name)) + name)
        count = self._ours.recv(4, socket.MSG_WAITALL)
        if len(count) < 4 or not struct.unpack("=I", count)[0]:
            return None
        pixels = self._ours.recv(4 * side * side, socket.MSG_WAITALL)
        return pixels if len(pixels) == 4 * side * side else None


class RendererTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def put(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return path


class Drawings(RendererTest):
    SIDE = 136

    def test_are_what_librsvg_itself_makes_of_every_drawing_of_hicolor(self):
        drawings = sorted(HICOLOR.rglob("*.svg"))
        self.assertGreater(len(drawings), 5)
        with Renderer() as renderer:
            for path in drawings:
                with self.subTest(path=str(path)):
                    ours = renderer.draw(path, self.SIDE)
                    self.assertIsNotNone(ours)
                    theirs = self.reference(path)
                    distances = [abs(one - other) for one, other in zip(ours, theirs)]
                    # rsvg-convert scales to whole pixels and writes a PNG, whose colours are not
                    # premultiplied: a few values are rounded otherwise.
                    self.assertLessEqual(max(distances), 16)
                    self.assertLess(sum(distance > 3 for distance in distances),
                                    len(distances) / 1000)

    def reference(self, path):
        """The picture that rsvg-convert makes, as premultiplied pixels in the machine's order."""
        side = str(self.SIDE)
        made = self.folder / "reference.png"
        subprocess.run(["rsvg-convert", "--keep-aspect-ratio", "--width", side, "--height", side,
                        "--page-width", side, "--page-height", side, "--output", made, path],
                       check=True)
        straight = subprocess.run(["convert", made, "-depth", "8", "bgra:-"], check=True,
                                  capture_output=True).stdout
        pixels = bytearray(straight)
        for at in range(0, len(pixels), 4):
            alpha = pixels[at + 3]
            for channel in range(3):
                pixels[at + channel] = (pixels[at + channel] * alpha + 127) // 255
        return pixels


class SystemCalls(RendererTest):
    """What strace(1) sees of it."""

    # The folders of its libraries and of what they read at their start; of fonts, for drawings with
    # text, and their settings; of the kernel's own words about processor and memory.
    OWN = re.compile(r"/(usr/)?lib|/etc/ld\.so|/usr/libexec/|/etc/fonts|/usr/share/(fonts|fontconfig|"
                     r"mime|locale|glib)|/usr/local/share/(fonts|mime)|/var/cache/fontconfig|"
                     r"/(proc|sys|dev/urandom)|/etc/(localtime|nsswitch|passwd)")
    HOME = re.compile(r"/\.(cache|local/share|config|fonts)\b")

    def pictures(self):
        def svg(content, head=""):
            return (f"{head}<svg xmlns='http://www.w3.org/2000/svg' "
                    "xmlns:xlink='http://www.w3.org/1999/xlink' viewBox='0 0 64 64'>"
                    f"{content}</svg>").encode()

        secret = self.put("secret.png", b"")
        yield self.put("plain.svg", svg("<rect width='64' height='64' fill='red'/>"))
        yield self.put("text.svg", svg("<text x='4' y='30'>Tavo</text>"))
        yield self.put("filter.svg", svg("<filter id='f'><feGaussianBlur stdDeviation='9'/></filter>"
                                         "<rect width='64' height='64' filter='url(#f)'/>"))
        for number, link in enumerate((str(secret), f"file://{secret}", "secret.png",
                                       "http://127.0.0.1:9/a.png")):
            yield self.put(f"link{number}.svg", svg(f"<image width='9' height='9' href='{link}'/>"
                                                    f"<image width='9' height='9' "
                                                    f"xlink:href='{link}'/>"))
        yield self.put("style.svg", svg(f"<style>@import url('{secret}');</style><rect/>",
                                        f"<?xml-stylesheet href='{secret}'?>"))
        yield self.put("entity.svg", svg("<title>&x;</title>",
                                         f"<!DOCTYPE svg [<!ENTITY x SYSTEM 'file://{secret}'>]>"))
        yield self.put("nested.svgz", gzip.compress(gzip.compress(svg("<rect/>"))))
        yield self.put("endless.svg", svg("<g id='a'><circle r='9'/></g>"
                                          + "<use xlink:href='#a'/>" * 100_000))
        yield self.put("noise.png", b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 64)
        yield self.put("noise", bytes(range(256)) * 64)
        head = struct.pack(">IIBBBBB", 2, 2, 8, 0, 0, 0, 0)
        yield self.put("small.png", b"\x89PNG\r\n\x1a\n" + b"".join(
            struct.pack(">I", len(content)) + kind + content
            + struct.pack(">I", zlib.crc32(kind + content))
            for kind, content in ((b"IHDR", head), (b"IDAT", zlib.compress(bytes(6))), (b"IEND", b""))))
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        yield pipe
        yield self.folder
        yield pathlib.Path("/dev/zero")

    def test_open_what_was_asked_for_and_its_libraries_and_fonts_and_write_nothing(self):
        asked = [str(path) for path in self.pictures()]
        log = self.folder / "strace.log"
        for path in asked:
            with Renderer("strace", "-f", "-A", "-s", "4096", "-o", str(log), "-e",
                          "trace=%file,%network,%process,write,pwrite64,writev") as renderer:
                renderer.draw(path, 68)
        lines = log.read_text().splitlines()
        self.assertGreater(len(lines), 100)
        started = [line for line in lines if "execve(" in line and "= 0" in line]
        self.assertGreaterEqual(len(started), len(asked))
        self.assertTrue(all(RENDERER in line for line in started), started)
        for line in lines:
            call = re.match(r"\d+ +(\w+)\(", line)
            if not call:
                continue
            name, succeeded = call[1], not re.search(r"= -1 \w+ \(", line)
            with self.subTest(line=line):
                self.assertNotIn(name, {"socket", "connect", "bind", "fork", "vfork"})
                if name in {"open", "openat"} and succeeded:
                    self.assertNotRegex(line, r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC")
                    opened = os.path.normpath(re.search(r'"([^"]*)"', line)[1])
                    self.assertTrue(opened in asked or self.OWN.match(opened)
                                    or self.HOME.search(opened), opened)
                if name in {"write", "pwrite64", "writev"}:
                    self.assertRegex(line, r"^\d+ +write\(\d+, \"(\\1|\\0)+")
                if name in {"unlink", "unlinkat", "rename", "mkdir", "chmod", "creat", "symlink"}:
                    self.assertFalse(succeeded)


if __name__ == "__main__":
    unittest.main()
