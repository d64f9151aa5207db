/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_FILES_H
#define FENLIGHT_FILES_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Data: cipher, checksum, whole files.
 *
 * Plain services without any state: a cipher and a checksum over a block of memory, files that are opened,
 * read or written and closed in one call, and a test for numbers. Each file call makes one transfer for the
 * whole size and buffers nothing. Any thread may call these functions at any time, as long as nobody changes
 * the memory meanwhile. */

/// Hides or restores a block: byte i is XORed with byte (i mod `keyLength`) of the key. A second call with
/// the same arguments gives the plain bytes back.
/// @param memory     block, changed in place
/// @param length     bytes of the block; below 1: nothing is done
/// @param key        bytes of any value, zeros too; must not overlap the block
/// @param keyLength  bytes of the key; below 1: nothing is done
/// @note It keeps away curious looks, not attackers: whoever knows some of the plain bytes knows the key.
FENLIGHT_API void Crypt(void *memory, int32_t length, const void *key, int32_t keyLength) FENLIGHT_NOEXCEPT;

/// Adds all bytes of a block, as values from 0 to 255, to a start value, modulo 2^32.
/// @param memory      block, only read
/// @param length      bytes of the block; below 1: the result is `startValue`
/// @param startValue  0, or the result of the block before, to sum several blocks
/// @return the sum
FENLIGHT_API uint32_t GenerateChecksum(const void *memory, int32_t length,
                                       uint32_t startValue) FENLIGHT_NOEXCEPT;

/// Reads the start of a file, or all of it.
/// @param fileName  path
/// @param memory    start of the target; memory behind the bytes read is left alone
/// @param offset    bytes from there to the first byte read
/// @param size      bytes wanted, and room for them; more than the file has is no error. Below 0 nothing is
///                  opened and the result is 0.
/// @return bytes read, fewer than there are if reading failed half-way (0 at once, also if `memory` is 0).
///         If the file can't be opened or is a directory: -1, and the memory is unchanged.
FENLIGHT_API int32_t ReadFileFast(const char *fileName, void *memory, int32_t offset,
                                  int32_t size) FENLIGHT_NOEXCEPT;

/// Reads from within a file; all else as ReadFileFast.
/// @param filePosition  bytes from the start of the file. Behind its end or below 0, or where the file is a
///                      pipe: nothing is read, and the result is 0.
FENLIGHT_API int32_t ReadFilePieceFast(const char *fileName, void *memory, int32_t offset, int32_t size,
                                       int32_t filePosition) FENLIGHT_NOEXCEPT;

/// Writes a file. One that exists is emptied first, also if writing fails then.
/// @param fileName  path; a new file gets the rights that the user's mask leaves
/// @param memory    start of the block
/// @param offset    bytes from there to the first byte to write
/// @param size      bytes; 0 makes an empty file. Below 0 nothing is opened or changed and the result is 0.
/// @return bytes written, fewer than `size` if writing failed half-way (a full disk). If the file can't be
///         opened or is a directory: -1, and nothing is changed.
FENLIGHT_API int32_t WriteFileFast(const char *fileName, const void *memory, int32_t offset,
                                   int32_t size) FENLIGHT_NOEXCEPT;

/// Tells whether a text has only characters of numbers: digits, comma, full stop, minus sign, blank and the
/// no-break blank of Latin 1 (byte 0xA0), in any order, so that 1-2,,3 and an empty text are numeric.
/// @param text  zero-terminated; 0 is not numeric
/// @return 0 if the text is numeric, 1 if it is not
FENLIGHT_API int32_t Examine(const char *text) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
