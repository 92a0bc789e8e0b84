#!/usr/bin/python3
"""Write the factory colour palettes as RIFF .pal files.

Usage: make_palettes.py [OUT_DIR]

OUT_DIR defaults to resources/pal in the source tree. Each file holds a
256-entry map used by the waterfall and intensity views. Standard library
only, so it runs on a bare build machine.

RIFF PAL layout (little-endian, 1048 bytes for 256 entries):
    "RIFF" u32 size-of-rest  "PAL "
    "data" u32 chunk-size (4 + 4 * count)
    u16 version (0x0300)  u16 count
    count * (R, G, B, flags=0)
"""

import struct
import sys
from pathlib import Path

COUNT = 256

# Perceptually uniform maps. viridis, magma, inferno and plasma were designed
# by Stéfan van der Walt and Nathaniel J. Smith (viridis with Eric Firing) and
# dedicated to the public domain under CC0.
# Each map below keeps the published sRGB entries 0, 8, 16, ...,
# 248 and 255 (33 anchors, rounded to 8 bits); the entries in between are
# interpolated linearly. The result stays within 2 levels of the published
# tables.
_ANCHOR_INDEX = list(range(0, COUNT, 8)) + [COUNT - 1]

_VIRIDIS = """
    440154 470d60 48186a 482374 472d7b 453781 424086 3e4989 3b528b 375b8d 33638d
    2f6b8e 2c728e 297a8e 26828e 23898e 21918c 1f988b 1fa088 22a785 28ae80 32b67a
    3fbc73 4ec36b 5ec962 70cf57 84d44b 98d83e addc30 c2df23 d8e219 ece51b fde725
"""

_MAGMA = """
    000004 030312 0a0822 130d34 1d1147 29115a 36106b 440f76 51127c 5d177f 6a1c81
    762181 832681 902a81 9c2e7f aa337d b73779 c43c75 d0416f dc4869 e75263 ef5d5e
    f56b5c f9795d fc8961 fd9869 fea772 feb67c fec488 fed395 fde2a3 fcf0b2 fcfdbf
"""

_INFERNO = """
    000004 040312 0b0724 150b37 210c4a 2f0a5b 3d0965 4a0c6b 57106e 64156e 71196e
    7d1e6d 8a226a 972766 a32c61 b0315b bc3754 c73e4c d24644 db503b e45a31 eb6628
    f1731d f68013 f98e09 fb9d07 fcac11 fbbc21 f9cb35 f5db4c f2ea69 f3f68a fcffa4
"""

_PLASMA = """
    0d0887 220690 310597 3f049c 4c02a1 5901a5 6600a7 7201a8 7e03a8 8a09a5 9511a1
    a01a9c aa2395 b32c8e bc3587 c43e7f cc4778 d35171 da5a6a e06363 e66c5c eb7655
    f0804e f58b47 f89540 fba139 fdac33 feb82c fdc527 fcd225 f8df25 f4ed27 f0f921
"""


def _to_byte(v):
    """Map 0..1 to 0..255, rounding half up."""
    return max(0, min(255, int(v * 255.0 + 0.5)))


def _parse_anchors(text):
    anchors = []
    for word in text.split():
        anchors.append(tuple(int(word[i:i + 2], 16) for i in (0, 2, 4)))
    if len(anchors) != len(_ANCHOR_INDEX):
        raise ValueError("anchor table has %d entries, expected %d"
                         % (len(anchors), len(_ANCHOR_INDEX)))
    return anchors


def from_anchors(text):
    """Expand an 8-bit anchor table to COUNT entries."""
    anchors = _parse_anchors(text)
    entries = []
    seg = 0
    for i in range(COUNT):
        while _ANCHOR_INDEX[seg + 1] < i:
            seg += 1
        i0, i1 = _ANCHOR_INDEX[seg], _ANCHOR_INDEX[seg + 1]
        t = (i - i0) / (i1 - i0)
        a, b = anchors[seg], anchors[seg + 1]
        entries.append(tuple(max(0, min(255, int(a[c] + (b[c] - a[c]) * t + 0.5)))
                             for c in range(3)))
    return entries


