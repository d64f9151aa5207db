/* SPDX-License-Identifier: Zlib */
/* Sprites: the record of a sprite and the list of all sprites.
 *
 * A sprite is a rectangle of pixels that moves, animates and restores the background behind it by itself,
 * while the program does something else. InitSprite makes one; a thread of the library then draws all of them
 * at up to 83 frames per second, in the order in which they were made, later ones over earlier ones. The
 * handle of a sprite is the address of its record: 256 words that the library's functions read and write by
 * name, and TestSprite and ChangeSpritePara by position.
 *
 * Three contexts of the caller's take part, all with the same background: cleanDC holds it without sprites,
 * backDC is where a frame is put together, screenDC is what the user sees. They and imageDC must stay valid,
 * with their bitmaps selected, as long as a sprite uses them; dead contexts make a sprite invisible, nothing
 * worse. Pixels of a frame that have the colour of its top right pixel are transparent.
 *
 * A deleted sprite vanishes within two frames. Its record stays readable until the last sprite is gone (the
 * thread then frees all records and ends) or until a CleanUp with its mark; from then on the handle is dead
 * and must not be used. A sprite handle that is 0 is harmless everywhere; other numbers are used as they
 * come.
 *
 * The functions are meant for one thread of the caller's. They never wait for a frame, except
 * DeleteAllSprites, and may be called while the sprite thread is stopped or running.
 */
#ifndef FENLIGHT_SPRITE_LIST_H
#define FENLIGHT_SPRITE_LIST_H
#include "types.h"

/// The arguments of InitSprite, in its order.
struct SpriteArguments {
    uintptr_t imageDC;
    uintptr_t screenDC;
    uintptr_t backDC;
    uintptr_t cleanDC;
    int32_t sourceX;
    int32_t sourceY;
    int32_t width;
    int32_t height;
    int32_t frameCount;
    int32_t frame;
    int32_t frameDelay;
    int32_t x;
    int32_t y;
    int32_t speedX;
    int32_t speedY;
};

FENLIGHT_BEGIN_C

/// Makes a sprite and puts it on top of all others. It stands still at (x, y) and shows `frame` until it is
/// sent off. The first sprite starts the sprite thread.
/// @param imageDC     context with the sprite's pictures: frames of equal size side by side in one row
/// @param screenDC    context on which the sprite is shown
/// @param backDC      context of the back buffer, at least as large as what is shown
/// @param cleanDC     context of the background without sprites
/// @param sourceX     left edge of frame 1 in imageDC, in pixels; the same strip serves all directions until
///                    SetSpriteAnimMove says otherwise
/// @param sourceY     top edge of the strip in imageDC
/// @param width       width of a frame, and the step from frame to frame; below 1 the sprite is invisible
/// @param height      height of a frame; below 1 the sprite is invisible
/// @param frameCount  frames in the strip
/// @param frame       frame shown first, counted from 1 to frameCount; not checked
/// @param frameDelay  loop passes per animation step
/// @param x           left edge of the sprite, any number; parts outside the contexts are not drawn
/// @param y           top edge of the sprite
/// @param speedX      pixels per step in X
/// @param speedY      pixels per step in Y
/// @return the sprite's handle; 0 without memory, or, for the first sprite, when the thread or its semaphore
///         cannot be made. Nothing is left behind then.
/// @note One calling thread. Also right after DeleteAllSprites, which starts a new thread.
FENLIGHT_API uintptr_t InitSprite(uintptr_t imageDC, uintptr_t screenDC, uintptr_t backDC, uintptr_t cleanDC,
                                  int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                                  int32_t frameCount, int32_t frame, int32_t frameDelay, int32_t x, int32_t y,
                                  int32_t speedX, int32_t speedY) FENLIGHT_NOEXCEPT;

/// InitSprite with its arguments in a block, which is only read during the call.
/// @param block  the fifteen arguments; 0 makes no sprite
/// @return as InitSprite; 0 also if `block` is 0
/// @note One calling thread.
FENLIGHT_API uintptr_t InitSprite5(const struct SpriteArguments *block) FENLIGHT_NOEXCEPT;

