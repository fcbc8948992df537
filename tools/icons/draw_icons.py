#!/usr/bin/env python3
"""Draws the message-box icons as 256 x 256 PNG pictures into resources-src/icons.

Flat, modern shapes from signed distance functions, anti-aliased over one
pixel; the build encodes them as .sqi. Run again after changing a shape:
    python3 tools/icons/draw_icons.py
Needs only the Python standard library.
"""
import math
import os
import struct
import zlib

SIZE = 256
HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "..", "..", "resources-src", "icons")


def hex_rgb(text):
    return tuple(int(text[i:i + 2], 16) for i in (1, 3, 5))


# --- distance functions (negative inside), in pixels --------------------------

def circle(px, py, cx, cy, r):
    return math.hypot(px - cx, py - cy) - r


def segment(px, py, ax, ay, bx, by, r):
    """A capsule: the segment a-b thickened by r."""
    dx, dy = bx - ax, by - ay
    t = max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)))
    return math.hypot(px - ax - t * dx, py - ay - t * dy) - r


def rounded_box(px, py, cx, cy, hw, hh, r):
    qx = abs(px - cx) - hw + r
    qy = abs(py - cy) - hh + r
    return math.hypot(max(qx, 0.0), max(qy, 0.0)) + min(max(qx, qy), 0.0) - r


def triangle(px, py, pts, r):
    """Rounded triangle: the exact triangle distance minus r."""
    d = float("inf")
    inside = True
    for i in range(3):
        ax, ay = pts[i]
        bx, by = pts[(i + 1) % 3]
        ex, ey = bx - ax, by - ay
        wx, wy = px - ax, py - ay
        t = max(0.0, min(1.0, (wx * ex + wy * ey) / (ex * ex + ey * ey)))
        d = min(d, math.hypot(wx - t * ex, wy - t * ey))
        if ex * wy - ey * wx < 0:
            inside = False
    return (-d if inside else d) - r


def coverage(d):
    return max(0.0, min(1.0, 0.5 - d))


# --- glyphs -------------------------------------------------------------------

def exclamation(px, py, cx, top, bottom, width):
    stem = segment(px, py, cx, top, cx, bottom - 2.6 * width, width / 2)
    dot = circle(px, py, cx, bottom - width * 0.55, width * 0.62)
    return min(stem, dot)


def info_glyph(px, py, cx, cy):
    stem = segment(px, py, cx, cy - 12, cx, cy + 46, 13)
    dot = circle(px, py, cx, cy - 48, 15.5)
    return min(stem, dot)


def cross(px, py, cx, cy, arm, width):
    a = segment(px, py, cx - arm, cy - arm, cx + arm, cy + arm, width / 2)
    b = segment(px, py, cx - arm, cy + arm, cx + arm, cy - arm, width / 2)
    return min(a, b)


def check(px, py, cx, cy, width):
    a = segment(px, py, cx - 46, cy + 2, cx - 14, cy + 34, width / 2)
    b = segment(px, py, cx - 14, cy + 34, cx + 50, cy - 32, width / 2)
    return min(a, b)


# --- icons ----------------------------------------------------------------------
# Each returns (shape distance, glyph distance) at a pixel centre.

C = SIZE / 2


def alert(px, py):
    return rounded_box(px, py, C, C, 112, 112, 44), exclamation(px, py, C, 62, 196, 30)


def warning(px, py):
    pts = [(C, 26), (238, 222), (18, 222)]
    return triangle(px, py, pts, 14), exclamation(px, py, C, 96, 204, 26)


def information(px, py):
    return circle(px, py, C, C, 114), info_glyph(px, py, C, C + 6)


def error(px, py):
    return circle(px, py, C, C, 114), cross(px, py, C, C, 44, 30)


def success(px, py):
    return circle(px, py, C, C, 114), check(px, py, C, C, 30)


ICONS = {
    # name: (shape, base colour, glyph colour)
    "icon_alert": (alert, "#7C5CFA", "#FFFFFF"),
    "icon_warning": (warning, "#F5A524", "#1B1F24"),
    "icon_information": (information, "#3B82F6", "#FFFFFF"),
    "icon_error": (error, "#EF4444", "#FFFFFF"),
    "icon_success": (success, "#22C55E", "#FFFFFF"),
}


def render(shape, base, glyph):
    base, glyph = hex_rgb(base), hex_rgb(glyph)
    rows = []
    for y in range(SIZE):
        row = bytearray([0])  # PNG filter: none
        for x in range(SIZE):
            d_shape, d_glyph = shape(x + 0.5, y + 0.5)
            a = coverage(d_shape)
            g = coverage(d_glyph) if a > 0 else 0.0
            rgb = [round(b * (1 - g) + c * g) for b, c in zip(base, glyph)]
            row += bytes(rgb + [round(a * 255)])
        rows.append(bytes(row))
    return b"".join(rows)


def png(raw):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)
    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9))
            + chunk(b"IEND", b""))


def main():
    os.makedirs(OUT, exist_ok=True)
    for name, (shape, base, glyph) in ICONS.items():
        with open(os.path.join(OUT, name + ".png"), "wb") as f:
            f.write(png(render(shape, base, glyph)))
        print("wrote", name + ".png")


if __name__ == "__main__":
    main()
