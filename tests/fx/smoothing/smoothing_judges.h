// SPDX-License-Identifier: Zlib
// The filters as they are defined, a byte at a time and from a copy of the picture: judges of the real ones.
// A byte that a mask chooses keeps its value if one of its eight neighbours lies outside the block.
#pragma once

#include <cstdlib>

#include "frame/random.h"
#include "fx/guarded_buffer.h"

namespace fenlight::test {

inline void JudgeBlur(GuardedBuffer &fx) {
    const int64_t pitch = fx.Pitch();
    for (int64_t row = 1; row < fx.header.biHeight - 1; ++row)
        for (int64_t i = row * pitch + 3; i < row * pitch + pitch - 3; ++i)
            fx[i] = static_cast<uint8_t>((fx[i + pitch] + fx[i - pitch] + fx[i + 3] + fx[i - 3]) >> 2);
}

inline void JudgeMaskBorder(GuardedBuffer &mask) {
    const int32_t width = mask.header.biWidth, height = mask.header.biHeight;
    for (int32_t i = 0; i < 3 * width * height; ++i) {
        const int32_t row = i / 3 / width, column = i / 3 % width;
        if (row == 0 || row == height - 1 || column == 0 || column == width - 1) mask[i] = 0;
    }
}

inline bool HasNeighbours(const GuardedBuffer &fx, int64_t i) {
    return i - fx.Pitch() - 3 >= 0 && i + fx.Pitch() + 3 < fx.Size();
}

inline int SumOfAllButTheRight(const GuardedBuffer &fx, int64_t i) {
    const int64_t pitch = fx.Pitch();
    return fx[i - 3] + fx[i + pitch] + fx[i + pitch + 3] + fx[i + pitch - 3] + fx[i - pitch] +
           fx[i - pitch + 3] + fx[i - pitch - 3];
}

// Buffers may be one in several roles.
inline void JudgeSmooth(GuardedBuffer &fx, GuardedBuffer &mask) {
    JudgeMaskBorder(mask);
    const GuardedBuffer old = fx, chosen = mask;
    for (int64_t i = 0; i < std::min(fx.Size(), mask.Size()); ++i)
        if (chosen[i] != 0 && HasNeighbours(old, i))
            fx[i] = static_cast<uint8_t>((SumOfAllButTheRight(old, i) + old[i + 3]) >> 3);
}

inline void JudgeFog(const GuardedBuffer &source, GuardedBuffer &fx, GuardedBuffer &mask) {
    JudgeMaskBorder(mask);
    const GuardedBuffer old = fx, chosen = mask, shown = source;
    for (int64_t i = 0; i < std::min({source.Size(), fx.Size(), mask.Size()}); ++i) {
        if (chosen[i] == 0) continue;
        const uint32_t draw = RandomDraw(80);
        if (!HasNeighbours(old, i)) continue;
        const int first = draw == 0 ? shown[i] : draw <= 3 ? 255 : old[i + 3];
        fx[i] = static_cast<uint8_t>((SumOfAllButTheRight(old, i) + first) >> 3);
    }
}

inline uint32_t ColourAt(const GuardedBuffer &fx, int64_t i) {
    return static_cast<uint32_t>(fx[i] << 16 | fx[i + 1] << 8 | fx[i + 2]);
}

inline void JudgePass(GuardedBuffer &fx, uint32_t key, int32_t flags) {
    const GuardedBuffer old = fx;
    const int64_t pitch = fx.Pitch(), width = fx.header.biWidth, height = fx.header.biHeight;
    for (int64_t row = 1; row < height - 1; ++row) {
        for (int64_t column = 1; column < width - 1; ++column) {
            const int64_t at = row * pitch + 3 * column;
            bool isTakenBack =
                (flags & 2) == 0 && row >= 2 && row < height - 2 && column >= 2 && column < width - 2;
            for (int y = -2; y <= 2 && isTakenBack; ++y)  // the twelve at a distance of one or two steps
                for (int x = std::abs(y) - 2; x <= 2 - std::abs(y); ++x)
                    isTakenBack &= (x == 0 && y == 0) || ColourAt(old, at + y * pitch + 3 * x) != key;
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

inline void JudgeAntialiasing(GuardedBuffer &fx, uint32_t key, int32_t flags, uint32_t extraPasses) {
    if (key == 0xFFFFFFFF) key = ColourAt(fx, fx.Size() - 3);
    for (uint64_t pass = 0; pass <= extraPasses; ++pass) JudgePass(fx, key, flags);
}

// The first pixel stays as `fx` has it: what it becomes depends on where the buffer lies.
inline void JudgeRustle(GuardedBuffer &fx) {
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
