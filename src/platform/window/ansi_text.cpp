// SPDX-License-Identifier: Zlib
#include "platform/window/ansi_text.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace fenlight::platform {
namespace {

// Code points of the bytes 128 to 159 of code page 1252; all other bytes are the code point of their number.
// The five bytes without a character stand for the control codes of their number.
constexpr std::array<uint16_t, 32> kUpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Bytes that follow the first byte of a UTF-8 sequence, -1 if no sequence starts so.
int FollowingBytes(uint8_t first) {
    if (first < 0x80) return 0;
    if (first >= 0xC2 && first < 0xE0) return 1;
    if (first >= 0xE0 && first < 0xF0) return 2;
    if (first >= 0xF0 && first < 0xF5) return 3;
    return -1;
}

// The second byte decides over forms that are too long, surrogates, and numbers beyond the last code point.
bool MaySecondFollow(uint8_t first, uint8_t second) {
    switch (first) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second < 0xA0;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second < 0x90;
        default:
            return true;
    }
}

// Length of the whole UTF-8 sequence that `text` starts with, 0 if it starts with none.
size_t SequenceLength(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    const int following = FollowingBytes(first);
    if (following < 0 || text.size() <= static_cast<size_t>(following)) return 0;
    for (int i = 1; i <= following; ++i) {
        if ((static_cast<uint8_t>(text[static_cast<size_t>(i)]) & 0xC0) != 0x80) return 0;
    }
    if (following > 0 && !MaySecondFollow(first, static_cast<uint8_t>(text[1]))) return 0;
    return static_cast<size_t>(following) + 1;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = SequenceLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

void AppendUtf8(std::string &out, uint32_t codePoint) {
    if (codePoint < 0x80) {
        out += static_cast<char>(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        out += static_cast<char>(0xC0 | codePoint >> 6);
    } else {
        out += static_cast<char>(0xE0 | codePoint >> 12);
        out += static_cast<char>(0x80 | (codePoint >> 6 & 0x3F));
    }
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
}

// A text cut off at the limit must not turn into code page 1252 because its last sequence lost its end.
std::string_view WithoutCutSequence(std::string_view text) {
    for (size_t back = 1; back <= 3 && back < text.size(); ++back) {
        const auto byte = static_cast<uint8_t>(text[text.size() - back]);
        if (byte < 0x80) return text;
        if (byte < 0xC0) continue;
        const bool isCut = FollowingBytes(byte) >= static_cast<int>(back);
        return isCut ? text.substr(0, text.size() - back) : text;
    }
    return text;
}

}  // namespace

std::string TextToUtf8(const char *text, size_t maxBytes) {
    if (text == nullptr) return {};
    std::string_view bytes(text, strnlen(text, maxBytes));
    if (bytes.size() == maxBytes && IsUtf8(WithoutCutSequence(bytes))) bytes = WithoutCutSequence(bytes);
    if (IsUtf8(bytes)) return std::string(bytes);
    std::string out;
    out.reserve(bytes.size() * 3);
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        AppendUtf8(out, byte >= 0x80 && byte < 0xA0 ? kUpperControls[byte - 0x80u] : byte);
    }
    return out;
}

}  // namespace fenlight::platform
