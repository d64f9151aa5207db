#!/usr/bin/env python3
# SPDX-License-Identifier: Zlib
"""Makes assets/lake.png, a small picture with what photographs have: soft gradients, haze, textures, reflections,
fine lines, hard edges and both ends of the brightness. Needs NumPy. Computed, with a fixed seed.

The sails are of one exact colour, and no pixel is entirely black.
"""
import sys

import numpy as np

from make_assets import clouds, mix, ridge, smooth_noise, write_png

WIDTH, HEIGHT = 144, 108  # pixels
SAMPLES = 5  # across a pixel, and down
UNITS = 160, 120  # width and height in the units of all coordinates below
SHORE = 70  # where the lake begins
SAIL = (250, 246, 238)


def distant(x, y, generator):
    """Sky, sun and three rows of hills, hazier with each row further away."""
    picture = mix((58, 104, 176), (250, 196, 140), np.clip(y / 62, 0, 1)[..., None] ** 1.3)
    sun = np.hypot(x - 112, y - 34)
    picture = mix(picture, (255, 226, 160), np.exp(-sun / 22)[..., None] * 0.95)
    veil = np.clip((clouds(*x.shape[::-1], generator) - 0.52) * 3.2, 0, 1) * np.clip(1.25 - y / 52, 0, 1)
    picture = mix(picture, mix((255, 238, 214), (214, 170, 168), np.clip(y / 50, 0, 1)[..., None]), veil[..., None])
    picture[sun < 6.5] = (255, 248, 220)
    for base, rise, rough, dark, light in ((58, 17, 1.6, (120, 132, 176), (170, 164, 186)),
                                           (65, 12, 2.3, (66, 92, 116), (112, 128, 132)),
                                           (69, 7, 1.8, (26, 56, 48), (88, 116, 62))):
        line = base - ridge(x[0] * 5, generator, rise, rough)
        texture = clouds(*x.shape[::-1], generator)[..., None]
        land = mix(dark, light, np.clip(texture * 1.5 - 0.35 + (line - y)[..., None] / 30, 0, 1))
        picture[y > line] = land[y > line]
    return picture


def boat(picture, x, y, left, base, size):
    """A hull with two sails, and a mast no thicker than a pixel."""
    u, v = (x - left) / size, (y - base) / size
    picture[(np.abs(u) < 0.02) & (v < -0.1) & (v > -1.5)] = (70, 44, 30)
    picture[(u > 0.05) & (v < -0.2) & (v > -1.4) & (u < 0.75 * (v + 1.4) / 1.2)] = SAIL
    picture[(u < -0.05) & (v < -0.2) & (v > -1.2) & (u > -0.5 * (v + 1.2))] = SAIL
    picture[(v > -0.12) & (v < 0.12) & (np.abs(u) < 0.75 - 1.2 * (v + 0.12))] = (150, 34, 30)


def lake(picture, x, y, generator):
    """The shore's mirror image, broken by ripples that grow towards the front."""
    near = np.clip((y - SHORE) / (UNITS[1] - SHORE), 0, 1)
    ripple = smooth_noise(*x.shape[::-1], (26, 70), generator) - 0.5
    scale = x.shape[0] / UNITS[1]
    rows = np.clip((2 * SHORE - y + ripple * (2 + 16 * near)) * scale, 0, SHORE * scale - 1).astype(int)
    mirrored = picture[rows, np.broadcast_to(np.arange(x.shape[1]), rows.shape)]
    water = mix(mirrored * (0.86, 0.9, 0.94), (16, 40, 66), (0.15 + 0.5 * near)[..., None])
    glitter = np.exp(-((x - 112) / (4 + 14 * near)) ** 2) * (ripple > 0.1 + 0.12 * near)
    water = mix(water, (255, 232, 170), (glitter * 0.85)[..., None])
    picture[y >= SHORE] = water[y >= SHORE]


def bank(picture, x, y, generator):
    """Stones and reeds in front."""
    ground = 116 - 13 * np.clip(1 - x / 62, 0, 1) ** 0.6 - 1.5 * np.sin(x / 5)
    earth = mix((30, 34, 18), (112, 118, 52), clouds(*x.shape[::-1], generator)[..., None] * 1.1)
    picture[y > ground] = earth[y > ground]
    for cx, cy, r in ((24, 108, 7), (38, 112, 6), (50, 116, 4)):
        u, v = (x - cx) / r, (y - cy) / (0.7 * r)
        inside = u * u + v * v < 1
        light = np.clip(0.45 + 0.4 * u - 0.5 * v, 0.1, 1) * (0.8 + 0.4 * clouds(*x.shape[::-1], generator))
        picture[inside] = (light[..., None] * np.array((186, 172, 158)))[inside]
    for _ in range(26):
        foot, lean, top = generator.uniform(0, 22), generator.uniform(-7, 9), generator.uniform(62, 96)
        t = np.clip((118 - y) / (118 - top), 0, 1)
        blade = (np.abs(x - foot - lean * t * t) < 0.55 * (1.1 - t)) & (y > top)
        picture[blade] = mix((40, 58, 22), (156, 160, 70), generator.uniform(0, 1))


def main():
    generator = np.random.default_rng(31)
    y, x = (np.mgrid[0:HEIGHT * SAMPLES, 0:WIDTH * SAMPLES] + 0.5) * UNITS[0] / (WIDTH * SAMPLES)
    picture = distant(x, y, generator)
    boat(picture, x, y, 62, 69, 15)
    lake(picture, x, y, generator)
    boat(picture, x, y, 62, 71, 15)
    bank(picture, x, y, generator)
    small = picture.reshape(HEIGHT, SAMPLES, WIDTH, SAMPLES, 3).mean((1, 3))
    write_png("lake.png", np.clip(np.round(small), 1, 255).astype(np.uint8))
    return 0


if __name__ == "__main__":
    sys.exit(main())
