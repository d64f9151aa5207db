// SPDX-License-Identifier: Zlib
// The compressed data of a PNG picture: a zlib stream, spread over the IDAT chunks that follow one another,
// inflated into one block without being joined first.
#pragma once

#include <cstddef>
#include <cstdint>

#include "images/png/png_decoder.h"

namespace fenlight {

// Payload bytes of the first IDAT chunk and of those that directly follow it; 0 without an IDAT chunk.
uint64_t CountImageData(const PngContext &context) noexcept;

// Fills `target` completely or fails: zero bytes stand for what a complete stream does not give, and what it
// gives beyond `size` is not looked at.
PngError InflateImageData(const PngContext &context, uint8_t *target, uint32_t size) noexcept;

// Deflate gives at most 258 bytes for the two bits of its shortest match.
constexpr uint64_t kMaxExpansion = 1032;

}  // namespace fenlight