def _channel(stops, x):
    """Piecewise-linear channel value; stops are (position, value) pairs."""
    if x <= stops[0][0]:
        return stops[0][1]
    for (x0, v0), (x1, v1) in zip(stops, stops[1:]):
        if x <= x1:
            return v0 + (v1 - v0) * (x - x0) / (x1 - x0)
    return stops[-1][1]


def from_channel_stops(red, green, blue):
    entries = []
    for i in range(COUNT):
        x = i / (COUNT - 1)
        entries.append(tuple(_to_byte(_channel(s, x)) for s in (red, green, blue)))
    return entries


def from_colour_stops(stops):
    """stops: (position, (r, g, b)) with components in 0..1."""
    return from_channel_stops(*[[(x, rgb[c]) for x, rgb in stops] for c in range(3)])


def grey():
    return [(i, i, i) for i in range(COUNT)]


def rainbow():
    # Classic rainbow: dark blue, blue, cyan, yellow, red, dark red.
    return from_channel_stops(
        red=[(0.0, 0.0), (0.35, 0.0), (0.66, 1.0), (0.89, 1.0), (1.0, 0.5)],
        green=[(0.0, 0.0), (0.125, 0.0), (0.375, 1.0), (0.64, 1.0), (0.91, 0.0), (1.0, 0.0)],
        blue=[(0.0, 0.5), (0.11, 1.0), (0.34, 1.0), (0.65, 0.0), (1.0, 0.0)],
    )


def bwr():
    return from_colour_stops([
        (0.0, (0.0, 0.0, 1.0)),
        (0.5, (1.0, 1.0, 1.0)),
        (1.0, (1.0, 0.0, 0.0)),
    ])


def seismic():
    return from_colour_stops([
        (0.0, (0.0, 0.0, 0.3)),
        (0.25, (0.0, 0.0, 1.0)),
        (0.5, (1.0, 1.0, 1.0)),
        (0.75, (1.0, 0.0, 0.0)),
        (1.0, (0.5, 0.0, 0.0)),
    ])


PALETTES = [
    ("1_grey.pal", grey),
    ("2_rainbow.pal", rainbow),
    ("3_viridis.pal", lambda: from_anchors(_VIRIDIS)),
    ("4_magma.pal", lambda: from_anchors(_MAGMA)),
    ("5_inferno.pal", lambda: from_anchors(_INFERNO)),
    ("6_plasma.pal", lambda: from_anchors(_PLASMA)),
    ("7_bwr.pal", bwr),
    ("8_seismic.pal", seismic),
]


def encode_pal(entries):
    if len(entries) != COUNT:
        raise ValueError("palette must have %d entries" % COUNT)
    body = bytearray()
    for r, g, b in entries:
        body += bytes((r, g, b, 0))
    data = struct.pack("<HH", 0x0300, len(entries)) + bytes(body)
    chunk = b"data" + struct.pack("<I", len(data)) + data
    form = b"PAL " + chunk
    return b"RIFF" + struct.pack("<I", len(form)) + form


def main(argv):
    if len(argv) > 2 or (len(argv) == 2 and argv[1] in ("-h", "--help")):
        sys.stderr.write("usage: make_palettes.py [OUT_DIR]\n")
        return 2
    if len(argv) == 2:
        out_dir = Path(argv[1])
    else:
        out_dir = Path(__file__).resolve().parent.parent / "resources" / "pal"
    try:
        out_dir.mkdir(parents=True, exist_ok=True)
        for name, make in PALETTES:
            (out_dir / name).write_bytes(encode_pal(make()))
    except OSError as exc:
        sys.stderr.write("make_palettes.py: %s\n" % exc)
        return 1
    print("wrote %d palettes to %s" % (len(PALETTES), out_dir))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
