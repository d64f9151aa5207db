/* SPDX-License-Identifier: Zlib */
/* The world of the showcase: a country of 1600 x 1200 pixels, made of tiles. */
#ifndef SHOWCASE_WORLD_H
#define SHOWCASE_WORLD_H
#include <fenlight/platform.h>
#include <stdint.h>

enum { kWorldWidth = 1600, kWorldHeight = 1200, kRoadPoints = 256 };

/* The road round the country as pairs of X and Y, about 15 pixels from each other. It ends where it began. */
extern int16_t Road[2 * kRoadPoints];

/* Paints the country on a context. `ground` holds the tiles of the ground, `things` what stands on it. */
void PaintWorld(HDC target, uintptr_t ground, uintptr_t things);

#endif
