#!/usr/bin/env python3
"""Draws the program's icons as PNG files.

Without options: the program icon (a steel-blue shield with an orange "F")
in three sizes into icons/, where they are committed. With --window: every
icon of the main window's actions, buttons and docks into the given folder;
the build runs this into its own tree and compiles the result in. --list
prints the names of the window icons, one a line. --cursors and
--list-cursors do the same for the viewport's drawn mouse cursors."""
import math
import struct
import sys
import zlib
from pathlib import Path


def png_bytes(width, height, pixels):
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))
    raw = b"".join(b"\0" + bytes(pixels[y * width * 4:(y + 1) * width * 4])
                   for y in range(height))
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def inside_shield(u, v):
    if v < 0.08 or v > 0.95 or u < 0.1 or u > 0.9:
        return False
    if v < 0.6:
        return True
    # the lower part narrows to a point
    half = 0.4 * (0.95 - v) / 0.35
    return abs(u - 0.5) <= half


def inside_letter(u, v):
    stem = 0.34 <= u <= 0.46 and 0.22 <= v <= 0.78
    top = 0.34 <= u <= 0.68 and 0.22 <= v <= 0.33
    middle = 0.34 <= u <= 0.62 and 0.45 <= v <= 0.55
    return stem or top or middle


def draw(size):
    samples = 4
    pixels = bytearray(size * size * 4)
    for y in range(size):
        for x in range(size):
            r = g = b = a = 0.0
            for sy in range(samples):
                for sx in range(samples):
                    u = (x + (sx + 0.5) / samples) / size
                    v = (y + (sy + 0.5) / samples) / size
                    if inside_letter(u, v):
                        c = (240, 140, 30)
                    elif inside_shield(u, v):
                        shade = 0.75 + 0.25 * math.cos(v * math.pi)
                        c = (70 * shade, 100 * shade, 140 * shade)
                    else:
                        continue
                    r += c[0]; g += c[1]; b += c[2]; a += 255
            n = samples * samples
            pixels[(y * size + x) * 4:(y * size + x) * 4 + 4] = bytes(
                int(min(255, v / n)) for v in (r, g, b, a))
    # colour channels were summed over covered samples only: undo the
    # premultiplication so edges keep their colour
    for i in range(0, len(pixels), 4):
        alpha = pixels[i + 3]
        if alpha:
            for k in range(3):
                pixels[i + k] = min(255, pixels[i + k] * 255 // alpha)
    return png_bytes(size, size, pixels)


# ---------------------------------------------------------------- window icons
# Each icon is a list of (shape, colour) painted in order on a unit square,
# u to the right and v downward. Shapes:
#   ("rect", u0, v0, u1, v1)          ("circle", cu, cv, r)
#   ("ring", cu, cv, r_in, r_out)     ("poly", [(u, v), ...])
#   ("line", u0, v0, u1, v1, width)   ("arc", cu, cv, r_in, r_out, a0, a1) degrees, 0 = right, counter-clockwise

STEEL = (70, 100, 140)
DARK = (40, 48, 60)
ORANGE = (240, 140, 30)
GREEN = (60, 140, 60)
OLIVE = (100, 120, 60)
RED = (200, 50, 40)
YELLOW = (240, 200, 60)
WHITE = (245, 245, 245)
GREY = (150, 150, 150)
BLUE = (60, 120, 210)
PAPER = (235, 235, 220)


def inside(shape, u, v):
    kind = shape[0]
    if kind == "rect":
        return shape[1] <= u <= shape[3] and shape[2] <= v <= shape[4]
    if kind == "circle":
        return (u - shape[1]) ** 2 + (v - shape[2]) ** 2 <= shape[3] ** 2
    if kind == "ring":
        d = math.hypot(u - shape[1], v - shape[2])
        return shape[3] <= d <= shape[4]
    if kind == "arc":
        d = math.hypot(u - shape[1], v - shape[2])
        if not shape[3] <= d <= shape[4]:
            return False
        a = math.degrees(math.atan2(shape[2] - v, u - shape[1])) % 360
        a0, a1 = shape[5] % 360, shape[6] % 360
        return a0 <= a <= a1 if a0 <= a1 else a >= a0 or a <= a1
    if kind == "line":
        u0, v0, u1, v1, w = shape[1:]
        du, dv = u1 - u0, v1 - v0
        t = max(0.0, min(1.0, ((u - u0) * du + (v - v0) * dv) / (du * du + dv * dv)))
        return math.hypot(u - u0 - t * du, v - v0 - t * dv) <= w / 2
    if kind == "poly":
        points = shape[1]
        hit = False
        j = len(points) - 1
        for i in range(len(points)):
            (ui, vi), (uj, vj) = points[i], points[j]
            if (vi > v) != (vj > v) and u < (uj - ui) * (v - vi) / (vj - vi) + ui:
                hit = not hit
            j = i
        return hit
    raise ValueError(kind)


def tank_shapes(colour=OLIVE):
    return [(("rect", 0.08, 0.62, 0.92, 0.8), DARK),
            (("circle", 0.2, 0.71, 0.07), GREY), (("circle", 0.4, 0.71, 0.07), GREY),
            (("circle", 0.6, 0.71, 0.07), GREY), (("circle", 0.8, 0.71, 0.07), GREY),
            (("poly", [(0.12, 0.62), (0.2, 0.48), (0.82, 0.48), (0.9, 0.62)]), colour),
            (("rect", 0.32, 0.34, 0.66, 0.5), colour), (("line", 0.6, 0.4, 0.97, 0.36, 0.06), colour)]


def camera_shapes():
    return [(("rect", 0.08, 0.3, 0.92, 0.82), DARK), (("rect", 0.3, 0.2, 0.55, 0.32), DARK),
            (("circle", 0.5, 0.56, 0.2), GREY), (("circle", 0.5, 0.56, 0.13), BLUE),
            (("rect", 0.75, 0.36, 0.86, 0.42), YELLOW)]


def folder_shapes(colour=YELLOW):
    return [(("poly", [(0.06, 0.25), (0.38, 0.25), (0.45, 0.33), (0.94, 0.33), (0.94, 0.85), (0.06, 0.85)]),
             (200, 150, 40)),
            (("poly", [(0.06, 0.45), (0.94, 0.45), (0.94, 0.85), (0.06, 0.85)]), colour)]


def page_shapes():
    return [(("poly", [(0.2, 0.06), (0.66, 0.06), (0.82, 0.22), (0.82, 0.94), (0.2, 0.94)]), PAPER),
            (("poly", [(0.66, 0.06), (0.82, 0.22), (0.66, 0.22)]), GREY)]


def arrow_down(cu, v0, v1, colour, width=0.14):
    return [(("rect", cu - width / 2, v0, cu + width / 2, v1 - 0.14), colour),
            (("poly", [(cu - 0.2, v1 - 0.16), (cu + 0.2, v1 - 0.16), (cu, v1)]), colour)]


def text_lines(u0, u1, v0, step, count, colour=GREY):
    return [(("rect", u0, v0 + i * step, u1, v0 + i * step + 0.04), colour) for i in range(count)]


def cube(colour, wire=False):
    front = [(0.15, 0.35), (0.65, 0.35), (0.65, 0.85), (0.15, 0.85)]
    top = [(0.15, 0.35), (0.35, 0.15), (0.85, 0.15), (0.65, 0.35)]
    side = [(0.65, 0.35), (0.85, 0.15), (0.85, 0.65), (0.65, 0.85)]
    if not wire:
        return [(("poly", front), colour), (("poly", top), tuple(min(255, c + 50) for c in colour)),
                (("poly", side), tuple(c * 3 // 4 for c in colour))]
    edges = [(front[0], front[1]), (front[1], front[2]), (front[2], front[3]), (front[3], front[0]),
             (top[1], top[2]), (top[0], top[1]), (top[2], top[3]), (side[1], side[2]), (side[2], side[3])]
    return [(("line", a[0], a[1], b[0], b[1], 0.05), colour) for a, b in edges]


WINDOW_ICONS = {
    "qt_logo.png": [(("poly", [(0.1, 0.2), (0.3, 0.08), (0.9, 0.08), (0.9, 0.8), (0.7, 0.92), (0.1, 0.92)]),
                     (65, 205, 82)), (("ring", 0.45, 0.48, 0.14, 0.24), WHITE),
                    (("line", 0.55, 0.6, 0.72, 0.8, 0.08), WHITE)],
    "about.png": [(("circle", 0.5, 0.5, 0.44), BLUE), (("circle", 0.5, 0.28, 0.07), WHITE),
                  (("rect", 0.43, 0.42, 0.57, 0.78), WHITE)],
    "exit.png": [(("rect", 0.12, 0.1, 0.55, 0.9), (140, 90, 50)), (("rect", 0.18, 0.16, 0.49, 0.84), DARK),
                 (("line", 0.45, 0.5, 0.92, 0.5, 0.1), RED),
                 (("poly", [(0.72, 0.3), (0.95, 0.5), (0.72, 0.7)]), RED)],
    "preferences.png": [(("ring", 0.5, 0.5, 0.14, 0.34), GREY)] + [
        (("line", 0.5 + 0.3 * math.cos(a * math.pi / 4), 0.5 + 0.3 * math.sin(a * math.pi / 4),
          0.5 + 0.44 * math.cos(a * math.pi / 4), 0.5 + 0.44 * math.sin(a * math.pi / 4), 0.14), GREY)
        for a in range(8)],
    "camsave.png": camera_shapes() + arrow_down(0.8, 0.05, 0.5, GREEN, 0.1),
    "camload.png": camera_shapes() + [(("poly", [(0.6, 0.25), (1.0, 0.25), (0.8, 0.02)]), BLUE)],
    "camreset.png": camera_shapes() + [(("arc", 0.78, 0.22, 0.1, 0.17, 0, 270), RED)],
    "pmsolid.png": cube(STEEL),
    "pmwireframe.png": cube(DARK, wire=True),
    "pmpoints.png": cube(STEEL) + cube(WHITE, wire=True),
    "standardbutton-open-128.png": folder_shapes(),
    "fileopen.png": folder_shapes((230, 190, 90)) + [(("line", 0.5, 0.75, 0.5, 0.5, 0.1), DARK),
                                                    (("poly", [(0.35, 0.55), (0.65, 0.55), (0.5, 0.38)]), DARK)],
    "newdirectory-128.png": folder_shapes() + [(("rect", 0.44, 0.5, 0.56, 0.8), GREEN),
                                               (("rect", 0.35, 0.59, 0.65, 0.71), GREEN)],
    "extract.png": [(("rect", 0.15, 0.45, 0.85, 0.9), (160, 110, 60)), (("rect", 0.15, 0.45, 0.85, 0.55),
                                                                         (120, 80, 40))] + arrow_down(0.5, 0.05, 0.7, GREEN),
    "export.png": [(("rect", 0.1, 0.4, 0.6, 0.9), STEEL), (("line", 0.35, 0.65, 0.8, 0.2, 0.1), ORANGE),
                   (("poly", [(0.6, 0.1), (0.95, 0.05), (0.9, 0.4)]), ORANGE)],
    "paint.png": [(("line", 0.2, 0.85, 0.65, 0.35, 0.12), (150, 100, 50)),
                  (("poly", [(0.6, 0.3), (0.75, 0.15), (0.92, 0.32), (0.78, 0.46)]), GREY),
                  (("poly", [(0.75, 0.15), (0.85, 0.05), (0.98, 0.18), (0.92, 0.32)]), RED)],
    "texture.png": [(("rect", 0.08 + 0.28 * i, 0.08 + 0.28 * j, 0.36 + 0.28 * i, 0.36 + 0.28 * j),
                     ORANGE if (i + j) % 2 else STEEL) for i in range(3) for j in range(3)],
    "help.png": [(("circle", 0.5, 0.5, 0.44), GREEN), (("arc", 0.5, 0.38, 0.1, 0.2, -90, 180), WHITE),
                 (("rect", 0.44, 0.5, 0.56, 0.64), WHITE), (("circle", 0.5, 0.76, 0.07), WHITE)],
    "Camera_48.png": camera_shapes(),
    "SnapShoot.png": [(("rect", 0.05, 0.05, 0.95, 0.95), DARK), (("rect", 0.12, 0.12, 0.88, 0.7), BLUE),
                      (("poly", [(0.12, 0.7), (0.4, 0.4), (0.6, 0.6), (0.72, 0.5), (0.88, 0.7)]), GREEN)]
                     + arrow_down(0.5, 0.55, 0.98, ORANGE, 0.1),
    "Apps-screenshot-icon.png": [(("rect", 0.05, 0.12, 0.95, 0.78), DARK), (("rect", 0.1, 0.17, 0.9, 0.72), BLUE),
                                 (("rect", 0.4, 0.78, 0.6, 0.9), GREY), (("rect", 0.25, 0.88, 0.75, 0.94), GREY),
                                 (("ring", 0.5, 0.45, 0.12, 0.18), WHITE)],
    "scene_settings_reload.png": [(("arc", 0.5, 0.5, 0.26, 0.4, 30, 330), GREEN),
                                  (("poly", [(0.7, 0.1), (0.95, 0.35), (0.62, 0.4)]), GREEN)],
    "downarrow.png": arrow_down(0.5, 0.08, 0.92, STEEL, 0.2),
    "fullscreen.png": [(("rect", 0.05, 0.05, 0.95, 0.95), DARK), (("rect", 0.12, 0.12, 0.88, 0.88), WHITE)] + [
        (("poly", [(cu, cv), (cu + du * 0.3, cv), (cu, cv + dv * 0.3)]), STEEL)
        for cu, cv, du, dv in ((0.15, 0.15, 1, 1), (0.85, 0.15, -1, 1), (0.15, 0.85, 1, -1), (0.85, 0.85, -1, -1))],
    "Apps-text-editor-icon.png": page_shapes() + text_lines(0.28, 0.72, 0.32, 0.12, 5),
    "floppy-32.png": [(("rect", 0.08, 0.08, 0.92, 0.92), STEEL), (("rect", 0.25, 0.08, 0.72, 0.38), GREY),
                      (("rect", 0.55, 0.12, 0.65, 0.32), DARK), (("rect", 0.2, 0.55, 0.8, 0.92), WHITE)],
    "tank.png": tank_shapes(),
    "tank_options.png": tank_shapes(GREY) + [(("ring", 0.78, 0.25, 0.06, 0.14), ORANGE)],
    "camo.png": [(("rect", 0.05, 0.05, 0.95, 0.95), OLIVE), (("circle", 0.3, 0.3, 0.2), (60, 80, 40)),
                 (("circle", 0.7, 0.65, 0.22), (150, 130, 80)), (("circle", 0.25, 0.75, 0.15), (40, 50, 30)),
                 (("circle", 0.75, 0.2, 0.12), (150, 130, 80))],
    "scene_settings.png": [(("rect", 0.05, 0.05, 0.95, 0.95), BLUE), (("rect", 0.05, 0.65, 0.95, 0.95), GREEN),
                           (("circle", 0.72, 0.3, 0.14), YELLOW)],
    "camera.png": [(("rect", 0.05, 0.3, 0.65, 0.75), DARK), (("poly", [(0.65, 0.52), (0.95, 0.3), (0.95, 0.75)]), DARK),
                   (("circle", 0.25, 0.2, 0.12), GREY), (("circle", 0.5, 0.2, 0.12), GREY)],
    "silver_shaded.png": [(("poly", [(0.1, 0.1), (0.9, 0.1), (0.9, 0.55), (0.5, 0.95), (0.1, 0.55)]), (190, 195, 200)),
                          (("poly", [(0.5, 0.1), (0.9, 0.1), (0.9, 0.55), (0.5, 0.95)]), (140, 145, 155))],
    "Log.png": page_shapes() + [(("rect", 0.28, 0.3 + 0.14 * i, 0.72, 0.35 + 0.14 * i), c)
                                for i, c in enumerate((GREY, ORANGE, GREY, RED))],
    # The pages of the preferences dialog.
    "settings.png": [(("circle", 0.5, 0.5, 0.44), STEEL)] + [
        (("rect", 0.2, 0.24 + 0.2 * i, 0.8, 0.3 + 0.2 * i), WHITE) for i in range(3)] + [
        (("circle", u, 0.27 + 0.2 * i, 0.07), ORANGE) for i, u in enumerate((0.35, 0.65, 0.45))],
    "opengl_logo.png": [(("rect", 0.05, 0.2, 0.95, 0.8), WHITE), (("ring", 0.3, 0.5, 0.12, 0.22), BLUE),
                        (("rect", 0.58, 0.3, 0.66, 0.7), RED), (("rect", 0.58, 0.62, 0.86, 0.7), RED)],
    # The visual editor's tool buttons.
    "undo.png": [(("arc", 0.55, 0.55, 0.22, 0.34, -90, 150), BLUE),
                 (("poly", [(0.05, 0.42), (0.4, 0.2), (0.38, 0.6)]), BLUE)],
    "redo.png": [(("arc", 0.45, 0.55, 0.22, 0.34, 30, 270), BLUE),
                 (("poly", [(0.95, 0.42), (0.6, 0.2), (0.62, 0.6)]), BLUE)],
    "cut.png": [(("line", 0.3, 0.1, 0.65, 0.62, 0.08), GREY), (("line", 0.7, 0.1, 0.35, 0.62, 0.08), GREY),
                (("ring", 0.3, 0.76, 0.08, 0.16), RED), (("ring", 0.7, 0.76, 0.08, 0.16), RED)],
    "copy.png": [(("rect", 0.1, 0.08, 0.62, 0.7), GREY), (("rect", 0.14, 0.12, 0.58, 0.66), PAPER),
                 (("rect", 0.38, 0.3, 0.9, 0.92), GREY), (("rect", 0.42, 0.34, 0.86, 0.88), PAPER)]
                + text_lines(0.47, 0.81, 0.45, 0.12, 3),
    "paste.png": [(("rect", 0.12, 0.14, 0.78, 0.94), (160, 110, 60)), (("rect", 0.32, 0.06, 0.58, 0.2), GREY),
                  (("rect", 0.38, 0.34, 0.9, 0.94), PAPER)] + text_lines(0.44, 0.84, 0.46, 0.12, 3),
    "find.png": [(("ring", 0.4, 0.4, 0.2, 0.3), STEEL), (("circle", 0.4, 0.4, 0.2), (200, 225, 245)),
                 (("line", 0.6, 0.6, 0.92, 0.92, 0.14), DARK)],
}


def outlined(shapes, grow=0.06):
    """The shapes on a white rim a little wider, so that a cursor shows on
    dark and light backgrounds alike."""
    def wider(shape):
        kind = shape[0]
        if kind == "line":
            return shape[:5] + (shape[5] + grow,)
        if kind == "circle":
            return shape[:3] + (shape[3] + grow / 2,)
        if kind in ("ring", "arc"):
            return (kind, shape[1], shape[2], max(0.0, shape[3] - grow / 2), shape[4] + grow / 2) + shape[5:]
        return shape
    return [(wider(shape), WHITE) for shape, _ in shapes] + shapes


def orbit_shapes():
    # a three-quarter circle with an arrow head at its open end, round a dot
    head = [(0.86, 0.5), (0.98, 0.32), (0.74, 0.32)]
    return outlined([(("arc", 0.5, 0.5, 0.26, 0.36, 0, 270), DARK), (("poly", head), DARK),
                     (("circle", 0.5, 0.5, 0.08), ORANGE)])


def cross_hair_shapes():
    # a ring with four ticks that stop short of the centre, where the shot goes
    ticks = [(0.5, 0.04, 0.5, 0.38), (0.5, 0.62, 0.5, 0.96), (0.04, 0.5, 0.38, 0.5), (0.62, 0.5, 0.96, 0.5)]
    return outlined([(("ring", 0.5, 0.5, 0.27, 0.33), RED)]
                    + [(("line",) + tick + (0.07,), RED) for tick in ticks])


# The viewport's cursors, hot spot in the middle.
CURSOR_ICONS = {
    "Orbit.png": orbit_shapes(),
    "cross_hair.png": cross_hair_shapes(),
}


def draw_shapes(size, shapes, samples=3):
    pixels = bytearray(size * size * 4)
    for y in range(size):
        for x in range(size):
            r = g = b = a = 0
            for sy in range(samples):
                for sx in range(samples):
                    u = (x + (sx + 0.5) / samples) / size
                    v = (y + (sy + 0.5) / samples) / size
                    colour = None
                    for shape, c in shapes:
                        if inside(shape, u, v):
                            colour = c
                    if colour:
                        r += colour[0]; g += colour[1]; b += colour[2]; a += 1
            if a:
                n = samples * samples
                pixels[(y * size + x) * 4:(y * size + x) * 4 + 4] = bytes(
                    (r // a, g // a, b // a, 255 * a // n))
    return png_bytes(size, size, pixels)


def write_window_icons(out, icons=WINDOW_ICONS, size=32):
    out.mkdir(parents=True, exist_ok=True)
    for name, shapes in icons.items():
        data = draw_shapes(size, shapes)
        target = out / name
        # unchanged files keep their time, so the resources are not rebuilt
        if not target.exists() or target.read_bytes() != data:
            target.write_bytes(data)


def main():
    arguments = sys.argv[1:]
    if "--list" in arguments:
        print("\n".join(WINDOW_ICONS))
        return
    if "--list-cursors" in arguments:
        print("\n".join(CURSOR_ICONS))
        return
    if "--cursors" in arguments:
        arguments.remove("--cursors")
        write_window_icons(Path(arguments[0]), CURSOR_ICONS)
        return
    if "--window" in arguments:
        arguments.remove("--window")
        write_window_icons(Path(arguments[0]))
        return
    out = Path(arguments[0] if arguments else Path(__file__).resolve().parent.parent / "icons")
    out.mkdir(parents=True, exist_ok=True)
    for size in (16, 32, 128):
        (out / f"ferrox_ico_{size}.png").write_bytes(draw(size))


if __name__ == "__main__":
    main()
