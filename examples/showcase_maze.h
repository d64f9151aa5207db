/* SPDX-License-Identifier: Zlib */
/* A garden in the showcase's world: a maze of hedges, in which somebody walks a way that was searched, round
 * a pool in which stars fly. Bursts greet each arrival. */
#ifndef SHOWCASE_MAZE_H
#define SHOWCASE_MAZE_H
#include <fenlight/platform.h>
#include <stdint.h>

/* Paints the garden on the world and looks for the way. 0 if there is no memory for it. */
int PaintMaze(HDC screen, HDC world);

/* Puts a walker at the start of the way and starts the threads of the stars and bursts. They draw on the back
 * buffer, which a view shows whole in each frame, and under whoever walks there. Gives the walker's sprite.
 */
uintptr_t PutMazeWalker(uintptr_t strips, HDC screen, HDC back, HDC clean);

/* To be called often: each arrival gets its bursts, and the walker begins anew a little later. */
void KeepMazeWalker(HDC back, HDC clean);

/* Ends both threads. Sprites must not be stopped in the middle of a frame, images must still be there. */
void CloseMaze(void);

#endif
