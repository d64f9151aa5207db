/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_PARTICLES_H
#define FENLIGHT_PARTICLES_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Particles: a star field and bursts of pixels.
 *
 * Both draw single pixels on a device context, each on a thread of its own, until they are told to end. Where
 * a pixel moves on, the one that it leaves gets back what lies behind: black, or the pixel at the same place
 * of a background context. So nothing else has to redraw the scene, but what the caller paints on the drawn
 * context and not on the background is lost where a particle passes. Where the drawn context has a pixel and
 * the background has none (it is smaller, or its handle is dead), particles leave white.
 *
 * Positions are pixels of the context with Y growing downwards; what lies off the context is not drawn, and
 * wraps round at the ends of the 32-bit range. Contexts may have any format and may be used, changed or
 * deleted while particles run on them; a dead one is not drawn on.
 *
 * While a thread draws a frame, it holds the named semaphore ("mysem") that all drawing threads of the
 * library take in turns; it waits without it. All functions may be called on any thread, never wait for a
 * frame, and are safe beside each other. Draws come from the generator of Random. */

/// One star, as Stars gives them. The thread owns the array; it may be read as long as the field runs, each
/// word by itself, and is freed when StatusStars gives 1.
typedef struct StarRecord {
    int32_t x, y;         /**< where the coming frame draws; -111 and -111: parked, not launched yet */
    int32_t prevX, prevY; /**< drawn at last, erased by the coming frame */
    int32_t age;    /**< frames lived: dark grey below 64, light grey below 128, white; at 256 it ends */
    int32_t vx, vy; /**< pixels per frame */
    int32_t spare;
} StarRecord;

/// Starts a star field: points that fly outwards from around the centre of a rectangle, on a thread of their
/// own. There is one field at a time. Its stars appear one by one during the first 256 frames, and each that
/// leaves the rectangle or has lived for 256 frames is launched anew.
/// @param destDC        context to draw on
/// @param backgroundDC  context that holds what lies behind the stars, may be `destDC`; 0: black lies behind
/// @param left, top, right, bottom  rectangle in pixels; a star lives strictly inside. It may reach beyond
///                      the context. An empty one (`right` not above `left` or `bottom` not above `top`) is
///                      refused.
/// @param count         number of stars, 1 to 134217727; others are refused
/// @param frameDelay    shortest length of a frame in milliseconds, drawing included; 0 and below: no pause
///                      at all, which keeps a processor busy
/// @param flags         bit 0: with a `backgroundDC`, a star shows only where that was black one frame before
///                      on its way; other bits are ignored
/// @return the first of `count` StarRecord; 0, with nothing changed, if a field still runs, if an argument is
///         refused, or if memory, the thread or the semaphore are not to be had
FENLIGHT_API void *Stars(uintptr_t destDC, uintptr_t backgroundDC, int32_t left, int32_t top, int32_t right,
                         int32_t bottom, int32_t count, int32_t frameDelay, int32_t flags) FENLIGHT_NOEXCEPT;

/// Has the star field end. The thread looks at it at the end of each frame; StatusStars tells when it has
/// ended.
/// @param mode  0: go on after all, if the end has not begun. 1: end, and leave the last stars on the
///              context. 3: launch no star any more and end when all have gone; those that leave the
///              rectangle meanwhile fly on outside, then all are erased. 2 and any other value: end and erase
///              all stars.
/// @note Without a field it does nothing.
FENLIGHT_API void NoStars(int32_t mode) FENLIGHT_NOEXCEPT;

/// Tells whether the star field has ended.
/// @return 0 from the moment that Stars starts a field, also before the first one; 1 when its thread has
///         drawn for the last time and freed the array, so that Stars can start the next
FENLIGHT_API int32_t StatusStars(void) FENLIGHT_NOEXCEPT;

