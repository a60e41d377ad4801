#!/usr/bin/env python3
"""Draws every picture Vantori ships under data/res/vantori/.

Standard library only: shapes are rasterised with 4 x 4 supersampling into
an RGBA canvas and written as PNG (zlib + struct) or as 32-bit BMP with an
alpha channel (BI_RGB, BITMAPINFOHEADER; wxWidgets' BMP loader reads the
fourth byte as alpha).

Run from anywhere:  tools/gen-images.py [output dir]
The default output dir is data/res/vantori beside this script's parent.
"""
import math
import os
import struct
import sys
import zlib

SS = 4  # supersampling per axis


# ------------------------------------------------------------------ colours
def rgb(hexstr, a=255):
    h = hexstr.lstrip('#')
    return (int(h[0:2], 16), int(h[2:4], 16), int(h[4:6], 16), a)


def mix(c1, c2, t):
    return tuple(c1[i] + (c2[i] - c1[i]) * t for i in range(4))


def vgrad(c1, c2, y0, y1):
    """Vertical gradient from c1 at y0 to c2 at y1."""
    def f(x, y):
        t = 0.0 if y1 == y0 else min(1.0, max(0.0, (y - y0) / (y1 - y0)))
        return mix(c1, c2, t)
    return f


# ------------------------------------------------------------------- shapes
# A shape is (predicate(x, y) -> bool, bbox (x0, y0, x1, y1)) in pixel
# coordinates; pixel (i, j) covers [i, i+1) x [j, j+1).

def rect(x0, y0, x1, y1):
    return (lambda x, y: x0 <= x < x1 and y0 <= y < y1, (x0, y0, x1, y1))


def rrect(x0, y0, x1, y1, r):
    def p(x, y):
        if not (x0 <= x < x1 and y0 <= y < y1):
            return False
        cx = min(max(x, x0 + r), x1 - r)
        cy = min(max(y, y0 + r), y1 - r)
        return (x - cx) ** 2 + (y - cy) ** 2 <= r * r
    return (p, (x0, y0, x1, y1))


def ellipse(cx, cy, rx, ry):
    return (lambda x, y: ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2 <= 1.0,
            (cx - rx, cy - ry, cx + rx, cy + ry))


def poly(points):
    n = len(points)

    def p(x, y):
        inside = False
        j = n - 1
        for i in range(n):
            xi, yi = points[i]
            xj, yj = points[j]
            if (yi > y) != (yj > y):
                xc = xi + (y - yi) * (xj - xi) / (yj - yi)
                if x < xc:
                    inside = not inside
            j = i
        return inside
    xs = [q[0] for q in points]
    ys = [q[1] for q in points]
    return (p, (min(xs), min(ys), max(xs), max(ys)))


def seg(ax, ay, bx, by, w):
    """Thick line with round caps."""
    dx, dy = bx - ax, by - ay
    ll = dx * dx + dy * dy
    r2 = (w / 2.0) ** 2

    def p(x, y):
        t = 0.0 if ll == 0 else max(0.0, min(1.0, ((x - ax) * dx + (y - ay) * dy) / ll))
        px, py = ax + t * dx, ay + t * dy
        return (x - px) ** 2 + (y - py) ** 2 <= r2
    h = w / 2.0
    return (p, (min(ax, bx) - h, min(ay, by) - h, max(ax, bx) + h, max(ay, by) + h))


def arc(cx, cy, r0, r1, a0, a1):
    """Ring sector between radii r0 and r1, angles a0..a1 in degrees,
    counted clockwise on screen from the positive x axis."""
    def p(x, y):
        d2 = (x - cx) ** 2 + (y - cy) ** 2
        if not (r0 * r0 <= d2 <= r1 * r1):
            return False
        a = math.degrees(math.atan2(y - cy, x - cx)) % 360.0
        lo, hi = a0 % 360.0, a1 % 360.0
        return lo <= a <= hi if lo <= hi else (a >= lo or a <= hi)
    return (p, (cx - r1, cy - r1, cx + r1, cy + r1))


def minus(a, b):
    return (lambda x, y: a[0](x, y) and not b[0](x, y), a[1])


