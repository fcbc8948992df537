#!/usr/bin/env python3
"""Draws the program's desktop icon: resources-src/desktop/pellucida.svg and,
from the same shapes, the 256 x 256 pellucida.png for desktops that want a
bitmap, and pellucida.ico for the Windows executable (the same PNG inside, as
Windows has read icons since Vista; it scales it down for small sizes). A dark sky in a rounded square, a tilted galaxy with a bright core,
the pale ring of an eyepiece around it, and a few stars.

Run again after changing a shape:
    python3 tools/icons/draw_app_icon.py
Needs only the Python standard library (the PNG is rendered here, 4 x 4
samples per pixel, in a few seconds).
"""
import math
import os
import struct
import zlib

SIZE = 256
SAMPLES = 4
HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "..", "..", "resources-src", "desktop")

# Gradient stops: (offset, "#rrggbb", opacity).
SKY = [(0.0, "#18214a", 1.0), (1.0, "#060914", 1.0)]
GALAXY = [(0.0, "#f4f7ff", 0.95), (0.18, "#c9d6f5", 0.75), (0.5, "#6f86c4", 0.32), (1.0, "#33447a", 0.0)]
CORE = [(0.0, "#fffdf4", 1.0), (0.4, "#ffeec8", 0.8), (1.0, "#ffd98a", 0.0)]
STAR = [(0.0, "#ffffff", 1.0), (0.3, "#eef3ff", 0.85), (1.0, "#dfe8ff", 0.0)]
RING = ("#7cc4c0", 0.55)

BOX = (16.0, 16.0, 224.0, 224.0, 48.0)  # x, y, width, height, corner radius
GALAXY_SHAPE = (128.0, 128.0, 86.0, 30.0, -28.0)  # centre, radii, rotation in degrees
CORE_SHAPE = (128.0, 128.0, 17.0)
RING_SHAPE = (128.0, 128.0, 94.0, 4.0)  # centre, radius, stroke width
STARS = [(70.0, 80.0, 8.5), (186.0, 72.0, 6.5), (188.0, 176.0, 8.0), (80.0, 186.0, 5.5),
         (150.0, 200.0, 4.5), (108.0, 52.0, 4.5), (206.0, 124.0, 4.0), (36.0, 128.0, 4.0),
         (128.0, 231.0, 3.5)]


def rgb(text):
    return tuple(int(text[i:i + 2], 16) / 255.0 for i in (1, 3, 5))


def gradient(stops, t):
    """Colour and opacity at t along the stops, as SVG interpolates them."""
    t = min(max(t, 0.0), 1.0)
    for (o0, c0, a0), (o1, c1, a1) in zip(stops, stops[1:]):
        if t <= o1:
            f = 0.0 if o1 == o0 else (t - o0) / (o1 - o0)
            return tuple(x + (y - x) * f for x, y in zip(rgb(c0), rgb(c1))), a0 + (a1 - a0) * f
    return rgb(stops[-1][1]), stops[-1][2]


def in_box(x, y):
    bx, by, bw, bh, r = BOX
    qx = abs(x - (bx + bw / 2)) - bw / 2 + r
    qy = abs(y - (by + bh / 2)) - bh / 2 + r
    return math.hypot(max(qx, 0.0), max(qy, 0.0)) + min(max(qx, qy), 0.0) - r <= 0


def layers(x, y):
    """The shapes at (x, y), bottom first, as (colour, opacity)."""
    if not in_box(x, y):
        return
    yield gradient(SKY, (y - BOX[1]) / BOX[3])
    cx, cy, rx, ry, angle = GALAXY_SHAPE
    a = math.radians(-angle)
    dx, dy = x - cx, y - cy
    u = dx * math.cos(a) - dy * math.sin(a)
    v = dx * math.sin(a) + dy * math.cos(a)
    t = math.hypot(u / rx, v / ry)
    if t <= 1.0:
        yield gradient(GALAXY, t)
    cx, cy, r, width = RING_SHAPE
    if abs(math.hypot(x - cx, y - cy) - r) <= width / 2:
        yield rgb(RING[0]), RING[1]
    cx, cy, r = CORE_SHAPE
    t = math.hypot(x - cx, y - cy) / r
    if t <= 1.0:
        yield gradient(CORE, t)
    for sx, sy, r in STARS:
        t = math.hypot(x - sx, y - sy) / r
        if t <= 1.0:
            yield gradient(STAR, t)


