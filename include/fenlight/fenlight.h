/* SPDX-License-Identifier: Zlib */
/* Fenlight: fast routines for games and multimedia. This header includes the whole interface; each family of
 * functions has a header of its own, which can be included alone.
 *
 * Only numbers, handles and addresses cross the interface, so every language that can call a C function can
 * use it. Handles and addresses are as wide as an address (a foreign-function interface must be told so),
 * plain numbers are 32 bits wide. A setter or command returns 0, a creator a handle or 0, a look-up that can
 * miss -1.
 */
#ifndef FENLIGHT_FENLIGHT_H
#define FENLIGHT_FENLIGHT_H
#include "alpha_images.h"
#include "compression.h"
#include "desktop.h"
#include "files.h"
#include "frame.h"
#include "fx_blends.h"
#include "fx_buffer.h"
#include "fx_filters.h"
#include "fx_geometry.h"
#include "fx_smoothing.h"
#include "images.h"
#include "input.h"
#include "internet.h"
#include "lists.h"
#include "memory.h"
#include "painting.h"
#include "particles.h"
#include "paths.h"
#include "sound.h"
#include "sprite_animation.h"
#include "sprite_collision.h"
#include "sprite_layers.h"
#include "sprite_list.h"
#include "sprite_movement.h"
#include "sprite_thread.h"
#include "sprite_worlds.h"
#include "text.h"
#include "tiles.h"
#endif