def union(*shapes):
    bb = (min(s[1][0] for s in shapes), min(s[1][1] for s in shapes),
          max(s[1][2] for s in shapes), max(s[1][3] for s in shapes))
    return (lambda x, y: any(s[0](x, y) for s in shapes), bb)


def moved(shape, dx, dy):
    p, (x0, y0, x1, y1) = shape
    return (lambda x, y: p(x - dx, y - dy), (x0 + dx, y0 + dy, x1 + dx, y1 + dy))


# ------------------------------------------------------------------- canvas
class Canvas:
    def __init__(self, w, h):
        self.w, self.h = w, h
        self.px = [[0.0, 0.0, 0.0, 0.0] for _ in range(w * h)]

    def blend(self, i, j, c, cov=1.0):
        if not (0 <= i < self.w and 0 <= j < self.h):
            return
        sa = (c[3] / 255.0) * cov
        if sa <= 0:
            return
        d = self.px[j * self.w + i]
        da = d[3]
        oa = sa + da * (1.0 - sa)
        for k in range(3):
            d[k] = (c[k] * sa + d[k] * da * (1.0 - sa)) / oa
        d[3] = oa

    def fill(self, shape, colour, offset=(0, 0)):
        """Paints a shape; colour is an RGBA tuple or a function (x, y) -> RGBA."""
        if offset != (0, 0):
            shape = moved(shape, *offset)
        pred, (bx0, by0, bx1, by1) = shape
        i0, j0 = max(0, int(math.floor(bx0))), max(0, int(math.floor(by0)))
        i1, j1 = min(self.w, int(math.ceil(bx1)) + 1), min(self.h, int(math.ceil(by1)) + 1)
        step = 1.0 / SS
        for j in range(j0, j1):
            for i in range(i0, i1):
                n = 0
                for sy in range(SS):
                    y = j + (sy + 0.5) * step
                    for sx in range(SS):
                        if pred(i + (sx + 0.5) * step, y):
                            n += 1
                if n:
                    c = colour(i + 0.5, j + 0.5) if callable(colour) else colour
                    self.blend(i, j, c, n / float(SS * SS))

    def pixel(self, i, j, colour):
        self.blend(i, j, colour, 1.0)

    def paste(self, other, dx, dy, alpha=1.0):
        for j in range(other.h):
            for i in range(other.w):
                s = other.px[j * other.w + i]
                if s[3] > 0:
                    self.blend(i + dx, j + dy, (s[0], s[1], s[2], s[3] * 255.0), alpha)

    def greyed(self, alpha=0.45):
        """A washed-out copy for the disabled look."""
        g = Canvas(self.w, self.h)
        for k, s in enumerate(self.px):
            lum = 0.30 * s[0] + 0.59 * s[1] + 0.11 * s[2]
            lum = lum + (235 - lum) * 0.35
            g.px[k] = [lum, lum, lum, s[3] * alpha]
        return g

    def bytes_rgba(self):
        rows = []
        for j in range(self.h):
            row = bytearray()
            for i in range(self.w):
                r, g, b, a = self.px[j * self.w + i]
                row += bytes((int(round(r)) if a else 0, int(round(g)) if a else 0,
                              int(round(b)) if a else 0, int(round(a * 255))))
            rows.append(bytes(row))
        return rows

    def save_png(self, path):
        raw = b''.join(b'\x00' + row for row in self.bytes_rgba())

        def chunk(tag, data):
            return (struct.pack('>I', len(data)) + tag + data +
                    struct.pack('>I', zlib.crc32(tag + data) & 0xffffffff))
        png = (b'\x89PNG\r\n\x1a\n' +
               chunk(b'IHDR', struct.pack('>IIBBBBB', self.w, self.h, 8, 6, 0, 0, 0)) +
               chunk(b'IDAT', zlib.compress(raw, 9)) +
               chunk(b'IEND', b''))
        write_file(path, png)

    def save_bmp(self, path):
        rows = self.bytes_rgba()
        data = bytearray()
        for row in reversed(rows):  # bottom-up
            for i in range(self.w):
                r, g, b, a = row[4 * i:4 * i + 4]
                data += bytes((b, g, r, a))
        off = 14 + 40
        head = struct.pack('<2sIHHI', b'BM', off + len(data), 0, 0, off)
        info = struct.pack('<IiiHHIIiiII', 40, self.w, self.h, 1, 32, 0, len(data),
                           2835, 2835, 0, 0)
        write_file(path, head + info + bytes(data))


