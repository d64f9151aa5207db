// SPDX-License-Identifier: Zlib
// Collision against the two lists of points by which it is defined.
#include <gtest/gtest.h>

#include "fenlight/sprite_collision.h"
#include "frame/vector_level.h"
#include "platform/raster/pixel_view.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_scene.h"

namespace fenlight::test {
namespace {

constexpr int32_t kEnd = 111111;

// Column by column; a reader stops at the first point whose X is that of the end mark.
std::vector<Point> ListPoints(const SpriteRecord &sprite, int32_t stepX, int32_t stepY) {
    std::vector<Point> points;
    const int32_t left = (sprite.Frame - 1) * sprite.Width + sprite.SourceX, top = sprite.SourceY;
    const COLORREF key = GetPixel(sprite.ImageDC, left + sprite.Width - 1, top);
    for (int32_t x = 0; x < sprite.Width; x += stepX)
        for (int32_t y = 0; y < sprite.Height; y += stepY) {
            if (GetPixel(sprite.ImageDC, left + x, top + y) == key) continue;
            if (sprite.X + x == kEnd) return points;
            points.push_back({sprite.X + x, sprite.Y + y});
        }
    return points;
}

bool HasCommonPoint(const SpriteRecord &a, const SpriteRecord &b, int32_t stepX, int32_t stepY) {
    const bool isFirstCoarse = a.Width * a.Height > b.Width * b.Height;
    const auto coarse = ListPoints(isFirstCoarse ? a : b, stepX, stepY);
    const auto fine = ListPoints(isFirstCoarse ? b : a, 1, 1);
    return std::any_of(coarse.begin(), coarse.end(), [&](const Point &point) {
        return std::find(fine.begin(), fine.end(), point) != fine.end();
    });
}

// A memory context with a bitmap of random pixels; 0 bits: monochrome without a palette. Few colours, some of
// them twice in the palette, and noise in what no colour uses.
class Sheet {
  public:
    Sheet(std::mt19937 &random, int bits, int width, int height, int opaqueIn100) {
        struct {
            BITMAPINFOHEADER header;
            uint32_t palette[256];
        } info{{sizeof(BITMAPINFOHEADER), width, random() % 2 ? height : -height, 1, static_cast<WORD>(bits),
                BI_RGB, 0, 0, 0, 0, 0},
               {}};
        const uint32_t colours[] = {0xFF00FF, 0x0000FF, 0, 0xFFFFFF};
        for (size_t i = 0; i < 256; ++i) info.palette[i] = colours[i < 2 ? i : random() % 4];
        void *pixels;
        bitmap_ = bits == 0 ? CreateBitmap(width, height, 1, 1, nullptr)
                            : CreateDIBSection(context, reinterpret_cast<BITMAPINFO *>(&info), DIB_RGB_COLORS,
                                               &pixels, 0, 0);
        former_ = SelectObject(context, bitmap_);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const uint32_t colour =
                    colours[random() % 100 < static_cast<uint32_t>(opaqueIn100) ? 1 + random() % 3 : 0];
                SetPixel(context, x, y, platform::SwapRedBlue(colour));
                if (bits == 32)
                    static_cast<uint8_t *>(
                        pixels)[4 * ((info.header.biHeight < 0 ? y : height - 1 - y) * width + x) + 3] =
                        static_cast<uint8_t>(random());
                if (bits == 8 && random() % 2)
                    static_cast<uint8_t *>(pixels)[y * ((width + 3) & ~3) + x] =
                        static_cast<uint8_t>(random());
            }
    }
    Sheet(const Sheet &) = delete;
    Sheet &operator=(const Sheet &) = delete;
    ~Sheet() {
        SelectObject(context, former_);
        DeleteObject(bitmap_);
        DeleteDC(context);
    }
    const HDC context = CreateCompatibleDC(0);

  private:
    HBITMAP bitmap_;
    HGDIOBJ former_;
};

TEST(Collision, FindsWhatTheListsOfPointsHaveInCommon) {
    constexpr VectorLevel kLevels[] = {VectorLevel::Plain, VectorLevel::Avx2, VectorLevel::Avx512};
    std::mt19937 random(5);
    const auto from = [&random](int lowest, int highest) {
        return lowest + static_cast<int32_t>(random() % static_cast<uint32_t>(highest - lowest + 1));
    };
    int hits = 0, touching = 0;
    for (int round = 0; round < 3000; ++round) {
        constexpr int kDepths[] = {32, 32, 32, 24, 8, 4, 1, 0}, kDensities[] = {0, 2, 8, 60};
        Sheet first(random, kDepths[random() % 8], from(20, 90), from(15, 50), kDensities[random() % 4]);
        Sheet second(random, kDepths[random() % 8], from(20, 90), from(15, 50), kDensities[random() % 4]);
        for (int turn = 0; turn < 8; ++turn) {
            LooseSprite a, b;
            for (LooseSprite *sprite : {&a, &b}) {
                sprite->ImageDC = random() % 20 == 0 ? 12345 : random() % 2 ? first.context : second.context;
                const bool isInside = random() % 2;
                sprite->SourceX = isInside ? 0 : from(-40, 60);
                sprite->SourceY = isInside ? 0 : from(-20, 40);
                sprite->Frame = from(1, isInside ? 2 : 4);
                sprite->Width = random() % 20 == 0 ? from(-2, 0) : from(1, 45);
                sprite->Height = random() % 20 == 0 ? from(-2, 0) : from(1, 30);
                sprite->X = from(-15, 15);
                sprite->Y = from(-10, 10);
            }
            if (turn % 4 == 0)
                b.Width = static_cast<int32_t>(a.Width), b.Height = static_cast<int32_t>(a.Height);
            if (turn % 4 == 1) a.X += kEnd - 10, b.X += kEnd - 10;
            const int32_t stepX = random() % 2 ? 1 : from(1, 9), stepY = random() % 2 ? 1 : from(1, 7);
            const bool areMeeting = Collide(a.Handle(), b.Handle()) == 1;
            const bool isHit = areMeeting && HasCommonPoint(a, b, stepX, stepY);
            hits += isHit;
            touching += areMeeting;
            for (const VectorLevel level : kLevels) {
                ForceVectorLevel(level);
                ASSERT_EQ(Collision(a.Handle(), b.Handle(), stepX, stepY), isHit)
                    << "round " << round << " turn " << turn << " level " << static_cast<int>(level);
            }
        }
    }
    ReleaseVectorLevel();
    EXPECT_GT(hits, 1500);
    EXPECT_GT(touching - hits, 4000);
}

}  // namespace
}  // namespace fenlight::test
