/* SPDX-License-Identifier: Zlib */
/* A yard in the showcase's world in which balls bounce, heard the better the nearer the view is. */
#ifndef SHOWCASE_YARD_H
#define SHOWCASE_YARD_H
#include <fenlight/platform.h>
#include <stdint.h>

/* Paints the yard on the world and loads the sounds from a folder; without them the yard is silent. 0 if
 * there is no memory for its pictures. */
int PaintYard(HDC screen, HDC world, HDC bursts, const char *folder);

/* To be called once for two balls, and then each time for a mine if the last one has gone. Give the number of
 * sprites that were made. */
int PutBalls(HDC screen, HDC back, HDC clean);
int KeepMine(HDC screen, HDC back, HDC clean);

/* Sets the volume by the middle of the view. */
void HearYardFrom(int32_t x, int32_t y);

/* After the last sprite has gone. */
void CloseYard(void);

#endif