def write_file(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'wb') as f:
        f.write(data)


# ------------------------------------------------------------- 3 x 5 font
FONT = {
    'A': ('010', '101', '111', '101', '101'),
    'B': ('110', '101', '110', '101', '110'),
    'C': ('011', '100', '100', '100', '011'),
    'D': ('110', '101', '101', '101', '110'),
    'E': ('111', '100', '110', '100', '111'),
    'F': ('111', '100', '110', '100', '100'),
    'G': ('011', '100', '101', '101', '011'),
    'H': ('101', '101', '111', '101', '101'),
    'I': ('111', '010', '010', '010', '111'),
    'J': ('001', '001', '001', '101', '010'),
    'L': ('100', '100', '100', '100', '111'),
    'M': ('101', '111', '111', '101', '101'),
    'N': ('110', '101', '101', '101', '101'),
    'O': ('010', '101', '101', '101', '010'),
    'P': ('110', '101', '110', '100', '100'),
    'R': ('110', '101', '110', '101', '101'),
    'S': ('011', '100', '010', '001', '110'),
    'T': ('111', '010', '010', '010', '010'),
    'U': ('101', '101', '101', '101', '111'),
    'V': ('101', '101', '101', '101', '010'),
    'W': ('101', '101', '111', '111', '101'),
    'X': ('101', '101', '010', '101', '101'),
    '3': ('110', '001', '010', '001', '110'),
}


def text_width(s):
    return 4 * len(s) - 1


def draw_text(cv, s, x, y, colour):
    for n, ch in enumerate(s):
        for r, line in enumerate(FONT[ch]):
            for c, bit in enumerate(line):
                if bit == '1':
                    cv.pixel(x + 4 * n + c, y + r, colour)


# ------------------------------------------------------------ small icons
OUTLINE = rgb('#7d8590')
PAGE_TOP = rgb('#ffffff')
PAGE_BOTTOM = rgb('#e9edf2')


def page(cv, fold=4):
    """A sheet of paper with a folded top-right corner, 16 x 16."""
    outer = poly([(2, 0), (14 - fold, 0), (14, fold), (14, 16), (2, 16)])
    inner = poly([(3, 1), (13.6 - fold, 1), (13, fold + 0.4), (13, 15), (3, 15)])
    cv.fill(outer, OUTLINE)
    cv.fill(inner, vgrad(PAGE_TOP, PAGE_BOTTOM, 1, 15))
    cv.fill(poly([(14 - fold, 0), (14 - fold, fold), (14, fold)]), rgb('#c9cfd6'))
    cv.fill(poly([(14 - fold, 0), (14 - fold, fold + 0.01), (14, fold)]), OUTLINE)
    cv.fill(poly([(14.6 - fold, 1.3), (14.6 - fold, fold - 0.6), (12.7, fold - 0.6)]),
            rgb('#e4e8ec'))


def lines(cv, colour, ys=(3, 5, 7), x0=4, x1=12):
    for k, y in enumerate(ys):
        end = x1 - (3 if k == len(ys) - 1 else 0)
        if k == 0:
            end = min(end, 10)
        cv.fill(rect(x0, y, end, y + 1), colour)


def picto_picture(cv):
    cv.fill(rect(4, 2, 12, 8.5), rgb('#9fd3f5'))
    cv.fill(poly([(4, 8.5), (6.5, 5), (8.5, 7), (10, 5.5), (12, 8.5)]), rgb('#43a047'))
    cv.fill(ellipse(10.3, 3.6, 1.1, 1.1), rgb('#ffca28'))


def picto_note(cv):
    c = rgb('#37474f')
    cv.fill(rect(8.5, 1.5, 9.5, 7.5), c)
    cv.fill(ellipse(7.4, 7.3, 1.7, 1.25), c)
    cv.fill(poly([(9.5, 1.5), (12, 3), (12, 4.3), (9.5, 2.9)]), c)


def picto_film(cv):
    cv.fill(rect(4, 2, 12, 8.5), rgb('#37474f'))
    for x in (4.5, 6.5, 8.5, 10.5):
        cv.fill(rect(x, 2.5, x + 1, 3.5), rgb('#eceff1'))
        cv.fill(rect(x, 7, x + 1, 8), rgb('#eceff1'))
    cv.fill(rect(5, 4, 11, 6.5), rgb('#90caf9'))


