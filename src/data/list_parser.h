// SPDX-License-Identifier: Zlib
// Number lists and escaped texts, turned into bytes in memory. Keeps nothing between calls, so any thread may
// use it. Texts are not trusted: every text is read up to its zero and no further.
#pragma once

#include <cstdint>

namespace fenlight {

// Writes each token of a comma-separated list as one element, low byte first, at any alignment; gives the
// number of tokens. A token that is empty or ends in an asterisk leaves its element as it was.
template <typename Element>
int32_t WriteList(uint8_t *target, const char *text) noexcept;

extern template int32_t WriteList<uint8_t>(uint8_t *target, const char *text) noexcept;
extern template int32_t WriteList<uint16_t>(uint8_t *target, const char *text) noexcept;
extern template int32_t WriteList<uint32_t>(uint8_t *target, const char *text) noexcept;

// Decodes an escaped text; gives the number of bytes written. An escape without its character ends the text.
int32_t DecodeEscapedText(uint8_t *target, const char *text) noexcept;

}  // namespace fenlight
