/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_MEMORY_H
#define FENLIGHT_MEMORY_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Data: memory blocks.
 *
 * Counting, copying, widening, filling, searching, comparing and computing over runs of bytes, 16-bit words
 * and 32-bit longs in the caller's memory. A base and an offset give the place where the work starts; the
 * offset is in bytes and may be negative. Words and longs are little-endian and unsigned and may lie at any
 * address. Of a value, a byte routine uses the low 8 bits and a word routine the low 16.
 *
 * Counts, lengths and sizes of 0 or below do nothing: no memory is touched, and the result is 0, or -1 where
 * a position is looked for. Addresses are not checked: the caller answers for it that the memory is there and
 * large enough.
 *
 * No routine keeps anything from call to call, takes a lock or allocates memory (a search may, for a long
 * pattern that nearly matches all along the end of its range). All are safe on any thread, on memory that no
 * other thread writes at the same time. */

/// Counts bytes that equal a value.
/// @param count  bytes to look at
/// @param value  its low 8 bits are looked for
/// @return number of hits
FENLIGHT_API int32_t CountBytes(const void *memory, int32_t offset, int32_t count,
                                int32_t value) FENLIGHT_NOEXCEPT;

/// Counts 16-bit words that equal a value.
/// @param count  words to look at, 2 * `count` bytes
/// @param value  its low 16 bits are looked for
/// @return number of hits
FENLIGHT_API int32_t CountWords(const void *memory, int32_t offset, int32_t count,
                                int32_t value) FENLIGHT_NOEXCEPT;

/// Counts 32-bit longs that equal a value.
/// @param count  longs to look at, 4 * `count` bytes
/// @return number of hits
FENLIGHT_API int32_t CountLongs(const void *memory, int32_t offset, int32_t count,
                                int32_t value) FENLIGHT_NOEXCEPT;

/// Tells how many bytes from the start equal a value before the first that does not.
/// @param length  bytes to look at
/// @param value   its low 8 bits are looked for
/// @return length of the run, 0 to `length`
FENLIGHT_API int32_t CountFirstBytes(const void *memory, int32_t offset, int32_t length,
                                     int32_t value) FENLIGHT_NOEXCEPT;

