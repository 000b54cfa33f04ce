"""A font made wider than it was: what a desktop's interface font may be, at its worst."""

import pathlib
import struct
import subprocess

# What would undo the widening, or was made for the old widths: instructions and positioning.
_DROPPED = {b"fpgm", b"prep", b"cvt ", b"gasp", b"GPOS", b"kern", b"hdmx", b"LTSH", b"DSIG"}

_ON_CURVE, _X_SHORT, _Y_SHORT, _REPEAT, _X_SAME, _Y_SAME = 1, 2, 4, 8, 16, 32
_WORDS, _XY, _SCALE, _MORE, _XY_SCALE, _2X2, _INSTRUCTIONS = 1, 2, 8, 32, 64, 128, 256


def configuration(folder, factor):
    """Fills `folder` with DejaVu Sans, regular and bold, `factor` times as wide; answers the
    environment in which programs find no other font."""
    folder = pathlib.Path(folder)
    (folder / "fonts").mkdir(parents=True)
    for style in ("Book", "Bold"):
        source = subprocess.run(["fc-match", "-f", "%{file}", f"DejaVu Sans:style={style}"],
                                check=True, capture_output=True, text=True).stdout
        target = folder / "fonts" / f"{style}.ttf"
        target.write_bytes(widened(pathlib.Path(source).read_bytes(), factor))
    settings = folder / "fonts.conf"
    settings.write_text('<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd">\n'
                        f"<fontconfig><dir>{folder / 'fonts'}</dir>"
                        f"<cachedir>{folder / 'cache'}</cachedir></fontconfig>\n")
    return {"FONTCONFIG_FILE": str(settings)}


def widened(font, factor):
    """The TrueType font `font` with all widths times `factor`."""
    count = struct.unpack(">H", font[4:6])[0]
    tables = {}
    for number in range(count):
        tag, _, offset, length = struct.unpack_from(">4sLLL", font, 12 + 16 * number)
        if tag not in _DROPPED:
            tables[tag] = font[offset:offset + length]

    def wide(value):
        return max(-32768, min(32767, round(value * factor)))

    long_offsets = struct.unpack_from(">h", tables[b"head"], 50)[0] == 1
    glyphs = struct.unpack_from(">H", tables[b"maxp"], 4)[0]
    offsets = struct.unpack_from(f">{glyphs + 1}{'L' if long_offsets else 'H'}", tables[b"loca"])
    offsets = [each * (1 if long_offsets else 2) for each in offsets]
    drawn = [_glyph(tables[b"glyf"][start:end], wide) for start, end in zip(offsets, offsets[1:])]
    tables[b"glyf"] = b"".join(drawn)
    places = [0]
    for glyph in drawn:
        places.append(places[-1] + len(glyph))
    tables[b"loca"] = struct.pack(f">{glyphs + 1}L", *places)

    measures = struct.unpack_from(">H", tables[b"hhea"], 34)[0]
    metrics = tables[b"hmtx"]
    advances = [(min(65535, round(advance * factor)), wide(bearing)) for advance, bearing
                in struct.iter_unpack(">Hh", metrics[:4 * measures])]
    bearings = [wide(bearing) for bearing, in struct.iter_unpack(">h", metrics[4 * measures:])]
    tables[b"hmtx"] = (b"".join(struct.pack(">Hh", *each) for each in advances)
                       + b"".join(struct.pack(">h", each) for each in bearings))

    head = bytearray(tables[b"head"])
    for at in (36, 40):  # the leftmost and the rightmost point of all glyphs
        struct.pack_into(">h", head, at, wide(struct.unpack_from(">h", head, at)[0]))
    struct.pack_into(">h", head, 50, 1)
    tables[b"head"] = bytes(head)
    hhea = bytearray(tables[b"hhea"])
    struct.pack_into(">H", hhea, 10, max(advance for advance, _ in advances))
    tables[b"hhea"] = bytes(hhea)
    return _file(tables)


def _file(tables):
    offset = 12 + 16 * len(tables)
    directory, content = b"", b""
    for tag in sorted(tables):
        table = tables[tag]
        directory += struct.pack(">4sLLL", tag, 0, offset + len(content), len(table))
        content += table + bytes(-len(table) % 4)
    return struct.pack(">LHHHH", 0x00010000, len(tables), 0, 0, 0) + directory + content


def _glyph(glyph, wide):
    if not glyph:
        return glyph
    contours, left, low, right, high = struct.unpack_from(">5h", glyph)
    header = struct.pack(">5h", contours, wide(left), low, wide(right), high)
    new = header + (_outline(glyph, contours, wide) if contours >= 0 else _parts(glyph, wide))
    return new + bytes(-len(new) % 4)


def _outline(glyph, contours, wide):
    ends = struct.unpack_from(f">{contours}H", glyph, 10)
    at = 10 + 2 * contours
    at += 2 + struct.unpack_from(">H", glyph, at)[0]
    points = ends[-1] + 1 if ends else 0
    flags = []
    while len(flags) < points:
        flag = glyph[at]
        at += 1
        times = 1
        if flag & _REPEAT:
            times += glyph[at]
            at += 1
        flags += [flag] * times
    axes = []
    for short, same in ((_X_SHORT, _X_SAME), (_Y_SHORT, _Y_SAME)):
        position, positions = 0, []
        for flag in flags:
            if flag & short:
                position += glyph[at] if flag & same else -glyph[at]
                at += 1
            elif not flag & same:
                position += struct.unpack_from(">h", glyph, at)[0]
                at += 2
            positions.append(position)
        axes.append(positions)
    axes[0] = [wide(position) for position in axes[0]]
    steps = [[now - before for before, now in zip([0] + axis, axis)] for axis in axes]
    return (struct.pack(f">{contours}HH", *ends, 0) + bytes(flag & _ON_CURVE for flag in flags)
            + b"".join(struct.pack(f">{points}h", *axis) for axis in steps))


def _parts(glyph, wide):
    at, new, more = 10, b"", True
    while more:
        flags, number = struct.unpack_from(">HH", glyph, at)
        at += 4
        kind = ">hh" if flags & _WORDS else (">bb" if flags & _XY else ">BB")
        first, second = struct.unpack_from(kind, glyph, at)
        at += struct.calcsize(kind)
        size = 2 * (1 if flags & _SCALE else 2 if flags & _XY_SCALE else 4 if flags & _2X2 else 0)
        new += struct.pack(">HH", (flags | _WORDS) & ~_INSTRUCTIONS, number)
        new += struct.pack(">hh", wide(first) if flags & _XY else first, second)
        new += glyph[at:at + size]
        at += size
        more = flags & _MORE
    return new
