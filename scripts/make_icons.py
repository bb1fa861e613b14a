#!/usr/bin/env python3
"""Draws the bundle's artwork: resources/icons/NIMHeader.png and resources/icons/NIMRootIcon.png.

The header is a violet-to-blue sky with soft light bands and the Nimbra mark (a rounded "N" made of
three strokes); the root icon is the same mark on a rounded square. Pure Python, no dependencies.
"""
import math
import struct
import sys
import zlib
from pathlib import Path

VIOLET = (138, 78, 189)
BLUE = (49, 82, 222)
NIGHT = (28, 22, 64)


def mix(a, b, t):
    t = max(0.0, min(1.0, t))
    return tuple(a[i] + (b[i] - a[i]) * t for i in range(3))


def png(path, width, height, pixel):
    rows = bytearray()
    for y in range(height):
        rows.append(0)
        for x in range(width):
            r, g, b, a = pixel(x, y)
            rows += bytes((int(r + 0.5), int(g + 0.5), int(b + 0.5), int(a + 0.5)))
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF)
    data = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
    data += chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b"")
    Path(path).write_bytes(data)


def segment_distance(px, py, ax, ay, bx, by):
    dx, dy = bx - ax, by - ay
    t = max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)))
    return math.hypot(px - (ax + t * dx), py - (ay + t * dy))


def mark_coverage(x, y, cx, cy, size):
    """How much of the pixel the "N" mark covers (0..1): three rounded strokes."""
    h = size / 2
    left, right, top, bottom = cx - h * 0.55, cx + h * 0.55, cy - h * 0.7, cy + h * 0.7
    width = size * 0.07
    d = min(segment_distance(x, y, left, bottom, left, top),
            segment_distance(x, y, left, top, right, bottom),
            segment_distance(x, y, right, bottom, right, top))
    return max(0.0, min(1.0, width - d + 0.5))


def header(x, y, w, h):
    u, v = x / w, y / h
    base = mix(mix(VIOLET, BLUE, u * 0.85 + v * 0.3), NIGHT, v * 0.45)
    # Soft light bands, like an aurora over the home screen.
    glow = 0.0
    for i, (freq, phase, height, strength) in enumerate(((2.2, 0.4, 0.34, 0.30), (3.1, 1.7, 0.52, 0.22), (1.4, 2.9, 0.70, 0.16))):
        centre = height + 0.06 * math.sin(u * freq * math.pi + phase)
        glow += strength * math.exp(-((v - centre) / 0.07) ** 2)
    colour = mix(base, (255, 255, 255), glow)
    cover = mark_coverage(x, y, w * 0.5, h * 0.47, h * 0.42)
    colour = mix(colour, (255, 255, 255), cover * 0.92)
    return (*colour, 255)


def icon(x, y, s):
    radius = s * 0.22
    qx = max(abs(x + 0.5 - s / 2) - (s / 2 - radius), 0.0)
    qy = max(abs(y + 0.5 - s / 2) - (s / 2 - radius), 0.0)
    inside = max(0.0, min(1.0, radius - math.hypot(qx, qy) + 0.5))
    colour = mix(VIOLET, BLUE, (x + y) / (2 * s))
    colour = mix(colour, (255, 255, 255), mark_coverage(x, y, s / 2, s / 2, s * 0.62))
    return (*colour, 255 * inside)


def main(folder):
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    png(folder / "NIMHeader.png", 1200, 560, lambda x, y: header(x, y, 1200, 560))
    png(folder / "NIMRootIcon.png", 120, 120, lambda x, y: icon(x, y, 120))


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "resources" / "icons")
