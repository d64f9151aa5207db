/* SPDX-License-Identifier: Zlib */
/* The platform layer: what a caller needs around the library's own functions. Device contexts and bitmaps to
 * draw on, windows to show them, threads, files and resources, under the published names of these calls and
 * with the meaning that their published documentation gives them. */
#ifndef FENLIGHT_PLATFORM_H
#define FENLIGHT_PLATFORM_H
#include "platform/graphics.h"
#include "platform/input.h"
#include "platform/sound.h"
#include "platform/system.h"
#include "platform/windows.h"
#endif