/// Makes a second sprite that is in every respect as the first is at this moment, finished ones included: it
/// lies exactly over its source, drawn above it, until it is moved. It has a waypoint table of its own. The
/// copy of a deleted sprite is deleted too, and a CleanUp with its mark that still waits may free it.
/// @param sprite  sprite handle; 0 makes no copy
/// @return handle of the copy; 0 without memory, with no sprite in the list, or for handle 0
/// @note One calling thread.
FENLIGHT_API uintptr_t CopySprite(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Lets a sprite vanish. It is erased from the screen in the next two frames, moving on meanwhile, and
/// finished after them. A sprite that has been deleted before is erased once more.
/// @param sprite  sprite handle; 0, or any handle while there is no sprite at all, does nothing
/// @return 0
/// @note One calling thread. Returns at once.
FENLIGHT_API int32_t DeleteSprite(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Lets all sprites vanish and returns when they are gone, their records are dead and the list is empty,
/// about two frames later. With no sprite it returns at once.
/// @return 0
/// @note One calling thread. It waits for good while StopAllSprites keeps the sprite thread stopped; let it
///       go on first.
FENLIGHT_API int32_t DeleteAllSprites(void) FENLIGHT_NOEXCEPT;

/// Counts the sprites that have not been deleted. The last one of the list always counts, deleted or not.
/// @return the count; 1 for an empty list too
/// @note One calling thread.
FENLIGHT_API int32_t CountSprites(void) FENLIGHT_NOEXCEPT;

/// Counts the records of the list, finished ones included.
/// @return the count; 1 for an empty list too
/// @note One calling thread.
FENLIGHT_API int32_t CountAllSprites(void) FENLIGHT_NOEXCEPT;

/// Tells whether a sprite has been deleted.
/// @param sprite  sprite handle whose record has not been freed
/// @return 0 while the sprite lives; -1 from the call that deleted it on, and for handle 0
/// @note Any thread.
FENLIGHT_API int32_t ExistSprite(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Reads a word of a sprite's record by its position.
/// @param sprite    sprite handle; 0 reads 0
/// @param position  0 to 1020 in steps of 4, the same on all machines; any other position reads 0
/// @return the word: numbers with their sign, handles and addresses in their full width
/// @note Any thread. Two words read one after the other may stem from two frames.
FENLIGHT_API intptr_t TestSprite(uintptr_t sprite, int32_t position) FENLIGHT_NOEXCEPT;

/// Reads eight values of a sprite: X, Y, target X, target Y, 1 if it stands on its target or else 0, speed X,
/// speed Y, frame.
/// @param sprite  sprite handle; 0 writes nothing
/// @param buffer  receives eight numbers; 0 writes nothing
/// @return `buffer`; 0 if the sprite is 0
/// @note Any thread. The values may stem from two frames.
FENLIGHT_API int32_t *GetSpriteInfos(uintptr_t sprite, int32_t *buffer) FENLIGHT_NOEXCEPT;

/// Tells where the left edge of a sprite is.
/// @param sprite  sprite handle
/// @return X in pixels; 0 for handle 0
/// @note Any thread.
FENLIGHT_API int32_t GetSpriteX(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Tells where the top edge of a sprite is.
/// @param sprite  sprite handle
/// @return Y in pixels; 0 for handle 0
/// @note Any thread.
FENLIGHT_API int32_t GetSpriteY(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Stamps a sprite: in the next frame its rectangle, as it then stands in the back buffer, is copied into its
/// cleanDC as well, so that the picture becomes part of the background and outlives the sprite. A sprite that
/// is not drawn in that frame loses the request.
/// @param sprite  sprite handle; 0 does nothing
/// @return 0
/// @note Any thread.
FENLIGHT_API int32_t SpriteToHDC(uintptr_t sprite) FENLIGHT_NOEXCEPT;

/// Has the records of finished sprites with a mark freed at the start of the next frame, except the first,
/// the second and the last record of the list. Sprites that followed one of them, or copied its pictures, do
/// so no more. Dropped while an earlier request still waits, and with no sprite in the list.
/// @param mark  as set by MarkSprite; a sprite that was never marked has 0
/// @return 0
/// @note One calling thread. The handles of deleted sprites with that mark must not be used after this call.
FENLIGHT_API int32_t CleanUp(int32_t mark) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
