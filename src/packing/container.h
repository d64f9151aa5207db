// SPDX-License-Identifier: Zlib
// What a container's header says, checked.
#pragma once

#include <cstdint>

namespace fenlight {

// The greatest size that a result can tell.
inline constexpr uint64_t kMaxContainerBytes = INT32_MAX;

// Packs into a container; its size, or 0.
uint32_t PackContainer(const uint8_t *source, uint8_t *destination, uint32_t length,
                       const char *password) noexcept;

// Opens a container of which nothing but the first four bytes is trusted to be there; the size of its
// content, or 0. The source's first field becomes the tag, and what was ciphered is deciphered in place.
uint32_t OpenContainer(uint8_t *source, uint8_t *destination, const char *password) noexcept;

}  // namespace fenlight