/// Copies bytes, the lowest address first. The blocks may overlap: with the destination below the source it
/// is a true move; with the destination d bytes above it, d less than `count`, the first d bytes of the
/// source repeat throughout the destination.
/// @param count  bytes
/// @return 0
FENLIGHT_API int32_t CopyMemory(const void *source, int32_t sourceOffset, void *destination,
                                int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;

/// Copies bytes, the highest address first. The blocks may overlap: with the destination above the source it
/// is a true move; with the destination d bytes below it, d less than `count`, the last d bytes of the source
/// repeat throughout the destination.
/// @param count  bytes
/// @return 0
FENLIGHT_API int32_t CopyMemoryFromBack(const void *source, int32_t sourceOffset, void *destination,
                                        int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;

/// Widens bytes to 16-bit words with zeros above, one after the other from the lowest address on. So a block
/// can be widened in place if its bytes stand at the end of the room for the words; where words are written
/// over bytes that have not been read yet, those are read as they are then.
/// @param count  bytes to read; 2 * `count` bytes are written
/// @return 0
FENLIGHT_API int32_t ChangeBytesToWords(const void *source, int32_t sourceOffset, void *destination,
                                        int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;

/// Widens 16-bit words to 32-bit longs with zeros above, in the same order as ChangeBytesToWords.
/// @param count  words to read, 2 * `count` bytes; 4 * `count` bytes are written
/// @return 0
FENLIGHT_API int32_t ChangeWordsToLongs(const void *source, int32_t sourceOffset, void *destination,
                                        int32_t destinationOffset, int32_t count) FENLIGHT_NOEXCEPT;

/// Fills bytes with a value. Mind the order: `value` stands before `count`, in CountBytes behind it.
/// @param value  its low 8 bits are written
/// @param count  bytes
/// @return 0
FENLIGHT_API int32_t ClearWith(void *memory, int32_t offset, int32_t value, int32_t count) FENLIGHT_NOEXCEPT;

/// Looks for the first occurrence of a pattern.
/// @param length         number of places where a match may start. Its last bytes may lie behind them; a byte
///                       there is read only if all bytes before it match.
/// @param pattern        bytes; a 0 is a byte like any other
/// @param patternLength  bytes; may be more than `length`
/// @return position from `memory`, not from `memory` + `offset`: a match at the very start gives `offset`;
///         -1 if there is none
/// @note The time grows with `length` and `patternLength` alone, whatever the bytes are.
FENLIGHT_API int32_t FindBytes(const void *memory, int32_t offset, int32_t length, const void *pattern,
                               int32_t patternLength) FENLIGHT_NOEXCEPT;

/// Looks for occurrence number `index` of a pattern, as FindBytes looks for the first. Occurrences that
/// overlap each other all count: in the bytes "aaa" the pattern "aa" has two.
/// @param index  counted from 0; below 0 finds nothing
/// @return position from `memory`, or -1 if there are not so many
FENLIGHT_API int32_t FindBytesCount(const void *memory, int32_t offset, int32_t length, const void *pattern,
                                    int32_t patternLength, int32_t index) FENLIGHT_NOEXCEPT;

/// Counts the places at which two blocks differ.
/// @param count      bytes of each block
/// @param tolerance  the greatest difference of two bytes, taken as unsigned, that does not count yet: 0
///                   counts all bytes that differ, 255 and above none, below 0 all, equal ones too
/// @return number of places
FENLIGHT_API int32_t CompareBytes(const void *first, const void *second, int32_t count,
                                  int32_t tolerance) FENLIGHT_NOEXCEPT;

/// Computes with each element of an array: times `factor`, cut to the element's width; then divided by
/// `divisor`; then plus `addend` minus `subtrahend`, wrapping round at the element's width. So a byte of 200
/// with factor 2 and divisor 2 becomes 72.
/// @param length       bytes in which elements start; the last one may reach behind them
/// @param elementSize  1, 2 or 4 bytes; any other size changes nothing
/// @param factor       0: the elements are not multiplied
/// @param divisor      unsigned, all 32 bits for every element size; 0: the elements are not divided
/// @param gap          bytes between the end of an element and the next one; may be negative, but
///                     `elementSize` + `gap` of 0 or below changes nothing
FENLIGHT_API void Compute(void *memory, int32_t length, int32_t elementSize, int32_t addend,
                          int32_t subtrahend, int32_t factor, int32_t divisor, int32_t gap) FENLIGHT_NOEXCEPT;

/// Turns a block of 4-byte entries end for end; the 4 bytes of an entry keep their order. Fits the arrays of
/// FindPath and PixelToMemory.
/// @param byteCount  bytes; what follows the last whole entry stays as it is
/// @return 0
FENLIGHT_API int32_t ChangeLongSequence(void *memory, int32_t byteCount) FENLIGHT_NOEXCEPT;

/// Stores four longs one behind the other, 16 bytes.
/// @param v0, v1, v2, v3  the first one goes to `memory` + `offset`
/// @return 0
FENLIGHT_API int32_t VarToLong4(void *memory, int32_t offset, int32_t v0, int32_t v1, int32_t v2,
                                int32_t v3) FENLIGHT_NOEXCEPT;

/// Stores ten longs one behind the other, 40 bytes.
/// @param v0, v1, v2, v3, v4, v5, v6, v7, v8, v9  the first one goes to `memory` + `offset`
/// @return 0
FENLIGHT_API int32_t VarToLong10(void *memory, int32_t offset, int32_t v0, int32_t v1, int32_t v2, int32_t v3,
                                 int32_t v4, int32_t v5, int32_t v6, int32_t v7, int32_t v8,
                                 int32_t v9) FENLIGHT_NOEXCEPT;

/// Reads four longs that stand one behind the other, then writes each through its pointer.
/// @param p0, p1, p2, p3  where to, at any address; none may be 0
/// @return 0
FENLIGHT_API int32_t LongToAddrVar4(const void *memory, int32_t offset, int32_t *p0, int32_t *p1, int32_t *p2,
                                    int32_t *p3) FENLIGHT_NOEXCEPT;

/// Writes one byte.
/// @param address  where to; the byte must be writable
/// @param value    its low 8 bits are written
FENLIGHT_API void SetAByte(void *address, int32_t value) FENLIGHT_NOEXCEPT;

/// Reads the four bytes at an address, not one: the byte at the address is the low 8 bits of the result, and
/// the caller cuts off the rest. All four must be readable.
/// @return the 32-bit value
FENLIGHT_API int32_t GetAByte(const void *address) FENLIGHT_NOEXCEPT;

/// Gives the pixels of an FX buffer, so that the routines above can work on them.
/// @param fx  live FX handle, or 0
/// @return address of the first byte of the top row, or 0 for 0; it dies with the buffer
FENLIGHT_API void *GetMemHandle(uintptr_t fx) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