def picto_window(cv):
    cv.fill(rect(4, 2, 12, 8.5), rgb('#546e7a'))
    cv.fill(rect(5, 4, 11, 7.5), rgb('#ffffff'))
    cv.fill(rect(10, 2.5, 11.5, 3.5), rgb('#ef5350'))


def picto_cylinder(cv, colour):
    cv.fill(rect(5, 3, 11, 7.5), colour)
    cv.fill(ellipse(8, 7.5, 3, 1.2), colour)
    cv.fill(ellipse(8, 3, 3, 1.2), mix(colour, rgb('#ffffff'), 0.45))


def picto_globe(cv):
    cv.fill(ellipse(8, 5, 3.4, 3.4), rgb('#1e88e5'))
    cv.fill(minus(ellipse(8, 5, 2.4, 3.4), ellipse(8, 5, 1.6, 3.4)), rgb('#bbdefb'))
    cv.fill(rect(4.6, 4.5, 11.4, 5.4), rgb('#bbdefb'))


def picto_books(cv):
    for k, col in enumerate(('#8e24aa', '#1e88e5', '#43a047')):
        cv.fill(rect(4, 2 + 2.2 * k, 12, 3.8 + 2.2 * k), rgb(col))
    cv.fill(rect(7.5, 2, 8.5, 8.4), rgb('#fdd835'))


def picto_gears(cv, colour):
    for cx, cy, r in ((6.5, 4.5, 2.2), (10, 6.5, 1.8)):
        teeth = []
        for k in range(16):
            a = math.radians(k * 22.5)
            rr = r + (0.7 if k % 2 == 0 else 0)
            teeth.append((cx + rr * math.cos(a), cy + rr * math.sin(a)))
        cv.fill(minus(poly(teeth), ellipse(cx, cy, r * 0.45, r * 0.45)), colour)


# type -> (band colour, pictogram)
FILE_TYPES = [
    ('bat', '#455a64', 'window'), ('bmp', '#8e24aa', 'picture'),
    ('c', '#1565c0', 'lines'), ('cfg', '#607d8b', 'gears'),
    ('cpp', '#0d47a1', 'lines'), ('db', '#8d6e63', 'cylinder'),
    ('dll', '#5e35b1', 'gears'), ('doc', '#2b579a', 'lines'),
    ('dsp', '#00838f', 'lines'), ('dsw', '#006064', 'lines'),
    ('exe', '#37474f', 'window'), ('gif', '#ad1457', 'picture'),
    ('h', '#1976d2', 'lines'), ('ie', '#1e88e5', 'globe'),
    ('ini', '#78909c', 'gears'), ('jpg', '#6a1b9a', 'picture'),
    ('mdb', '#a4373a', 'cylinder'), ('mp3', '#ef6c00', 'note'),
    ('mpg', '#4527a0', 'film'), ('pcx', '#7b1fa2', 'picture'),
    ('pdf', '#d32f2f', 'lines'), ('ppt', '#d04423', 'lines'),
    ('psd', '#0277bd', 'picture'), ('pub', '#077568', 'lines'),
    ('rar', '#6d4c41', 'books'), ('reg', '#546e7a', 'gears'),
    ('txt', '#757575', 'lines'), ('wav', '#f57c00', 'note'),
    ('xls', '#217346', 'lines'),
]


