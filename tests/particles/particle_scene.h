// SPDX-License-Identifier: Zlib
// What the particle tests stand on: pairs of contexts in all formats, one drawn on by the library and one by
// the plain calls of a test.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "fenlight/particles.h"
#include "fenlight/platform/graphics.h"
#include "frame/random.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "sprites/sprite_scene.h"
#include "support/each_level.h"

namespace fenlight::test {

using platform::CountHandles;
using platform::HandleKind;
using platform::Operation;

// What a context shows, also while a thread draws on it.
inline Picture Look(HDC context, int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) picture.At(x, y) = GetPixel(context, x, y);
    return picture;
}

// A context of 1 (monochrome), 8, 24 or 32 bits full of noise, a good part of it black.
class NoisyContext {
  public:
    NoisyContext(int bits, int width, int height) : width_(width), height_(height) {
        if (bits == 1) {
            bitmap_ = CreateCompatibleBitmap(context_, width, height);
        } else {
            struct {
                BITMAPINFOHEADER header;
                uint32_t colours[256];
            } info = {{sizeof(BITMAPINFOHEADER), width, -height, 1, static_cast<uint16_t>(bits), BI_RGB, 0, 0,
                       0, 16, 0},
                      {}};
            // Index 3 is the second black: the nearest index to a colour need not be the one read.
            for (uint32_t i = 1; i < 16; ++i) info.colours[i] = i == 3 ? 0 : i * 0x0F1E2D;
            void *bytes = nullptr;
            bitmap_ = CreateDIBSection(context_, reinterpret_cast<const BITMAPINFO *>(&info), DIB_RGB_COLORS,
                                       &bytes, 0, 0);
            // With unused bytes that are not 0, and indices beyond the palette's end.
            std::mt19937 random(static_cast<uint32_t>(bits + width));
            for (int i = 0; i < width * height * bits / 8; ++i)
                static_cast<uint8_t *>(bytes)[i] = static_cast<uint8_t>(random() % 2 * random());
        }
        former_ = SelectObject(context_, bitmap_);
    }
    NoisyContext(const NoisyContext &) = delete;
    NoisyContext &operator=(const NoisyContext &) = delete;
    ~NoisyContext() {
        SelectObject(context_, former_);
        DeleteObject(bitmap_);
        DeleteDC(context_);
    }
    operator HDC() const { return context_; }

    Picture Get() const { return Look(context_, width_, height_); }

  private:
    int width_, height_;
    HDC context_ = CreateCompatibleDC(0);
    HBITMAP bitmap_ = 0;
    HGDIOBJ former_ = 0;
};

// What lies behind particles: bits of another context, or one of these.
constexpr int kNone = 0, kSame = -1, kDead = -2, kSmaller = -3;

struct ContextPair {
    static constexpr int kWidth = 90, kHeight = 70;

    ContextPair(int bits, int behind) : dest(bits, kWidth, kHeight) {
        if (behind > 0) background.emplace(behind, kWidth, kHeight);
        if (behind == kSmaller) background.emplace(32, kWidth / 2, kHeight / 2);
        if (behind == kDead) DeleteDC(backgroundDC = CreateCompatibleDC(0));
        if (behind == kSame) backgroundDC = dest;
        if (background) backgroundDC = *background;
    }

    NoisyContext dest;
    std::optional<NoisyContext> background;
    HDC backgroundDC = 0;
};

template <class Case>
void ForAllContexts(Case run) {
    WithEachLevel([&] {
        for (const int bits : {1, 8, 24, 32})
            for (const int behind : {kNone, kSame, kDead, kSmaller, 1, 8, 24, 32}) {
                SCOPED_TRACE(std::to_string(bits) + " bits before " + std::to_string(behind));
                run(bits, behind);
                if (::testing::Test::HasFailure()) return;
            }
    });
}

}  // namespace fenlight::test
