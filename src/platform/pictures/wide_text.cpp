// SPDX-License-Identifier: Zlib
// Text to UTF-16 and back without loss. File names of this system are bytes, so what is no UTF-8 (an
// over-long form, half a surrogate pair, an old 8-bit name) travels as lone units 0xDC80 to 0xDCFF, which no
// UTF-8 gives.
#include <cstring>
#include <string_view>

#include "platform/pictures/com_runtime.h"

namespace fenlight::platform {
namespace {

struct Decoded {
    uint32_t character;
    uint32_t length;  // 0: no UTF-8
};

Decoded DecodeCharacter(std::string_view text) {
    const auto byteAt = [text](size_t i) { return static_cast<uint32_t>(static_cast<uint8_t>(text[i])); };
    const uint32_t first = byteAt(0);
    if (first < 0x80) return {first, 1};
    const uint32_t length = first < 0xC0 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
    if (length == 0 || text.size() < length) return {0, 0};
    uint32_t character = first & (0x7Fu >> length);
    for (uint32_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80) return {0, 0};
        character = character << 6 | (byteAt(i) & 0x3F);
    }
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kLeast[length] || character > 0x10FFFF || isSurrogate) return {0, 0};
    return {character, length};
}

// Writes as far as `capacity` goes and answers how many units all of it takes.
size_t Widen(std::string_view text, char16_t *wide, size_t capacity) {
    size_t count = 0;
    const auto put = [&](uint32_t unit) {
        if (count < capacity) wide[count] = static_cast<char16_t>(unit);
        ++count;
    };
    while (!text.empty()) {
        const Decoded decoded = DecodeCharacter(text);
        if (decoded.length == 0) {
            put(0xDC00u + static_cast<uint8_t>(text[0]));
        } else if (decoded.character < 0x10000) {
            put(decoded.character);
        } else {
            put(0xD7C0u + (decoded.character >> 10));
            put(0xDC00u + (decoded.character & 0x3FF));
        }
        text.remove_prefix(decoded.length == 0 ? 1 : decoded.length);
    }
    return count;
}

size_t EncodeCharacter(uint32_t character, char *bytes) {
    if (character < 0x80) {
        bytes[0] = static_cast<char>(character);
        return 1;
    }
    const size_t length = character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    for (size_t i = length - 1; i > 0; --i, character >>= 6) {
        bytes[i] = static_cast<char>(0x80 | (character & 0x3F));
    }
    bytes[0] = static_cast<char>((0xF00u >> length & 0xFF) | character);
    return length;
}

}  // namespace

int32_t MultiByteToWideChar(UINT codePage, DWORD options, const char *text, int32_t length, char16_t *wide,
                            int32_t wideCount) noexcept {
    if (codePage != 0 || options != 0 || text == nullptr || length == 0 || length < -1 || wideCount < 0 ||
        (wide == nullptr && wideCount != 0)) {
        return 0;
    }
    const size_t bytes = length == -1 ? std::strlen(text) + 1 : static_cast<size_t>(length);
    if (bytes > INT32_MAX) return 0;
    const size_t needed = Widen({text, bytes}, wide, static_cast<size_t>(wideCount));
    if (wideCount != 0 && needed > static_cast<size_t>(wideCount)) return 0;
    return static_cast<int32_t>(needed);
}

TaskBlock<char> NarrowPath(const char16_t *wide) noexcept {
    size_t length = 0;
    while (wide[length] != 0) ++length;
    // A unit takes at most three bytes, a pair four.
    TaskBlock<char> narrow = MakeTaskBlock<char>(length * 3 + 1);
    if (!narrow) return narrow;
    size_t at = 0;
    for (size_t i = 0; i < length; ++i) {
        const uint32_t unit = wide[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF) {
            at += EncodeCharacter(((unit - 0xD7C0) << 10) + (wide[++i] - 0xDC00u), &narrow[at]);
        } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
            narrow[at++] = static_cast<char>(unit - 0xDC00);
        } else {
            at += EncodeCharacter(unit, &narrow[at]);
        }
    }
    narrow[at] = 0;
    return narrow;
}

}  // namespace fenlight::platform