def file_icon(label, band, picto):
    cv = Canvas(16, 16)
    page(cv)
    bc = rgb(band)
    if picto == 'lines':
        lines(cv, mix(bc, rgb('#ffffff'), 0.35))
    elif picto == 'picture':
        picto_picture(cv)
    elif picto == 'note':
        picto_note(cv)
    elif picto == 'film':
        picto_film(cv)
    elif picto == 'window':
        picto_window(cv)
    elif picto == 'cylinder':
        picto_cylinder(cv, bc)
    elif picto == 'globe':
        picto_globe(cv)
    elif picto == 'books':
        picto_books(cv)
    elif picto == 'gears':
        picto_gears(cv, mix(bc, rgb('#000000'), 0.1))
    # label band across the lower part of the sheet
    cv.fill(rect(1, 9, 15, 16), bc)
    cv.fill(rect(1, 9, 15, 10), mix(bc, rgb('#ffffff'), 0.25))
    tw = text_width(label.upper())
    draw_text(cv, label.upper(), 1 + (14 - tw + 1) // 2, 10, rgb('#ffffff'))
    return cv


def plain_file_icon(with_lines):
    cv = Canvas(16, 16)
    page(cv)
    if with_lines:
        lines(cv, rgb('#b0bec5'), ys=(4, 6, 8, 10, 12))
    return cv


FOLDER_BACK = (rgb('#e8a917'), rgb('#d38b0a'))
FOLDER_FRONT = (rgb('#ffd965'), rgb('#f5b82e'))
FOLDER_EDGE = rgb('#b3760a')


def folder(cv, x0, y0, w, h, opened=False):
    """A manila folder inside the box (x0, y0, w, h)."""
    x1, y1 = x0 + w, y0 + h
    tab_h = max(2, h * 0.17)
    back = union(rrect(x0, y0 + tab_h, x1, y1, 1.0),
                 rrect(x0, y0, x0 + w * 0.42, y0 + tab_h + 1.5, 1.0))
    cv.fill(back, FOLDER_EDGE)
    inner_back = union(rrect(x0 + 1, y0 + tab_h + 1, x1 - 1, y1 - 1, 0.6),
                       rrect(x0 + 1, y0 + 1, x0 + w * 0.42 - 1, y0 + tab_h + 1.5, 0.6))
    cv.fill(inner_back, vgrad(*FOLDER_BACK, y0, y1))
    if opened:
        sheet = rect(x0 + 2, y0 + tab_h + 1, x1 - 2, y1 - 2)
        cv.fill(sheet, rgb('#fafafa'))
        front = poly([(x0 + w * 0.22, y0 + h * 0.45), (x1 + 0.3, y0 + h * 0.45),
                      (x1 - w * 0.18, y1), (x0, y1)])
        cv.fill(front, FOLDER_EDGE)
        front_in = poly([(x0 + w * 0.22 + 1, y0 + h * 0.45 + 1), (x1 - 1, y0 + h * 0.45 + 1),
                         (x1 - w * 0.18 - 0.6, y1 - 1), (x0 + 1.4, y1 - 1)])
        cv.fill(front_in, vgrad(*FOLDER_FRONT, y0 + h * 0.45, y1))
    else:
        fy = y0 + tab_h + h * 0.16
        cv.fill(rrect(x0, fy, x1, y1, 1.0), FOLDER_EDGE)
        cv.fill(rrect(x0 + 1, fy + 1, x1 - 1, y1 - 1, 0.6), vgrad(*FOLDER_FRONT, fy, y1))
        cv.fill(rect(x0 + 1, fy + 1, x1 - 1, fy + 2), rgb('#fff1bf'))


def folder16(opened):
    cv = Canvas(16, 16)
    folder(cv, 0, 1.5, 16, 13.5, opened)
    return cv


def disk16():
    cv = Canvas(16, 16)
    cv.fill(rrect(0.5, 3.5, 15.5, 12.5, 1.6), rgb('#5f6b75'))
    cv.fill(rrect(1.5, 4.5, 14.5, 11.5, 1.0), vgrad(rgb('#eef1f4'), rgb('#b9c2ca'), 4.5, 11.5))
    cv.fill(rect(2.5, 8.5, 13.5, 10.5), rgb('#8a959f'))
    cv.fill(rect(2.5, 9.5, 13.5, 10.5), rgb('#6b7781'))
    cv.fill(ellipse(12.2, 6.3, 1.0, 1.0), rgb('#2ecc40'))
    cv.fill(rect(2.5, 5.7, 7.5, 6.7), rgb('#9aa5ae'))
    return cv


def usb16():
    cv = Canvas(16, 16)
    # connector (metal) on the right, body on the left, drawn slightly tilted free
    cv.fill(rect(10.5, 5, 15.5, 11), rgb('#7b8791'))
    cv.fill(rect(11, 5.5, 15, 10.5), vgrad(rgb('#f3f5f7'), rgb('#c3ccd4'), 5.5, 10.5))
    cv.fill(rect(12, 6.6, 13.4, 7.6), rgb('#6b7781'))
    cv.fill(rect(12, 8.4, 13.4, 9.4), rgb('#6b7781'))
    cv.fill(rrect(0.5, 3.5, 11.5, 12.5, 2.0), rgb('#0d47a1'))
    cv.fill(rrect(1.5, 4.5, 10.5, 11.5, 1.4), vgrad(rgb('#42a5f5'), rgb('#1565c0'), 4.5, 11.5))
    cv.fill(rect(2.5, 5.4, 9.5, 6.4), rgb('#90caf9', 180))
    cv.fill(ellipse(3.5, 9.8, 0.9, 0.9), rgb('#ffeb3b'))
    return cv


def sort_arrow(up):
    cv = Canvas(16, 16)
    if up:
        tri = poly([(4, 10.5), (8, 5.5), (12, 10.5)])
    else:
        tri = poly([(4, 5.5), (8, 10.5), (12, 5.5)])
    cv.fill(tri, rgb('#5f6b75'))
    return cv


# ---------------------------------------------------- bitmap button faces
BTN = 28
FACES = {
    'normal': (rgb('#ffffff'), rgb('#e9ecef'), rgb('#b4bcc4')),
    'hover': (rgb('#f0f7ff'), rgb('#d3e7fb'), rgb('#6fa8e0')),
    'pressed': (rgb('#bfd9f3'), rgb('#d8e8f8'), rgb('#4a86c5')),
    'disabled': (rgb('#f6f6f6'), rgb('#eeeeee'), rgb('#d2d2d2')),
}


def face(state):
    top, bottom, edge = FACES[state]
    cv = Canvas(BTN, BTN)
    cv.fill(rrect(0.5, 0.5, BTN - 0.5, BTN - 0.5, 4.0), edge)
    cv.fill(rrect(1.5, 1.5, BTN - 1.5, BTN - 1.5, 3.0), vgrad(top, bottom, 1.5, BTN - 1.5))
    return cv


def glyph_up():
    g = Canvas(BTN, BTN)
    folder(g, 4, 9, 20, 15)
    green = rgb('#2e7d32')
    g.fill(poly([(14, 3), (21, 10.5), (17, 10.5), (17, 19), (11, 19), (11, 10.5), (7, 10.5)]),
           rgb('#1b5e20'))
    g.fill(poly([(14, 4.6), (19.2, 9.7), (16.2, 9.7), (16.2, 18.2), (11.8, 18.2),
                 (11.8, 9.7), (8.8, 9.7)]), vgrad(rgb('#66bb6a'), green, 4, 18))
    return g


def glyph_refresh():
    g = Canvas(BTN, BTN)
    cx, cy, r0, r1 = 14, 14, 5.2, 8.6
    dark, light = rgb('#1565c0'), rgb('#42a5f5')
    col = vgrad(light, dark, 5, 23)
    rm = (r0 + r1) / 2.0
    for start, end in ((200, 330), (20, 150)):
        g.fill(arc(cx, cy, r0, r1, start, end), col)
        # arrowhead at the end of the sweep, pointing along the clockwise tangent
        a = math.radians(end)
        px, py = cx + rm * math.cos(a), cy + rm * math.sin(a)
        rx, ry = math.cos(a), math.sin(a)          # radial
        tx, ty = -math.sin(a), math.cos(a)         # clockwise tangent
        half = 4.6
        tip = (px + tx * 5.2, py + ty * 5.2)
        b1 = (px + rx * half - tx * 0.6, py + ry * half - ty * 0.6)
        b2 = (px - rx * half - tx * 0.6, py - ry * half - ty * 0.6)
        g.fill(poly([b1, tip, b2]), col)
    return g


def glyph_new_folder():
    g = Canvas(BTN, BTN)
    folder(g, 3, 8, 19, 15)
    # a green plus at the top right
    g.fill(ellipse(20, 8.5, 6, 6), rgb('#ffffff', 230))
    g.fill(ellipse(20, 8.5, 5, 5), rgb('#2e7d32'))
    g.fill(rect(19, 5, 21, 12), rgb('#ffffff'))
    g.fill(rect(16.5, 7.5, 23.5, 9.5), rgb('#ffffff'))
    return g


def glyph_delete():
    g = Canvas(BTN, BTN)
    dark, light = rgb('#b71c1c'), rgb('#ef5350')
    for a, b in (((8, 8), (20, 20)), ((20, 8), (8, 20))):
        g.fill(seg(a[0], a[1], b[0], b[1], 5.4), dark)
    for a, b in (((8, 8), (20, 20)), ((20, 8), (8, 20))):
        g.fill(seg(a[0], a[1], b[0], b[1], 3.4), vgrad(light, dark, 6, 22))
    return g


def button_strip(glyph):
    """Four faces side by side: normal, hover, pressed, disabled."""
    strip = Canvas(4 * BTN, BTN)
    for k, state in enumerate(('normal', 'hover', 'pressed', 'disabled')):
        f = face(state)
        if state == 'pressed':
            f.paste(glyph, 1, 1)
        elif state == 'disabled':
            f.paste(glyph.greyed(), 0, 0)
        else:
            f.paste(glyph, 0, 0)
        strip.paste(f, k * BTN, 0)
    return strip


# ------------------------------------------------------------------- logo
def logo(size=64):
    s = size / 64.0
    cv = Canvas(size, size)
    cv.fill(rrect(1 * s, 1 * s, 63 * s, 63 * s, 12 * s), rgb('#0b3a6e'))
    cv.fill(rrect(2 * s, 2 * s, 62 * s, 62 * s, 11 * s),
            vgrad(rgb('#2f8be0'), rgb('#0d4f96'), 2 * s, 62 * s))
    # gloss on the upper half
    cv.fill(rrect(4 * s, 4 * s, 60 * s, 30 * s, 9 * s), rgb('#ffffff', 34))
    # a drive tray at the bottom
    cv.fill(rrect(12 * s, 43 * s, 52 * s, 54 * s, 3 * s), rgb('#ffffff'))
    cv.fill(rect(16 * s, 47.5 * s, 36 * s, 49.5 * s), rgb('#9cb9d6'))
    cv.fill(ellipse(46 * s, 48.5 * s, 2.2 * s, 2.2 * s), rgb('#43d36b'))
    # the V, as a chevron that points down into the tray
    cv.fill(poly([(14 * s, 10 * s), (23 * s, 10 * s), (32 * s, 28 * s), (41 * s, 10 * s),
                   (50 * s, 10 * s), (32 * s, 39 * s)]), rgb('#ffb300'))
    cv.fill(poly([(17 * s, 12 * s), (22 * s, 12 * s), (32 * s, 32 * s), (42 * s, 12 * s),
                   (47 * s, 12 * s), (32 * s, 36 * s)]), vgrad(rgb('#ffe082'), rgb('#ffb300'),
                                                             12 * s, 36 * s))
    return cv


# ------------------------------------------------------------------- main
def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, '..', 'data', 'res', 'vantori')
    out = os.path.normpath(out)
    bmp = os.path.join(out, 'bmp')

    folder16(False).save_png(os.path.join(bmp, 'Folder_16x16.png'))
    folder16(True).save_png(os.path.join(bmp, 'FolderOpened_16x16.png'))
    plain_file_icon(True).save_png(os.path.join(bmp, 'File_10.png'))
    for name, band, picto in FILE_TYPES:
        file_icon(name, band, picto).save_bmp(os.path.join(bmp, name + '.bmp'))
    plain_file_icon(False).save_bmp(os.path.join(bmp, 'normal.bmp'))

    sort_arrow(True).save_png(os.path.join(out, 'up.png'))
    sort_arrow(False).save_png(os.path.join(out, 'down.png'))
    disk16().save_png(os.path.join(out, 'disk.png'))
    usb16().save_png(os.path.join(out, 'usb.png'))
    logo(64).save_png(os.path.join(out, 'logo.png'))

    button_strip(glyph_up()).save_png(os.path.join(bmp, 'btn_up.png'))
    button_strip(glyph_refresh()).save_png(os.path.join(bmp, 'btn_refresh.png'))
    button_strip(glyph_new_folder()).save_png(os.path.join(bmp, 'btn_newfolder.png'))
    button_strip(glyph_delete()).save_png(os.path.join(bmp, 'btn_delete.png'))
    print('pictures written to', out)


if __name__ == '__main__':
    main()