/// Changes how stars are launched from now on, and how fast frames follow each other. Stars sets the first
/// four to 0.
/// @param originX, originY  pixels by which the middle of the launches lies beside the rectangle's centre
/// @param biasX, biasY      pixels per frame added to the speed of each star, which is -5 to 4 on each axis
///                          by itself. The place of the launch does not depend on it.
/// @param frameDelay        as in Stars; also for the pause that is under way
/// @note The thread may see some of the five new values one launch before the others.
FENLIGHT_API void OptionStars(int32_t originX, int32_t originY, int32_t biasX, int32_t biasY,
                              int32_t frameDelay) FENLIGHT_NOEXCEPT;

/// One particle of a pixel effect.
typedef struct PixelParticle {
    int32_t x, y;            /**< where it is drawn when it is shown next */
    int32_t prevX, prevY;    /**< drawn at last; -111 and -111 before the first time */
    int32_t life;            /**< frames left; 0: dead; above lifeFrames it waits to be shown */
    int32_t vx, vy;          /**< pixels per frame */
    uint32_t particleColour; /**< of the coming frame */
} PixelParticle;

/// The head of a pixel effect, followed by `particleCount` particles. The fields are the arguments of
/// SetPixelEffect.
typedef struct PixelEffectBlock {
    uintptr_t destDC, backgroundDC;
    int32_t x, y;
    uint32_t colour;
    int32_t radius, speedRange, gravityMode, particleCount, colourMode, lifeFrames;
    int32_t phase; /**< goes from 8 to 1 and round; gravity acts at 1 */
    int32_t spare[4];
} PixelEffectBlock;

/// Starts the thread that runs the pixel effects, one frame in 20 milliseconds or a little more. Effects that
/// wait in the table go on.
/// @return the thread's handle, good for WaitForSingleObject and SuspendThread; it stays the library's, which
///         closes it when it starts the next thread. 0 if the effects run already, or if the thread or the
///         semaphore are not to be had; nothing has changed then.
/// @note Right after DeInitPixelEffects the old thread may still be in its last frame; it then goes on, and
///       its handle is given. There are never two threads.
FENLIGHT_API uintptr_t InitPixelEffects(void) FENLIGHT_NOEXCEPT;

/// Ends that thread after its frame. Effects stay in the table as they are, drawn pixels on the context.
/// @return 0, also without a thread
FENLIGHT_API int32_t DeInitPixelEffects(void) FENLIGHT_NOEXCEPT;

/// Adds an effect: particles that fly from a point on a context. It is drawn while the thread runs, and goes
/// by itself after the first frame in which none of its particles was shown, with all pixels restored. Each
/// particle begins within the first 12 frames; with only a few of them, an effect may find none to show in
/// its first frame, and end there.
/// @param destDC         context to draw on
/// @param backgroundDC   context from which pixels are restored, may be `destDC`
/// @param x, y           centre in pixels
/// @param colour         first colour, 0x00BBGGRR
/// @param radius         particles start up to `radius` - 1 pixels (and their speed) from the centre on each
///                       axis; below 1 is refused
/// @param speedRange     number of different speeds on each axis, from -`speedRange` / 2 on, in pixels per
///                       frame; below 2 is refused
/// @param gravityMode    what is added to the speeds in every 8th frame: 1 vx + 1, 2 vy + 1 (down), 3 vx - 1,
///                       4 vy - 1; any other value nothing
/// @param particleCount  1 to 134217725; others are refused
/// @param colourMode     0: red, green and blue fade to 0 by 1 a frame each; 1: stays `colour`; 2: a random
///                       colour in each frame; any other value: stays as it is
/// @param lifeFrames     frames for which each particle is shown; 0: none is, and the effect ends in its
///                       first frame; below 0 is refused
/// @return the effect's PixelEffectBlock; 0, with nothing changed, if 256 effects are there already, if an
///         argument is refused, or without memory
/// @note Works without the thread too: the effect waits in the table, and its block may be read. While the
///       thread runs it may be freed at any moment, so take the address as an answer only.
FENLIGHT_API void *SetPixelEffect(uintptr_t destDC, uintptr_t backgroundDC, int32_t x, int32_t y,
                                  uint32_t colour, int32_t radius, int32_t speedRange, int32_t gravityMode,
                                  int32_t particleCount, int32_t colourMode,
                                  int32_t lifeFrames) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