def render():
    rows = []
    step = 1.0 / SAMPLES
    for py in range(SIZE):
        row = bytearray([0])  # PNG filter: none
        for px in range(SIZE):
            acc = [0.0, 0.0, 0.0, 0.0]  # premultiplied
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    colour, alpha = (0.0, 0.0, 0.0), 0.0
                    for c, a in layers(px + (sx + 0.5) * step, py + (sy + 0.5) * step):
                        colour = tuple(ci * a + co * (1 - a) for ci, co in zip(c, colour))
                        alpha = a + alpha * (1 - a)
                    for i in range(3):
                        acc[i] += colour[i]
                    acc[3] += alpha
            n = SAMPLES * SAMPLES
            alpha = acc[3] / n
            for i in range(3):
                row.append(round(255 * (acc[i] / n / alpha if alpha > 0 else 0.0)))
            row.append(round(255 * alpha))
        rows.append(bytes(row))
    return b"".join(rows)


def png(pixels):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)
    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(pixels, 9)) +
            chunk(b"IEND", b""))


def svg_stops(stops):
    return "".join(f'<stop offset="{o:g}" stop-color="{c}" stop-opacity="{a:g}"/>' for o, c, a in stops)


def svg():
    bx, by, bw, bh, r = BOX
    gx, gy, grx, gry, angle = GALAXY_SHAPE
    cx, cy, cr = CORE_SHAPE
    rx, ry, rr, rw = RING_SHAPE
    stars = "\n".join(f'  <circle cx="{x:g}" cy="{y:g}" r="{s:g}" fill="url(#star)"/>' for x, y, s in STARS)
    return f"""<?xml version="1.0" encoding="UTF-8"?>
<!-- Pellucida's icon; drawn by tools/icons/draw_app_icon.py, which also renders pellucida.png. -->
<svg xmlns="http://www.w3.org/2000/svg" width="{SIZE}" height="{SIZE}" viewBox="0 0 {SIZE} {SIZE}">
  <defs>
    <linearGradient id="sky" x1="0" y1="0" x2="0" y2="1">{svg_stops(SKY)}</linearGradient>
    <radialGradient id="galaxy">{svg_stops(GALAXY)}</radialGradient>
    <radialGradient id="core">{svg_stops(CORE)}</radialGradient>
    <radialGradient id="star">{svg_stops(STAR)}</radialGradient>
  </defs>
  <rect x="{bx:g}" y="{by:g}" width="{bw:g}" height="{bh:g}" rx="{r:g}" fill="url(#sky)"/>
  <ellipse cx="{gx:g}" cy="{gy:g}" rx="{grx:g}" ry="{gry:g}" transform="rotate({angle:g} {gx:g} {gy:g})" fill="url(#galaxy)"/>
  <circle cx="{rx:g}" cy="{ry:g}" r="{rr:g}" fill="none" stroke="{RING[0]}" stroke-opacity="{RING[1]:g}" stroke-width="{rw:g}"/>
  <circle cx="{cx:g}" cy="{cy:g}" r="{cr:g}" fill="url(#core)"/>
{stars}
</svg>
"""


def ico(png_bytes):
    # One directory entry; width and height 0 mean 256.
    header = struct.pack("<HHH", 0, 1, 1)
    entry = struct.pack("<BBBBHHII", 0, 0, 0, 0, 1, 32, len(png_bytes), 6 + 16)
    return header + entry + png_bytes


def main():
    os.makedirs(OUT, exist_ok=True)
    with open(os.path.join(OUT, "pellucida.svg"), "w") as f:
        f.write(svg())
    picture = png(render())
    with open(os.path.join(OUT, "pellucida.png"), "wb") as f:
        f.write(picture)
    with open(os.path.join(OUT, "pellucida.ico"), "wb") as f:
        f.write(ico(picture))


if __name__ == "__main__":
    main()
