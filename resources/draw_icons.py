#!/usr/bin/env python3
"""Draws Tesk's icons (standard library only): the 24x24 toolbar and window
icons into images/ with a 48x48 "@2x" twin for high-density screens, and the
application icon for the desktop into icons/hicolor/ at every size the
freedesktop icon theme knows, beside its scalable SVG.

Each icon is a handful of shapes in a 24-unit square, rasterised with 4x4
supersampling, so edges are anti-aliased at any size. Run it again after
changing a shape and commit the output."""
import math
import os
import struct
import zlib

SIZE = 24
SUB = 4
APP_ID = "works.orvane.Tesk"
HICOLOR_SIZES = (16, 22, 24, 32, 48, 64, 128, 256)


def png_bytes(pixels):
    size = len(pixels)
    raw = b"".join(b"\x00" + bytes(row) for row in pixels)

    def chunk(tag, data):
        c = struct.pack(">I", len(data)) + tag + data
        return c + struct.pack(">I", zlib.crc32(tag + data) & 0xFFFFFFFF)

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def inside_polygon(x, y, pts):
    hit = False
    j = len(pts) - 1
    for i in range(len(pts)):
        xi, yi = pts[i]
        xj, yj = pts[j]
        if (yi > y) != (yj > y) and x < (xj - xi) * (y - yi) / (yj - yi) + xi:
            hit = not hit
        j = i
    return hit


def segment_distance(x, y, a, b):
    ax, ay = a
    bx, by = b
    dx, dy = bx - ax, by - ay
    length2 = dx * dx + dy * dy
    t = 0.0 if length2 == 0 else max(0.0, min(1.0, ((x - ax) * dx + (y - ay) * dy) / length2))
    px, py = ax + t * dx, ay + t * dy
    return math.hypot(x - px, y - py)


class Shape:
    def __init__(self, colour, test):
        self.colour = colour
        self.test = test


def polygon(colour, pts):
    return Shape(colour, lambda x, y: inside_polygon(x, y, pts))


def polyline(colour, pts, width):
    segs = list(zip(pts, pts[1:]))
    return Shape(colour, lambda x, y: any(segment_distance(x, y, a, b) <= width / 2 for a, b in segs))


def disc(colour, cx, cy, r):
    return Shape(colour, lambda x, y: math.hypot(x - cx, y - cy) <= r)


def ring(colour, cx, cy, r, width, start_deg=0, end_deg=360):
    def test(x, y):
        d = math.hypot(x - cx, y - cy)
        if abs(d - r) > width / 2:
            return False
        ang = math.degrees(math.atan2(cy - y, x - cx)) % 360
        return start_deg <= ang <= end_deg
    return Shape(colour, test)


def rect(colour, x0, y0, x1, y1):
    return polygon(colour, [(x0, y0), (x1, y0), (x1, y1), (x0, y1)])


def render(shapes, size=SIZE):
    scale = size / SIZE
    pixels = []
    for py in range(size):
        row = []
        for px in range(size):
            acc = [0.0, 0.0, 0.0, 0.0]
            for sy in range(SUB):
                for sx in range(SUB):
                    x = (px + (sx + 0.5) / SUB) / scale
                    y = (py + (sy + 0.5) / SUB) / scale
                    colour = None
                    for shape in shapes:  # later shapes paint over earlier ones
                        if shape.test(x, y):
                            colour = shape.colour
                    if colour is not None:
                        r, g, b, a = colour
                        acc[0] += r * a
                        acc[1] += g * a
                        acc[2] += b * a
                        acc[3] += a
            n = SUB * SUB
            alpha = acc[3] / n
            if acc[3] > 0:
                row += [round(acc[0] / acc[3]), round(acc[1] / acc[3]), round(acc[2] / acc[3]),
                        round(alpha)]
            else:
                row += [0, 0, 0, 0]
        pixels.append(row)
    return pixels


def star_points(cx, cy, outer, inner):
    pts = []
    for k in range(10):
        r = outer if k % 2 == 0 else inner
        a = math.radians(-90 + 36 * k)
        pts.append((cx + r * math.cos(a), cy + r * math.sin(a)))
    return pts


BLUE = (52, 120, 200, 255)
DARK = (60, 64, 72, 255)
GREEN = (64, 168, 92, 255)
RED = (205, 64, 56, 255)
GOLD = (240, 184, 40, 255)
FOLDER = (232, 176, 72, 255)
FOLDER_DARK = (196, 140, 48, 255)
GREY = (150, 154, 160, 255)
APP_BACKGROUND = (34, 40, 52, 255)
APP_WAVE = (110, 220, 150, 255)

wave = [(3, 12), (5, 12), (6.5, 6), (8, 18), (9.5, 4), (11, 20), (12.5, 7), (14, 16), (15.5, 9),
        (17, 14), (18.5, 11), (21, 12)]
