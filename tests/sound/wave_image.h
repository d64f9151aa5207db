// SPDX-License-Identifier: Zlib
// WAV files put together by hand, so that any word of them can be wrong.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace fenlight {

struct WaveImage {
    std::string format = FormatChunk(1, 1, 44100, 2, 16);
    std::string between;  // chunks between format and data
    std::string data = std::string(40, '\1');

    static std::string Word(uint32_t value, int bytes = 4) {
        std::string text;
        for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>(value >> (8 * i)));
        return text;
    }
    static std::string Chunk(const char *id, const std::string &body) {
        return id + Word(static_cast<uint32_t>(body.size())) + body + std::string(body.size() % 2, '\0');
    }
    static std::string FormatChunk(uint32_t tag, uint32_t channels, uint32_t rate, uint32_t align,
                                   uint32_t bits) {
        return Chunk("fmt ", Word(tag, 2) + Word(channels, 2) + Word(rate) + Word(rate * align) +
                                 Word(align, 2) + Word(bits, 2));
    }
    [[nodiscard]] std::string Whole() const {
        return Chunk("RIFF", "WAVE" + format + between + Chunk("data", data));
    }
};

}  // namespace fenlight
