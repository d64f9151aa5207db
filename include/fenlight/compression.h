/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_COMPRESSION_H
#define FENLIGHT_COMPRESSION_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Data: compression.
 *
 * Pack makes a container of a block of memory: a header of 24 bytes with sizes and checksums (the published
 * CRC-32 of the packed and of the original bytes), and a packed stream without an entropy stage, which opens
 * fast. DePack opens it, GetOriginalSize tells how much room that needs. docs/compression.md tells the format
 * of both.
 *
 * A password keeps the casual reader away and no one else: the bytes from the 64th on are combined with it,
 * over and over, as Crypt does. A wrong one is noticed by the checksum.
 *
 * Any thread may call these functions, also at the same time, as long as no two calls use the same blocks.
 * They keep nothing between calls. */

/// Packs a block into a container.
/// @param source       block to be packed, unchanged; 0 fails
/// @param destination  room for the container, which must not overlap the source; 0 fails. A block that
///                     can't be packed grows a little, so the room takes `length` + `length` / 8 + 64 + 24
///                     bytes; more are never written, whatever the source holds.
/// @param length       bytes of the source, 2 or more; anything below fails
/// @param password     text that ends with a zero byte, which is not part of the password; no password if it
///                     is 0 or empty. A container of 64 bytes and below is the same with or without it.
/// @return size of the container in bytes, which is what was written; 0 on failure. That is also if there is
///         no memory for the work area of 655360 bytes, or if the container would pass 2^31 - 1 bytes. The
///         destination is then undefined.
FENLIGHT_API int32_t Pack(const void *source, void *destination, int32_t length,
                          const char *password) FENLIGHT_NOEXCEPT;

/// Opens a container. Allocates nothing.
/// @param source       container; 0 fails. It is changed: its first field, which was its size, becomes the
///                     tag "AP32", and what the password covered is in the clear afterwards. So it opens
///                     again, with or without a password.
/// @param destination  room for the original bytes, as many as GetOriginalSize tells; must not overlap the
///                     source; 0 fails
/// @param password     as it was given to Pack
/// @return number of original bytes; 0 on failure. With a wrong or missing password, or a container that was
///         damaged, the destination is unchanged, as the checksum of the packed bytes is looked at first.
///         Only if that holds and the content doesn't, the destination is left as far as it was written.
/// @note The source need not be trusted: nothing is read outside the size that its first field and its header
///       both tell, and nothing written outside the original size that the header tells. Memory of a file
///       should be checked by its caller to be as long as the first field says. After a try with a wrong
///       password the source is scrambled by it and no good container any more.
FENLIGHT_API int32_t DePack(void *source, void *destination, const char *password) FENLIGHT_NOEXCEPT;

/// Tells how many bytes DePack will write. Needs no password, before or after DePack.
/// @param source  container, of which the first 24 bytes are read and nothing is changed
/// @return size of the original block in bytes; 0 if the header is none, or for 0
FENLIGHT_API int32_t GetOriginalSize(void *source) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
