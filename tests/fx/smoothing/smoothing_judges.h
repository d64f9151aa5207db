// SPDX-License-Identifier: Zlib
// The filters as they are defined, a byte at a time and from a copy of the picture: judges of the real ones.
// A byte that a mask chooses keeps its value if one of its eight neighbours lies outside the block.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "frame/random.h"
#include "fx/fx_buffer.h"

namespace fenlight::test {

// A buffer whose block ends where its memory does, for the address sanitizer to see, or with guard bytes.
struct Buffer {
    Buffer(int32_t width, int32_t height, bool isPadded, bool isGuarded = true)
        : guard(isGuarded ? 64 : 0),
          bytes(2 * guard + static_cast<size_t>((3 * width + (isPadded ? width % 4 : 0)) * height), 0xA5) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(bytes.size() - 2 * guard);
    }
    Buffer(const Buffer &other) : guard(other.guard), bytes(other.bytes), header(other.header) {}
    Buffer &operator=(const Buffer &) = delete;

    uintptr_t Handle() {
        header.Pixels = bytes.data() + guard;
        return reinterpret_cast<uintptr_t>(&header);
    }
    int64_t Size() const { return header.biSizeImage; }
    int64_t Pitch() const { return int64_t{3} * header.biWidth; }
    uint8_t &operator[](int64_t i) { return bytes.at(guard + static_cast<size_t>(i)); }
    int operator[](int64_t i) const { return bytes.at(guard + static_cast<size_t>(i)); }

    size_t guard;
    std::vector<uint8_t> bytes;
    FXHeader header{};
};

inline void JudgeBlur(Buffer &fx) {
    const int64_t pitch = fx.Pitch();
    for (int64_t row = 1; row < fx.header.biHeight - 1; ++row)
        for (int64_t i = row * pitch + 3; i < row * pitch + pitch - 3; ++i)
            fx[i] = static_cast<uint8_t>((fx[i + pitch] + fx[i - pitch] + fx[i + 3] + fx[i - 3]) >> 2);
}

inline void JudgeMaskBorder(Buffer &mask) {
    const int32_t width = mask.header.biWidth, height = mask.header.biHeight;
    for (int32_t i = 0; i < 3 * width * height; ++i) {
        const int32_t row = i / 3 / width, column = i / 3 % width;
        if (row == 0 || row == height - 1 || column == 0 || column == width - 1) mask[i] = 0;
    }
}

inline bool HasNeighbours(const Buffer &fx, int64_t i) {
    return i - fx.Pitch() - 3 >= 0 && i + fx.Pitch() + 3 < fx.Size();
}

inline int SumOfAllButTheRight(const Buffer &fx, int64_t i) {
    const int64_t pitch = fx.Pitch();
    return fx[i - 3] + fx[i + pitch] + fx[i + pitch + 3] + fx[i + pitch - 3] + fx[i - pitch] +
           fx[i - pitch + 3] + fx[i - pitch - 3];
}

// Buffers may be one in several roles.
inline void JudgeSmooth(Buffer &fx, Buffer &mask) {
    JudgeMaskBorder(mask);
    const Buffer old = fx;
    const std::vector<uint8_t> chosen = mask.bytes;
    for (int64_t i = 0; i < std::min(fx.Size(), mask.Size()); ++i)
        if (chosen[mask.guard + static_cast<size_t>(i)] != 0 && HasNeighbours(old, i))
            fx[i] = static_cast<uint8_t>((SumOfAllButTheRight(old, i) + old[i + 3]) >> 3);
}

inline void JudgeFog(const Buffer &source, Buffer &fx, Buffer &mask) {
    JudgeMaskBorder(mask);
    const Buffer old = fx, chosen = mask, shown = source;
    for (int64_t i = 0; i < std::min({source.Size(), fx.Size(), mask.Size()}); ++i) {
        if (chosen[i] == 0) continue;
        const uint32_t draw = RandomDraw(80);
        if (!HasNeighbours(old, i)) continue;
        const int first = draw == 0 ? shown[i] : draw <= 3 ? 255 : old[i + 3];
        fx[i] = static_cast<uint8_t>((SumOfAllButTheRight(old, i) + first) >> 3);
    }
}

inline uint32_t ColourAt(const Buffer &fx, int64_t i) {
    return static_cast<uint32_t>(fx[i] << 16 | fx[i + 1] << 8 | fx[i + 2]);
}

inline void JudgePass(Buffer &fx, uint32_t key, int32_t flags) {
    static constexpr std::array<std::array<int, 2>, 12> kNear{{{1, 0},
                                                               {-1, 0},
                                                               {0, 1},
                                                               {0, -1},
                                                               {2, 0},
                                                               {-2, 0},
                                                               {0, 2},
                                                               {0, -2},
                                                               {1, 1},
                                                               {-1, -1},
                                                               {-1, 1},
                                                               {1, -1}}};
    const Buffer old = fx;
    const int64_t pitch = fx.Pitch(), width = fx.header.biWidth, height = fx.header.biHeight;
    for (int64_t row = 1; row < height - 1; ++row) {
        for (int64_t column = 1; column < width - 1; ++column) {
            const int64_t at = row * pitch + 3 * column;
            bool isTakenBack =
                (flags & 2) == 0 && row >= 2 && row < height - 2 && column >= 2 && column < width - 2;
            for (const auto &[x, y] : kNear)
                isTakenBack = isTakenBack && ColourAt(old, at + y * pitch + 3 * x) != key;
            for (int64_t i = at; i < at + 3 && !isTakenBack; ++i) {
                const int beside = old[i + 3] + old[i - 3], upright = old[i + pitch] + old[i - pitch];
                const int cross = beside + upright + old[i];
                const int mean = (flags & 1) == 0 ? ((beside >> 1) + (upright >> 1)) >> 1
                                 : i == at        ? (cross + old[i]) / 6
                                                  : cross / 5;
                fx[i] = static_cast<uint8_t>(mean);
            }
        }
    }
}

inline void JudgeAntialiasing(Buffer &fx, uint32_t key, int32_t flags, uint32_t extraPasses) {
    if (key == 0xFFFFFFFF) key = ColourAt(fx, fx.Size() - 3);
    for (uint64_t pass = 0; pass <= extraPasses; ++pass) JudgePass(fx, key, flags);
}

// The first pixel stays as `fx` has it: what it becomes depends on where the buffer lies.
inline void JudgeRustle(Buffer &fx) {
    uint32_t s = 0, t = 23;
    for (int64_t i = 3; i < fx.Pitch() * fx.header.biHeight; i += 3) {
        s = s / 256 * 256 + (s % 256 + static_cast<uint32_t>(fx[i])) % 256;
        s += 87 + t;
        for (int64_t byte = i; byte < i + 3; ++byte) fx[byte] = s % 2 != 0 ? 255 : 0;
        const uint64_t product = uint64_t{s / 2 + s / 0x80000000 * 0x80000000} * t;
        s = static_cast<uint32_t>(product % 0x100000000);
        t = static_cast<uint32_t>(product / 0x100000000 + 23);
    }
}

}  // namespace fenlight::test