folder_back = [(2, 6), (9, 6), (11, 8), (22, 8), (22, 20), (2, 20)]
folder_front = [(2, 10), (22, 10), (22, 20), (2, 20)]
star = star_points(12, 12.8, 10.5, 4.3)

ICONS = {
    "tesk": [disc(APP_BACKGROUND, 12, 12, 11), polyline(APP_WAVE, wave, 1.8)],
    "open": [polygon(FOLDER_DARK, folder_back),
             polygon(FOLDER, [(5, 11), (23, 11), (20, 20), (2, 20)])],
    "update": [ring(BLUE, 12, 12, 7.5, 2.6, 40, 330),
               polygon(BLUE, [(15.5, 2.5), (21.5, 7.5), (14, 9.5)])],
    # Not bookmarked: an outline; bookmarked (the "2" image): filled.
    "star": [polyline(GREY, star + [star[0]], 1.6)],
    "star2": [polygon(GOLD, star)],
    "search": [ring(DARK, 10, 10, 6, 2.4), polyline(DARK, [(14.5, 14.5), (21, 21)], 3.2)],
    "play_start": [polygon(GREEN, [(7, 4), (20, 12), (7, 20)])],
    "play_stop": [rect(RED, 6, 6, 18, 18)],
    # The toggles show grey when off and light up when on (the "2" image).
    "autoplay": [polygon(GREY, [(3, 5), (13, 12), (3, 19)]),
                 polyline(GREY, [(15, 19), (18.5, 6), (22, 19)], 2),
                 polyline(GREY, [(16.3, 14.5), (20.7, 14.5)], 1.6)],
    "autoplay2": [polygon(GREEN, [(3, 5), (13, 12), (3, 19)]),
                  polyline(GREEN, [(15, 19), (18.5, 6), (22, 19)], 2),
                  polyline(GREEN, [(16.3, 14.5), (20.7, 14.5)], 1.6)],
    "playlist": [rect(GREY, 3, 5, 15, 7), rect(GREY, 3, 11, 15, 13), rect(GREY, 3, 17, 12, 19),
                 polygon(GREY, [(15, 14), (22, 18), (15, 22)])],
    "playlist2": [rect(BLUE, 3, 5, 15, 7), rect(BLUE, 3, 11, 15, 13), rect(BLUE, 3, 17, 12, 19),
                  polygon(GREEN, [(15, 14), (22, 18), (15, 22)])],
    # Level match: uneven bars when off, bars brought to one line when on.
    "loudness": [rect(GREY, 3, 12, 7, 21), rect(GREY, 10, 4, 14, 21), rect(GREY, 17, 9, 21, 21)],
    "loudness2": [rect(BLUE, 3, 9, 7, 21), rect(BLUE, 10, 9, 14, 21), rect(BLUE, 17, 9, 21, 21),
                  rect(GREEN, 2, 5, 22, 6.6)],
    "folder": [polygon(FOLDER_DARK, folder_back), polygon(FOLDER, folder_front)],
    "hd": [rect(GREY, 2, 8, 22, 17), rect(DARK, 2, 15, 22, 17), disc(GREEN, 18.5, 12, 1.4),
           rect(DARK, 4, 11, 12, 12.5)],
}


def app_icon_svg():
    """The application icon as SVG: the same disc and waveform as "tesk"."""
    def colour(c):
        return "#%02x%02x%02x" % c[:3]
    points = " ".join("%g,%g" % p for p in wave)
    return ('<?xml version="1.0" encoding="UTF-8"?>\n'
            '<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24" viewBox="0 0 24 24">\n'
            '  <title>Tesk</title>\n'
            '  <circle cx="12" cy="12" r="11" fill="%s"/>\n'
            '  <polyline points="%s" fill="none" stroke="%s" stroke-width="1.8"'
            ' stroke-linecap="round" stroke-linejoin="round"/>\n'
            '</svg>\n') % (colour(APP_BACKGROUND), points, colour(APP_WAVE))


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = os.path.join(here, "images")
    for name, shapes in ICONS.items():
        write(os.path.join(out, name + ".png"), png_bytes(render(shapes)))
        write(os.path.join(out, name + "@2x.png"), png_bytes(render(shapes, 2 * SIZE)))
    hicolor = os.path.join(here, "icons", "hicolor")
    for size in HICOLOR_SIZES:
        write(os.path.join(hicolor, "%dx%d" % (size, size), "apps", APP_ID + ".png"),
              png_bytes(render(ICONS["tesk"], size)))
    write(os.path.join(hicolor, "scalable", "apps", APP_ID + ".svg"),
          app_icon_svg().encode("utf-8"))


if __name__ == "__main__":
    main()
