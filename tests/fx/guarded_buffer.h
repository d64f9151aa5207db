// SPDX-License-Identifier: Zlib
// FX buffers on memory of the test's own, what they are filled with, and the levels that effects run at.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "fx/fx_buffer.h"
#include "support/each_level.h"

namespace fenlight::test {

using Bytes = std::vector<uint8_t>;
inline constexpr int32_t kLeast = INT32_MIN, kMost = INT32_MAX;

// The address sanitizer sees every step off the memory, reads too: there the block is all of it.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr int64_t kGuard = 0;
#else
inline constexpr int64_t kGuard = 96;
#endif

enum class Rows { Packed, Padded };

struct GuardedBuffer {
    GuardedBuffer(int32_t width, int32_t height, Rows rows = Rows::Packed) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage =
            static_cast<uint32_t>((rows == Rows::Packed ? Pitch() : PaddedRowBytes(width)) * height);
        bytes.assign(static_cast<size_t>(2 * kGuard + Size()), 0xC3);
        header.Pixels = At(0);
    }
    GuardedBuffer(const GuardedBuffer &other) : header(other.header), bytes(other.bytes) {
        header.Pixels = At(0);
    }
    GuardedBuffer &operator=(const GuardedBuffer &) = delete;

    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(&header); }
    int64_t Size() const { return header.biSizeImage; }
    int64_t Pixels() const { return int64_t{header.biWidth} * header.biHeight; }
    // From row to row as effects see them, whatever the rows are.
    int64_t Pitch() const { return kFXPixelBytes * header.biWidth; }
    uint8_t *At(int64_t at) { return bytes.data() + kGuard + at; }
    uint8_t &operator[](int64_t at) { return bytes.at(static_cast<size_t>(kGuard + at)); }
    int operator[](int64_t at) const { return bytes.at(static_cast<size_t>(kGuard + at)); }
    Bytes Block() const { return {header.Pixels, header.Pixels + Size()}; }
    uintptr_t Fill(uint8_t value) { return std::fill_n(At(0), Size(), value), Handle(); }
    void Set(const Bytes &block) { std::copy(block.begin(), block.end(), At(0)); }

    FXHeader header{};
    Bytes bytes;
};

// EXPECT_TRUE(SameBuffer(actual, expected)): the header, the pixels and the guards.
inline testing::AssertionResult SameBuffer(const GuardedBuffer &actual, const GuardedBuffer &expected) {
    if (std::memcmp(&actual.header, &expected.header, sizeof(BITMAPINFOHEADER)) != 0)
        return testing::AssertionFailure() << "another header ";
    if (actual.bytes == expected.bytes) return testing::AssertionSuccess();
    const auto [is, was] = std::mismatch(actual.bytes.begin(), actual.bytes.end(), expected.bytes.begin());
    return testing::AssertionFailure()
           << actual.header.biWidth << " x " << actual.header.biHeight << ", byte "
           << is - actual.bytes.begin() - kGuard << " is " << int{*is} << " and not " << int{*was} << ' ';
}

inline testing::AssertionResult SameBuffers(const std::vector<GuardedBuffer> &actual,
                                            const std::vector<GuardedBuffer> &expected) {
    for (size_t i = 0; i < actual.size(); ++i)
        if (const auto same = SameBuffer(actual[i], expected[i]); !same)
            return testing::AssertionFailure() << "buffer " << i << ": " << same.message();
    return testing::AssertionSuccess();
}

// What falls is the same for the same seed.
class Dice {
  public:
    explicit Dice(uint32_t seed) : random_(seed) {}
    uint32_t operator()() { return static_cast<uint32_t>(random_()); }
    bool Toss() { return random_() % 2 == 0; }
    int32_t Between(int32_t low, int32_t high) {
        return low + static_cast<int32_t>(random_() % static_cast<uint32_t>(high - low + 1));
    }

    // Few values make keys and equal neighbours.
    GuardedBuffer Noise(int32_t width, int32_t height, Rows rows, uint32_t values) {
        GuardedBuffer buffer(width, height, rows);
        for (int64_t i = 0; i < buffer.Size(); ++i)
            *buffer.At(i) = static_cast<uint8_t>(random_() % values * 255 / (values - 1));
        return buffer;
    }
    GuardedBuffer Noise(int32_t width, int32_t height, uint32_t values = 256) {
        return Noise(width, height, Toss() ? Rows::Packed : Rows::Padded, values);
    }
    GuardedBuffer AnyNoise(uint32_t values = 256) {
        const int32_t width = Between(1, 67);
        return Noise(width, Between(1, 35), values);
    }
    // Of two values, of three or of any.
    uint32_t Values() { return Between(0, 2) == 0 ? 256 : Toss() ? 2 : 3; }
    // For the roles of a call: mostly alike, or of one size with any rows, or of any sizes. Now and then with
    // rows longer than any piece in which they are taken.
    std::vector<GuardedBuffer> Roles() {
        const int32_t width = Between(0, 40) == 0 ? Between(250, 700) : Between(1, 67),
                      height = Between(1, 35);
        const int32_t kind = Between(0, 4);
        const Rows rows = Toss() ? Rows::Packed : Rows::Padded;
        const auto noise = [&] {
            return kind == 0   ? AnyNoise(Values())
                   : kind == 1 ? Noise(width, height, Values())
                               : Noise(width, height, rows, Values());
        };
        return {noise(), noise(), noise()};
    }

  private:
    std::mt19937 random_;
};

class FXLevels : public EachLevel {
  protected:
    Dice dice{20240719};
};

}  // namespace fenlight::test
