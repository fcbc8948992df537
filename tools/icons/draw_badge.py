#!/usr/bin/env python3
"""Draws the badge the VR page shows behind the viewer:
resources/madewithpellucidaurlbadge.png. A dark rounded plate with a thin
teal edge, the program's galaxy-in-an-eyepiece mark on the left, and
"MADE WITH" over "PELLUCIDA" in a small block lettering of its own, so that
no font is needed. Transparent outside the plate (RGBA).

Run again after changing a shape:
    python3 tools/icons/draw_badge.py
Needs only the Python standard library.
"""
import math
import os
import struct
import zlib

WIDTH, HEIGHT = 384, 112
SAMPLES = 3
HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "..", "..", "resources", "madewithpellucidaurlbadge.png")

PLATE = (4.0, 4.0, 376.0, 104.0, 22.0)  # x, y, width, height, corner radius
PLATE_COLOUR = (0.05, 0.07, 0.14)
EDGE_COLOUR = (0.49, 0.77, 0.75)
TEXT_DIM = (0.62, 0.68, 0.80)
TEXT_BRIGHT = (0.93, 0.95, 1.0)
MARK = (58.0, 56.0)  # centre of the galaxy mark

# 5 x 7 block letters, one string per row, "#" set.
GLYPHS = {
    "A": [".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"],
    "C": [".####", "#....", "#....", "#....", "#....", "#....", ".####"],
    "D": ["####.", "#...#", "#...#", "#...#", "#...#", "#...#", "####."],
    "E": ["#####", "#....", "#....", "####.", "#....", "#....", "#####"],
    "H": ["#...#", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"],
    "I": ["#####", "..#..", "..#..", "..#..", "..#..", "..#..", "#####"],
    "L": ["#....", "#....", "#....", "#....", "#....", "#....", "#####"],
    "M": ["#...#", "##.##", "#.#.#", "#.#.#", "#...#", "#...#", "#...#"],
    "P": ["####.", "#...#", "#...#", "####.", "#....", "#....", "#...."],
    "T": ["#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."],
    "U": ["#...#", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."],
    "W": ["#...#", "#...#", "#...#", "#.#.#", "#.#.#", "##.##", "#...#"],
    " ": [".....", ".....", ".....", ".....", ".....", ".....", "....."],
}


def text_cells(text, x0, y0, cell, gap):
    """The set rectangles of a line of block letters."""
    cells = []
    for i, ch in enumerate(text):
        gx = x0 + i * (5 * cell + gap)
        for row, bits in enumerate(GLYPHS[ch]):
            for col, bit in enumerate(bits):
                if bit == "#":
                    cells.append((gx + col * cell, y0 + row * cell, cell))
    return cells


DIM_CELLS = text_cells("MADE WITH", 106.0, 22.0, 3.0, 3.0)
BRIGHT_CELLS = text_cells("PELLUCIDA", 106.0, 52.0, 5.0, 4.0)


def plate_distance(x, y):
    bx, by, bw, bh, r = PLATE
    qx = abs(x - (bx + bw / 2)) - bw / 2 + r
    qy = abs(y - (by + bh / 2)) - bh / 2 + r
    return math.hypot(max(qx, 0.0), max(qy, 0.0)) + min(max(qx, qy), 0.0) - r


def in_cells(cells, x, y):
    return any(cx <= x < cx + c and cy <= y < cy + c for cx, cy, c in cells)


def sample(x, y):
    """Colour and coverage at (x, y)."""
    d = plate_distance(x, y)
    if d > 0:
        return (0.0, 0.0, 0.0), 0.0
    colour = PLATE_COLOUR
    if d > -2.0:
        colour = EDGE_COLOUR
    dx, dy = x - MARK[0], y - MARK[1]
    ring = abs(math.hypot(dx, dy) - 38.0)
    if ring < 2.0:
        colour = EDGE_COLOUR
    # The tilted galaxy: brightness falls off over an ellipse.
    a = math.radians(-28.0)
    u = (dx * math.cos(a) + dy * math.sin(a)) / 30.0
    v = (-dx * math.sin(a) + dy * math.cos(a)) / 10.0
    glow = math.exp(-2.2 * (u * u + v * v)) + 0.9 * math.exp(-(dx * dx + dy * dy) / 30.0)
    if glow > 0.02:
        g = min(glow, 1.0)
        colour = tuple(c * (1 - g) + w * g for c, w in zip(colour, (0.86, 0.90, 1.0)))
    if in_cells(DIM_CELLS, x, y):
        colour = TEXT_DIM
    elif in_cells(BRIGHT_CELLS, x, y):
        colour = TEXT_BRIGHT
    return colour, 1.0


def render():
    rows = []
    step = 1.0 / SAMPLES
    for py in range(HEIGHT):
        row = bytearray([0])
        for px in range(WIDTH):
            acc = [0.0, 0.0, 0.0]
            cover = 0.0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    c, a = sample(px + (sx + 0.5) * step, py + (sy + 0.5) * step)
                    for i in range(3):
                        acc[i] += c[i] * a
                    cover += a
            n = SAMPLES * SAMPLES
            alpha = cover / n
            pixel = [acc[i] / cover if cover else 0.0 for i in range(3)]
            row += bytes(int(round(v * 255)) for v in pixel) + bytes([int(round(alpha * 255))])
        rows.append(bytes(row))
    return b"".join(rows)


def write_png(path, data):
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 6, 0, 0, 0)
    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(data, 9)) +
                chunk(b"IEND", b""))


if __name__ == "__main__":
    write_png(OUT, render())
