/* SPDX-License-Identifier: Zlib */
/* Sprites: layers, marks, bulk deletion, fix mode.
 *
 * A sprite's layer is its place in the list of all sprites, counted from 1. The list is drawn from its first
 * sprite to its last, so a higher layer lies in front. Finished sprites keep their places until they are
 * freed. The first sprite keeps layer 1 as long as there is a list; nothing goes behind it.
 *
 * SetSpriteLayer and its two forms ask for a change; the sprite thread makes it at the start of the next
 * frame, in the order of the calls. SwapSpriteLayers changes the list at once, and the frame that runs
 * meanwhile is drawn to its end in the old order.
 *
 * A mark is a number of the caller's on a sprite, 0 at first, for DeleteSpritesMark and CleanUp. A sprite in
 * fix mode is not drawn: it moves, animates and collides unseen. */
#ifndef FENLIGHT_SPRITE_LAYERS_H
#define FENLIGHT_SPRITE_LAYERS_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Asks for a sprite to be put directly in front of the sprite that stands on a layer when the next frame
/// starts. A sprite on its way to the front thereby gets that layer itself, one on its way to the back the
/// next higher. A sprite that is on the layer, or directly in front of it, stays.
/// @param sprite  sprite handle. The first sprite stays where it is; 0, and what is in no list by then,
///                changes nothing.
/// @param layer   1 to the number of sprites, finished ones included; any other layer changes nothing
/// @return 0; -1 if 62 requests are waiting for the next frame already, and then nothing is asked for
/// @note Any thread, several at once.
FENLIGHT_API int32_t SetSpriteLayer(uintptr_t sprite, int32_t layer) FENLIGHT_NOEXCEPT;

/// Asks for a sprite to be put in front of all that exist now: SetSpriteLayer with CountAllSprites as layer.
/// @param sprite  as in SetSpriteLayer
/// @return as SetSpriteLayer
/// @note Any thread. It counts through the list.
FENLIGHT_API int32_t BringSpriteToTop(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Asks for a sprite to be put on layer 2, directly in front of the first: SetSpriteLayer with layer 1.
/// @param sprite  as in SetSpriteLayer
/// @return as SetSpriteLayer
/// @note Any thread, several at once.
FENLIGHT_API int32_t BringSpriteToBottom(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Tells on which layer a sprite is. A change that was asked for shows once the next frame has started.
/// @param sprite  sprite handle, compared only: any number is harmless
/// @return the layer, from 1; -1 if the sprite is not in the list
/// @note Any thread. It counts through the list.
FENLIGHT_API int32_t GetSpriteLayer(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Exchanges the layers of two sprites at once.
/// @param spriteA, spriteB  sprite handles, compared only; the same one twice changes nothing
/// @return 0; -1 if one of them is the first sprite or not in the list, and then nothing is changed
/// @note Any thread. The screen shows it from the next frame on.
FENLIGHT_API int32_t SwapSpriteLayers(uintptr_t spriteA, uintptr_t spriteB) FENLIGHT_NOEXCEPT;

/// Marks a sprite.
/// @param sprite  sprite handle; 0 does nothing
/// @param mark    any number
/// @return 0
/// @note Any thread.
FENLIGHT_API int32_t MarkSprite(uintptr_t sprite, int32_t mark) FENLIGHT_NOEXCEPT;

/// Tells the mark of a sprite.
/// @param sprite  sprite handle
/// @return the mark; 0 for a sprite that was never marked and for handle 0
/// @note Any thread.
FENLIGHT_API int32_t GetSpriteMark(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Deletes, as DeleteSprite does, all sprites with a mark that have not been deleted yet.
/// @param mark  0 takes all that were never marked
/// @return how many it deleted; 0 with no sprite in the list
/// @note One calling thread.
FENLIGHT_API int32_t DeleteSpritesMark(int32_t mark) FENLIGHT_NOEXCEPT;

/// Deletes, as DeleteSprite does, all sprites whose animation runs once and shows its last frame. A sprite
/// whose animation repeats stays.
/// @return how many it deleted; 0 with no sprite in the list
/// @note One calling thread.
FENLIGHT_API int32_t DeleteSpritesIfAnimReady(void) FENLIGHT_NOEXCEPT;

/// Deletes, as DeleteSprite does, all sprites whose left edge is at a position.
/// @param x  pixels, compared for equality at the moment of the call
/// @return how many it deleted; 0 with no sprite in the list
/// @note One calling thread. A sprite in view coordinates has those of the world while a frame runs.
FENLIGHT_API int32_t DeleteAllXSprites(int32_t x) FENLIGHT_NOEXCEPT;

/// Deletes, as DeleteSprite does, all sprites whose top edge is at a position.
/// @param y  pixels, compared for equality at the moment of the call
/// @return how many it deleted; 0 with no sprite in the list
/// @note One calling thread. A sprite in view coordinates has those of the world while a frame runs.
FENLIGHT_API int32_t DeleteAllYSprites(int32_t y) FENLIGHT_NOEXCEPT;

/// Asks for a sprite to be drawn or not, from its next pass on. A sprite on the screen is not wiped when it
/// is fixed: its last picture stays until something else is shown there or the sprite is deleted.
/// @param sprite  sprite handle; 0 does nothing. A deleted sprite is not fixed any more.
/// @param mode    0: it is drawn, as it is at first; any other value: it is not
/// @return 0
/// @note Any thread. Of several calls between two passes the last one counts.
FENLIGHT_API int32_t SetSpriteFixMode(uintptr_t sprite, int32_t mode) FENLIGHT_NOEXCEPT;

/// Tells whether a sprite is drawn. What SetSpriteFixMode asked for shows after the sprite's next pass.
/// @param sprite  sprite handle
/// @return 0 if it is drawn, else the mode that was set; 0 for handle 0
/// @note Any thread.
FENLIGHT_API int32_t GetSpriteFixMode(uintptr_t sprite) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
