/* SPDX-License-Identifier: Zlib */
/* The library itself: its version and its random numbers.
 *
 * There is no start and no end call. The library is ready as soon as it is loaded; each family starts with
 * the first of its functions that needs it (InitSprite starts the sprite thread, for example) and is ended by
 * the caller. A program ends its sprites, stars, pixel effects and sound before it unloads the library.
 */
#ifndef FENLIGHT_FRAME_H
#define FENLIGHT_FRAME_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Shows the library's name and version in a message box with one button and waits until it is closed.
/// @return 0, at once where there is no display to show the box
/// @note Any thread. It waits for a person: call it from a menu, not from a game loop.
FENLIGHT_API int32_t Version(void) FENLIGHT_NOEXCEPT;

/// Tells the version of the library.
/// @return the version number times 1000: 3000 for version 3.0
/// @note Any thread.
FENLIGHT_API int32_t GetVersion(void) FENLIGHT_NOEXCEPT;

/// Fills a buffer with random numbers from `base` to `base` + `range` - 1, each equally likely but for the
/// remainder of a division by `range`.
///
/// The numbers come from a Mersenne Twister, MT19937 (Matsumoto and Nishimura, "Mersenne Twister", ACM TOMACS
/// 8(1), 1998). It is seeded from the clock when the library is loaded and again whenever one of the
/// library's threads starts or ends, so a sequence cannot be repeated; nor is it fit for keys or passwords.
/// @param buffer  receives `last` + 1 words; 0 writes nothing
/// @param last    index of the last word to write, not their number: 9 fills ten words. Below 1 one word is
///                written
/// @param base    lowest number; the sum of base and draw wraps around in 32 bits
/// @param range   how many different numbers may come, taken as unsigned; 0 gives `base` throughout
/// @return 0
/// @note Any thread; draws are taken under a lock.
FENLIGHT_API int32_t Random(int32_t *buffer, int32_t last, int32_t base, int32_t range) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
