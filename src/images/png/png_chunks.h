// SPDX-License-Identifier: Zlib
// Walking the chunks of a PNG stream. Reads only inside the stream, whatever its length fields say.
#pragma once

#include <cstddef>
#include <cstdint>

#include "images/png/png_decoder.h"

namespace fenlight {

struct PngChunk {
    const uint8_t *position;  // of its length field
    const uint8_t *payload;
    uint32_t length;  // of the payload
    uint32_t type;    // as a big-endian word, the case of the first letter as it stands

    const uint8_t *Next() const { return payload + length + 4; }
};

constexpr uint32_t kFirstLetterCase = 0x20000000;  // set: lower case, the chunk may be skipped
constexpr uint32_t kChunkIhdr = 0x49484452;
constexpr uint32_t kChunkPlte = 0x504C5445;
constexpr uint32_t kChunkIdat = 0x49444154;
constexpr uint32_t kChunkIend = 0x49454E44;

// False if no complete chunk fits between `position` and the end of the stream.
bool ReadPngChunk(const PngContext &context, const uint8_t *position, PngChunk &chunk) noexcept;

// The kind that a chunk is treated as: its type with an upper-case first letter.
constexpr uint32_t KindOfChunk(const PngChunk &chunk) { return chunk.type & ~kFirstLetterCase; }

// Examines the stream in sourceData and fills the fields that come from it.
PngError ParsePngStream(PngContext &context) noexcept;

}  // namespace fenlight
