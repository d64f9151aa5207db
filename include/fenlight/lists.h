/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_LISTS_H
#define FENLIGHT_LISTS_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Data: lists and streams.
 *
 * A table given as a text and turned into numbers in memory, at once with the Set functions or call after
 * call with the data stream, whose write position moves on by itself.
 *
 * A list is a zero-terminated text of tokens between commas; blanks are dropped wherever they stand, within a
 * number too. A token is a decimal number with an optional minus sign before it. Numbers beyond the range of
 * the element keep their low bits: as a byte, 300 is 44 and -1 is 255. A token that ends in an asterisk or is
 * empty (two commas in a row, a comma at the end, an empty text) leaves its element as it was; it counts all
 * the same. Nothing is rejected: what stands to the left of a minus sign is ignored, any other character is
 * taken as the digit of its code minus 48. Tokens may be of any length and all of their characters count.
 *
 * The caller answers for the size of the target. Elements may lie at any alignment, low byte first. The text
 * must not lie in the target. The Set functions may be called on any thread at any time; the data stream is
 * one for the program, for one thread at a time. */

/// Writes a list as bytes.
/// @param memory  start of the target; 0 writes nothing
/// @param offset  bytes from there to the first element
/// @param text    list; 0 writes nothing
/// @return number of tokens, which is the number of elements that the list covers; 0 if `memory` or `text`
///         is 0
FENLIGHT_API int32_t SetBytes(void *memory, int32_t offset, const char *text) FENLIGHT_NOEXCEPT;

/// Writes a list as 16-bit words; all else as SetBytes, `offset` in bytes.
FENLIGHT_API int32_t SetWords(void *memory, int32_t offset, const char *text) FENLIGHT_NOEXCEPT;

/// Writes a list as 32-bit values; all else as SetBytes, `offset` in bytes.
FENLIGHT_API int32_t SetLongs(void *memory, int32_t offset, const char *text) FENLIGHT_NOEXCEPT;

/// Says where the data stream writes, and sets its position to 0.
/// @param memory  start of the target, in use until the next DataMem; 0: the stream writes nothing, which is
///                its state at the start of the program
FENLIGHT_API void DataMem(void *memory) FENLIGHT_NOEXCEPT;

/// Sets the position of the data stream.
/// @param position  bytes from the address given to DataMem, which must come first; may be negative
FENLIGHT_API void DataPos(int32_t position) FENLIGHT_NOEXCEPT;

/// Writes a list as bytes at the position of the data stream, which moves on by the number of tokens.
/// @param text  list; 0 writes nothing
/// @return number of tokens; 0, and the position stays, if `text` is 0 or the stream has no memory
FENLIGHT_API int32_t DataBytes(const char *text) FENLIGHT_NOEXCEPT;

/// Decodes a text that carries any byte values into the data stream, whose position moves on by the bytes
/// written. A blank and c stand for the byte c - 35, an exclamation mark and c for c + 100, an exclamation
/// mark, a blank and c for c + 65, all modulo 256; any other c stands for itself.
/// @param text  zero-terminated; 0 writes nothing. An escape that the zero cuts off writes nothing.
/// @return bytes written; 0, and the position stays, if `text` is 0 or the stream has no memory
FENLIGHT_API int32_t OemBytes(const char *text) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
