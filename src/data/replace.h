// SPDX-License-Identifier: Zlib
// Search and replace in a text. Keeps nothing between calls, so any thread may use it.
#pragma once

#include <cstdint>
#include <span>

namespace fenlight {

using TextSpan = std::span<const uint8_t>;

// Writes the source with every separate match of `search` replaced, and gives the bytes written. With an
// empty source or search nothing is written. Where the destination overlaps a text that is read, the result
// is that of going byte by byte from the front.
int64_t ReplaceMatches(TextSpan source, uint8_t *destination, TextSpan search, TextSpan replacement) noexcept;

}  // namespace fenlight
