#!/usr/bin/env python3
# SPDX-License-Identifier: Zlib
"""Makes the pictures and sounds under assets/: sprite strips and tiles as PNG, a landscape as JPEG, sounds as WAV;
all but lake.png, which make_photograph.py makes.

Needs NumPy and cjpeg (Debian: python3-numpy, libjpeg-turbo-progs). Everything is computed, with fixed seeds, so the
same script gives the same pictures.

A strip's frames lie side by side, its rows are the facings. What surrounds a figure has one key colour, a different
one for each strip, and edges are hard: a blended edge would keep a fringe of the key colour on the screen. Shapes are
drawn four times as large and scaled down; a pixel belongs to the figure if at least half of it is covered.
"""
import math
import pathlib
import struct
import subprocess
import sys
import wave
import zlib

import numpy as np

SCALE = 4
LIGHT = np.array([-0.45, -0.65, 0.61])
TILE = 32
ASSETS = pathlib.Path(__file__).resolve().parent.parent / "assets"


class Cell:
    """One frame, drawn in layers from back to front; coordinates in pixels of the finished frame."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.rgb = np.zeros((height * SCALE, width * SCALE, 3))
        self.covered = np.zeros((height * SCALE, width * SCALE), bool)
        y, x = np.mgrid[0:height * SCALE, 0:width * SCALE]
        self.x, self.y = (x + 0.5) / SCALE, (y + 0.5) / SCALE

    def paint(self, mask, colour):
        self.rgb[mask] = np.clip(colour, 0, 255)[mask] if np.ndim(colour) == 3 else colour
        self.covered |= mask

    def ellipse(self, cx, cy, rx, ry, colour, turn=0.0, shade=0.55, outline=0.0):
        """A rounded body lit from the upper left."""
        if outline:
            dark = tuple(c * 0.32 for c in colour)
            self.ellipse(cx, cy, rx + outline, ry + outline, dark, turn, 0)
        c, s = math.cos(turn), math.sin(turn)
        dx, dy = self.x - cx, self.y - cy
        u, v = (dx * c + dy * s) / rx, (-dx * s + dy * c) / ry
        inside = u * u + v * v <= 1
        if not shade:
            self.paint(inside, np.array(colour, float))
            return
        z = np.sqrt(np.clip(1 - u * u - v * v, 0, 1))
        nx, ny = u * c - v * s, u * s + v * c
        light = np.clip(nx * LIGHT[0] + ny * LIGHT[1] + z * LIGHT[2], -0.3, 1)
        gloss = np.clip(light, 0, 1) ** 18 * 90 * shade
        tone = (1 - shade) + shade * (0.45 + 0.95 * light)
        self.paint(inside, np.array(colour, float) * tone[..., None] + gloss[..., None])

    def limb(self, x1, y1, x2, y2, r, colour, outline=0.0):
        """A capsule with a lit upper edge."""
        if outline:
            self.limb(x1, y1, x2, y2, r + outline, tuple(c * 0.32 for c in colour))
        dx, dy = x2 - x1, y2 - y1
        t = np.clip(((self.x - x1) * dx + (self.y - y1) * dy) / max(dx * dx + dy * dy, 1e-6), 0, 1)
        ox, oy = self.x - x1 - t * dx, self.y - y1 - t * dy
        inside = ox * ox + oy * oy <= r * r
        tone = 0.86 - 0.22 * (ox + oy) / r
        self.paint(inside, np.array(colour, float) * tone[..., None])

    def finish(self, key):
        h, w = self.height, self.width
        cover = self.covered.reshape(h, SCALE, w, SCALE).mean((1, 3))
        total = (self.rgb * self.covered[..., None]).reshape(h, SCALE, w, SCALE, 3).sum((1, 3))
        count = np.maximum(self.covered.reshape(h, SCALE, w, SCALE).sum((1, 3)), 1)
        picture = np.round(total / count[..., None]).astype(np.uint8)
        body = cover >= 0.5
        same = body & (picture == np.array(key, np.uint8)).all(-1)
        picture[same] ^= 1  # a figure's pixel never has the key colour by chance
        picture[~body] = key
        return picture


def sheet(rows, key):
    return np.vstack([np.hstack([cell.finish(key) for cell in row]) for row in rows])


def write_png(name, picture):
    height, width = picture.shape[:2]
    lines = b"".join(b"\0" + picture[y].tobytes() for y in range(height))

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    data = chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(lines, 9)) + chunk(b"IEND", b"")
    (ASSETS / name).write_bytes(b"\x89PNG\r\n\x1a\n" + data)


def write_jpeg(name, picture):
    height, width = picture.shape[:2]
    ppm = b"P6\n%d %d\n255\n" % (width, height) + picture.tobytes()
    subprocess.run(["cjpeg", "-quality", "88", "-optimize", "-outfile", str(ASSETS / name)], input=ppm, check=True)


# Facing codes: 0 standing, 1 up and right, then clockwise to 8 up. Unit vectors on the screen.
FACINGS = [(0, 1)] + [(math.sin(a), -math.cos(a)) for a in (math.pi / 4 * k for k in range(1, 9))]


def walker(facing, step, coat, hat, skin=(244, 196, 150)):
    """A small wanderer, 32 x 40, four steps."""
    cell = Cell(32, 40)
    fx, fy = FACINGS[facing]
    swing = 0 if facing == 0 else math.sin(step * math.pi / 2)
    bob = [0, -1, 0, -1][step] if facing else [0, 0, 0.5, 0.5][step]
    side = (-fy * 0.55, fx * 0.3) if facing else (1.0, 0)
    if abs(side[0]) < 0.3:
        side = (0.32, 0.12)
    boots, trousers = (92, 58, 36), (66, 72, 104)
    for sign in (-1, 1):
        reach = swing * sign * 3.4
        hip = (16 + side[0] * 3.4 * sign, 28 + bob)
        foot = (hip[0] + fx * reach, 35.2 + fy * reach * 0.55 - max(0, sign * swing) * 1.2)
        cell.limb(*hip, *foot, 2.0, trousers, 0.8)
        cell.ellipse(foot[0] + fx * 0.9, foot[1] + 0.6, 2.9, 2.0, boots, 0, 0.5, 0.7)
    arms = [(sign, swing * -sign * 3.0) for sign in (-1, 1)]

    def arm(sign, reach):
        shoulder = (16 + side[0] * 6.4 * sign, 21.5 + bob)
        hand = (shoulder[0] + fx * reach + side[0] * sign, 27 + bob + fy * reach * 0.4)
        cell.limb(*shoulder, *hand, 1.8, tuple(c * 0.85 for c in coat), 0.8)
        cell.ellipse(*hand, 1.9, 1.9, skin, 0, 0.5, 0.5)

    behind = [a for a in arms if a[0] * side[1] < 0]
    for a in behind:
        arm(*a)
    cell.ellipse(16, 23.5 + bob, 6.6, 7.4, coat, 0, 0.6, 0.9)
    if fy > -0.5:
        cell.ellipse(16 + fx * 3.2, 26.2 + bob, 1.0, 1.0, (250, 224, 120), 0, 0.4)
    for a in arms:
        if a not in behind:
            arm(*a)
    head = (16 + fx * 1.2, 12.6 + bob + fy * 0.4)
    cell.ellipse(*head, 7.0, 6.6, skin, 0, 0.5, 0.9)
    if fy < -0.3:
        cell.ellipse(head[0] - fx * 1.5, head[1] - 0.2, 6.4, 6.0, (112, 70, 40), 0, 0.5)
    if fy > -0.9:
        for sign in (-1, 1):
            ex = head[0] + fx * 3.4 + sign * 2.5 * max(abs(fy), 0.35)
            if fy < -0.3 and sign * fx < 0:
                continue
            blink = 0.4 if facing == 0 and step == 3 else 1.25
            cell.ellipse(ex, head[1] + 0.6 + fy * 0.8, 1.0, blink, (36, 30, 44), 0, 0)
        cell.ellipse(head[0] + fx * 4.6, head[1] + 3.0 + fy * 0.5, 1.1, 0.6, (196, 104, 92), 0, 0)
    cell.ellipse(head[0], head[1] - 3.2, 8.4, 2.6, tuple(c * 0.8 for c in hat), 0, 0.5, 0.8)
    cell.ellipse(head[0] - fx * 0.6, head[1] - 5.6, 5.0, 4.0, hat, 0, 0.6, 0.8)
    return cell


def fish(step, left):
    cell = Cell(28, 18)
    way = -1 if left else 1
    wave = math.sin(step * math.pi / 2)
    tail = 14 - way * 8.5
    for sign in (-1, 1):
        cell.ellipse(tail - way * 1.5, 9 + sign * 2.6 + wave * 1.6, 3.6, 2.0, (226, 96, 40), sign * way * 0.7, 0.5, 0.6)
    cell.ellipse(14 - way, 4.6, 4.2, 2.4, (226, 96, 40), 0.25 * way, 0.4, 0.6)
    cell.ellipse(14, 9, 8.6, 5.2, (250, 142, 50), 0, 0.6, 0.8)
    cell.ellipse(14 - way * 1.0, 9, 1.5, 4.4, (255, 236, 214), 0, 0.3)
    cell.ellipse(14 + way * 1.0, 10.6 + wave * 0.4, 2.6, 1.5, (226, 96, 40), way * 0.5, 0.4, 0.4)
    cell.ellipse(14 + way * 5.2, 7.8, 1.5, 1.6, (255, 255, 255), 0, 0)
    cell.ellipse(14 + way * 5.6, 7.9, 0.8, 0.9, (30, 26, 40), 0, 0)
    return cell


def bird(step, left):
    cell = Cell(36, 28)
    way = -1 if left else 1
    lift = [1.0, 0.25, -0.75, 0.25][step]
    cell.ellipse(18 - way * 2, 14 - lift * 6.0, 3.4, 7.4, (70, 96, 150), way * (0.55 + 0.25 * lift), 0.5, 0.7)
    cell.ellipse(18 - way * 9.4, 15.6, 4.2, 1.9, (58, 80, 130), way * 0.2, 0.5, 0.6)
    cell.ellipse(18, 15, 8.4, 4.6, (92, 126, 190), -way * 0.08, 0.6, 0.8)
    cell.ellipse(18 + way * 1.4, 17, 5.6, 2.6, (236, 232, 222), -way * 0.08, 0.4)
    cell.ellipse(18 + way * 8, 11.6, 3.9, 3.7, (92, 126, 190), 0, 0.6, 0.8)
    cell.ellipse(18 + way * 12.6, 12.2, 2.4, 1.1, (244, 176, 52), way * 0.15, 0.4, 0.5)
    cell.ellipse(18 + way * 9.2, 10.9, 0.9, 1.0, (24, 22, 34), 0, 0)
    cell.ellipse(18 + way * 1.0, 14.6 - lift * 6.4, 3.6, 7.2, (118, 152, 212), -way * (0.35 - 0.15 * lift), 0.6, 0.7)
    return cell


def butterfly(step, wing):
    cell = Cell(22, 20)
    spread = [1.0, 0.72, 0.38, 0.72][step]
    for sign in (-1, 1):
        cell.ellipse(11 + sign * 4.6 * spread, 7.4, 4.8 * spread + 0.3, 5.0, wing, sign * 0.45, 0.5, 0.7)
        cell.ellipse(11 + sign * 3.8 * spread, 13.4, 3.6 * spread + 0.3, 3.6, tuple(c * 0.86 for c in wing), -sign * 0.5, 0.5, 0.7)
        cell.ellipse(11 + sign * 5.2 * spread, 7.0, 1.7 * spread, 1.8, (255, 246, 214), 0, 0.2)
    cell.limb(11, 5, 11, 15.4, 1.15, (60, 44, 56), 0.3)
    for sign in (-1, 1):
        cell.limb(11, 5, 11 + sign * 2.4, 1.8, 0.42, (60, 44, 56))
    return cell


def ladybird(facing, step):
    cell = Cell(20, 20)
    fx, fy = FACINGS[facing]
    turn = math.atan2(fy, fx)
    for sign in (-1, 1):
        for k in (-1, 0, 1):
            wiggle = 0 if facing == 0 else math.sin(step * math.pi / 2 + k * 2.1 + sign) * 1.1
            bx, by = 10 + fx * (k * 3 + wiggle), 10 + fy * (k * 3 + wiggle)
            cell.limb(bx, by, bx - fy * sign * 6.6, by + fx * sign * 6.6, 0.75, (40, 32, 40))
    cell.ellipse(10 + fx * 5.2, 10 + fy * 5.2, 3.0, 3.4, (48, 40, 50), turn, 0.6, 0.4)
    cell.ellipse(10, 10, 6.4, 5.7, (216, 44, 40), turn, 0.6, 0.8)
    cell.limb(10 - fx * 6, 10 - fy * 6, 10 + fx * 5, 10 + fy * 5, 0.45, (48, 24, 28))
    for along, across in ((-2.8, 2.5), (-2.8, -2.5), (1.6, 2.7), (1.6, -2.7)):
        cell.ellipse(10 + fx * along - fy * across, 10 + fy * along + fx * across, 1.25, 1.25, (44, 26, 30), 0, 0.3)
    return cell


def balloon(step, colour):
    cell = Cell(34, 52)
    sway = math.sin(step * math.pi / 3) * 0.9
    for x in (-4, 4):
        cell.limb(17 + x + sway, 31, 17 + x * 0.75 + sway * 0.6, 42, 0.5, (96, 70, 48))
    cell.ellipse(17 + sway, 18, 14.6, 16.2, colour, 0, 0.62, 0.9)
    for x, w in ((-8.4, 1.9), (0, 2.6), (8.4, 1.9)):
        inside = ((cell.x - 17 - sway) / 14.6) ** 2 + ((cell.y - 18) / 16.2) ** 2 <= 1
        bulge = np.sqrt(np.clip(1 - ((cell.y - 18) / 16.2) ** 2, 0, 1))
        stripe = inside & (np.abs(cell.x - 17 - sway - x * bulge) < w * bulge)
        tone = np.clip(0.75 - (cell.x - 17) / 40 - (cell.y - 18) / 46, 0.4, 1.15)
        cell.paint(stripe, np.array((255, 244, 220), float) * tone[..., None])
    cell.limb(12 + sway, 33.4, 22 + sway, 33.4, 1.1, tuple(c * 0.7 for c in colour), 0.4)
    cell.ellipse(17 + sway * 0.6, 45, 5.0, 4.4, (168, 116, 66), 0, 0.5, 0.8)
    cell.limb(12.6 + sway * 0.6, 42.4, 21.4 + sway * 0.6, 42.4, 1.1, (196, 142, 84), 0.4)
    return cell


def coin(step):
    cell = Cell(18, 18)
    turn = math.cos(step * math.pi / 6)
    wide = max(abs(turn) * 7.2, 1.4)
    cell.ellipse(9, 9, wide, 7.2, (244, 190, 52), 0, 0.6, 0.8)
    if abs(turn) > 0.3:
        cell.ellipse(9, 9, wide * 0.68, 4.9, (212, 150, 32), 0, 0.4)
        cell.ellipse(9, 9, wide * 0.54, 4.0, (252, 212, 92), 0, 0.5)
    return cell


def burst(step):
    """A single run of ten frames: a flash that opens into sparks."""
    cell = Cell(48, 48)
    t = step / 9
    generator = np.random.default_rng(11)
    if t < 0.55:
        for size, colour in ((20, (250, 120, 40)), (14, (255, 186, 60)), (7, (255, 246, 190))):
            r = size * math.sin(min(1, (t + 0.12) * 1.9) * math.pi * 0.78) * 0.86
            if r > 0.5:
                cell.ellipse(24, 24, r, r, colour, 0, 0.25)
    for _ in range(22):
        angle, speed, size = generator.uniform(0, 2 * math.pi), generator.uniform(8, 21), generator.uniform(1.3, 2.8)
        warm = generator.choice([0, 1, 2])
        r = size * (1 - t) + 0.35
        way = speed * (1 - (1 - t) ** 2)
        colour = ((255, 226, 120), (255, 160, 50), (240, 84, 48))[warm]
        if t > 0.12 and step < 9:
            cell.ellipse(24 + math.cos(angle) * way, 24 + math.sin(angle) * way + 4 * t * t, r, r, colour, 0, 0.4)
    if step == 9:
        cell.ellipse(24, 27, 0.8, 0.8, (240, 84, 48), 0, 0)
    return cell


def flower(kind):
    cell = Cell(20, 28)
    petal = [(240, 92, 128), (250, 200, 70), (150, 110, 220), (250, 250, 244)][kind]
    cell.limb(10, 12, 9.4, 27, 0.9, (62, 128, 56), 0.3)
    cell.ellipse(13, 20.4, 3.6, 1.5, (84, 160, 70), -0.6, 0.4, 0.4)
    cell.ellipse(6.4, 22.6, 3.4, 1.4, (84, 160, 70), 0.6, 0.4, 0.4)
    for k in range(6):
        a = k * math.pi / 3 + 0.3
        cell.ellipse(10 + math.cos(a) * 4.2, 9 + math.sin(a) * 4.2, 3.4, 2.5, petal, a, 0.5, 0.5)
    cell.ellipse(10, 9, 2.7, 2.7, (246, 190, 60) if kind != 1 else (150, 84, 44), 0, 0.6, 0.4)
    return cell


def lantern(step):
    cell = Cell(16, 16)
    glow = 0.5 + 0.5 * math.sin(step * math.pi / 3)
    cell.ellipse(8, 8, 4.0 + 2.2 * glow, 4.0 + 2.2 * glow, (250, 214, 92), 0, 0.3)
    cell.ellipse(8, 8, 3.2, 3.2, (255, 250, 214), 0, 0.2)
    return cell


def smooth_noise(width, height, cells, generator):
    """Value noise in 0..1 with smooth interpolation."""
    grid = generator.random((cells[1] + 2, cells[0] + 2))
    x, y = np.linspace(0, cells[0], width, endpoint=False), np.linspace(0, cells[1], height, endpoint=False)
    ix, iy = x.astype(int), y.astype(int)
    fx, fy = x - ix, y - iy
    fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)
    top = grid[np.ix_(iy, ix)] * (1 - fx) + grid[np.ix_(iy, ix + 1)] * fx
    low = grid[np.ix_(iy + 1, ix)] * (1 - fx) + grid[np.ix_(iy + 1, ix + 1)] * fx
    return top * (1 - fy[:, None]) + low * fy[:, None]


def clouds(width, height, generator):
    total = sum(smooth_noise(width, height, (4 << k, 3 << k), generator) / 2 ** k for k in range(6))
    return total / total.max()


def mix(a, b, t):
    return np.asarray(a, float) * (1 - t) + np.asarray(b, float) * t


def ridge(x, generator, height, rough):
    line = np.zeros_like(x)
    for k in range(1, 8):
        line += np.sin(x * 0.004 * rough * k + generator.uniform(0, 7)) / k ** 1.25
    return height * line / np.abs(line).max()


def tree(picture, cx, base, size, generator, tone):
    y, x = np.mgrid[0:picture.shape[0], 0:picture.shape[1]]
    trunk = (np.abs(x - cx) < size * 0.09) & (y > base - size * 0.5) & (y < base)
    picture[trunk] = mix((88, 62, 44), (60, 42, 34), np.clip((x - cx + 4) / 8, 0, 1)[trunk][:, None])
    for _ in range(26):
        a, d = generator.uniform(0, 2 * math.pi), generator.uniform(0, 0.42) * size
        bx, by, r = cx + math.cos(a) * d, base - size * 0.78 + math.sin(a) * d * 0.7, generator.uniform(0.14, 0.24) * size
        u, v = (x - bx) / r, (y - by) / r
        inside = u * u + v * v < 1
        light = np.clip(0.62 - 0.28 * u - 0.36 * v, 0.15, 1.2)[inside][:, None]
        picture[inside] = np.clip(np.array(tone) * light, 0, 255)


def landscape(width=800, height=600):
    generator = np.random.default_rng(20)
    y, x = np.mgrid[0:height, 0:width].astype(float)
    picture = mix((86, 148, 214), (252, 222, 176), np.clip(y / 270, 0, 1)[..., None] ** 1.2)
    sun = np.hypot(x - 610, y - 120)
    picture = mix(picture, (255, 246, 206), np.exp(-sun / 90)[..., None] * 0.9)
    picture[sun < 34] = (255, 250, 224)
    veil = np.clip((clouds(width, height, generator) - 0.58) * 4, 0, 1) * np.clip(1 - y / 260, 0, 1)
    picture = mix(picture, (255, 252, 246), (veil * 0.85)[..., None])
    layers = [(236, 62, 1.6, (138, 156, 190), (164, 176, 200)), (272, 44, 2.3, (104, 138, 146), (136, 164, 152)),
              (306, 30, 1.5, (92, 146, 92), (134, 178, 96))]
    for base, rise, rough, dark, light in layers:
        line = base - ridge(x[0], generator, rise, rough)
        texture = clouds(width, height, generator)[..., None]
        land = mix(dark, light, np.clip(texture * 0.8 + (y[..., None] - base) / 300, 0, 1))
        picture[y > line] = land[y > line]
    meadow = 340 - 14 * np.sin(x / 150 + 0.6)
    grain = clouds(width, height, generator)
    blades = smooth_noise(width, height, (400, 90), generator)
    grass = mix((88, 150, 62), (170, 206, 96), np.clip(grain * 1.3 - 0.25, 0, 1)[..., None])
    grass = grass * (0.86 + 0.2 * blades[..., None]) * (1.08 - 0.28 * np.clip((y - 340) / 260, 0, 1))[..., None]
    picture[y > meadow] = grass[y > meadow]
    wobble = 8 * np.sin(x / 60) + 6 * np.sin(y / 25)
    pond = np.hypot((x - 575 + wobble) / 190, (y - 500) / 62)
    shore = (pond < 1.07) & (pond >= 1)
    picture[shore] = mix(picture[shore], (214, 190, 130), 0.8)
    water = pond < 1
    ripple = 0.5 + 0.5 * np.sin(y * 0.9 + 3 * smooth_noise(width, height, (14, 40), generator) * 4)
    deep = mix((52, 112, 160), (132, 190, 214), np.clip(ripple * 0.35 + (pond - 0.4) * 0.5, 0, 1)[..., None])
    picture[water] = deep[water]
    way = 250 + 90 * np.sin((y - 340) / 85) - (y - 340) * 0.35
    wide = 10 + (y - 340) * 0.11
    path = (y > meadow) & (np.abs(x - way) < wide) & ~water
    edge = np.clip((wide - np.abs(x - way)) / 6, 0, 1)[..., None]
    sand = mix((196, 164, 110), (226, 200, 148), np.clip(grain * 1.2 - 0.1, 0, 1)[..., None])
    picture[path] = mix(picture, sand, edge)[path]
    for cx, base, size, tone in ((60, 372, 96, (96, 156, 70)), (128, 352, 64, (112, 168, 82)), (742, 366, 88, (92, 150, 74)),
                                 (690, 346, 56, (116, 170, 84)), (420, 344, 48, (120, 174, 92))):
        tree(picture, cx, base, size, generator, tone)
    picture += generator.normal(0, 1.6, picture.shape)
    return np.clip(np.round(picture), 0, 255).astype(np.uint8)


def periodic_noise(size, cells, generator):
    """Value noise in 0..1 that goes on at the opposite edge."""
    grid = generator.random((cells, cells))
    at = np.arange(size) * cells / size
    first, rest = at.astype(int), at % 1
    rest = rest * rest * (3 - 2 * rest)
    after = (first + 1) % cells
    rows = grid[first] * (1 - rest[:, None]) + grid[after] * rest[:, None]
    return rows[:, first] * (1 - rest) + rows[:, after] * rest


def grass(generator):
    """A tile of grass whose edges fit those of every other one: the blades near them are the same."""
    common = np.random.default_rng(31)
    picture = mix((108, 165, 70), (118, 174, 76), periodic_noise(TILE, 4, common)[..., None])
    for source, count, low, high in ((common, 70, 0, TILE), (generator, 40, 5, TILE - 5)):
        for _ in range(count):
            x, y = source.integers(low, high, 2)
            tone, length = source.choice([-26, -14, 16, 28]), source.integers(2, 5)
            for k in range(length):
                picture[(y - k) % TILE, x % TILE] += tone * (0.6 + 0.4 * k / length)
    return picture


def sprinkle(picture, spots):
    for x, y, radius, colour in spots:
        v, u = np.mgrid[0:TILE, 0:TILE]
        reach = np.hypot(u - x, v - y)
        picture[reach < radius + 0.9] = mix(picture[reach < radius + 0.9], (58, 104, 44), 0.45)
        light = (1.12 - 0.12 * (u - x + v - y) / radius)[..., None]
        body = reach < radius
        picture[body] = (np.array(colour, float) * light)[body]


def corner_field(bits):
    """How far each point belongs to the ground that the corners named by the bits have, SCALE times as fine."""
    fine = TILE * SCALE
    at = (np.arange(fine) + 0.5) / fine
    at = at * at * (3 - 2 * at)
    corner = [float(bits >> k & 1) for k in range(4)]
    top, low = corner[0] * (1 - at) + corner[1] * at, corner[2] * (1 - at) + corner[3] * at
    field = top * (1 - at[:, None]) + low * at[:, None]
    wobble = periodic_noise(fine, 5, np.random.default_rng(8)) - 0.5
    return field + 0.22 * wobble * (1 - np.abs(2 * field - 1))


def share(mask):
    return mask.reshape(TILE, SCALE, TILE, SCALE).mean((1, 3))[..., None]


def path_tile(bits):
    field, generator = corner_field(bits), np.random.default_rng(40)
    sand = mix((206, 176, 122), (226, 200, 150), periodic_noise(TILE, 8, generator)[..., None])
    for _ in range(26):
        x, y = generator.integers(0, TILE, 2)
        sand[y, x] -= generator.integers(14, 34)
    picture = mix(grass(np.random.default_rng(50)), (70, 116, 48), share(field > 0.4) * 0.55)
    picture = mix(picture, (172, 140, 92), share(field > 0.47))
    return mix(picture, sand, share(field > 0.55))


def water_tile(bits):
    field = corner_field(bits)
    v, u = np.mgrid[0:TILE, 0:TILE] * (2 * math.pi / TILE)
    ripple = np.sin(3 * v + 1.2 * np.sin(u) + 0.7 * np.sin(2 * u + v))
    depth = np.clip(share(field) * 1.7 - 0.75, 0, 1)
    water = mix((116, 186, 206), (46, 112, 166), depth) + 7 * ripple[..., None]
    water[ripple > 0.93] = mix(water[ripple > 0.93], (196, 226, 236), 0.5)
    picture = mix(grass(np.random.default_rng(50)), (222, 204, 148), share(field > 0.3))
    picture = mix(picture, (238, 246, 244), share(field > 0.46) * 0.9)
    return mix(picture, water, share(field > 0.53))


def meadow_tiles():
    """Four kinds of grass, then a path and then water, each by the corners that it has: 1 upper left, 2 upper right,
    4 lower left, 8 lower right."""
    tiles = [grass(np.random.default_rng(50 + k)) for k in range(4)]
    sprinkle(tiles[2], [(9, 10, 1.7, (250, 236, 120)), (21, 20, 1.7, (250, 250, 246)), (13, 24, 1.7, (240, 130, 150))])
    sprinkle(tiles[3], [(10, 20, 3.4, (168, 166, 158)), (16, 22, 2.2, (146, 144, 138)), (23, 9, 1.8, (176, 174, 168))])
    tiles += [path_tile(bits) for bits in range(1, 16)] + [water_tile(bits) for bits in range(1, 16)]
    return np.hstack([np.clip(np.round(tile), 0, 255).astype(np.uint8) for tile in tiles])


def block(cell, left, top, right, bottom, colour, lean=0.0):
    """A rectangle lit from above; `lean` narrows it towards the top by so many pixels a side."""
    inset = lean * (bottom - cell.y) / (bottom - top)
    inside = (cell.y >= top) & (cell.y < bottom) & (cell.x >= left + inset) & (cell.x < right - inset)
    tone = 1.06 - 0.28 * (cell.y - top) / (bottom - top) - 0.1 * (cell.x - left) / (right - left)
    cell.paint(inside, np.array(colour, float) * tone[..., None])


def oak(tone, seed):
    cell, generator = Cell(64, 64), np.random.default_rng(seed)
    cell.ellipse(33, 57, 19, 5, (66, 112, 46), 0, 0)
    cell.limb(32, 36, 32, 57, 4.2, (112, 78, 50), 0.9)
    leaves = [(32, 24, 19)] + [(32 + math.cos(a) * 14, 24 + math.sin(a) * 10, 9.5) for a in np.arange(0, 6.2, 0.7)]
    for x, y, r in leaves:
        cell.ellipse(x, y, r + 0.9, r * 0.92 + 0.9, tuple(c * 0.34 for c in tone), 0, 0)
    for x, y, r in leaves:
        cell.ellipse(x, y, r, r * 0.92, tuple(c * 0.86 for c in tone), 0, 0.5)
    for _ in range(34):
        a, d = generator.uniform(0, 2 * math.pi), generator.uniform(0, 1) ** 0.5
        x, y = 31 + math.cos(a) * d * 17, 22 + math.sin(a) * d * 13
        cell.ellipse(x, y, 3.6, 3.0, tuple(c * generator.uniform(0.9, 1.12) for c in tone), 0, 0.5)
    return cell


def pine():
    cell = Cell(64, 64)
    cell.ellipse(33, 58, 16, 4.4, (66, 112, 46), 0, 0)
    cell.limb(32, 46, 32, 58, 3.2, (104, 72, 46), 0.9)
    for k in range(4):
        top, bottom, wide = 33 - 10 * k, 52 - 11 * k, 19 - 3.6 * k
        for grow, tone in ((0.9, 0.32), (0, 1.0)):
            fall = np.clip((cell.y - top + grow) / (bottom - top), 0, 1)
            edge = wide * fall ** 1.1 + grow + 0.8 * np.sin(cell.x * 1.3)
            inside = (cell.y >= top - grow) & (cell.y < bottom + grow - 1.2 * np.abs(np.sin(cell.x * 0.8)))
            inside &= np.abs(cell.x - 32) < edge
            light = tone * (0.92 - 0.016 * (cell.x - 32) - 0.3 * (fall - 0.5) + 0.08 * k)
            cell.paint(inside, np.array((62, 128, 78), float) * light[..., None])
    return cell


def bush():
    cell = Cell(64, 64)
    cell.ellipse(33, 55, 21, 5, (66, 112, 46), 0, 0)
    for x, y, r in ((20, 46, 10), (44, 46, 10), (32, 40, 13), (32, 49, 11)):
        cell.ellipse(x, y, r, r * 0.86, (86, 150, 66), 0, 0.55, 0.9)
    for x, y in ((18, 42), (27, 36), (37, 42), (45, 44), (30, 49), (40, 34)):
        cell.ellipse(x, y, 1.8, 1.8, (232, 72, 84), 0, 0.6, 0.4)
    return cell


def rock():
    cell = Cell(64, 64)
    cell.ellipse(34, 55, 20, 4.6, (66, 112, 46), 0, 0)
    cell.ellipse(40, 47, 11, 8.4, (140, 138, 136), 0.2, 0.6, 0.9)
    cell.ellipse(27, 43, 14, 12, (164, 160, 154), -0.2, 0.6, 0.9)
    cell.ellipse(23, 37, 5, 2.6, (122, 150, 88), -0.4, 0.4)
    return cell


def house(roof):
    cell = Cell(64, 64)
    cell.ellipse(33, 59, 27, 4, (66, 112, 46), 0, 0)
    block(cell, 10, 30, 54, 60, (70, 54, 46))
    block(cell, 11, 30, 53, 59, (240, 226, 196))
    for x in (11, 31, 51):
        block(cell, x, 30, x + 2, 59, (134, 92, 58))
    block(cell, 17, 43, 26, 59, (120, 76, 46))
    cell.ellipse(24, 51.5, 0.9, 0.9, (246, 214, 110), 0, 0)
    block(cell, 36, 39, 48, 50, (110, 74, 48))
    block(cell, 37, 40, 47, 49, (138, 196, 226))
    block(cell, 41.6, 40, 42.4, 49, (110, 74, 48))
    block(cell, 42, 0, 49, 20, (150, 100, 84))
    block(cell, 3, 7, 61, 35, tuple(c * 0.4 for c in roof), 12)
    block(cell, 4.4, 8, 59.6, 34, roof, 12)
    for y in (13, 20, 27):
        rows = (np.abs(cell.y - y) < 0.5) & (cell.x > 5 + 12 * (34 - y) / 26) & (cell.x < 59 - 12 * (34 - y) / 26)
        cell.paint(rows, np.array(roof, float) * 0.72)
    return cell


def bridge():
    """A stretch of a wooden bridge; more of it may follow at either side."""
    cell = Cell(64, 64)
    block(cell, 0, 10, 64, 54, (96, 66, 42))
    for k in range(8):
        block(cell, 8 * k + 0.5, 12, 8 * k + 7.5, 52, (188 - 12 * (k % 2), 140 - 8 * (k % 3), 90))
    for y in (8, 50):
        block(cell, 0, y, 64, y + 5, (82, 56, 38))
        block(cell, 0, y, 64, y + 3.6, (160, 114, 70))
        for x in (4, 36):
            block(cell, x, y - 4, x + 5, y + 6, (126, 86, 54))
    return cell


def earth(tones, generator):
    dark, light, stone = tones
    picture = mix(dark, light, periodic_noise(TILE, 8, np.random.default_rng(60))[..., None])
    for _ in range(4 if stone else 0):
        x, y, r = generator.uniform(5, 27), generator.uniform(5, 27), generator.uniform(1.0, 2.0)
        v, u = np.mgrid[0:TILE, 0:TILE]
        picture[np.hypot(u - x, v - y) < r] = stone
    return picture


def ground_tile(kind, tones, turf, key):
    """What a hill is made of: 0 inside, 1 flat top, 2 slope up to the right, 3 slope down, 4 and 5 below the slopes."""
    v, u = np.mgrid[0:TILE, 0:TILE]
    surface = {0: u * 0 - 99, 1: u * 0 + 2, 2: TILE + 1 - u, 3: u + 2, 4: 1 - u, 5: u + 2 - TILE}[kind]
    picture = earth(tones, np.random.default_rng(70 + kind))
    if kind != 0:
        ragged = 2.5 * np.sin(u * 2 * math.pi / 8) + 1.5 * np.sin(u * 2 * math.pi / 16)
        fringe = surface + (8 + ragged if tones[2] else 5)
        lawn = v < fringe
        bright = np.clip(1.16 - 0.05 * (v - surface), 0.6, 1.2)[..., None]
        picture[lawn] = (np.array(turf, float) * bright)[lawn]
        picture[np.abs(v - fringe) < 0.8] *= 0.72 if tones[2] else 1
    picture = np.clip(np.round(picture), 0, 255).astype(np.uint8)
    if kind in (1, 2, 3):
        picture[v < surface] = key
    return picture


def sky_tile(row):
    v, u = np.mgrid[0:TILE, 0:TILE]
    height = np.clip((row * TILE + v + 0 * u) / (12 * TILE), 0, 1)[..., None]
    return np.round(mix((84, 152, 222), (252, 232, 196), height ** 1.1)).astype(np.uint8)


def hill_tiles():
    """Three strips: the sky from its top row down, hills far away, and the near ground."""
    far = ((136, 174, 168), (140, 178, 170), None)
    near = ((130, 92, 60), (144, 102, 68), (170, 130, 92))
    rows = [[sky_tile(row) for row in range(15)]]
    rows.append([ground_tile(kind, far, (158, 196, 174), (255, 0, 255)) for kind in range(6)])
    rows.append([ground_tile(kind, near, (110, 178, 70), (255, 0, 255)) for kind in range(6)])
    blank = np.zeros((TILE, TILE, 3), np.uint8)
    return np.vstack([np.hstack(row + [blank] * (15 - len(row))) for row in rows])


def cloud(kind):
    cell = Cell(96, 48)
    puffs = [[(26, 30, 15), (48, 22, 19), (70, 30, 15)], [(20, 32, 11), (40, 27, 16), (62, 24, 14), (78, 33, 10)]][kind]
    for x, y, r in puffs:
        cell.ellipse(x, y + 2, r, r * 0.82, (206, 220, 236), 0, 0)
    block(cell, 18, 32, 80, 44, (206, 220, 236), 3)
    for x, y, r in puffs:
        cell.ellipse(x - 1, y, r * 0.93, r * 0.74, (250, 252, 255), 0, 0.08)
    cell.paint((cell.y > 30) & (cell.y < 39) & (cell.x > 22) & (cell.x < 76), np.array((250, 252, 255), float))
    return cell


def compass(heading):
    """A brass compass, its needle standing still (0) or in one of the eight facings."""
    cell = Cell(48, 48)
    cell.ellipse(24, 24, 22, 22, (196, 148, 70), 0, 0.5, 1.0)
    cell.ellipse(24, 24, 17.5, 17.5, (248, 240, 214), 0, 0.12, 0.8)
    for k in range(8):
        a = k * math.pi / 4
        cell.ellipse(24 + math.cos(a) * 14.6, 24 + math.sin(a) * 14.6, 1.2 if k % 2 else 1.9, 1.2 if k % 2 else 1.9,
                     (120, 92, 60), 0, 0)
    fx, fy = FACINGS[heading] if heading else (0, -1)
    reach = 11.5 if heading else 5
    for sign, colour in ((-1, (86, 96, 116)), (1, (212, 58, 54))):
        for k in range(24):
            t = k / 24
            cell.ellipse(24 + sign * fx * reach * t, 24 + sign * fy * reach * t, 3.2 * (1 - t) + 0.5, 3.2 * (1 - t) + 0.5, colour, 0, 0)
    cell.ellipse(24, 24, 2.4, 2.4, (246, 206, 104), 0, 0.6, 0.5)
    return cell


RATE = 44100


def smooth(noise, cutoff):
    """Takes away what lies above the cut-off frequency (Hz, one for each sample), in two equal steps."""
    for _ in range(2):
        held, weights = 0.0, 1 - np.exp(-2 * math.pi * cutoff / RATE)
        result = np.empty_like(noise)
        for i, (sample, weight) in enumerate(zip(noise, weights)):
            held += weight * (sample - held)
            result[i] = held
        noise = result
    return noise


def tone(t, frequency):
    """A sine whose frequency (Hz) may change from sample to sample."""
    return np.sin(2 * math.pi * np.cumsum(frequency + 0 * t) / RATE)


def write_wave(name, samples):
    fade = np.minimum(1, np.arange(len(samples), 0, -1) / 200)  # to nothing, without a click
    level = 0.85 * 32767 / np.abs(samples * fade).max()
    with wave.open(str(ASSETS / name), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", None))
        file.writeframes(np.round(samples * fade * level).astype("<i2").tobytes())


def sounds():
    def times(seconds):
        return np.arange(int(seconds * RATE)) / RATE

    random = np.random.default_rng(44)
    t = times(0.11)
    thump = tone(t, 70 + 90 * np.exp(-t / 0.012)) * np.exp(-t / 0.025)
    write_wave("step.wav", thump + 1.6 * smooth(random.standard_normal(len(t)), 1400 + 0 * t) * np.exp(-t / 0.018))
    t = times(0.22)
    boing = tone(t, 190 + 260 * np.exp(-t / 0.05)) + 0.3 * tone(t, 2 * (190 + 260 * np.exp(-t / 0.05)))
    write_wave("bounce.wav", boing * np.exp(-t / 0.06) * np.minimum(1, t / 0.003))
    t = times(0.55)
    first, second = tone(t, 987.77), tone(t, 1318.51)
    ring = np.where(t < 0.07, first + 0.3 * first ** 3, (second + 0.3 * second ** 3) * np.exp(-(t - 0.07) / 0.14))
    write_wave("coin.wav", ring * np.minimum(1, t / 0.002))
    t = times(0.67)
    rumble = smooth(random.standard_normal(len(t)), 250 + 3200 * np.exp(-t / 0.08))
    boom = tone(t, 38 + 80 * np.exp(-t / 0.06)) * np.exp(-t / 0.2)
    write_wave("explosion.wav", (rumble / np.abs(rumble).max() * 1.6 + boom) * np.exp(-t / 0.19))


def main():
    ASSETS.mkdir(exist_ok=True)
    for name, coat, hat, key in (("walker_red.png", (206, 66, 58), (126, 44, 48), (255, 0, 255)),
                                 ("walker_blue.png", (64, 112, 200), (236, 196, 92), (0, 255, 0)),
                                 ("walker_green.png", (88, 158, 92), (90, 64, 120), (0, 255, 255))):
        write_png(name, sheet([[walker(f, s, coat, hat) for s in range(4)] for f in range(9)], key))
    write_png("fish.png", sheet([[fish(s, left) for s in range(4)] for left in (False, True)], (0, 0, 0)))
    write_png("bird.png", sheet([[bird(s, left) for s in range(4)] for left in (False, True)], (255, 255, 255)))
    wings = [(246, 150, 60), (110, 160, 240), (236, 110, 170)]
    write_png("butterfly.png", sheet([[butterfly(s, w) for s in range(4)] for w in wings], (0, 0, 255)))
    write_png("ladybird.png", sheet([[ladybird(f, s) for s in range(4)] for f in range(9)], (0, 128, 128)))
    write_png("balloon.png", sheet([[balloon(s, c) for s in range(6)] for c in ((222, 72, 66), (80, 130, 214))], (255, 255, 0)))
    write_png("coin.png", sheet([[coin(s) for s in range(6)]], (128, 0, 128)))
    write_png("burst.png", sheet([[burst(s) for s in range(10)]], (0, 64, 0)))
    write_png("flower.png", sheet([[flower(k) for k in range(4)]], (255, 0, 128)))
    write_png("lantern.png", sheet([[lantern(s) for s in range(6)]], (64, 0, 64)))
    write_jpeg("meadow.jpg", landscape())
    write_png("meadow_tiles.png", meadow_tiles())
    things = [oak((104, 164, 72), 1), oak((150, 172, 66), 2), pine(), bush(), rock(), house((196, 78, 62)),
              house((82, 112, 168)), bridge()]
    write_png("meadow_things.png", sheet([things], (255, 0, 255)))
    write_png("hill_tiles.png", hill_tiles())
    write_png("cloud.png", sheet([[cloud(0), cloud(1)]], (255, 0, 255)))
    write_png("compass.png", sheet([[compass(heading) for heading in range(9)]], (255, 0, 255)))
    sounds()
    return 0


if __name__ == "__main__":
    sys.exit(main())
